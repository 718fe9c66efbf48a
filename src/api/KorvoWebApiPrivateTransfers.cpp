#include "api/KorvoWebApiPrivate.h"

#include "api/KorvoWebApiWorker.h"
#include "api/ProjectIds.h"
#include "handles/FailureLog.h"

#include <QtCore/QVariant>

namespace Korvo::Web {

namespace {

const QString DOWNLOAD_REJECTED = QStringLiteral("Invalid parameter. Values passed in:\n");
// The blank before the line break has been in the logs from the beginning; log readers search for it.
const QString UPLOAD_REJECTED = QStringLiteral("Invalid parameter(s). Values passed in: \n");

// 0 means "not started", so a counter that wraps passes over it.
quint32 nextId(quint32 &counter)
{
    if (++counter == 0)
        ++counter;
    return counter;
}

} // namespace

unsigned int KorvoWebApiPrivate::newDownloadId()
{
    return nextId(nextDownloadId);
}

unsigned int KorvoWebApiPrivate::newUploadId()
{
    return nextId(nextUploadId);
}

unsigned int KorvoWebApiPrivate::reject(const QString &header, const Arguments &arguments)
{
    QString message = header;
    for (const auto &argument : arguments)
        message += argument.first + QStringLiteral(": ") + argument.second + QLatin1Char('\n');
    logFailure(LOG_CATEGORY, message);
    Q_EMIT errorOccurred(Error::InvalidParameter);
    return 0;
}

unsigned int KorvoWebApiPrivate::downloadProject(const QString &projectId, const QString &webProjectFolderName,
                                                 const QString &downloadPath, int maxSimultaneousDownloads)
{
    if (projectId.isEmpty() || webProjectFolderName.isEmpty() || downloadPath.isEmpty()
        || maxSimultaneousDownloads < 1) {
        return reject(DOWNLOAD_REJECTED,
                      {{QStringLiteral("projectId"), projectId},
                       {QStringLiteral("webProjectFolderName"), webProjectFolderName},
                       {QStringLiteral("downloadPath"), downloadPath},
                       {QStringLiteral("maxSimultaneousDownloads"), QString::number(maxSimultaneousDownloads)}});
    }
    const unsigned int id = newDownloadId();
    post([=, target = worker] {
        target->downloadProject(projectId, webProjectFolderName, downloadPath, maxSimultaneousDownloads, id);
    });
    return id;
}

unsigned int KorvoWebApiPrivate::downloadQuickviewProjectData(const QString &projectId, const QString &outputFilePath)
{
    return downloadQuickviewData(projectId, outputFilePath, &KorvoWebApiWorker::downloadQuickviewProjectData);
}

unsigned int KorvoWebApiPrivate::downloadQuickviewSurveyData(const QString &projectId, const QString &outputFilePath)
{
    return downloadQuickviewData(projectId, outputFilePath, &KorvoWebApiWorker::downloadQuickviewSurveyData);
}

unsigned int KorvoWebApiPrivate::downloadQuickviewManholeData(const QString &projectId, const QString &outputFilePath)
{
    return downloadQuickviewData(projectId, outputFilePath, &KorvoWebApiWorker::downloadQuickviewManholeData);
}

unsigned int KorvoWebApiPrivate::downloadQuickviewData(const QString &projectId, const QString &outputFilePath,
                                                       QuickviewDownload download)
{
    if (projectId.isEmpty() || outputFilePath.isEmpty()) {
        return reject(DOWNLOAD_REJECTED,
                      {{QStringLiteral("projectId"), projectId}, {QStringLiteral("outputFilePath"), outputFilePath}});
    }
    const unsigned int id = newDownloadId();
    post([=, target = worker] { (target->*download)(projectId, outputFilePath, id); });
    return id;
}

unsigned int KorvoWebApiPrivate::downloadSingleProjectFile(const QString &filePath, const QString &url)
{
    if (filePath.isEmpty() || url.isEmpty()) {
        return reject(DOWNLOAD_REJECTED, {{QStringLiteral("filePath"), filePath}, {QStringLiteral("url"), url}});
    }
    const unsigned int id = newDownloadId();
    post([=, target = worker] { target->downloadSingleProjectFile(filePath, url, id); });
    return id;
}

void KorvoWebApiPrivate::abortDownload(unsigned int id)
{
    post([target = worker, id] { target->abortDownload(id); });
}

void KorvoWebApiPrivate::pauseDownload(unsigned int id)
{
    post([target = worker, id] { target->pauseDownload(id); });
}

void KorvoWebApiPrivate::resumeDownload(unsigned int id)
{
    post([target = worker, id] { target->resumeDownload(id); });
}

unsigned int KorvoWebApiPrivate::uploadProject(const QString &projectId, const QString &projectName,
                                               const QString &projectPath, const QDateTime &projectCreationDate,
                                               int maxSimultaneousUploads)
{
    if (projectId.isEmpty() || projectName.isEmpty() || projectPath.isEmpty() || projectCreationDate.isNull()
        || maxSimultaneousUploads <= 0) {
        return reject(UPLOAD_REJECTED,
                      {{QStringLiteral("projectId"), projectId},
                       {QStringLiteral("projectName"), projectName},
                       {QStringLiteral("projectPath"), projectPath},
                       {QStringLiteral("projectCreationDate"), QVariant(projectCreationDate).toString()},
                       {QStringLiteral("maxSimultaneousUploads"), QString::number(maxSimultaneousUploads)}});
    }
    return startUpload(projectId, projectName, projectPath, projectCreationDate, ImportType::Standard,
                       maxSimultaneousUploads, {});
}

unsigned int KorvoWebApiPrivate::uploadQZProject(const QString &projectName, const QString &projectPath,
                                                 const QDateTime &projectCreationDate)
{
    return startUpload(derivedProjectId(projectName), projectName, projectPath, projectCreationDate,
                       ImportType::QZImport, 1, {});
}

unsigned int KorvoWebApiPrivate::uploadQuickviewProject(const QUuid &projectId, const QString &projectName,
                                                        const QString &projectPath,
                                                        const QDateTime &projectCreationDate,
                                                        const MediaNamesList &manholesMedia)
{
    return startUpload(projectId.toString(QUuid::WithoutBraces), projectName, projectPath, projectCreationDate,
                       ImportType::Quickview, 1, manholesMedia);
}

unsigned int KorvoWebApiPrivate::startUpload(const QString &projectId, const QString &projectName,
                                             const QString &projectPath, const QDateTime &creationDate,
                                             ImportType importType, int maxSimultaneousUploads,
                                             const MediaNamesList &manholesMedia)
{
    const unsigned int id = newUploadId();
    post([=, target = worker] {
        target->uploadProject(projectId, projectName, projectPath, creationDate, importType, maxSimultaneousUploads, id,
                              manholesMedia);
    });
    return id;
}

void KorvoWebApiPrivate::abortUpload(unsigned int id)
{
    post([target = worker, id] { target->abortUpload(id); });
}

void KorvoWebApiPrivate::pauseUpload(unsigned int id)
{
    post([target = worker, id] { target->pauseUpload(id); });
}

void KorvoWebApiPrivate::resumeUpload(unsigned int id)
{
    post([target = worker, id] { target->resumeUpload(id); });
}

} // namespace Korvo::Web
