#include "flow/Folders.h"
#include "flow/Session.h"
#include "support/LogCapture.h"

#include <QtTest/QtTest>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

using StartDownload = unsigned int (KorvoWebApi::*)(const QString &, const QString &);

const QUuid PROJECT(QStringLiteral("{2f1b3c4d-5e6f-4a7b-8c9d-0e1f2a3b4c5d}"));
const QString PROJECT_ID = PROJECT.toString(QUuid::WithoutBraces);

QJsonObject object(const char *key, int size)
{
    return { { QStringLiteral("key"), QString::fromUtf8(key) }, { QStringLiteral("size"), size } };
}

} // namespace

Q_DECLARE_METATYPE(StartDownload)

class tst_Quickview : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void dataArriveInTheirFile_data();
    void dataArriveInTheirFile();
    void fileThatIsThereIsReplaced();
    void foldersOnTheWayAreMade();
    void unknownProjectEndsWithItsError();
    void refusalIsNotWrittenIntoTheFile();
    void brokenDataAreToldAndKept_data();
    void brokenDataAreToldAndKept();
    void uploadedProjectIsQuickviewed();
    void linkLeadsToTheFile();
    void linkOfAnUnknownFileIsAnError_data();
    void linkOfAnUnknownFileIsAnError();
    void allLinksLeadToTheirFiles();
    void failedLinksAreToldBeforeAnEmptyList();
    void linkMayLeadOn();
    void onlyWebLinksAreFollowed_data();
    void onlyWebLinksAreFollowed();
    void credentialsDoNotGoAlongWithALink();
    void pausedDownloadStartsOver();
    void abortedDownloadLeavesNothing();
    void pauseTwiceAndResumeWithoutPauseDoNothing();
    void severalDownloadsAtOnceAreActiveUntilTheLast();

private:
    QString output(const char *name = "out.xml") { return folder->filePath(QString::fromUtf8(name)); }

    LocalPlatform platform;
    QScopedPointer<LogCapture> log;
    QScopedPointer<QTemporaryDir> folder;
    QScopedPointer<Session> session;
};

void tst_Quickview::initTestCase()
{
    QCOMPARE(platform.start(), QString());
    platform.addProject(PROJECT_ID, QStringLiteral("Quick"),
                        { object("Video/Sec/a.mp4", 500000), object("Video/Nod/shaft 1.mp4", 10),
                          object("Picture/Sec/b & c.jpg", 20), object("Picture/Nod/ä 1+2%.jpg", 30), object("/notes.txt", 40) });
}

void tst_Quickview::init()
{
    log.reset(new LogCapture);
    folder.reset(new QTemporaryDir);
    session.reset(new Session);
    QVERIFY(session->logIn());
    platform.startJournal();
}

void tst_Quickview::cleanup()
{
    platform.clearFaults();
    session.reset();
    folder.reset();
    log.reset();
}

void tst_Quickview::dataArriveInTheirFile_data()
{
    QTest::addColumn<StartDownload>("start");
    QTest::addColumn<QString>("route");
    QTest::addColumn<QByteArray>("root");
    QTest::newRow("project") << &KorvoWebApi::downloadQuickviewProjectData << QStringLiteral("Quickview")
                             << QByteArray("<QuickviewProject>");
    QTest::newRow("survey") << &KorvoWebApi::downloadQuickviewSurveyData << QStringLiteral("Quickview/Surveys")
                            << QByteArray("<Surveys>");
    QTest::newRow("manhole") << &KorvoWebApi::downloadQuickviewManholeData << QStringLiteral("Quickview/Manholes")
                             << QByteArray("<Manholes>");
}

void tst_Quickview::dataArriveInTheirFile()
{
    QFETCH(StartDownload, start);
    QFETCH(QString, route);
    QFETCH(QByteArray, root);
    QCOMPARE((session->api().*start)(PROJECT_ID, output()), 1u);
    QVERIFY(session->signalsSeen().waitFor("downloadFinished"));
    QVERIFY(session->settle());
    QCOMPARE(session->signalsSeen().names().mid(0, 3),
             QByteArrayList({ "downloadActiveChanged", "downloadFinished", "downloadActiveChanged" }));
    QCOMPARE(platform.journal().first(), QString(QStringLiteral("GET api/Projects/") + PROJECT_ID + QLatin1Char('/') + route));
    QVERIFY(readFile(output()).contains(root));
    QTRY_VERIFY(!session->api().anyDownloadActive());
    QCOMPARE(log->messages(), QStringList());
}

void tst_Quickview::fileThatIsThereIsReplaced()
{
    QVERIFY(writeFile(folder->path(), QStringLiteral("out.xml"), QByteArray(100000, 'x')));
    session->api().downloadQuickviewProjectData(PROJECT_ID, output());
    QVERIFY(session->signalsSeen().waitFor("downloadFinished"));
    QVERIFY(readFile(output()).endsWith("</QuickviewProject>"));
    QVERIFY(!readFile(output()).contains("xxx"));
}

void tst_Quickview::foldersOnTheWayAreMade()
{
    session->api().downloadQuickviewProjectData(PROJECT_ID, output("neu/tief & breit/ä.xml"));
    QVERIFY(session->signalsSeen().waitFor("downloadFinished"));
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    QVERIFY(readFile(output("neu/tief & breit/ä.xml")).contains("<QuickviewProject>"));
}

void tst_Quickview::unknownProjectEndsWithItsError()
{
    session->api().downloadQuickviewSurveyData(QStringLiteral("nowhere"), output());
    QVERIFY(session->signalsSeen().waitFor("downloadActiveChanged", 2));
    QCOMPARE(session->signalsSeen().names(), QByteArrayList({ "downloadActiveChanged", "errorOccurred", "downloadFinished",
                                                              "downloadActiveChanged" }));
    QCOMPARE(session->signalsSeen().errors(), QList<Error> { Error::Network });
}

void tst_Quickview::refusalIsNotWrittenIntoTheFile()
{
    platform.addFault({ { QStringLiteral("kind"), QStringLiteral("status") }, { QStringLiteral("status"), 500 },
                        { QStringLiteral("body"), QStringLiteral("<html>out of order</html>") },
                        { QStringLiteral("route"), QStringLiteral("api/Projects/*") } });
    session->api().downloadQuickviewProjectData(PROJECT_ID, output());
    QVERIFY(session->signalsSeen().waitFor("downloadFinished"));
    QCOMPARE(session->signalsSeen().errors(), QList<Error> { Error::Server });
    QCOMPARE(readFile(output()), QByteArray());
}

void tst_Quickview::brokenDataAreToldAndKept_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind : { "cutBody", "resetInBody", "contentLengthTooLong" })
        QTest::newRow(kind) << QString::fromLatin1(kind);
}

// The kinds that end by themselves; a file that is not whole is never reported without an error.
void tst_Quickview::brokenDataAreToldAndKept()
{
    QFETCH(QString, kind);
    QVERIFY(session->settle());
    session->signalsSeen().clear();
    const int fault = platform.addFault(kind, QStringLiteral("api/Projects/*"), 0);
    session->api().downloadQuickviewSurveyData(PROJECT_ID, output());
    if (kind == QLatin1String("contentLengthTooLong")) {
        // The rest never comes; only the user can end this.
        QVERIFY(platform.waitForHit(fault));
        session->api().abortDownload(1);
        QVERIFY(session->signalsSeen().waitFor("downloadActiveChanged", 2));
        QCOMPARE(session->signalsSeen().count("downloadFinished"), 0);
        QTRY_VERIFY(!QFileInfo::exists(output()));
        return;
    }
    QVERIFY(session->signalsSeen().waitFor("downloadFinished"));
    QCOMPARE(session->signalsSeen().errors(), QList<Error> { Error::Network });
    QVERIFY(QFileInfo::exists(output()));
    QVERIFY(!readFile(output()).contains("</Surveys>"));
}

void tst_Quickview::uploadedProjectIsQuickviewed()
{
    QTemporaryDir local;
    QVERIFY(writeFile(local.path(), QStringLiteral("Videos/line.mp4"), randomBytes(1000, 1)));
    QVERIFY(writeFile(local.path(), QStringLiteral("Videos/shaft.mp4"), randomBytes(1000, 2)));
    QVERIFY(writeFile(local.path(), QStringLiteral("shaft.jpg"), randomBytes(1000, 3)));
    const QUuid id = QUuid::createUuid();
    session->api().uploadQuickviewProject(id, QStringLiteral("Upload"), local.path(), PROJECT_DATE,
                                          { QStringLiteral("Videos/shaft.mp4"), QStringLiteral("/shaft.jpg") });
    QVERIFY(session->signalsSeen().waitFor("uploadFinished"));
    const QJsonObject project = platform.project(id.toString(QUuid::WithoutBraces));
    const QStringList keys = platform.hashes(project.value(QLatin1String("bucket")).toString()).keys();
    for (const char *key : { "Video/Sec/line.mp4", "Video/Nod/shaft.mp4", "Picture/Nod/shaft.jpg" })
        QVERIFY2(keys.contains(QLatin1String(key)), key);
    QTRY_COMPARE(platform.project(id.toString(QUuid::WithoutBraces)).value(QLatin1String("importType")).toString(),
                 QStringLiteral("Quickview"));
    session->api().downloadQuickviewManholeData(id.toString(QUuid::WithoutBraces), output());
    QVERIFY(session->signalsSeen().waitFor("downloadFinished"));
    QVERIFY(readFile(output()).contains("Video/Nod/shaft.mp4"));
}

void tst_Quickview::linkLeadsToTheFile()
{
    session->api().startSingleProjectFileDownload(PROJECT, QString::fromUtf8("ä 1+2%.jpg"));
    QVERIFY(session->signalsSeen().waitFor("singleFileDownloadLinkReceived"));
    QCOMPARE(session->signalsSeen().names(), QByteArrayList { "singleFileDownloadLinkReceived" });
    const auto link = session->signalsSeen().events().first().arguments.first().value<SingleMediaFileLinkData>();
    QCOMPARE(link.name, QString::fromUtf8("ä 1+2%.jpg"));
    QCOMPARE(link.type, QStringLiteral("picture"));
    QCOMPARE(session->api().downloadSingleProjectFile(output("b.jpg"), link.url), 1u);
    QVERIFY(session->signalsSeen().waitFor("downloadFinished"));
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    QCOMPARE(QFileInfo(output("b.jpg")).size(), 30);
}

void tst_Quickview::linkOfAnUnknownFileIsAnError_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("unknown") << QStringLiteral("nowhere.jpg");
    // Names go into the address as they are, so a few characters end it early.
    QTest::newRow("fragment") << QStringLiteral("b#1.jpg");
    QTest::newRow("query") << QStringLiteral("b?1.jpg");
    QTest::newRow("leading up") << QStringLiteral("../../../x");
}

void tst_Quickview::linkOfAnUnknownFileIsAnError()
{
    QFETCH(QString, name);
    session->api().startSingleProjectFileDownload(PROJECT, name);
    QVERIFY(session->signalsSeen().waitFor("errorOccurred"));
    QVERIFY(session->settle());
    QCOMPARE(session->signalsSeen().names(), QByteArrayList({ "errorOccurred", "uploadStatusInfoReceived" }));
    QCOMPARE(session->signalsSeen().errors(), QList<Error> { Error::Network });
}

void tst_Quickview::allLinksLeadToTheirFiles()
{
    session->api().startAllProjectsMediaDownload(PROJECT_ID);
    QVERIFY(session->signalsSeen().waitFor("allProjectsMediaDownloadLinkReceived"));
    const auto links = session->signalsSeen().events().first().arguments.first().value<QList<SingleMediaFileLinkData>>();
    QStringList names;
    for (const SingleMediaFileLinkData &link : links)
        names.append(link.name);
    names.sort();
    QCOMPARE(names, QStringList({ QStringLiteral("a.mp4"), QStringLiteral("b & c.jpg"), QStringLiteral("shaft 1.mp4"),
                                  QString::fromUtf8("ä 1+2%.jpg") }));
    const QMap<QString, int> sizes { { QStringLiteral("a.mp4"), 500000 }, { QStringLiteral("b & c.jpg"), 20 },
                                     { QStringLiteral("shaft 1.mp4"), 10 }, { QString::fromUtf8("ä 1+2%.jpg"), 30 } };
    for (const SingleMediaFileLinkData &link : links)
        session->api().downloadSingleProjectFile(folder->filePath(link.name), link.url);
    QVERIFY(session->signalsSeen().waitFor("downloadFinished", links.size()));
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    for (auto size = sizes.cbegin(); size != sizes.cend(); ++size)
        QCOMPARE(int(QFileInfo(folder->filePath(size.key())).size()), size.value());
}

void tst_Quickview::failedLinksAreToldBeforeAnEmptyList()
{
    session->api().startAllProjectsMediaDownload(QStringLiteral("nowhere"));
    QVERIFY(session->signalsSeen().waitFor("allProjectsMediaDownloadLinkReceived"));
    QCOMPARE(session->signalsSeen().names(), QByteArrayList({ "errorOccurred", "allProjectsMediaDownloadLinkReceived" }));
    QCOMPARE(session->signalsSeen().all("allProjectsMediaDownloadLinkReceived").first().first()
                 .value<QList<SingleMediaFileLinkData>>().size(), 0);
}

void tst_Quickview::linkMayLeadOn()
{
    session->api().startSingleProjectFileDownload(PROJECT, QStringLiteral("a.mp4"));
    QVERIFY(session->signalsSeen().waitFor("singleFileDownloadLinkReceived"));
    const auto link = session->signalsSeen().events().first().arguments.first().value<SingleMediaFileLinkData>();
    platform.addFault({ { QStringLiteral("kind"), QStringLiteral("redirect") }, { QStringLiteral("location"), link.url },
                        { QStringLiteral("route"), QStringLiteral("elsewhere") } });
    session->api().downloadSingleProjectFile(output("a.mp4"), QStringLiteral("https://web.korvo.example/elsewhere"));
    QVERIFY(session->signalsSeen().waitFor("downloadFinished"));
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    QCOMPARE(QFileInfo(output("a.mp4")).size(), 500000);
}

void tst_Quickview::onlyWebLinksAreFollowed_data()
{
    QTest::addColumn<QString>("link");
    QTest::newRow("file") << QStringLiteral("file:///etc/passwd");
    QTest::newRow("data") << QStringLiteral("data:text/plain,hello");
    QTest::newRow("ftp") << QStringLiteral("ftp://web.korvo.example/a");
    QTest::newRow("path") << QStringLiteral("/etc/passwd");
    QTest::newRow("resource") << QStringLiteral("qrc:/a");
    QTest::newRow("blank") << QStringLiteral(" ");
}

void tst_Quickview::onlyWebLinksAreFollowed()
{
    QFETCH(QString, link);
    QCOMPARE(session->api().downloadSingleProjectFile(output(), link), 1u);
    QVERIFY(session->signalsSeen().waitFor("downloadFinished"));
    QCOMPARE(session->signalsSeen().errors(), QList<Error> { Error::Network });
    QCOMPARE(readFile(output()), QByteArray());
    QVERIFY(eventually([&] { return !session->api().anyDownloadActive(); }));
}

void tst_Quickview::credentialsDoNotGoAlongWithALink()
{
    // A web route that asks for the token refuses the plain link.
    session->api().downloadSingleProjectFile(output(), QStringLiteral("https://web.korvo.example/api/Projects?pageSize=1"));
    QVERIFY(session->signalsSeen().waitFor("downloadFinished"));
    QCOMPARE(session->signalsSeen().errors(), QList<Error> { Error::AuthenticationRequired });
}

void tst_Quickview::pausedDownloadStartsOver()
{
    const int hang = platform.addFault(QStringLiteral("stallInBody"), QStringLiteral("api/Projects/*"));
    session->api().downloadQuickviewSurveyData(PROJECT_ID, output());
    QVERIFY(platform.waitForHit(hang));
    session->api().pauseDownload(1);
    QTRY_VERIFY(!QFileInfo::exists(output()));
    QVERIFY(session->api().anyDownloadActive());
    QCOMPARE(session->signalsSeen().names(), QByteArrayList { "downloadActiveChanged" });
    session->api().resumeDownload(1);
    QVERIFY(session->signalsSeen().waitFor("downloadFinished"));
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    QVERIFY(readFile(output()).endsWith("</Surveys>"));
}

void tst_Quickview::abortedDownloadLeavesNothing()
{
    const int hang = platform.addFault(QStringLiteral("stallInBody"), QStringLiteral("api/Projects/*"));
    session->api().downloadQuickviewSurveyData(PROJECT_ID, output());
    QVERIFY(platform.waitForHit(hang));
    session->api().abortDownload(1);
    QVERIFY(session->signalsSeen().waitFor("downloadActiveChanged", 2));
    QTRY_VERIFY(!QFileInfo::exists(output()));
    QTRY_VERIFY(!session->api().anyDownloadActive()); // lowered just behind the signal
    session->api().abortDownload(1);
    session->api().resumeDownload(1);
    QVERIFY(session->settle());
    QCOMPARE(session->signalsSeen().names(), QByteArrayList({ "downloadActiveChanged", "downloadActiveChanged",
                                                              "uploadStatusInfoReceived" }));
    QCOMPARE(log->messages(), QStringList({ QStringLiteral("Invalid id, project download not found."),
                                            QStringLiteral("Cannot resume download. Invalid id, project download not found.") }));
}

void tst_Quickview::pauseTwiceAndResumeWithoutPauseDoNothing()
{
    const int hang = platform.addFault(QStringLiteral("stallInBody"), QStringLiteral("api/Projects/*"));
    session->api().downloadQuickviewSurveyData(PROJECT_ID, output());
    QVERIFY(platform.waitForHit(hang));
    session->api().resumeDownload(1);
    session->api().pauseDownload(1);
    session->api().pauseDownload(1);
    session->api().resumeDownload(1);
    session->api().resumeDownload(1);
    QVERIFY(session->signalsSeen().waitFor("downloadFinished"));
    QVERIFY(session->settle());
    QCOMPARE(session->signalsSeen().count("downloadFinished"), 1);
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
    QVERIFY(readFile(output()).endsWith("</Surveys>"));
}

void tst_Quickview::severalDownloadsAtOnceAreActiveUntilTheLast()
{
    const int hang = platform.addFault(QStringLiteral("noAnswer"),
                                       QStringLiteral("api/Projects/") + PROJECT_ID + QStringLiteral("/Quickview"));
    session->api().downloadQuickviewProjectData(PROJECT_ID, output("1"));
    session->api().downloadQuickviewSurveyData(PROJECT_ID, output("2"));
    session->api().downloadQuickviewManholeData(PROJECT_ID, output("3"));
    QVERIFY(session->signalsSeen().waitFor("downloadFinished", 2));
    QVERIFY(platform.waitForHit(hang));
    QVERIFY(session->api().anyDownloadActive());
    session->api().pauseDownload(1);
    QVERIFY(session->settle());
    QVERIFY(session->api().anyDownloadActive());
    session->api().resumeDownload(1);
    QVERIFY(session->signalsSeen().waitFor("downloadFinished", 3));
    QVERIFY(eventually([&] { return !session->api().anyDownloadActive(); }));
    QCOMPARE(session->signalsSeen().count("anyDownloadActiveChanged"), 0);
}

QTEST_GUILESS_MAIN(tst_Quickview)

#include "tst_Quickview.moc"
