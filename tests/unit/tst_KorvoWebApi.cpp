#include "flow/SignalRecorder.h"
#include "support/LogCapture.h"

#include <NQKorvoWeb/KorvoWebApi.h>
#include <NQKorvoWeb/KorvoWebLibrary.h>

#include <QtCore/QMetaMethod>
#include <QtCore/QMetaProperty>
#include <QtCore/QScopedPointer>
#include <QtCore/QTemporaryDir>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QTcpServer>
#include <QtTest/QtTest>

#include <cstring>

#ifdef __GLIBC__
#include <pthread.h>
#endif

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

const QDateTime DATE(QDate(2026, 3, 3), QTime(14, 5, 9), Qt::UTC);

/// "type name, type name" of a method, as the meta-object has them.
QString parametersOf(const QMetaMethod &method)
{
    QStringList parameters;
    for (int i = 0; i < method.parameterCount(); ++i)
        parameters.append(QString::fromLatin1(method.parameterTypes().at(i) + ' ' + method.parameterNames().at(i)));
    return parameters.join(QStringLiteral(", "));
}

QString declarationOf(const QMetaMethod &method)
{
    return QString::fromLatin1(method.typeName()) + QLatin1Char(' ') + QString::fromLatin1(method.name())
        + QLatin1Char('(') + parametersOf(method) + QLatin1Char(')');
}

QStringList declarations(QMetaMethod::MethodType type)
{
    QStringList list;
    const QMetaObject &api = KorvoWebApi::staticMetaObject;
    for (int i = api.methodOffset(); i < api.methodCount(); ++i) {
        if (api.method(i).methodType() == type)
            list.append(declarationOf(api.method(i)));
    }
    return list;
}

QString propertyLine(const QMetaProperty &property)
{
    const char *const access = property.isWritable() ? "writable" : "read-only";
    return QStringLiteral("%1 %2 %3 %4").arg(QLatin1String(property.typeName()), QLatin1String(property.name()),
                                            QLatin1String(property.notifySignal().name()), QLatin1String(access));
}

/// A port of this machine where nobody answers, so that no test of this class reaches a server.
quint16 deadPort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

#if defined(__GNUC__) && defined(__x86_64__)
/// Position of a virtual function in the table of its class, -1 for one that is not virtual. A pointer to a virtual
/// member function is its offset in the table plus one.
template<typename Member>
int tableSlot(Member member)
{
    std::ptrdiff_t parts[2];
    static_assert(sizeof member == sizeof parts);
    std::memcpy(parts, &member, sizeof parts);
    return parts[0] % 2 == 0 ? -1 : int((parts[0] - 1) / std::ptrdiff_t(sizeof(void *)));
}

struct Probe : KorvoWebApi
{
    static int lastSlotOfQObject() { return tableSlot(&Probe::disconnectNotify); }
};
#endif

} // namespace

class tst_KorvoWebApi : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void propertiesNameTheirChangeSignals();
    void signalsStandInTheirOrderWithTheirParameters();
    void methodsCanBeInvokedByName();
    void virtualFunctionsKeepTheirSlots();
    void stateAtTheStart();

    void rejectedCallIsLoggedWithAllArguments_data();
    void rejectedCallIsLoggedWithAllArguments();
    void rejectionIsToldInsideTheCall();
    void rejectedCallReachesNobody();
    void missingLastArgumentCountsAsOne_data();
    void missingLastArgumentCountsAsOne();
    void idsOfDownloadsAndUploadsCountApart();
    void rejectedCallTakesNoId();
    void uncheckedUploadsAlwaysGetAnId();
    void dateThatIsInvalidButNotNullPasses();
    void transferErrorSignalsAreNeverEmitted();
    void severalObjectsCountTheirOwnIds();
    void constructionSurvivesAThreadThatCannotStart();

private:
    QScopedPointer<QTemporaryDir> folder;
    QScopedPointer<LogCapture> log; // outlives the object that logs
    QScopedPointer<KorvoWebApi> api;
    QScopedPointer<SignalRecorder> recorder;
};

Q_DECLARE_METATYPE(std::function<unsigned int(KorvoWebApi &)>)

void tst_KorvoWebApi::initTestCase()
{
    KorvoWebLibrary::initialize();
    QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"), deadPort()));
}

void tst_KorvoWebApi::init()
{
    folder.reset(new QTemporaryDir);
    QVERIFY(folder->isValid());
    log.reset(new LogCapture);
    api.reset(new KorvoWebApi);
    recorder.reset(new SignalRecorder(api.data()));
}

void tst_KorvoWebApi::cleanup()
{
    recorder.reset();
    api.reset();
    log.reset();
}

void tst_KorvoWebApi::propertiesNameTheirChangeSignals()
{
    const QStringList expected {
        QStringLiteral("QString currentUser currentUserChanged read-only"),
        QStringLiteral("LoginStatus loginStatus loginStatusChanged read-only"),
        QStringLiteral("bool anyUploadActive anyUploadActiveChanged read-only"),
        QStringLiteral("bool anyDownloadActive anyDownloadActiveChanged read-only"),
        QStringLiteral("QString currentUserCompanyId loginStatusChanged read-only"),
        QStringLiteral("QString currentUserFirstName loginStatusChanged read-only"),
        QStringLiteral("QString currentUserLastName loginStatusChanged read-only"),
        QStringLiteral("UserRole currentUserRole loginStatusChanged read-only"),
    };
    QStringList lines;
    const QMetaObject &meta = KorvoWebApi::staticMetaObject;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i)
        lines.append(propertyLine(meta.property(i)).remove(QStringLiteral("Korvo::Web::KorvoWebApi::")));
    QCOMPARE(lines, expected);
}

void tst_KorvoWebApi::signalsStandInTheirOrderWithTheirParameters()
{
    const QStringList expected {
        QStringLiteral("void uploadFileProgressChanged(uint uploadId, QString fileName, int progress)"),
        QStringLiteral("void currentUploadFilesChanged(uint uploadId, QStringList currentUploadFiles)"),
        QStringLiteral("void uploadTotalProgressChanged(uint uploadId, int value)"),
        QStringLiteral("void filesToUploadTotalChanged(uint uploadId, int value)"),
        QStringLiteral("void completedUploadFilesChanged(uint uploadId, int value)"),
        QStringLiteral("void uploadActiveChanged(uint uploadId, bool bValue)"),
        QStringLiteral("void anyUploadActiveChanged(bool bValue)"),
        QStringLiteral("void uploadFinished(uint uploadId)"),
        QStringLiteral("void uploadErrorOccurred(uint uploadId, KorvoWebApi::UploadError errorCode)"),
        QStringLiteral("void downloadFileProgressChanged(uint downloadId, QString fileName, int progress)"),
        QStringLiteral("void currentDownloadFilesChanged(uint downloadId, QStringList currentDownloadFiles)"),
        QStringLiteral("void downloadTotalProgressChanged(uint downloadId, int value)"),
        QStringLiteral("void filesToDownloadTotalChanged(uint downloadId, int value)"),
        QStringLiteral("void completedDownloadFilesChanged(uint downloadId, int value)"),
        QStringLiteral("void downloadActiveChanged(uint downloadId, bool bValue)"),
        QStringLiteral("void anyDownloadActiveChanged(bool bValue)"),
        QStringLiteral("void downloadFinished(uint downloadId)"),
        QStringLiteral("void downloadErrorOccurred(uint downloadId, KorvoWebApi::DownloadError errorCode)"),
        QStringLiteral("void currentUserChanged(QString user)"),
        QStringLiteral("void loginResult(QString userName, KorvoWebApi::LoginResult loginResult)"),
        QStringLiteral("void loginStatusChanged()"),
        QStringLiteral("void projectInfoReceived(QList<ProjectInfo> projectInfoList)"),
        QStringLiteral("void uploadStatusInfoReceived(QList<UploadStatusInfo> uploadsStatusInfoList)"),
        QStringLiteral("void errorOccurred(Korvo::Web::Error error)"),
        QStringLiteral("void queryRemoteProjectsError(Korvo::Web::Error error)"),
        QStringLiteral("void singleFileDownloadLinkReceived(SingleMediaFileLinkData mediaDataLink)"),
        QStringLiteral("void allProjectsMediaDownloadLinkReceived(QList<SingleMediaFileLinkData> mediaDataLink)"),
        QStringLiteral("void loginExpired()"),
        QStringLiteral("void tokenAuthenticationNeeded()"),
    };
    QCOMPARE(declarations(QMetaMethod::Signal), expected);
}

void tst_KorvoWebApi::methodsCanBeInvokedByName()
{
    QStringList expected {
        QStringLiteral("void login(QString user, QString password)"),
        QStringLiteral("void cancelLogin()"),
        QStringLiteral("void logout()"),
        QStringLiteral("void resetPassword(QString user)"),
        QStringLiteral("void loginWithToken(QString tokenCode)"),
        QStringLiteral("void queryRemoteProjects()"),
        QStringLiteral("uint downloadProject(QString projectId, QString webProjectFolderName, QString downloadPath, "
                       "int maxSimultaneousDownloads)"),
        QStringLiteral("uint downloadProject(QString projectId, QString webProjectFolderName, QString downloadPath)"),
        QStringLiteral("void abortDownload(uint id)"),
        QStringLiteral("void pauseDownload(uint id)"),
        QStringLiteral("void resumeDownload(uint id)"),
        QStringLiteral("uint uploadProject(QString projectId, QString projectName, QString projectPath, "
                       "QDateTime projectCreationDate, int maxSimultaneousUploads)"),
        QStringLiteral("uint uploadProject(QString projectId, QString projectName, QString projectPath, "
                       "QDateTime projectCreationDate)"),
        QStringLiteral("uint uploadQZProject(QString projectName, QString projectPath, QDateTime projectCreationDate)"),
        QStringLiteral("uint uploadQuickviewProject(QUuid projectId, QString projectName, QString projectPath, "
                       "QDateTime projectCreationDate, MediaNamesList manholesMedia)"),
        QStringLiteral("void abortUpload(uint id)"),
        QStringLiteral("void pauseUpload(uint id)"),
        QStringLiteral("void resumeUpload(uint id)"),
        QStringLiteral("void queryUploadProjectStatus(QList<QString> projectId)"),
        QStringLiteral("void startSingleProjectFileDownload(QUuid projectId, QString fileName)"),
        QStringLiteral("void startAllProjectsMediaDownload(QString projectId)"),
        QStringLiteral("uint downloadQuickviewProjectData(QString projectId, QString outputFilePath)"),
        QStringLiteral("uint downloadQuickviewSurveyData(QString projectId, QString outputFilePath)"),
        QStringLiteral("uint downloadQuickviewManholeData(QString projectId, QString outputFilePath)"),
        QStringLiteral("uint downloadSingleProjectFile(QString filePath, QString url)"),
        QStringLiteral("QString currentUser()"),
        QStringLiteral("QString currentUserFirstName()"),
        QStringLiteral("QString currentUserLastName()"),
        QStringLiteral("QString currentUserCompanyId()"),
        QStringLiteral("UserRole currentUserRole()"),
        QStringLiteral("LoginStatus loginStatus()"),
        QStringLiteral("bool anyUploadActive()"),
        QStringLiteral("bool anyDownloadActive()"),
    };
    QStringList found = declarations(QMetaMethod::Method) + declarations(QMetaMethod::Slot);
    expected.sort();
    found.sort();
    QCOMPARE(found, expected);
}

void tst_KorvoWebApi::virtualFunctionsKeepTheirSlots()
{
#if defined(__GNUC__) && defined(__x86_64__)
    const QVector<int> slotsInOrder {
        tableSlot(&KorvoWebApi::login), tableSlot(&KorvoWebApi::cancelLogin), tableSlot(&KorvoWebApi::logout),
        tableSlot(&KorvoWebApi::resetPassword), tableSlot(&KorvoWebApi::queryRemoteProjects),
        tableSlot(&KorvoWebApi::downloadProject), tableSlot(&KorvoWebApi::abortDownload),
        tableSlot(&KorvoWebApi::pauseDownload), tableSlot(&KorvoWebApi::resumeDownload),
        tableSlot(&KorvoWebApi::uploadProject), tableSlot(&KorvoWebApi::uploadQZProject),
        tableSlot(&KorvoWebApi::uploadQuickviewProject), tableSlot(&KorvoWebApi::abortUpload),
        tableSlot(&KorvoWebApi::pauseUpload), tableSlot(&KorvoWebApi::resumeUpload),
        tableSlot(&KorvoWebApi::queryUploadProjectStatus), tableSlot(&KorvoWebApi::startSingleProjectFileDownload),
        tableSlot(&KorvoWebApi::startAllProjectsMediaDownload)
    };
    // Behind the functions of QObject, one after the other.
    QVector<int> expected;
    for (int i = 1; i <= slotsInOrder.size(); ++i)
        expected.append(Probe::lastSlotOfQObject() + i);
    QCOMPARE(slotsInOrder, expected);
    QCOMPARE(tableSlot(&KorvoWebApi::loginWithToken), -1);
    QCOMPARE(tableSlot(&KorvoWebApi::downloadQuickviewProjectData), -1);
    QCOMPARE(tableSlot(&KorvoWebApi::downloadSingleProjectFile), -1);
#endif
}

void tst_KorvoWebApi::stateAtTheStart()
{
    QCOMPARE(api->currentUser(), QString());
    QCOMPARE(api->currentUserFirstName(), QString());
    QCOMPARE(api->currentUserLastName(), QString());
    QCOMPARE(api->currentUserCompanyId(), QString());
    QCOMPARE(int(api->currentUserRole()), int(KorvoWebApi::UserRole::Guest));
    QCOMPARE(int(api->loginStatus()), int(KorvoWebApi::LoginStatus::LoginStatusLoggedOut));
    QVERIFY(!api->anyUploadActive());
    QVERIFY(!api->anyDownloadActive());
    QCOMPARE(api->property("loginStatus").toInt(), int(KorvoWebApi::LoginStatus::LoginStatusLoggedOut));
}

using Call = std::function<unsigned int(KorvoWebApi &)>;

void tst_KorvoWebApi::rejectedCallIsLoggedWithAllArguments_data()
{
    QTest::addColumn<Call>("call");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *tag, const Call &call, const char *message) {
        QTest::newRow(tag) << call << QString::fromUtf8(message);
    };
    const auto text = [](const char *utf8) { return QString::fromUtf8(utf8); };

    row("download, no project", [=](KorvoWebApi &a) { return a.downloadProject({}, text("f"), text("/d"), 2); },
        "Invalid parameter. Values passed in:\nprojectId: \nwebProjectFolderName: f\ndownloadPath: /d\n"
        "maxSimultaneousDownloads: 2\n");
    row("download, no folder name", [=](KorvoWebApi &a) { return a.downloadProject(text("p"), {}, text("/d"), 2); },
        "Invalid parameter. Values passed in:\nprojectId: p\nwebProjectFolderName: \ndownloadPath: /d\n"
        "maxSimultaneousDownloads: 2\n");
    row("download, no path", [=](KorvoWebApi &a) { return a.downloadProject(text("p"), text("f"), {}, 2); },
        "Invalid parameter. Values passed in:\nprojectId: p\nwebProjectFolderName: f\ndownloadPath: \n"
        "maxSimultaneousDownloads: 2\n");
    row("download, none at once", [=](KorvoWebApi &a) { return a.downloadProject(text("p"), text("f"), text("/d"), 0); },
        "Invalid parameter. Values passed in:\nprojectId: p\nwebProjectFolderName: f\ndownloadPath: /d\n"
        "maxSimultaneousDownloads: 0\n");
    row("download, place markers in the arguments",
        [=](KorvoWebApi &a) { return a.downloadProject(text("%2"), text("%1"), text("ä%3 %L1"), -7); },
        "Invalid parameter. Values passed in:\nprojectId: %2\nwebProjectFolderName: %1\ndownloadPath: ä%3 %L1\n"
        "maxSimultaneousDownloads: -7\n");
    row("Quickview project", [=](KorvoWebApi &a) { return a.downloadQuickviewProjectData({}, text("/o")); },
        "Invalid parameter. Values passed in:\nprojectId: \noutputFilePath: /o\n");
    row("Quickview survey", [=](KorvoWebApi &a) { return a.downloadQuickviewSurveyData(text("p"), {}); },
        "Invalid parameter. Values passed in:\nprojectId: p\noutputFilePath: \n");
    row("Quickview manhole", [=](KorvoWebApi &a) { return a.downloadQuickviewManholeData({}, {}); },
        "Invalid parameter. Values passed in:\nprojectId: \noutputFilePath: \n");
    row("single file, no path", [=](KorvoWebApi &a) { return a.downloadSingleProjectFile({}, text("https://x/%1")); },
        "Invalid parameter. Values passed in:\nfilePath: \nurl: https://x/%1\n");
    row("single file, no link", [=](KorvoWebApi &a) { return a.downloadSingleProjectFile(text("/o"), {}); },
        "Invalid parameter. Values passed in:\nfilePath: /o\nurl: \n");
    row("upload, no project", [=](KorvoWebApi &a) { return a.uploadProject({}, text("n"), text("/p"), DATE, 3); },
        "Invalid parameter(s). Values passed in: \nprojectId: \nprojectName: n\nprojectPath: /p\n"
        "projectCreationDate: 2026-03-03T14:05:09.000Z\nmaxSimultaneousUploads: 3\n");
    row("upload, no name", [=](KorvoWebApi &a) { return a.uploadProject(text("i"), {}, text("/p"), DATE, 3); },
        "Invalid parameter(s). Values passed in: \nprojectId: i\nprojectName: \nprojectPath: /p\n"
        "projectCreationDate: 2026-03-03T14:05:09.000Z\nmaxSimultaneousUploads: 3\n");
    row("upload, no path", [=](KorvoWebApi &a) { return a.uploadProject(text("i"), text("n"), {}, DATE, 3); },
        "Invalid parameter(s). Values passed in: \nprojectId: i\nprojectName: n\nprojectPath: \n"
        "projectCreationDate: 2026-03-03T14:05:09.000Z\nmaxSimultaneousUploads: 3\n");
    row("upload, no date", [=](KorvoWebApi &a) { return a.uploadProject(text("i"), text("n"), text("/p"), {}, 3); },
        "Invalid parameter(s). Values passed in: \nprojectId: i\nprojectName: n\nprojectPath: /p\n"
        "projectCreationDate: \nmaxSimultaneousUploads: 3\n");
    row("upload, none at once", [=](KorvoWebApi &a) { return a.uploadProject(text("i"), text("n"), text("/p"), DATE, 0); },
        "Invalid parameter(s). Values passed in: \nprojectId: i\nprojectName: n\nprojectPath: /p\n"
        "projectCreationDate: 2026-03-03T14:05:09.000Z\nmaxSimultaneousUploads: 0\n");
    row("upload, fewer than none", [=](KorvoWebApi &a) { return a.uploadProject(text("i"), text("n"), text("/p"), DATE, -1); },
        "Invalid parameter(s). Values passed in: \nprojectId: i\nprojectName: n\nprojectPath: /p\n"
        "projectCreationDate: 2026-03-03T14:05:09.000Z\nmaxSimultaneousUploads: -1\n");
    row("upload, place markers in the arguments",
        [=](KorvoWebApi &a) { return a.uploadProject(text("%5"), text("%1 %2"), {}, DATE, 1); },
        "Invalid parameter(s). Values passed in: \nprojectId: %5\nprojectName: %1 %2\nprojectPath: \n"
        "projectCreationDate: 2026-03-03T14:05:09.000Z\nmaxSimultaneousUploads: 1\n");
}

void tst_KorvoWebApi::rejectedCallIsLoggedWithAllArguments()
{
    QFETCH(Call, call);
    QFETCH(QString, message);
    QCOMPARE(call(*api), 0u);
    const QList<LogEntry> entries = log->entries();
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries.first().level, 1);
    QCOMPARE(entries.first().category, QStringLiteral("KorvoWeb"));
    QCOMPARE(entries.first().message, message);
    QCOMPARE(entries.first().arguments, QList<QVariant>());
    QCOMPARE(recorder->names(), QByteArrayList { "errorOccurred" });
    QCOMPARE(recorder->errors(), QList<Error> { Error::InvalidParameter });
}

void tst_KorvoWebApi::rejectionIsToldInsideTheCall()
{
    QStringList order;
    connect(api.data(), &KorvoWebApi::errorOccurred, this, [&] {
        order.append(QStringLiteral("logged: %1, told").arg(log->count()));
        QCOMPARE(QThread::currentThread(), thread());
    });
    api->downloadProject({}, {}, {}, 1);
    order.append(QStringLiteral("returned"));
    QCOMPARE(order, QStringList({ QStringLiteral("logged: 1, told"), QStringLiteral("returned") }));
}

void tst_KorvoWebApi::rejectedCallReachesNobody()
{
    api->downloadProject(QStringLiteral("p"), QStringLiteral("f"), folder->filePath(QStringLiteral("new")), 0);
    api->uploadProject(QStringLiteral("p"), QString(), folder->path(), DATE);
    // A call that does something follows the rejected ones through the worker.
    api->logout();
    QVERIFY(recorder->waitFor("loginStatusChanged"));
    QCOMPARE(recorder->names(), QByteArrayList({ "errorOccurred", "errorOccurred", "loginStatusChanged" }));
    QVERIFY(!QFileInfo::exists(folder->filePath(QStringLiteral("new"))));
}

void tst_KorvoWebApi::missingLastArgumentCountsAsOne_data()
{
    QTest::addColumn<bool>("isUpload");
    QTest::newRow("download") << false;
    QTest::newRow("upload") << true;
}

void tst_KorvoWebApi::missingLastArgumentCountsAsOne()
{
    QFETCH(bool, isUpload);
    const QString empty;
    const QString text = QStringLiteral("x");
    uint id = 99;
    const bool invoked = isUpload
        ? QMetaObject::invokeMethod(api.data(), "uploadProject", Q_RETURN_ARG(uint, id), Q_ARG(QString, empty),
                                    Q_ARG(QString, text), Q_ARG(QString, text), Q_ARG(QDateTime, DATE))
        : QMetaObject::invokeMethod(api.data(), "downloadProject", Q_RETURN_ARG(uint, id), Q_ARG(QString, empty),
                                    Q_ARG(QString, text), Q_ARG(QString, text));
    QVERIFY(invoked);
    QCOMPARE(id, 0u);
    const QString lastLine = isUpload ? QStringLiteral("maxSimultaneousUploads: 1\n")
                                      : QStringLiteral("maxSimultaneousDownloads: 1\n");
    QVERIFY(log->messages().value(0).endsWith(lastLine));
}

void tst_KorvoWebApi::idsOfDownloadsAndUploadsCountApart()
{
    const QString text = QStringLiteral("x");
    const QString file = folder->filePath(QStringLiteral("a"));
    QCOMPARE(api->downloadProject(text, text, folder->path()), 1u);
    QCOMPARE(api->uploadProject(text, text, folder->path(), DATE), 1u);
    QCOMPARE(api->downloadQuickviewProjectData(text, file), 2u);
    QCOMPARE(api->downloadQuickviewSurveyData(text, file), 3u);
    QCOMPARE(api->downloadQuickviewManholeData(text, file), 4u);
    QCOMPARE(api->downloadSingleProjectFile(file, QStringLiteral("https://x.example/")), 5u);
    QCOMPARE(api->uploadQZProject(text, folder->path(), DATE), 2u);
    QCOMPARE(api->uploadQuickviewProject(QUuid::createUuid(), text, folder->path(), DATE, {}), 3u);
    QCOMPARE(api->downloadProject(text, text, folder->path()), 6u);
}

void tst_KorvoWebApi::rejectedCallTakesNoId()
{
    const QString text = QStringLiteral("x");
    QCOMPARE(api->downloadProject(text, text, folder->path()), 1u);
    QCOMPARE(api->downloadProject(text, text, folder->path(), 0), 0u);
    QCOMPARE(api->downloadSingleProjectFile(text, {}), 0u);
    QCOMPARE(api->downloadProject(text, text, folder->path()), 2u);
    QCOMPARE(api->uploadProject(text, text, folder->path(), DATE), 1u);
    QCOMPARE(api->uploadProject(text, text, folder->path(), {}), 0u);
    QCOMPARE(api->uploadProject(text, text, folder->path(), DATE), 2u);
}

void tst_KorvoWebApi::uncheckedUploadsAlwaysGetAnId()
{
    QCOMPARE(api->uploadQZProject({}, {}, {}), 1u);
    QCOMPARE(api->uploadQuickviewProject({}, {}, {}, {}, {}), 2u);
    QCOMPARE(recorder->names(), QByteArrayList());
    // What is wrong with them comes out later.
    QTRY_COMPARE_WITH_TIMEOUT(recorder->count("errorOccurred"), 2, 10000);
    QVERIFY(!recorder->errors().contains(Error::InvalidParameter));
}

void tst_KorvoWebApi::dateThatIsInvalidButNotNullPasses()
{
    const QDateTime invalid(QDate(), QTime(1, 2, 3), Qt::UTC);
    QVERIFY(!invalid.isValid() && !invalid.isNull());
    QCOMPARE(api->uploadProject(QStringLiteral("i"), QStringLiteral("n"), folder->path(), invalid), 1u);
}

void tst_KorvoWebApi::transferErrorSignalsAreNeverEmitted()
{
    const QString text = QStringLiteral("x");
    api->downloadProject(text, text, folder->path());
    api->uploadProject(text, text, folder->path(), DATE);
    api->uploadProject({}, text, folder->path(), DATE);
    api->downloadSingleProjectFile(folder->filePath(text), QStringLiteral("https://x.example/"));
    QVERIFY(recorder->waitFor("downloadFinished", 2));
    QVERIFY(recorder->waitFor("uploadActiveChanged", 2));
    QVERIFY(recorder->count("errorOccurred") >= 4);
    QCOMPARE(recorder->count("uploadErrorOccurred"), 0);
    QCOMPARE(recorder->count("downloadErrorOccurred"), 0);
}

void tst_KorvoWebApi::severalObjectsCountTheirOwnIds()
{
    KorvoWebApi other;
    const QString text = QStringLiteral("x");
    QCOMPARE(api->downloadProject(text, text, folder->path()), 1u);
    QCOMPARE(other.downloadProject(text, text, folder->path()), 1u);
}

void tst_KorvoWebApi::constructionSurvivesAThreadThatCannotStart()
{
#ifdef __GLIBC__
    // No thread gets a stack of that size.
    pthread_attr_t usual;
    pthread_attr_t impossible;
    QCOMPARE(pthread_getattr_default_np(&usual), 0);
    QCOMPARE(pthread_attr_init(&impossible), 0);
    QCOMPARE(pthread_attr_setstacksize(&impossible, std::size_t(1) << 46), 0);
    QCOMPARE(pthread_setattr_default_np(&impossible), 0);
    QTest::ignoreMessage(QtSystemMsg, QRegularExpression(QStringLiteral("QThread::start: Thread creation error")));
    QScopedPointer<KorvoWebApi> crippled(new KorvoWebApi);
    QCOMPARE(pthread_setattr_default_np(&usual), 0);
    pthread_attr_destroy(&impossible);
    pthread_attr_destroy(&usual);

    QCOMPARE(log->count(), 1);
    QCOMPARE(log->entries().first().level, 1);
    QCOMPARE(log->entries().first().category, QStringLiteral("KorvoWeb"));
    QCOMPARE(log->entries().first().message, QStringLiteral("Failed to start WebApi worker thread."));
    QCOMPARE(log->entries().first().arguments, QList<QVariant>());

    // No call has any effect, and none does harm.
    crippled->login(QStringLiteral("ida"), QStringLiteral("secret"));
    crippled->logout();
    QCOMPARE(int(crippled->loginStatus()), int(KorvoWebApi::LoginStatus::LoginStatusLoggedOut));
    QCOMPARE(crippled->currentUser(), QString());
    QVERIFY(!crippled->anyUploadActive());
    QCOMPARE(crippled->downloadProject(QStringLiteral("p"), QStringLiteral("f"), folder->path()), 1u);
    crippled.reset();
#endif
}

QTEST_GUILESS_MAIN(tst_KorvoWebApi)

#include "tst_KorvoWebApi.moc"
