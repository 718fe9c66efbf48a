#include "transfer/QuickviewDownloads.h"

#include "request/WebCommunicator.h"

#include <QtNetwork/QNetworkReply>

namespace Korvo::Web {

void QuickviewProjectDataDownload::sendRequest()
{
    attachReply(communicator->downloadQuickviewProjectData(dataId));
}

void QuickviewSurveyDataDownload::sendRequest()
{
    attachReply(communicator->downloadQuickviewSurveyData(dataId));
}

void QuickviewManholeDataDownload::sendRequest()
{
    attachReply(communicator->downloadQuickviewManholeData(dataId));
}

QuickviewProjectSingleFileDownload::QuickviewProjectSingleFileDownload(WebCommunicator *usedCommunicator, int id,
                                                                       const QString &link, QObject *parent)
    : DynDataDownload(usedCommunicator, id, parent)
    , fileLink(link)
{
}

void QuickviewProjectSingleFileDownload::sendRequest()
{
    attachReply(communicator->downloadLink(fileLink));
}

} // namespace Korvo::Web
