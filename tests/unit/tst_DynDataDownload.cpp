#include "transfer/QuickviewDownloads.h"

#include "FileSizeLimit.h"
#include "TransferPlatform.h"
#include "support/LogCapture.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QPointer>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;
using NetworkError = QNetworkReply::NetworkError;

namespace {

const QString COMPLETED = QStringLiteral("completed");
const QByteArray DATA_PATH = "/api/Projects/data-id/Quickview";

QString errorLine(int error)
{
    return QStringLiteral("error %1").arg(error);
}

/// A reply without a network: it brings what it is told and ends as it is told, an abort or no abort.
class ToldReply : public QNetworkReply
{
public:
    ToldReply() { open(QIODevice::ReadOnly | QIODevice::Unbuffered); }

    void bring(const QByteArray &data)
    {
        waiting += data;
        Q_EMIT readyRead();
    }
    void end(NetworkError error)
    {
        if (error != NoError)
            setError(error, QStringLiteral("told to"));
        setFinished(true);
        Q_EMIT finished();
    }
    void abort() override { ++aborts; }
    qint64 bytesAvailable() const override { return waiting.size() + QNetworkReply::bytesAvailable(); }

    int aborts = 0;

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        const qint64 size = qMin(maxSize, qint64(waiting.size()));
        std::copy_n(waiting.cbegin(), size, data);
        waiting.remove(0, int(size));
        return size;
    }

private:
    QByteArray waiting;
};

/// A download whose reply is the test's.
class ToldDownload : public DynDataDownload
{
public:
    using DynDataDownload::DynDataDownload;
    void sendRequest() override
    {
        told = new ToldReply;
        ++requests;
        attachReply(told);
    }

    QPointer<ToldReply> told;
    int requests = 0;
};

/// A download into a folder of its own, and a journal of what it says.
template <class Job>
struct DataScene
{
    template <class... Arguments>
    explicit DataScene(const Arguments &...arguments)
        : job(new Job(&platform.communicator, ID, arguments...))
    {
        QObject::connect(job, &AbstractDownload::downloadCompleted, job, [this](int id) { note(id, COMPLETED); });
        QObject::connect(job, &AbstractDownload::errorOccurred, job,
                         [this](int id, Error error) { note(id, errorLine(int(error))); });
        QObject::connect(job, &AbstractDownload::totalDownloadProgressChanged, job,
                         [this](int id) { note(id, QStringLiteral("progress")); });
        QObject::connect(job, &AbstractDownload::fileDownloadProgressChanged, job,
                         [this](int id) { note(id, QStringLiteral("progress")); });
    }
    ~DataScene() { delete job; }

    bool start()
    {
        const bool isStarted = job->start(path(), QStringLiteral("data-id"));
        if (isStarted)
            job->sendRequest();
        return isStarted;
    }

    QString path() const { return folder.filePath(QStringLiteral("deep/er/data.xml")); }
    bool isFileThere() const { return QFileInfo::exists(path()); }
    QByteArray content() const
    {
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }

    // Each waits for what it says, and says whether it came.
    bool completes() const { return waitUntil([this] { return journal.contains(COMPLETED); }); }
    bool hasOnDisk(qint64 bytes) const { return waitUntil([=] { return QFileInfo(path()).size() >= bytes; }); }
    bool receives(const QByteArray &requestPath, int count = 1) const
    {
        return waitUntil([&] { return platform.server.requestCount(requestPath) >= count; })
               && platform.server.requestCount(requestPath) == count;
    }
    /// Until nothing that was posted is left to be done.
    static void settle() { waitUntil([looks = 0]() mutable { return ++looks > 20; }); }

    static constexpr int ID = 11;
    QTemporaryDir folder;
    LogCapture log;
    TransferPlatform platform;
    QPointer<Job> job;
    QStringList journal;

private:
    void note(int id, const QString &text) { journal.append(id == ID ? text : QStringLiteral("wrong id: ") + text); }
};

using ProjectScene = DataScene<QuickviewProjectDataDownload>;
using LinkScene = DataScene<QuickviewProjectSingleFileDownload>;
using ToldScene = DataScene<ToldDownload>;

} // namespace

class tst_DynDataDownload : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The start
    void startMakesFolderAndFile();
    void startEmptiesAFileThatIsThere();
    void fileIsResolvedOnce();
    void folderThatCannotBeMadeIsReported();
    void fileThatCannotBeOpenedIsReported();

    // The four requests
    void projectDataIsAskedFor();
    void surveyDataIsAskedFor();
    void manholeDataIsAskedFor();
    void linkIsFetchedWithoutCredentials();
    void linkMayLeadOn();
    void linkNeverLeadsToLessSafety();
    void endlessRedirectsEnd();
    void badLinkEnds_data();
    void badLinkEnds();

    // How it ends
    void wholeBodyArrives_data();
    void wholeBodyArrives();
    void bodyIsWrittenAsItArrives();
    void errorOfTheReplyIsMapped_data();
    void errorOfTheReplyIsMapped();
    void statusIsMapped_data();
    void statusIsMapped();
    void cutOffBodyIsKeptAndReported_data();
    void cutOffBodyIsKeptAndReported();
    void failedWriteIsReportedBeforeTheEnd_data();
    void failedWriteIsReportedBeforeTheEnd();
    void failedWriteComesBehindTheNetworkError();

    // Pause, resume, abort
    void pauseThrowsAwayWhatHasArrived();
    void resumeStartsOver();
    void replyThatEndsWellAfterAPauseIsDiscarded_data();
    void replyThatEndsWellAfterAPauseIsDiscarded();
    void repeatedOperationsDoNothing_data();
    void repeatedOperationsDoNothing();
    void resumeThatCannotStartEnds_data();
    void resumeThatCannotStartEnds();
    void abortInsideAnErrorIsSafe();
    void deletionInFlightIsSilent();
    void finishedJobIsDeleted();
};

// The start

void tst_DynDataDownload::startMakesFolderAndFile()
{
    ToldScene scene;
    QVERIFY(scene.start());
    QCOMPARE(scene.content(), QByteArray());
    QVERIFY(scene.isFileThere());
    QCOMPARE(scene.journal, QStringList());
}

void tst_DynDataDownload::startEmptiesAFileThatIsThere()
{
    ToldScene scene;
    QVERIFY(QDir().mkpath(QFileInfo(scene.path()).absolutePath()));
    QFile file(scene.path());
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.write("a longer text from before") > 0);
    file.close();
    QVERIFY(scene.start());
    scene.job->told->bring("new");
    scene.job->told->end(QNetworkReply::NoError);
    QCOMPARE(scene.content(), QByteArray("new"));
}

void tst_DynDataDownload::fileIsResolvedOnce()
{
    ToldScene scene;
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(scene.folder.path()));
    const bool isStarted = scene.job->start(QStringLiteral("deep/er/data.xml"), QString());
    QVERIFY(QDir::setCurrent(before));
    QVERIFY(isStarted);
    scene.job->sendRequest();
    scene.job->pause();
    scene.job->told->end(QNetworkReply::OperationCanceledError);
    scene.job->resume();
    scene.job->told->bring("data");
    scene.job->told->end(QNetworkReply::NoError);
    QCOMPARE(scene.content(), QByteArray("data"));
}

void tst_DynDataDownload::folderThatCannotBeMadeIsReported()
{
    ToldScene scene;
    QFile inTheWay(scene.folder.filePath(QStringLiteral("deep")));
    QVERIFY(inTheWay.open(QIODevice::WriteOnly));
    QVERIFY(!scene.start());
    QCOMPARE(scene.journal, QStringList{errorLine(8)});
    QCOMPARE(scene.log.messages(), QStringList{QStringLiteral("Could not create download path: \"")
                                               + scene.folder.filePath(QStringLiteral("deep/er")) + QLatin1Char('"')});
    QCOMPARE(scene.log.entries().first().level, 1);
    QCOMPARE(scene.log.entries().first().category, QStringLiteral("KorvoWeb"));
}

void tst_DynDataDownload::fileThatCannotBeOpenedIsReported()
{
    ToldScene scene;
    QVERIFY(QDir().mkpath(scene.path()));
    QVERIFY(!scene.start());
    QCOMPARE(scene.journal, QStringList{errorLine(6)});
    QCOMPARE(scene.log.messages(),
             QStringList{QStringLiteral("Could not open output file: \"") + scene.path() + QLatin1Char('"')});
    QCOMPARE(scene.log.entries().first().level, 1);
    QCOMPARE(scene.log.entries().first().category, QStringLiteral("KorvoWeb"));
}

// The four requests

namespace {

template <class Job>
void askFor(const QByteArray &path)
{
    DataScene<Job> scene;
    scene.platform.server.always(path, ScriptedAnswer::ok("<data/>"));
    QVERIFY(scene.start());
    QVERIFY(scene.completes());
    QCOMPARE(scene.journal, QStringList{COMPLETED});
    QCOMPARE(scene.content(), QByteArray("<data/>"));
    const RecordedRequest request = scene.platform.server.lastRequest();
    QCOMPARE(scene.platform.server.requestCount(), 1);
    QCOMPARE(request.method, QByteArray("GET"));
    QCOMPARE(request.url(), QByteArray("https://web.korvo.example" + path));
    QCOMPARE(request.header("Accept"), QByteArray("application/xml"));
    QCOMPARE(request.header("Accept-Encoding"), QByteArray("identity"));
    QVERIFY(request.hasHeader("Authorization"));
}

} // namespace

void tst_DynDataDownload::projectDataIsAskedFor()
{
    askFor<QuickviewProjectDataDownload>("/api/Projects/data-id/Quickview");
}

void tst_DynDataDownload::surveyDataIsAskedFor()
{
    askFor<QuickviewSurveyDataDownload>("/api/Projects/data-id/Quickview/Surveys");
}

void tst_DynDataDownload::manholeDataIsAskedFor()
{
    askFor<QuickviewManholeDataDownload>("/api/Projects/data-id/Quickview/Manholes");
}

void tst_DynDataDownload::linkIsFetchedWithoutCredentials()
{
    LinkScene scene(QStringLiteral("https://web.korvo.example/files/a%20b.mp4?signature=x%2By"));
    scene.platform.server.always("/files/a%20b.mp4", ScriptedAnswer::ok("film"));
    QVERIFY(scene.start());
    QVERIFY(scene.completes());
    QCOMPARE(scene.content(), QByteArray("film"));
    const RecordedRequest request = scene.platform.server.lastRequest();
    QCOMPARE(request.method, QByteArray("GET"));
    QCOMPARE(request.target, QByteArray("/files/a%20b.mp4?signature=x%2By"));
    QCOMPARE(request.header("Accept-Encoding"), QByteArray("identity"));
    for (const char *name : {"Authorization", "X-KorvoService-ClientId", "X-KorvoService-MessageToken", "Cookie"})
        QVERIFY2(!request.hasHeader(name), name);
}

void tst_DynDataDownload::linkMayLeadOn()
{
    LinkScene scene(QStringLiteral("https://web.korvo.example/link"));
    scene.platform.server.always("/link", ScriptedAnswer::redirect("https://service.korvo.example/file"));
    scene.platform.server.always("/file", ScriptedAnswer::ok("film"));
    QVERIFY(scene.start());
    QVERIFY(scene.completes());
    QCOMPARE(scene.journal, QStringList{COMPLETED});
    QCOMPARE(scene.content(), QByteArray("film"));
}

void tst_DynDataDownload::linkNeverLeadsToLessSafety()
{
    LinkScene scene(QStringLiteral("https://web.korvo.example/link"));
    scene.platform.server.always("/link", ScriptedAnswer::redirect(scene.platform.server.plainRoot() + "/file"));
    scene.platform.server.always("/file", ScriptedAnswer::ok("film"));
    QVERIFY(scene.start());
    QVERIFY(scene.completes());
    QCOMPARE(scene.journal, (QStringList{errorLine(14), COMPLETED}));
    QCOMPARE(scene.content(), QByteArray());
    QCOMPARE(scene.platform.server.requestCount("/file"), 0);
}

void tst_DynDataDownload::endlessRedirectsEnd()
{
    LinkScene scene(QStringLiteral("https://web.korvo.example/link"));
    scene.platform.server.always("/link", ScriptedAnswer::redirect("https://web.korvo.example/link"));
    QVERIFY(scene.start());
    QVERIFY(scene.completes());
    QCOMPARE(scene.journal, (QStringList{errorLine(14), COMPLETED}));
}

void tst_DynDataDownload::badLinkEnds_data()
{
    QTest::addColumn<QString>("link");
    QTest::newRow("nothing") << "";
    QTest::newRow("local file") << "file:///etc/passwd";
    QTest::newRow("another protocol") << "ftp://web.korvo.example/a";
    QTest::newRow("data") << "data:text/plain,abc";
    QTest::newRow("resource") << "qrc:/a";
    QTest::newRow("no protocol") << "web.korvo.example/a";
    QTest::newRow("protocol alone") << "https:";
    QTest::newRow("not an address") << "https://[::1/a b";
    QTest::newRow("local path") << "/etc/passwd";
}

void tst_DynDataDownload::badLinkEnds()
{
    QFETCH(QString, link);
    LinkScene scene(link);
    QVERIFY(scene.start());
    QVERIFY(scene.completes());
    QCOMPARE(scene.journal, (QStringList{errorLine(14), COMPLETED}));
    QCOMPARE(scene.content(), QByteArray());
    QCOMPARE(scene.platform.server.requestCount(), 0);
}

// How it ends

void tst_DynDataDownload::wholeBodyArrives_data()
{
    QTest::addColumn<ScriptedAnswer>("answer");
    QTest::addColumn<QByteArray>("content");
    const QByteArray large = patternOf(3000000);
    QTest::newRow("small") << ScriptedAnswer::ok("<data/>") << QByteArray("<data/>");
    QTest::newRow("empty") << ScriptedAnswer::ok() << QByteArray();
    QTest::newRow("no content") << ScriptedAnswer(204) << QByteArray();
    QTest::newRow("large") << ScriptedAnswer::ok(large) << large;
    QTest::newRow("without a length") << ScriptedAnswer::ok(large).withoutLength() << large;
    QTest::newRow("zero bytes inside") << ScriptedAnswer::ok(QByteArray("a\0b\r\nc", 6)) << QByteArray("a\0b\r\nc", 6);
}

void tst_DynDataDownload::wholeBodyArrives()
{
    QFETCH(ScriptedAnswer, answer);
    QFETCH(QByteArray, content);
    ProjectScene scene;
    scene.platform.server.always(DATA_PATH, answer);
    QVERIFY(scene.start());
    QVERIFY(scene.completes());
    QCOMPARE(scene.journal, QStringList{COMPLETED});
    QVERIFY(scene.content() == content);
    QCOMPARE(scene.log.messages(), QStringList());
}

void tst_DynDataDownload::bodyIsWrittenAsItArrives()
{
    ProjectScene scene;
    const QByteArray content = patternOf(2000000);
    scene.platform.server.always(DATA_PATH, ScriptedAnswer::ok(content).pausedAt(1000000));
    QVERIFY(scene.start());
    QVERIFY(scene.hasOnDisk(900000));
    QCOMPARE(scene.journal, QStringList());
    scene.platform.server.release();
    QVERIFY(scene.completes());
    QVERIFY(scene.content() == content);
}

void tst_DynDataDownload::errorOfTheReplyIsMapped_data()
{
    QTest::addColumn<NetworkError>("networkError");
    QTest::addColumn<int>("error");
    QTest::newRow("time-out") << QNetworkReply::TimeoutError << 1;
    QTest::newRow("unknown") << QNetworkReply::UnknownNetworkError << 14;
    QTest::newRow("cancelled by somebody else") << QNetworkReply::OperationCanceledError << 4;
    QTest::newRow("authentication required") << QNetworkReply::AuthenticationRequiredError << 3;
    QTest::newRow("internal server error") << QNetworkReply::InternalServerError << 2;
    QTest::newRow("connection refused") << QNetworkReply::ConnectionRefusedError << 14;
    QTest::newRow("connection closed") << QNetworkReply::RemoteHostClosedError << 14;
    QTest::newRow("host not found") << QNetworkReply::HostNotFoundError << 14;
    QTest::newRow("no trust") << QNetworkReply::SslHandshakeFailedError << 14;
    QTest::newRow("proxy") << QNetworkReply::ProxyAuthenticationRequiredError << 14;
    QTest::newRow("not found") << QNetworkReply::ContentNotFoundError << 14;
    QTest::newRow("unknown server error") << QNetworkReply::UnknownServerError << 14;
    QTest::newRow("unknown protocol") << QNetworkReply::ProtocolUnknownError << 14;
}

void tst_DynDataDownload::errorOfTheReplyIsMapped()
{
    QFETCH(NetworkError, networkError);
    QFETCH(int, error);
    ToldScene scene;
    QVERIFY(scene.start());
    scene.job->told->bring("half of ");
    scene.job->told->bring("the data");
    scene.job->told->end(networkError);
    QCOMPARE(scene.journal, (QStringList{errorLine(error), COMPLETED}));
    QCOMPARE(scene.content(), QByteArray("half of the data"));
    ToldScene::settle();
    QVERIFY(!scene.job->told);
}

void tst_DynDataDownload::statusIsMapped_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("error");
    QTest::newRow("401") << 401 << 3;
    QTest::newRow("500") << 500 << 2;
    for (const int status : {301, 302, 304, 307, 400, 403, 404, 405, 408, 409, 410, 418, 429, 501, 502, 503, 504, 505})
        QTest::addRow("%d", status) << status << 14;
}

void tst_DynDataDownload::statusIsMapped()
{
    QFETCH(int, status);
    QFETCH(int, error);
    ProjectScene scene;
    ScriptedAnswer answer(status, status == 304 ? QByteArray() : QByteArray("<html>no</html>"));
    if (status / 100 == 3)
        answer.withHeader("Location", "https://web.korvo.example/elsewhere");
    scene.platform.server.always(DATA_PATH, answer);
    QVERIFY(scene.start());
    QVERIFY(scene.completes());
    QCOMPARE(scene.journal, (QStringList{errorLine(error), COMPLETED}));
    QVERIFY(scene.isFileThere());
    QCOMPARE(scene.content(), QByteArray()); // the text of a refusal is not the data
    QCOMPARE(scene.platform.server.requestCount(), 1);
}

void tst_DynDataDownload::cutOffBodyIsKeptAndReported_data()
{
    QTest::addColumn<ScriptedAnswer>("answer");
    QTest::addColumn<int>("kept");
    const QByteArray content = patternOf(300000);
    QTest::newRow("behind the head") << ScriptedAnswer::ok(content).closedAt(0) << 0;
    QTest::newRow("inside the body") << ScriptedAnswer::ok(content).closedAt(200000) << 200000;
    QTest::newRow("before the last byte") << ScriptedAnswer::ok(content).closedAt(299999) << 299999;
    QTest::newRow("before the head") << ScriptedAnswer::dropped() << 0;
}

void tst_DynDataDownload::cutOffBodyIsKeptAndReported()
{
    QFETCH(ScriptedAnswer, answer);
    QFETCH(int, kept);
    ProjectScene scene;
    scene.platform.server.always(DATA_PATH, answer);
    QVERIFY(scene.start());
    QVERIFY(scene.completes());
    QCOMPARE(scene.journal, (QStringList{errorLine(14), COMPLETED}));
    QVERIFY(scene.content() == patternOf(300000).left(kept));
}

void tst_DynDataDownload::failedWriteIsReportedBeforeTheEnd_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<int>("limit");
    QTest::newRow("in the middle") << 1000000 << 300000;
    QTest::newRow("at the flush") << 9000 << 4096;
}

void tst_DynDataDownload::failedWriteIsReportedBeforeTheEnd()
{
    QFETCH(int, bytes);
    QFETCH(int, limit);
    ProjectScene scene;
    scene.platform.server.always(DATA_PATH, ScriptedAnswer::ok(patternOf(bytes)));
    const FileSizeLimit fullDisk{quint64(limit)};
    QVERIFY(scene.start());
    QVERIFY(scene.completes());
    QCOMPARE(scene.journal, (QStringList{errorLine(10), COMPLETED}));
    QCOMPARE(scene.log.messages(),
             QStringList{QStringLiteral("Error while writing to file: \"") + scene.path() + QStringLiteral("\" ")});
}

void tst_DynDataDownload::failedWriteComesBehindTheNetworkError()
{
    ToldScene scene;
    const FileSizeLimit fullDisk{100};
    QVERIFY(scene.start());
    scene.job->told->bring(patternOf(100000));
    scene.job->told->end(QNetworkReply::TimeoutError);
    QCOMPARE(scene.journal, (QStringList{errorLine(1), errorLine(10), COMPLETED}));
}

// Pause, resume, abort

void tst_DynDataDownload::pauseThrowsAwayWhatHasArrived()
{
    ProjectScene scene;
    scene.platform.server.always(DATA_PATH, ScriptedAnswer::ok(patternOf(300000)).pausedAt(200000));
    QVERIFY(scene.start());
    QVERIFY(scene.hasOnDisk(150000));
    scene.job->pause();
    QVERIFY(!scene.isFileThere());
    scene.platform.server.release();
    ProjectScene::settle();
    QVERIFY(!scene.isFileThere());
    QCOMPARE(scene.journal, QStringList());
}

void tst_DynDataDownload::resumeStartsOver()
{
    ProjectScene scene;
    scene.platform.server.enqueue(DATA_PATH, ScriptedAnswer::ok(patternOf(300000, 1)).pausedAt(200000));
    scene.platform.server.always(DATA_PATH, ScriptedAnswer::ok("a short text now"));
    QVERIFY(scene.start());
    QVERIFY(scene.hasOnDisk(150000));
    scene.job->pause();
    scene.job->resume();
    QVERIFY(scene.completes());
    QCOMPARE(scene.content(), QByteArray("a short text now"));
    QCOMPARE(scene.journal, QStringList{COMPLETED});
    QVERIFY(scene.receives(DATA_PATH, 2));
}

void tst_DynDataDownload::replyThatEndsWellAfterAPauseIsDiscarded_data()
{
    QTest::addColumn<bool>("isAborted");
    QTest::addColumn<NetworkError>("networkError");
    QTest::newRow("pause, no error") << false << QNetworkReply::NoError;
    QTest::newRow("pause, cancelled") << false << QNetworkReply::OperationCanceledError;
    QTest::newRow("pause, another error") << false << QNetworkReply::TimeoutError;
    QTest::newRow("abort, no error") << true << QNetworkReply::NoError;
    QTest::newRow("abort, another error") << true << QNetworkReply::InternalServerError;
}

void tst_DynDataDownload::replyThatEndsWellAfterAPauseIsDiscarded()
{
    QFETCH(bool, isAborted);
    QFETCH(NetworkError, networkError);
    ToldScene scene;
    QVERIFY(scene.start());
    scene.job->told->bring("data");
    if (isAborted)
        scene.job->abort();
    else
        scene.job->pause();
    QCOMPARE(scene.job->told->aborts, 1);
    scene.job->told->bring("more data");
    scene.job->told->end(networkError);
    QVERIFY(!scene.isFileThere());
    QCOMPARE(scene.journal, QStringList());
    ToldScene::settle();
    QVERIFY(!scene.job->told);
}

void tst_DynDataDownload::repeatedOperationsDoNothing_data()
{
    QTest::addColumn<QString>("operations");
    QTest::addColumn<int>("requests");
    QTest::addColumn<bool>("goesOn");
    QTest::newRow("resume") << "r" << 1 << true;
    QTest::newRow("resume twice") << "rr" << 1 << true;
    QTest::newRow("pause twice") << "pp" << 1 << false;
    QTest::newRow("abort twice") << "aa" << 1 << false;
    QTest::newRow("pause, abort") << "pa" << 1 << false;
    QTest::newRow("abort, pause") << "ap" << 1 << false;
    QTest::newRow("abort, resume") << "ar" << 1 << false;
    QTest::newRow("pause, abort, resume") << "par" << 1 << false;
    QTest::newRow("abort, pause, resume") << "apr" << 1 << false;
    QTest::newRow("pause, resume") << "pr" << 2 << true;
    QTest::newRow("pause, resume twice") << "prr" << 2 << true;
    QTest::newRow("pause and resume twice") << "prpr" << 3 << true;
    QTest::newRow("pause, resume, pause") << "prp" << 2 << false;
}

void tst_DynDataDownload::repeatedOperationsDoNothing()
{
    QFETCH(QString, operations);
    QFETCH(int, requests);
    QFETCH(bool, goesOn);
    ProjectScene scene;
    scene.platform.server.always(DATA_PATH, ScriptedAnswer::held("<data/>"));
    QVERIFY(scene.start());
    QVERIFY(scene.receives(DATA_PATH));
    int sent = 1;
    bool isPaused = false;
    bool isAborted = false;
    for (const QChar operation : operations) {
        if (operation == QLatin1Char('r')) {
            sent += isPaused && !isAborted ? 1 : 0;
            isPaused = false;
            scene.job->resume();
            QVERIFY(scene.receives(DATA_PATH, sent));
        } else if (operation == QLatin1Char('p')) {
            isPaused = true;
            scene.job->pause();
        } else {
            isAborted = true;
            scene.job->abort();
        }
    }
    scene.platform.server.release();
    if (goesOn)
        QVERIFY(scene.completes());
    ProjectScene::settle();
    QCOMPARE(scene.journal, goesOn ? QStringList{COMPLETED} : QStringList());
    QCOMPARE(scene.content(), goesOn ? QByteArray("<data/>") : QByteArray("no file"));
    QCOMPARE(scene.platform.server.requestCount(), requests);
}

void tst_DynDataDownload::resumeThatCannotStartEnds_data()
{
    QTest::addColumn<QString>("inTheWay"); // a file here, or a folder if it ends with a separator
    QTest::addColumn<int>("error");
    QTest::newRow("a folder where the file goes") << "deep/er/data.xml/" << 6;
    QTest::newRow("a file where the folder goes") << "deep" << 8;
}

void tst_DynDataDownload::resumeThatCannotStartEnds()
{
    QFETCH(QString, inTheWay);
    QFETCH(int, error);
    ToldScene scene;
    QVERIFY(scene.start());
    scene.job->pause();
    scene.job->told->end(QNetworkReply::OperationCanceledError);
    QVERIFY(QDir(scene.folder.filePath(QStringLiteral("deep"))).removeRecursively());
    const QString blocked = scene.folder.filePath(inTheWay);
    QFile file(blocked);
    QVERIFY(inTheWay.endsWith(QLatin1Char('/')) ? QDir().mkpath(blocked) : file.open(QIODevice::WriteOnly));
    scene.job->resume();
    QCOMPARE(scene.journal, (QStringList{errorLine(error), COMPLETED}));
    QCOMPARE(scene.job->requests, 1);
}

void tst_DynDataDownload::abortInsideAnErrorIsSafe()
{
    ToldScene scene;
    connect(scene.job, &AbstractDownload::errorOccurred, scene.job, [&] { scene.job->abort(); });
    QVERIFY(scene.start());
    scene.job->told->bring("data");
    scene.job->told->end(QNetworkReply::InternalServerError);
    QCOMPARE(scene.journal, QStringList{errorLine(2)});
    QVERIFY(!scene.isFileThere());
}

void tst_DynDataDownload::deletionInFlightIsSilent()
{
    ProjectScene scene;
    scene.platform.server.always(DATA_PATH, ScriptedAnswer::ok(patternOf(300000)).pausedAt(200000));
    QVERIFY(scene.start());
    QVERIFY(scene.hasOnDisk(150000));
    delete scene.job;
    scene.platform.server.release();
    ProjectScene::settle();
    QCOMPARE(scene.journal, QStringList());
}

void tst_DynDataDownload::finishedJobIsDeleted()
{
    ProjectScene scene;
    connect(scene.job, &AbstractDownload::downloadCompleted, scene.job, [&] { scene.job->deleteWhenIdle(); });
    QVERIFY(scene.start());
    QVERIFY(waitUntil([&] { return scene.job.isNull(); }));
    QCOMPARE(scene.journal, QStringList{COMPLETED});
}

QTEST_GUILESS_MAIN(tst_DynDataDownload)

#include "tst_DynDataDownload.moc"
