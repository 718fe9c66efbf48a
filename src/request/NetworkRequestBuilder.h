#pragma once

#include <NQKorvoWeb/KorvoWebExport.h>
#include <NQKorvoWeb/RequestMethod.h>

#include <QtCore/QByteArray>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtNetwork/QNetworkRequest>

#include <optional>

namespace Korvo::Web {

/// Makes the requests to both servers: address, parameters, headers, and the proof of who is asking.
///
/// Requests to the web server carry the access token of the login ("Bearer ..."). Requests to the storage service are
/// signed ("KorvoService ..."): HMAC-SHA256 over method, date, message token, client id and path, keyed with the secret
/// that the web server hands out after the login.
///
/// @code
/// QNetworkRequest request = builder.initializeServiceRequest(Constants::Route::BUCKET)
///     .usingMethod(PUT)
///     .withAuthHeader();
/// QNetworkReply *reply = manager.put(request, body);
/// @endcode
///
/// Each request starts with one of the three initialize functions, which forget everything about the request before;
/// the login data stays until clearLoginData(). usingMethod() must name the verb that the request is then sent with,
/// because the verb is signed.
///
/// The builder sends nothing, emits nothing, checks nothing and cannot fail: what is missing becomes an empty value,
/// which the servers refuse. Only line breaks and zero bytes are left out of headers: they would begin other headers. It
/// is a plain value: copies are independent of each other, the current request included.
/// It has no locks; use one object on one thread at a time.
class NQKORVOWEB_EXPORT NetworkRequestBuilder
{
public:
    /// Selects the servers: production, or beta when a file or folder named "UAT" stands in the application's folder
    /// (in the current folder when there is no application object). This is looked up here and never again.
    ///
    /// @param clientId   sent as "X-KorvoService-ClientId" and signed
    /// @param secretKey  key of the signature; may be empty as long as nobody has logged in
    NetworkRequestBuilder(const QByteArray &clientId, const QByteArray &secretKey);

    /// Takes over the client credentials of the storage service. Valid from the next initialization on.
    void setClientData(const QString &clientId, const QString &secretKey);

    /// Replaces the root of the storage service.
    /// @param url  used as it is; must end with "/", since paths are appended without a separator
    void setKorvoServiceUrl(const QString &url);

    /// Takes over the access token of the login.
    void setBearerToken(const QString &token);

    /// @param seconds  the service's clock minus this computer's clock; added to every date that is sent and signed
    void setServerTimeOffset(qint64 seconds);

    /// Forgets access token and secret and returns to the client id "Vantrel". Service root and time offset stay.
    void clearLoginData();

    /// The server's present time, as sent in the "Date" header: "Tue, 03 Mar 2026 14:05:09 GMT", English everywhere.
    QByteArray getCurrentTimeUtc() const;

    /// Starts a bare request without any header: the login and the two-step check want none of the usual ones.
    ///
    /// @param isWeb  true: web server and access token; false: storage service and signature
    /// @param path   path below the root of the server, without leading "/"
    /// @return this builder, for the next call
    NetworkRequestBuilder &initializeRequest(bool isWeb, const QString &path);

    /// Starts a request to the web server, with user agent, XML content type and client id.
    /// @param path  path below the root of the server, without leading "/"
    /// @return this builder, for the next call
    NetworkRequestBuilder &initializeWebRequest(const QString &path);

    /// Starts a request to the storage service, with user agent, XML content type, client id, "Accept", "Date" and a
    /// new message token.
    ///
    /// Date and message token are fixed here: converting twice gives the same request twice.
    /// @param path  path below the root of the server, without leading "/"; signed as it is, without parameters
    /// @return this builder, for the next call
    NetworkRequestBuilder &initializeServiceRequest(const QString &path);

    /// Names the verb that the request will be sent with; GET when it is not called.
    NetworkRequestBuilder &usingMethod(RequestMethod newMethod);

    /// Appends "key=value" to the address, behind the parameters given before.
    /// @param key    written as it is, so it must be safe in an address
    /// @param value  percent-encoded here
    NetworkRequestBuilder &withParam(const QString &key, const QString &value);

    /// Sets a header by name; the last value given for a name counts, and it wins over a known header of that name.
    NetworkRequestBuilder &withHeader(const QString &name, const QString &value);

    /// Sets one of the headers that Qt knows; the last value given counts.
    NetworkRequestBuilder &withHeader(QNetworkRequest::KnownHeaders header, const QString &value);

    /// Sets "Accept"; an empty @p value asks for text, XHTML, XML and, with less weight, anything else.
    NetworkRequestBuilder &withAcceptHeader(const QString &value);

    /// Sets the content type, up to the first NUL of @p value; a null array means "application/xml; charset=UTF-8".
    ///
    /// An empty array that is not null sets an empty type: Qt then sends none, and its own choice for a POST.
    NetworkRequestBuilder &withContentTypeHeader(const QByteArray &value);

    /// Sets the user agent: the application's name without blanks, " / ", its version.
    NetworkRequestBuilder &withUserAgentHeader();

    /// Sets "X-KorvoService-ClientId".
    NetworkRequestBuilder &withClientIdHeader();

    /// Asks for the "Authorization" header: token or signature, as the server wants it. It wins over one set by name.
    NetworkRequestBuilder &withAuthHeader();

    /// The finished request. May be called repeatedly and gives the same request each time.
    operator QNetworkRequest();

private:
    void init();
    void initKorvoWebURL();
    void initKorvoServiceURL();
    void appendParams(QString &url) const;
    void appendKnownHeaders();
    void appendRawHeaders();
    void buildAndAppendAuthHeader();
    QString rootUrl() const;
    QByteArray signature() const;

    QMap<QByteArray, QByteArray> rawHeaders;
    QMap<QNetworkRequest::KnownHeaders, QString> knownHeaders;
    QStringList params;
    QString path;
    std::optional<QNetworkRequest> request;
    QByteArray clientId;
    QString userAgent;
    QByteArray secretKey;
    RequestMethod method = GET;
    QByteArray date;
    QString bearerToken;
    QByteArray messageToken;
    qint64 serverTimeOffsetSeconds = 0;
    QString webRoot;
    QString serviceRoot;
    bool withAuthentication = false;
    bool isWebRequest = false;
};

} // namespace Korvo::Web
