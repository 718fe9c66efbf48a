#include "api/KorvoWebApiWorker.h"
#include "transfer/ProjectUpload.h"

#include <NQKorvoWeb/WebCommunicator.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QThread>
#include <QtTest/QtTest>

using namespace Korvo::Web;

namespace {

constexpr int FILES_IN_FLIGHT = 4;

} // namespace

/// What the worker does for one step of progress with four files in flight, up to the events for the host's thread.
class bench_Progress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void uploadStep();

private:
    void relayToHost();

    QTemporaryDir folder;
    QThread hostThread;
    QScopedPointer<QObject> host;
    QScopedPointer<KorvoWebApiWorker> worker;
    QScopedPointer<WebCommunicator> communicator;
    QScopedPointer<ProjectUpload> job;
};

void bench_Progress::initTestCase()
{
    for (int i = 0; i < FILES_IN_FLIGHT; ++i) {
        QFile file(folder.filePath(QStringLiteral("Video of the section number %1.mp4").arg(i)));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(file.resize(64 * 1024 * 1024));
    }
    hostThread.start();
    host.reset(new QObject);
    host->moveToThread(&hostThread);
    worker.reset(new KorvoWebApiWorker);
    communicator.reset(new WebCommunicator);
    job.reset(new ProjectUpload(communicator.data(), 1));
    job->init(QStringLiteral("id"), QStringLiteral("name"), folder.path(), QDateTime::currentDateTime(),
              ImportType::Standard, FILES_IN_FLIGHT, {});
    relayToHost();
    job->gotListFileResults({}); // no event loop runs, so nothing is sent
}

// The worker's own slots are private; these do the same.
void bench_Progress::relayToHost()
{
    KorvoWebApiWorker *const relay = worker.data();
    connect(job.data(), &ProjectUpload::totalUploadProgressChanged, relay,
            [relay](int id, int completed, int total, int progress, const QStringList &files) {
                Q_EMIT relay->currentUploadFilesChanged(uint(id), files);
                Q_EMIT relay->uploadTotalProgressChanged(uint(id), progress);
                Q_EMIT relay->filesToUploadTotalChanged(uint(id), total);
                Q_EMIT relay->completedUploadFilesChanged(uint(id), completed);
            });
    connect(job.data(), &ProjectUpload::fileUploadProgressChanged, relay,
            [relay](int id, const QString &file, int progress) {
                Q_EMIT relay->uploadFileProgressChanged(uint(id), file, progress);
            });
    QObject *const receiver = host.data();
    connect(relay, &KorvoWebApiWorker::uploadFileProgressChanged, receiver, [](uint, const QString &, int) {});
    connect(relay, &KorvoWebApiWorker::currentUploadFilesChanged, receiver, [](uint, const QStringList &) {});
    connect(relay, &KorvoWebApiWorker::uploadTotalProgressChanged, receiver, [](uint, int) {});
    connect(relay, &KorvoWebApiWorker::filesToUploadTotalChanged, receiver, [](uint, int) {});
    connect(relay, &KorvoWebApiWorker::completedUploadFilesChanged, receiver, [](uint, int) {});
}

void bench_Progress::cleanupTestCase()
{
    hostThread.quit();
    hostThread.wait();
}

void bench_Progress::uploadStep()
{
    const QString file = folder.filePath(QStringLiteral("Video of the section number 1.mp4"));
    qint64 sent = 0;
    QBENCHMARK
    {
        job->updateBytes(sent, 16384, 64 * 1024 * 1024, file);
        sent += 16384;
    }
}

QTEST_GUILESS_MAIN(bench_Progress)

#include "bench_Progress.moc"
