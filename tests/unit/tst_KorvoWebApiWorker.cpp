#include "api/KorvoWebApiWorker.h"
#include "flow/SignalRecorder.h"
#include "support/LogCapture.h"
#include "transfer/AbstractDownload.h"

#include <NQKorvoWeb/KorvoWebLibrary.h>

#include <QtCore/QScopedPointer>
#include <QtCore/QTemporaryDir>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QTcpServer>
#include <QtTest/QtTest>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

const QDateTime DATE(QDate(2026, 3, 3), QTime(14, 5, 9), Qt::UTC);

using Action = void (KorvoWebApiWorker::*)(unsigned int);

// What Qt makes of a proxy that refuses: a network error that it does not know.
constexpr Error REFUSED = Error::TimeOut;

/// A port of this machine where nobody answers, so that every request ends soon.
quint16 deadPort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

} // namespace

Q_DECLARE_METATYPE(Action)

/// The worker on the thread of the test, so that each of its signals arrives inside the call that emits it.
class tst_KorvoWebApiWorker : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void slotsKeepTheirNamesAndParameters();
    void secondInitializeChangesNothing();
    void gettersCopeWithoutInitialize();
    void cancelLoginWithoutLoginDoesNothing();
    void logoutSaysSoEachTime();
    void loggingInIsToldOnceOnly();
    void unknownIdIsLoggedWithTheIdApart_data();
    void unknownIdIsLoggedWithTheIdApart();
    void errorOfAnUnknownUploadReachesTheHost();
    void errorOfADownloadReachesTheHostAndNothingElse();
    void projectsAreToldUnlessTheQueryFailed();
    void firstLinkIsTold();
    void missingLinkIsAnError();
    void allLinksAreTold();
    void statusesAreTold();
    void percentagesAreKeptBetweenZeroAndHundred();
    void totalReportComesInFourSignals();
    void uploadThatCannotBeginLeavesNothingActive();
    void downloadThatCannotListEndsWithItsFinish();
    void downloadIntoAFileCannotStart();
    void downloadFlagRisesWithoutSignal();
    void jobsGoBeforeTheManagerOfTheirRequests_data();
    void jobsGoBeforeTheManagerOfTheirRequests();

private:
    template<typename... Arguments>
    void deliver(const char *slot, Arguments... arguments);

    QScopedPointer<QTemporaryDir> folder;
    QScopedPointer<LogCapture> log; // outlives the object that logs
    QScopedPointer<KorvoWebApiWorker> worker;
    QScopedPointer<SignalRecorder> recorder;
};

void tst_KorvoWebApiWorker::initTestCase()
{
    KorvoWebLibrary::initialize();
    QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"), deadPort()));
}

void tst_KorvoWebApiWorker::init()
{
    folder.reset(new QTemporaryDir);
    QVERIFY(folder->isValid());
    log.reset(new LogCapture);
    worker.reset(new KorvoWebApiWorker);
    worker->initialize();
    recorder.reset(new SignalRecorder(worker.data()));
}

void tst_KorvoWebApiWorker::cleanup()
{
    recorder.reset();
    worker.reset();
    log.reset();
}

/// Calls a slot that answers of the network reach by name.
template<typename... Arguments>
void tst_KorvoWebApiWorker::deliver(const char *slot, Arguments... arguments)
{
    QVERIFY2(QMetaObject::invokeMethod(worker.data(), slot, Qt::DirectConnection, arguments...), slot);
}

void tst_KorvoWebApiWorker::slotsKeepTheirNamesAndParameters()
{
    const QByteArrayList expected {
        "handleCheck2StepsAuthenticationResponse(Check2StepAuthenticationResponse)",
        "handleLoginResponse(LoginResponse)",
        "handleFileUploadProgressChanged(uint,QString,int)",
        "handleTotalUploadProgressChanged(uint,int,int,int,QStringList)",
        "handleFileDownloadProgressChanged(uint,QString,int)",
        "handleTotalDownloadProgressChanged(uint,int,int,int,QStringList)",
        "handleUploadCompleted(uint)",
        "handleDownloadCompleted(uint)",
        "handleUploadError(uint,Error)",
        "handleDownloadError(uint,Error)",
        "handleUserProjectsResponse(UserProjectsResponse,Error)",
        "handleSingleFileDownloadResponse(SingleProjectFileDownloadResponse)",
        "handleAllProjectsMediaDownloadResponse(SingleProjectFileDownloadResponse)",
        "handleUploadStatus(UploadProjectsStatusResponse)",
    };
    QByteArrayList found;
    const QMetaObject &meta = KorvoWebApiWorker::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        if (meta.method(i).methodType() == QMetaMethod::Slot)
            found.append(meta.method(i).methodSignature());
    }
    QCOMPARE(found, expected);
}

void tst_KorvoWebApiWorker::secondInitializeChangesNothing()
{
    worker->initialize();
    // Raised by the communicator, so it comes once for each connection to one.
    worker->resetPassword(QStringLiteral("ida"));
    QVERIFY(recorder->waitFor("errorOccurred"));
    worker->logout();
    QCOMPARE(recorder->names(), QByteArrayList({ "errorOccurred", "loginStatusChanged" }));
    QCOMPARE(recorder->errors(), QList<Error> { REFUSED });
}

void tst_KorvoWebApiWorker::gettersCopeWithoutInitialize()
{
    const KorvoWebApiWorker fresh;
    QCOMPARE(int(fresh.loginStatus()), int(KorvoWebApi::LoginStatus::LoginStatusLoggedOut));
    QCOMPARE(int(fresh.userRole()), int(KorvoWebApi::UserRole::Guest));
    QCOMPARE(fresh.userName(), QString());
    QVERIFY(!fresh.isAnyUploadActive());
    QVERIFY(!fresh.isAnyDownloadActive());
}

void tst_KorvoWebApiWorker::cancelLoginWithoutLoginDoesNothing()
{
    worker->cancelLogin();
    QCoreApplication::processEvents();
    QCOMPARE(recorder->names(), QByteArrayList());
    QCOMPARE(log->count(), 0);
}

void tst_KorvoWebApiWorker::logoutSaysSoEachTime()
{
    worker->logout();
    QCOMPARE(recorder->names(), QByteArrayList { "loginStatusChanged" });
    worker->logout();
    QCOMPARE(recorder->names(), QByteArrayList({ "loginStatusChanged", "loginStatusChanged" }));
}

void tst_KorvoWebApiWorker::loggingInIsToldOnceOnly()
{
    worker->login(QStringLiteral("ida"), QStringLiteral("secret"));
    QCOMPARE(recorder->names(), QByteArrayList { "loginStatusChanged" });
    QCOMPARE(int(worker->loginStatus()), int(KorvoWebApi::LoginStatus::LoginStatusLoggingIn));
    worker->login(QStringLiteral("ida"), QStringLiteral("secret"));
    QCOMPARE(recorder->names(), QByteArrayList { "loginStatusChanged" });
    // Nobody answers: the question about the second factor fails, the login that follows fails too.
    QVERIFY(recorder->waitFor("loginResult"));
    QCOMPARE(recorder->names(),
             QByteArrayList({ "loginStatusChanged", "loginStatusChanged", "errorOccurred", "loginResult" }));
    QCOMPARE(int(worker->loginStatus()), int(KorvoWebApi::LoginStatus::LoginStatusLoggedOut));
    QCOMPARE(recorder->all("loginResult").first().at(0).toString(), QString());
}

void tst_KorvoWebApiWorker::unknownIdIsLoggedWithTheIdApart_data()
{
    QTest::addColumn<Action>("action");
    QTest::addColumn<QString>("message");
    QTest::newRow("pauseDownload") << &KorvoWebApiWorker::pauseDownload
        << QStringLiteral("Cannot pause download. Invalid id, project download not found.");
    QTest::newRow("resumeDownload") << &KorvoWebApiWorker::resumeDownload
        << QStringLiteral("Cannot resume download. Invalid id, project download not found.");
    QTest::newRow("abortDownload") << &KorvoWebApiWorker::abortDownload
        << QStringLiteral("Invalid id, project download not found.");
    QTest::newRow("abortUpload") << &KorvoWebApiWorker::abortUpload
        << QStringLiteral("Cannot abort upload. Invalid id, project upload not found.");
    QTest::newRow("pauseUpload") << &KorvoWebApiWorker::pauseUpload
        << QStringLiteral("Cannot pause upload. Invalid id, project upload not found.");
    QTest::newRow("resumeUpload") << &KorvoWebApiWorker::resumeUpload
        << QStringLiteral("Cannot resume upload. Invalid id, project upload not found.");
}

void tst_KorvoWebApiWorker::unknownIdIsLoggedWithTheIdApart()
{
    QFETCH(Action, action);
    QFETCH(QString, message);
    for (const unsigned int id : { 0u, 7u, 4294967295u }) {
        log->clear();
        (worker.data()->*action)(id);
        QCOMPARE(log->count(), 1);
        const LogEntry entry = log->entries().first();
        QCOMPARE(entry.level, 1);
        QCOMPARE(entry.category, QStringLiteral("KorvoWeb"));
        QCOMPARE(entry.message, message);
        QCOMPARE(entry.arguments, QList<QVariant> { QVariant(id) });
    }
    QCOMPARE(recorder->names(), QByteArrayList());
}

void tst_KorvoWebApiWorker::errorOfAnUnknownUploadReachesTheHost()
{
    deliver("handleUploadError", Q_ARG(unsigned int, 77u), Q_ARG(Error, Error::Server));
    QCOMPARE(recorder->names(), QByteArrayList { "errorOccurred" });
    QCOMPARE(recorder->errors(), QList<Error> { Error::Server });
}

void tst_KorvoWebApiWorker::errorOfADownloadReachesTheHostAndNothingElse()
{
    deliver("handleDownloadError", Q_ARG(unsigned int, 77u), Q_ARG(Error, Error::FileWrite));
    QCOMPARE(recorder->names(), QByteArrayList { "errorOccurred" });
    QCOMPARE(recorder->errors(), QList<Error> { Error::FileWrite });
}

void tst_KorvoWebApiWorker::projectsAreToldUnlessTheQueryFailed()
{
    UserProjectsResponse response;
    response.parse(QStringLiteral("<A><ProjectInfo><ProjectId>p1</ProjectId></ProjectInfo>"
                                  "<ProjectInfo><ProjectId>p2</ProjectId></ProjectInfo></A>"));
    deliver("handleUserProjectsResponse", Q_ARG(UserProjectsResponse, response), Q_ARG(Error, Error::Server));
    QCOMPARE(recorder->names(), QByteArrayList { "queryRemoteProjectsError" });
    QCOMPARE(int(recorder->events().first().arguments.first().value<Error>()), int(Error::Server));
    recorder->clear();
    deliver("handleUserProjectsResponse", Q_ARG(UserProjectsResponse, response), Q_ARG(Error, Error::None));
    QCOMPARE(recorder->names(), QByteArrayList { "projectInfoReceived" });
    const auto projects = recorder->events().first().arguments.first().value<QList<ProjectInfo>>();
    QCOMPARE(projects.size(), 2);
    QCOMPARE(projects.at(0).projectId(), QStringLiteral("p1"));
    QCOMPARE(projects.at(1).projectId(), QStringLiteral("p2"));
}

void tst_KorvoWebApiWorker::firstLinkIsTold()
{
    SingleProjectFileDownloadResponse response;
    response.parse(QStringLiteral("<m><media-item><url>https://a</url><name>a.jpg</name></media-item>"
                                  "<media-item><url>https://b</url><name>b.jpg</name></media-item></m>"));
    deliver("handleSingleFileDownloadResponse", Q_ARG(SingleProjectFileDownloadResponse, response));
    QCOMPARE(recorder->names(), QByteArrayList { "singleFileDownloadLinkReceived" });
    QCOMPARE(recorder->events().first().arguments.first().value<SingleMediaFileLinkData>().url,
             QStringLiteral("https://a"));
}

void tst_KorvoWebApiWorker::missingLinkIsAnError()
{
    SingleProjectFileDownloadResponse response;
    response.setOutcome(QNetworkReply::ContentNotFoundError);
    response.parse(QStringLiteral("<nothing/>"));
    deliver("handleSingleFileDownloadResponse", Q_ARG(SingleProjectFileDownloadResponse, response));
    QCOMPARE(recorder->names(), QByteArrayList { "errorOccurred" });
    QCOMPARE(recorder->errors(), QList<Error> { Error::Network });
}

void tst_KorvoWebApiWorker::allLinksAreTold()
{
    SingleProjectFileDownloadResponse response;
    response.parse(QStringLiteral("<m><media-item><url>https://a</url></media-item>"
                                  "<media-item><url>https://b</url></media-item></m>"));
    deliver("handleAllProjectsMediaDownloadResponse", Q_ARG(SingleProjectFileDownloadResponse, response));
    QCOMPARE(recorder->names(), QByteArrayList { "allProjectsMediaDownloadLinkReceived" });
    QCOMPARE(recorder->events().first().arguments.first().value<QList<SingleMediaFileLinkData>>().size(), 2);
}

void tst_KorvoWebApiWorker::statusesAreTold()
{
    UploadProjectsStatusResponse response;
    response.parse(QStringLiteral(R"([{"status": 2, "projectId": "p1"}, {"projectId": "p2"}])"));
    deliver("handleUploadStatus", Q_ARG(UploadProjectsStatusResponse, response));
    QCOMPARE(recorder->names(), QByteArrayList { "uploadStatusInfoReceived" });
    const auto statuses = recorder->events().first().arguments.first().value<QList<UploadStatusInfo>>();
    QCOMPARE(statuses.size(), 2);
    QCOMPARE(statuses.at(0).status, 2);
    QCOMPARE(statuses.at(1).status, 0);
}

void tst_KorvoWebApiWorker::percentagesAreKeptBetweenZeroAndHundred()
{
    const QString name = QStringLiteral("a");
    for (const int percent : { -5, 0, 55, 100, 250 }) {
        deliver("handleFileUploadProgressChanged", Q_ARG(unsigned int, 1u), Q_ARG(QString, name), Q_ARG(int, percent));
        deliver("handleFileDownloadProgressChanged", Q_ARG(unsigned int, 1u), Q_ARG(QString, name), Q_ARG(int, percent));
        deliver("handleTotalUploadProgressChanged", Q_ARG(unsigned int, 1u), Q_ARG(int, 0), Q_ARG(int, 1),
                Q_ARG(int, percent), Q_ARG(QStringList, {}));
        deliver("handleTotalDownloadProgressChanged", Q_ARG(unsigned int, 1u), Q_ARG(int, 0), Q_ARG(int, 1),
                Q_ARG(int, percent), Q_ARG(QStringList, {}));
    }
    for (const char *signal : { "uploadFileProgressChanged", "downloadFileProgressChanged", "uploadTotalProgressChanged",
                                "downloadTotalProgressChanged" }) {
        QList<int> told;
        for (const QVariantList &arguments : recorder->all(signal))
            told.append(arguments.last().toInt());
        QCOMPARE(told, QList<int>({ 0, 0, 55, 100, 100 }));
    }
}

void tst_KorvoWebApiWorker::totalReportComesInFourSignals()
{
    const QStringList files { QStringLiteral("/a"), QStringLiteral("/b") };
    deliver("handleTotalUploadProgressChanged", Q_ARG(unsigned int, 3u), Q_ARG(int, 1), Q_ARG(int, 5), Q_ARG(int, 20),
            Q_ARG(QStringList, files));
    deliver("handleTotalDownloadProgressChanged", Q_ARG(unsigned int, 4u), Q_ARG(int, 2), Q_ARG(int, 6), Q_ARG(int, 30),
            Q_ARG(QStringList, files));
    QCOMPARE(recorder->names(),
             QByteArrayList({ "currentUploadFilesChanged", "uploadTotalProgressChanged", "filesToUploadTotalChanged",
                              "completedUploadFilesChanged", "currentDownloadFilesChanged",
                              "downloadTotalProgressChanged", "filesToDownloadTotalChanged",
                              "completedDownloadFilesChanged" }));
    QCOMPARE(recorder->all("currentUploadFilesChanged").first(), QVariantList({ 3u, files }));
    QCOMPARE(recorder->all("filesToUploadTotalChanged").first(), QVariantList({ 3u, 5 }));
    QCOMPARE(recorder->all("completedUploadFilesChanged").first(), QVariantList({ 3u, 1 }));
    QCOMPARE(recorder->all("filesToDownloadTotalChanged").first(), QVariantList({ 4u, 6 }));
    QCOMPARE(recorder->all("completedDownloadFilesChanged").first(), QVariantList({ 4u, 2 }));
}

void tst_KorvoWebApiWorker::uploadThatCannotBeginLeavesNothingActive()
{
    const QString text = QStringLiteral("x");
    worker->uploadProject(text, text, folder->path(), DATE, ImportType::Standard, 1, 9, {});
    QCOMPARE(recorder->names(),
             QByteArrayList({ "anyUploadActiveChanged", "uploadActiveChanged", "uploadActiveChanged",
                              "anyUploadActiveChanged", "errorOccurred" }));
    QCOMPARE(recorder->all("uploadActiveChanged"), QList<QVariantList>({ { 9u, true }, { 9u, false } }));
    QCOMPARE(recorder->errors(), QList<Error> { REFUSED });
    QVERIFY(!worker->isAnyUploadActive());
    // It is out of the registry too.
    log->clear();
    worker->pauseUpload(9);
    QCOMPARE(log->count(), 1);
}

void tst_KorvoWebApiWorker::downloadThatCannotListEndsWithItsFinish()
{
    const QString text = QStringLiteral("x");
    worker->downloadProject(text, text, folder->filePath(QStringLiteral("new/folder")), 1, 5);
    QVERIFY(recorder->waitFor("downloadFinished"));
    QCOMPARE(recorder->names(),
             QByteArrayList({ "downloadActiveChanged", "errorOccurred", "currentDownloadFilesChanged",
                              "downloadTotalProgressChanged", "filesToDownloadTotalChanged",
                              "completedDownloadFilesChanged", "downloadFinished", "downloadActiveChanged" }));
    QCOMPARE(recorder->all("downloadTotalProgressChanged").first(), QVariantList({ 5u, 100 }));
    QVERIFY(!worker->isAnyDownloadActive());
    QVERIFY(QFileInfo(folder->filePath(QStringLiteral("new/folder"))).isDir());
}

void tst_KorvoWebApiWorker::downloadIntoAFileCannotStart()
{
    QFile file(folder->filePath(QStringLiteral("file")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QString below = file.fileName() + QStringLiteral("/below");
    worker->downloadProject(QStringLiteral("p"), QStringLiteral("Folder_1"), below, 1, 5);
    QCOMPARE(recorder->names(), QByteArrayList({ "downloadActiveChanged", "errorOccurred", "downloadFinished",
                                                 "downloadActiveChanged" }));
    QCOMPARE(recorder->errors(), QList<Error> { Error::DownloadFolder });
    QCOMPARE(log->messages(), QStringList { QStringLiteral("Couldn't create download path: \"") + below
                                            + QStringLiteral("\"\nFor bucket: pfolder-1") });
    QVERIFY(!worker->isAnyDownloadActive());
}

void tst_KorvoWebApiWorker::downloadFlagRisesWithoutSignal()
{
    const QString file = folder->filePath(QStringLiteral("out.xml"));
    worker->downloadQuickviewProjectData(QStringLiteral("p"), file, 1);
    worker->downloadQuickviewSurveyData(QStringLiteral("p"), file, 2);
    QVERIFY(worker->isAnyDownloadActive());
    worker->abortDownload(1);
    QVERIFY(worker->isAnyDownloadActive());
    worker->abortDownload(2);
    QVERIFY(!worker->isAnyDownloadActive());
    QCOMPARE(recorder->count("anyDownloadActiveChanged"), 0);
    QCOMPARE(recorder->count("downloadFinished"), 0);
}

void tst_KorvoWebApiWorker::jobsGoBeforeTheManagerOfTheirRequests_data()
{
    QTest::addColumn<bool>("isProject");
    QTest::newRow("project") << true;
    QTest::newRow("file of data") << false;
}

// A reply counts on its manager as long as it lives.
void tst_KorvoWebApiWorker::jobsGoBeforeTheManagerOfTheirRequests()
{
    QFETCH(bool, isProject);
    const QString path = folder->filePath(QStringLiteral("out"));
    if (isProject)
        worker->downloadProject(QStringLiteral("p"), QStringLiteral("p"), path, 1, 1);
    else
        worker->downloadQuickviewProjectData(QStringLiteral("p"), path, 1);
    const auto *const job = worker->findChild<AbstractDownload *>();
    QVERIFY(job);
    const auto *const reply = job->findChild<QNetworkReply *>();
    QVERIFY(reply);
    QStringList gone;
    const QObject witness;
    const auto note = [&](const QObject *object, const QString &name) {
        connect(object, &QObject::destroyed, &witness, [&gone, name] { gone.append(name); });
    };
    note(job, QStringLiteral("job"));
    note(reply, QStringLiteral("reply"));
    note(reply->manager(), QStringLiteral("manager"));
    recorder.reset();
    worker.reset();
    QCOMPARE(gone, (QStringList{QStringLiteral("job"), QStringLiteral("reply"), QStringLiteral("manager")}));
}

QTEST_GUILESS_MAIN(tst_KorvoWebApiWorker)

#include "tst_KorvoWebApiWorker.moc"
