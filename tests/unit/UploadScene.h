#pragma once

#include "TransferPlatform.h"
#include "handles/BucketHandles.h"
#include "support/LogCapture.h"
#include "transfer/ProjectUpload.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QPointer>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

namespace Korvo::Web::TestSupport {

constexpr int PART_BYTES = 4 * 1024 * 1024;

/// A project folder, the platform that it is uploaded to, the job between them, and a journal of what the job says.
struct UploadScene
{
    UploadScene();
    ~UploadScene() { delete job; }

    void write(const QString &relativePath, const QByteArray &content) const;
    void truncate(const QString &relativePath, int bytes) const;
    QString root() const { return folder.path(); }
    QString pathOf(const QString &relativePath) const { return root() + QLatin1Char('/') + relativePath; }

    void init(int maxUploads = 1, const MediaNamesList &nodeMedia = {}, ImportType importType = ImportType::Standard);
    void start();

    // Each waits for what it says, and says whether it came.
    bool isListed() const { return waitUntil([this] { return listing.isNull(); }); }
    bool completes() const { return waitUntil([this] { return journal.contains(QStringLiteral("completed")); }); }
    bool becomesQuiet() const { return waitUntil([this] { return platform.isQuiet(job); }); }
    bool receives(const QByteArray &path, int count) const;
    bool isDeleted() const { return waitUntil([this] { return job.isNull(); }); }

    bool isQuiet() const { return platform.isQuiet(job); }
    /// The journal without the reports of progress.
    QStringList results() const;
    QStringList totals() const { return journal.filter(QStringLiteral("total ")); }
    /// Requests behind the listing.
    QStringList stepsAfterListing() const { return platform.steps().mid(3); }
    int requestCount(const QByteArray &path) const { return platform.server.requestCount(path); }

    static constexpr int ID = 7;
    QTemporaryDir folder;
    LogCapture log;
    TransferPlatform platform;
    QPointer<ProjectUpload> job;
    QPointer<ListFilesFromLocationsRequestHandle> listing;
    QStringList journal;
    QDateTime creationDate{QDate(2024, 5, 17), QTime(8, 30)};

private:
    QString named(const QString &absolutePath) const { return absolutePath.mid(root().size() + 1); }
    QString namedAll(const QStringList &absolutePaths) const;
    void note(int id, const QString &text) { journal.append(id == ID ? text : QStringLiteral("wrong id: ") + text); }
    void keepJournal();
};

inline UploadScene::UploadScene()
    : job(new ProjectUpload(&platform.communicator, ID))
{
    keepJournal();
}

inline void UploadScene::keepJournal()
{
    QObject::connect(job, &ProjectUpload::totalUploadProgressChanged, job,
                     [this](int id, int completed, int total, int progress, const QStringList &files) {
                         note(id, QStringLiteral("total %1/%2 %3% [%4]")
                                      .arg(QString::number(completed), QString::number(total),
                                           QString::number(progress), namedAll(files)));
                     });
    QObject::connect(job, &ProjectUpload::fileUploadProgressChanged, job,
                     [this](int id, const QString &file, int progress) {
                         note(id, QStringLiteral("file %1 %2%").arg(named(file), QString::number(progress)));
                     });
    QObject::connect(job, &ProjectUpload::uploadCompleted, job, [this](int id) { note(id, QStringLiteral("completed")); });
    QObject::connect(job, &ProjectUpload::errorOccurred, job, [this](int id, Error error) {
        note(id, QStringLiteral("error ") + QString::number(int(error)));
    });
    QObject::connect(&platform.communicator, &WebCommunicator::errorOccurred, job, [this](Error error) {
        journal.append(QStringLiteral("communicator: error ") + QString::number(int(error)));
    });
}

inline QString UploadScene::namedAll(const QStringList &absolutePaths) const
{
    QStringList names;
    for (const QString &path : absolutePaths)
        names.append(named(path));
    return names.join(QStringLiteral(", "));
}

inline void UploadScene::write(const QString &relativePath, const QByteArray &content) const
{
    const QString path = pathOf(relativePath);
    QVERIFY(QDir().mkpath(QFileInfo(path).absolutePath()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

inline void UploadScene::truncate(const QString &relativePath, int bytes) const
{
    QVERIFY(QFile::resize(pathOf(relativePath), bytes));
}

inline void UploadScene::init(int maxUploads, const MediaNamesList &nodeMedia, ImportType importType)
{
    job->init(QStringLiteral("project-id"), QStringLiteral("Project name"), root() + QLatin1Char('/'), creationDate,
              importType, maxUploads, nodeMedia);
}

inline void UploadScene::start()
{
    job->start();
    if (job)
        listing = job->findChild<ListFilesFromLocationsRequestHandle *>();
}

inline bool UploadScene::receives(const QByteArray &path, int count) const
{
    return waitUntil([&] { return requestCount(path) >= count; }) && requestCount(path) == count;
}

inline QStringList UploadScene::results() const
{
    QStringList results;
    for (const QString &line : journal) {
        if (!line.startsWith(QStringLiteral("total ")) && !line.startsWith(QStringLiteral("file ")))
            results.append(line);
    }
    return results;
}

} // namespace Korvo::Web::TestSupport
