#include "request/WebCommunicator.h"

#include "handles/AuthenticationHandles.h"
#include "handles/NetworkOutcome.h"
#include "handles/UploadFileDescriptor.h"
#include "request/RequestSignature.h"
#include "request/TlsDemands.h"

#include <NQKorvoWeb/Constants.h>
#include <NQKorvoWeb/NetworkRequestBuilder.h>

#include <QtCore/QRegularExpression>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>

namespace Korvo::Web {

namespace {

constexpr int BUCKET_NAME_PREFIX_LENGTH = 9;

// Uploads over HTTP/2 hang in Qt 5 once the server says goodbye, and downloads ignore the read buffer's limit.
// A redirect would carry credentials or a signature to another place, so none is followed.
QNetworkRequest guarded(QNetworkRequest request)
{
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    demandModernTls(request);
    return request;
}

} // namespace

QPair<QByteArray, QByteArray> WebCommunicator::importTypeToXmlElement(ImportType importType)
{
    switch (importType) {
    case ImportType::QZImport:
        return {Constants::Xml::QZ_IMPORT_FLAG.toUtf8(), QByteArrayLiteral("true")};
    case ImportType::Quickview:
        return {Constants::Xml::IMPORT_TYPE_FLAG.toUtf8(), Constants::Xml::IMPORT_TYPE_QUICKVIEW.toUtf8()};
    case ImportType::Standard:
        break;
    }
    return {};
}

QByteArray WebCommunicator::importTypeToStr(ImportType importType)
{
    namespace Tags = Constants::LegacyXml;
    switch (importType) {
    case ImportType::QZImport:
        return (Tags::QZ_IMPORT_FLAG_O + QStringLiteral("true") + Tags::QZ_IMPORT_FLAG_C).toUtf8();
    case ImportType::Quickview:
        return (Tags::IMPORT_TYPE_FLAG_O + Tags::IMPORT_TYPE_QUICKVIEW + Tags::IMPORT_TYPE_FLAG_C).toUtf8();
    case ImportType::Standard:
        break;
    }
    return {};
}

QString WebCommunicator::bucketName(const QString &companyId, const QString &projectId,
                                    const QString &projectFolderName)
{
    static const QRegularExpression forbidden(QStringLiteral("[^a-z0-9-]"));
    const QString joined
        = companyId.left(BUCKET_NAME_PREFIX_LENGTH) + projectId.left(BUCKET_NAME_PREFIX_LENGTH) + projectFolderName;
    // Lower-cased before the filter: upper-case ASCII letters survive, all other letters are dropped.
    return QString(joined).replace(QLatin1Char('_'), QLatin1Char('-')).toLower().remove(forbidden);
}

WebCommunicator::WebCommunicator(QObject *parent)
    : QObject(parent)
    , builder(new NetworkRequestBuilder(DEFAULT_CLIENT_ID, QByteArray()))
    , manager(new QNetworkAccessManager)
{
    registerResponseMetaTypes();
}

WebCommunicator::~WebCommunicator()
{
    // Replies before the manager that serves them.
    qDeleteAll(findChildren<RequestHandle *>(QString(), Qt::FindDirectChildrenOnly));
}

QNetworkRequest WebCommunicator::formRequest()
{
    return builder->initializeRequest(true, Constants::Route::LOGIN)
        .usingMethod(PUT)
        .withUserAgentHeader()
        .withContentTypeHeader("application/x-www-form-urlencoded; charset=UTF-8");
}

QNetworkRequest WebCommunicator::webRequest(const QString &route, RequestMethod method)
{
    return builder->initializeWebRequest(route).usingMethod(method).withAuthHeader();
}

QNetworkRequest WebCommunicator::serviceRequest(const QString &route, RequestMethod method)
{
    return builder->initializeServiceRequest(route).usingMethod(method).withAuthHeader();
}

QNetworkReply *WebCommunicator::get(const QNetworkRequest &request)
{
    return manager->get(guarded(request));
}

QNetworkReply *WebCommunicator::post(const QNetworkRequest &request, const QByteArray &body)
{
    return manager->post(guarded(request), body);
}

QNetworkReply *WebCommunicator::put(const QNetworkRequest &request, const QByteArray &body)
{
    return manager->put(guarded(request), body);
}

NoticeRequestHandle *WebCommunicator::followNotice(QNetworkReply *reply)
{
    auto *const handle = follow<NoticeRequestHandle>(reply);
    connect(handle, &NoticeRequestHandle::requestFinished, handle, &QObject::deleteLater);
    return handle;
}

void WebCommunicator::raise(Error error)
{
    if (error != Error::None)
        Q_EMIT errorOccurred(error);
}

} // namespace Korvo::Web
