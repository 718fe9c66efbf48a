#include "request/WebCommunicator.h"

#include "handles/AuthenticationHandles.h"
#include "handles/DownloadFileHandle.h"
#include "handles/FailureLog.h"
#include "handles/UploadFileMultiPartRequestHandle.h"
#include "handles/UploadFileRequestHandle.h"
#include "request/PartRequestBody.h"
#include "request/RequestBodies.h"
#include "request/TlsDemands.h"

#include <NQKorvoWeb/Constants.h>
#include <NQKorvoWeb/NetworkRequestBuilder.h>

#include <QtCore/QFile>
#include <QtCore/QUrl>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>

#include <memory>

namespace Korvo::Web {

namespace {

constexpr qint64 SINGLE_PART_BYTES = 4 * 1024 * 1024;

const QString WEBDAV = QStringLiteral("webdav");

/// The content of a file of up to 4 MiB, read in one go; false when it cannot be read whole.
bool readWhole(const QString &path, QByteArray *content)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    *content = file.read(SINGLE_PART_BYTES);
    return file.error() == QFileDevice::NoError && content->size() == file.size();
}

// The text that is signed is the text that is sent: only what would end the path of an address is encoded.
QString encodedKey(QString key)
{
    return key.replace(QLatin1Char('%'), QLatin1String("%25"))
        .replace(QLatin1Char('#'), QLatin1String("%23"))
        .replace(QLatin1Char('?'), QLatin1String("%3F"));
}

} // namespace

UploadFileRequestHandle *WebCommunicator::uploadFile(const UploadFileDescriptor &file)
{
    QByteArray content;
    if (!readWhole(file.localFilePath, &content)) {
        logFailure(LOG_CATEGORY,
                   QStringLiteral("Error occurred during upload. Could not open file:") + file.localFilePath);
        return nullptr;
    }
    const QByteArray body = RequestBodies::uploadFile(file, content);
    auto *const handle = new UploadFileRequestHandle(file, content.size(), this);
    handle->setReply(put(serviceRequest(Constants::Route::BUCKET_PUTFILE, PUT), body));
    handle->enableRetry(manager.data(), body);
    return handle;
}

UploadFileMultiPartRequestHandle *WebCommunicator::uploadFileInParts(const UploadFileDescriptor &file)
{
    QScopedPointer<UploadFileMultiPartRequestHandle> opened(new UploadFileMultiPartRequestHandle(file, this));
    if (!opened->isFileOpen())
        return nullptr;
    auto *const handle = opened.take();
    using Handle = UploadFileMultiPartRequestHandle;
    auto *const body = new PartRequestBody;
    handle->setPartBody(std::unique_ptr<PartBody>(body));
    connect(handle, &Handle::uploadNextPart, this, [=](const QString &id, const QByteArray &, int number) {
        sendStep(handle, Constants::Route::MULTIPART_UPLOAD_UPLOAD, body->finish(id, number));
    });
    connect(handle, &Handle::finishUpload, this, [=](const QString &id, const QString &folder) {
        sendStep(handle, Constants::Route::MULTIPART_UPLOAD_COMPLETE, RequestBodies::completeMultiPart(id, folder));
    });
    connect(handle, &Handle::abortUpload, this, [=](const QString &id) {
        sendStep(handle, Constants::Route::MULTIPART_UPLOAD_ABORT, RequestBodies::abortMultiPart(id));
    });
    sendStep(handle, Constants::Route::MULTIPART_UPLOAD_INIT, RequestBodies::beginMultiPart(file));
    return handle;
}

void WebCommunicator::sendStep(UploadFileMultiPartRequestHandle *handle, const QString &route, const QByteArray &body)
{
    handle->setReply(put(serviceRequest(route, PUT), body));
    handle->enableRetry(manager.data(), body);
}

void WebCommunicator::startTranscoding(const UploadFileDescriptor &file)
{
    followNotice(put(serviceRequest(Constants::Route::START_TRANSCODING, PUT), RequestBodies::startTranscoding(file)));
}

DownloadFileHandle *WebCommunicator::downloadFile(const QString &bucket, const QString &key, const QString &localPath,
                                                  qint64 expectedBytes)
{
    auto *const handle = new DownloadFileHandle(key, localPath, expectedBytes, this);
    if (handle->fileError() != Error::None)
        return handle;
    const QString path = QStringList{WEBDAV, bucket, encodedKey(key)}.join(QLatin1Char('/'));
    const QNetworkRequest request = builder->initializeServiceRequest(path)
                                        .usingMethod(GET)
                                        .withParam(QStringLiteral("download"), QStringLiteral("true"))
                                        // Compressed, the announced length could not be compared with what arrives.
                                        .withHeader(QStringLiteral("Accept-Encoding"), QStringLiteral("identity"))
                                        .withAuthHeader();
    handle->setReply(get(request));
    handle->enableRetry(manager.data(), QByteArray());
    return handle;
}

QNetworkReply *WebCommunicator::downloadLink(const QString &link)
{
    const QUrl url(link);
    // Qt calls the end of a request without a host a success.
    if (!url.isValid() || url.host().isEmpty())
        return nullptr;
    if (url.scheme() != QLatin1String("https") && url.scheme() != QLatin1String("http"))
        return nullptr;
    QNetworkRequest request(url);
    request.setRawHeader("Accept-Encoding", "identity");
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    demandModernTls(request);
    // Nothing secret goes along, the session's cookies neither, so this one may lead on to where the file really lies.
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    return manager->get(request);
}

} // namespace Korvo::Web
