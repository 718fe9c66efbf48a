#include "api/KorvoWebApiWorker.h"

#include "handles/ProjectHandles.h"
#include "request/WebCommunicator.h"

namespace Korvo::Web {

namespace {

void disposeOf(QObject *handle)
{
    if (handle)
        handle->deleteLater();
}

} // namespace

void KorvoWebApiWorker::queryRemoteProjects()
{
    const auto *const handle = communicator->queryProjects();
    connect(handle, &UserProjectsRequestHandle::requestFinished, this, &KorvoWebApiWorker::handleUserProjectsResponse);
    connect(handle, &RequestHandle::errorOccurred, this, &KorvoWebApiWorker::errorOccurred);
}

void KorvoWebApiWorker::handleUserProjectsResponse(UserProjectsResponse response, Error error)
{
    disposeOf(sender());
    if (error != Error::None)
        Q_EMIT queryRemoteProjectsError(error);
    else
        Q_EMIT projectInfoReceived(response.projects());
}

void KorvoWebApiWorker::startSingleProjectFileDownload(QString projectId, QString fileName)
{
    const auto *const handle = communicator->queryMediaLink(projectId, fileName);
    connect(handle, &SingleProjectFileDownloadRequestHandle::requestFinished, this,
            &KorvoWebApiWorker::handleSingleFileDownloadResponse);
    connect(handle, &RequestHandle::errorOccurred, this, &KorvoWebApiWorker::errorOccurred);
}

void KorvoWebApiWorker::handleSingleFileDownloadResponse(SingleProjectFileDownloadResponse response)
{
    disposeOf(sender());
    const QList<SingleMediaFileLinkData> links = response.links();
    if (links.isEmpty())
        Q_EMIT errorOccurred(response.error());
    else
        Q_EMIT singleFileDownloadLinkReceived(links.first());
}

void KorvoWebApiWorker::startAllProjectsMediaDownload(QString projectId)
{
    const auto *const handle = communicator->queryAllMediaLinks(projectId);
    connect(handle, &SingleProjectFileDownloadRequestHandle::requestFinished, this,
            &KorvoWebApiWorker::handleAllProjectsMediaDownloadResponse);
    connect(handle, &RequestHandle::errorOccurred, this, &KorvoWebApiWorker::errorOccurred);
}

void KorvoWebApiWorker::handleAllProjectsMediaDownloadResponse(SingleProjectFileDownloadResponse response)
{
    disposeOf(sender());
    // An empty list alone could not be told from a project without media.
    if (!response.isSuccess())
        Q_EMIT errorOccurred(response.error());
    Q_EMIT allProjectsMediaDownloadLinkReceived(response.links());
}

void KorvoWebApiWorker::queryUploadProjectStatus(QList<QString> projectId)
{
    const auto *const handle = communicator->queryUploadStatuses(projectId);
    connect(handle, &UploadProjectsStatusHandle::requestFinished, this, &KorvoWebApiWorker::handleUploadStatus);
    connect(handle, &RequestHandle::errorOccurred, this, &KorvoWebApiWorker::errorOccurred);
}

void KorvoWebApiWorker::handleUploadStatus(UploadProjectsStatusResponse response)
{
    disposeOf(sender());
    if (!response.isSuccess())
        Q_EMIT errorOccurred(response.error());
    Q_EMIT uploadStatusInfoReceived(response.statuses());
}

} // namespace Korvo::Web
