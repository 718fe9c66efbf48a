#include "request/NetworkRequestBuilder.h"

#include "request/RequestSignature.h"
#include "request/ServerRoots.h"

#include <QtCore/QByteArrayList>
#include <QtCore/QCoreApplication>
#include <QtCore/QCryptographicHash>
#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QLocale>
#include <QtCore/QUrl>
#include <QtCore/QUuid>

#include <algorithm>

namespace Korvo::Web {

namespace {

const char *const ACCEPT_HEADER = "Accept";
const char *const AUTHORIZATION_HEADER = "Authorization";
const char *const CLIENT_ID_HEADER = "X-KorvoService-ClientId";
const char *const DATE_HEADER = "Date";
const char *const MESSAGE_TOKEN_HEADER = "X-KorvoService-MessageToken";

const char *const DEFAULT_ACCEPT = "text/html,application/xhtml+xml,application/xml;q=0.9,*/*;q=0.8";
const char *const DEFAULT_CONTENT_TYPE = "application/xml; charset=UTF-8";

constexpr int HMAC_BLOCK_BYTES = 64;
constexpr char HMAC_INNER_PAD = 0x36;
constexpr char HMAC_OUTER_PAD = 0x5C;

bool isBetaSelected()
{
    const QString folder = QCoreApplication::instance() ? QCoreApplication::applicationDirPath() : QString();
    return QFileInfo(QDir(folder), QStringLiteral("UAT")).exists();
}

QByteArray sha256(const QByteArray &text)
{
    return QCryptographicHash::hash(text, QCryptographicHash::Sha256);
}

QByteArray hmacBlock(const QByteArray &key)
{
    const QByteArray shortKey = key.size() > HMAC_BLOCK_BYTES ? sha256(key) : key;
    return shortKey + QByteArray(HMAC_BLOCK_BYTES - shortKey.size(), '\0');
}

// A line break would end the header and begin another one. Servers hand out tokens and ids, hosts choose names: nothing
// of it is trusted that far.
QByteArray onOneLine(QByteArray text)
{
    const auto isBreak = [](char c) { return c == '\r' || c == '\n' || c == '\0'; };
    if (std::none_of(text.cbegin(), text.cend(), isBreak)) // as good as always
        return text;
    return text.replace('\r', "").replace('\n', "").replace('\0', "");
}

QString onOneLine(QString text)
{
    return text.remove(QLatin1Char('\r')).remove(QLatin1Char('\n')).remove(QChar(QChar::Null));
}

QByteArray padded(QByteArray block, char pad)
{
    for (char &byte : block)
        byte = char(byte ^ pad);
    return block;
}

} // namespace

QString requestMethodToString(RequestMethod method)
{
    static const QMap<RequestMethod, QString> texts{
        {GET, QStringLiteral("GET")}, {POST, QStringLiteral("POST")}, {PUT, QStringLiteral("PUT")}};
    return texts.value(method);
}

QByteArray hmacSha256(const QByteArray &key, const QByteArray &message)
{
    const QByteArray block = hmacBlock(key);
    const QByteArray inner = sha256(padded(block, HMAC_INNER_PAD) + message);
    return sha256(padded(block, HMAC_OUTER_PAD) + inner).toBase64();
}

NetworkRequestBuilder::NetworkRequestBuilder(const QByteArray &newClientId, const QByteArray &newSecretKey)
    : clientId(newClientId)
    , secretKey(newSecretKey)
{
    initKorvoWebURL();
    initKorvoServiceURL();
}

void NetworkRequestBuilder::setClientData(const QString &newClientId, const QString &newSecretKey)
{
    clientId = newClientId.toUtf8();
    secretKey = newSecretKey.toUtf8();
}

void NetworkRequestBuilder::setKorvoServiceUrl(const QString &url)
{
    serviceRoot = url;
}

void NetworkRequestBuilder::setBearerToken(const QString &token)
{
    bearerToken = token;
}

void NetworkRequestBuilder::setServerTimeOffset(qint64 seconds)
{
    serverTimeOffsetSeconds = seconds;
}

void NetworkRequestBuilder::clearLoginData()
{
    bearerToken.clear();
    secretKey.clear();
    clientId = DEFAULT_CLIENT_ID;
}

QByteArray NetworkRequestBuilder::getCurrentTimeUtc() const
{
    // The servers read English names only, whatever language the user's computer speaks.
    const QLocale english(QLocale::English, QLocale::AnyCountry);
    const QDateTime serverTime = QDateTime::currentDateTimeUtc().addSecs(serverTimeOffsetSeconds).toUTC();
    return english.toString(serverTime, QStringLiteral("ddd, dd MMM yyyy hh:mm:ss")).toUtf8() + " GMT";
}

void NetworkRequestBuilder::init()
{
    request.reset();
    path.clear();
    rawHeaders.clear();
    knownHeaders.clear();
    params.clear();
    date.clear();
    method = GET;
    withAuthentication = false;
    isWebRequest = false;
    const QString name = QCoreApplication::applicationName().remove(QLatin1Char(' '));
    userAgent = name + QStringLiteral(" / ") + QCoreApplication::applicationVersion();
}

void NetworkRequestBuilder::initKorvoWebURL()
{
    webRoot = QString::fromUtf8(isBetaSelected() ? ServerRoots::BETA_WEB : ServerRoots::PRODUCTION_WEB);
}

void NetworkRequestBuilder::initKorvoServiceURL()
{
    serviceRoot = QString::fromUtf8(isBetaSelected() ? ServerRoots::BETA_SERVICE : ServerRoots::PRODUCTION_SERVICE);
}

NetworkRequestBuilder &NetworkRequestBuilder::initializeRequest(bool isWeb, const QString &newPath)
{
    init();
    path = newPath;
    isWebRequest = isWeb;
    request.emplace(QUrl(rootUrl() + path));
    return *this;
}

NetworkRequestBuilder &NetworkRequestBuilder::initializeWebRequest(const QString &newPath)
{
    return initializeRequest(true, newPath)
        .withUserAgentHeader()
        .withContentTypeHeader(QByteArray())
        .withClientIdHeader();
}

NetworkRequestBuilder &NetworkRequestBuilder::initializeServiceRequest(const QString &newPath)
{
    initializeRequest(false, newPath)
        .withUserAgentHeader()
        .withContentTypeHeader(QByteArray())
        .withClientIdHeader()
        .withAcceptHeader(QString());
    date = getCurrentTimeUtc();
    rawHeaders.insert(DATE_HEADER, date);
    messageToken = QUuid::createUuid().toByteArray();
    rawHeaders.insert(MESSAGE_TOKEN_HEADER, messageToken);
    return *this;
}

NetworkRequestBuilder &NetworkRequestBuilder::usingMethod(RequestMethod newMethod)
{
    method = newMethod;
    return *this;
}

NetworkRequestBuilder &NetworkRequestBuilder::withParam(const QString &key, const QString &value)
{
    params.append(key + QLatin1Char('=') + QString::fromLatin1(QUrl::toPercentEncoding(value)));
    return *this;
}

NetworkRequestBuilder &NetworkRequestBuilder::withHeader(const QString &name, const QString &value)
{
    rawHeaders.insert(name.toUtf8(), value.toUtf8());
    return *this;
}

NetworkRequestBuilder &NetworkRequestBuilder::withHeader(QNetworkRequest::KnownHeaders header, const QString &value)
{
    knownHeaders.insert(header, value);
    return *this;
}

NetworkRequestBuilder &NetworkRequestBuilder::withAcceptHeader(const QString &value)
{
    rawHeaders.insert(ACCEPT_HEADER, value.isEmpty() ? QByteArray(DEFAULT_ACCEPT) : value.toUtf8());
    return *this;
}

NetworkRequestBuilder &NetworkRequestBuilder::withContentTypeHeader(const QByteArray &value)
{
    // Read through the pointer: the text ends at its first NUL.
    const QString type = QString::fromUtf8(value.isNull() ? DEFAULT_CONTENT_TYPE : value.constData());
    return withHeader(QNetworkRequest::ContentTypeHeader, type);
}

NetworkRequestBuilder &NetworkRequestBuilder::withUserAgentHeader()
{
    return withHeader(QNetworkRequest::UserAgentHeader, userAgent);
}

NetworkRequestBuilder &NetworkRequestBuilder::withClientIdHeader()
{
    rawHeaders.insert(CLIENT_ID_HEADER, clientId);
    return *this;
}

NetworkRequestBuilder &NetworkRequestBuilder::withAuthHeader()
{
    withAuthentication = true;
    return *this;
}

NetworkRequestBuilder::operator QNetworkRequest()
{
    QString url = rootUrl() + path;
    appendParams(url);
    request.emplace(QUrl(url));
    appendKnownHeaders();
    appendRawHeaders();
    if (withAuthentication)
        buildAndAppendAuthHeader();
    return *request;
}

QString NetworkRequestBuilder::rootUrl() const
{
    return isWebRequest ? webRoot : serviceRoot;
}

void NetworkRequestBuilder::appendParams(QString &url) const
{
    if (!params.isEmpty())
        url += QLatin1Char('?') + params.join(QLatin1Char('&'));
}

void NetworkRequestBuilder::appendKnownHeaders()
{
    for (auto header = knownHeaders.cbegin(); header != knownHeaders.cend(); ++header)
        request->setHeader(header.key(), onOneLine(header.value()));
}

void NetworkRequestBuilder::appendRawHeaders()
{
    for (auto header = rawHeaders.cbegin(); header != rawHeaders.cend(); ++header)
        request->setRawHeader(onOneLine(header.key()), onOneLine(header.value()));
}

void NetworkRequestBuilder::buildAndAppendAuthHeader()
{
    const QByteArray value = isWebRequest ? "Bearer " + bearerToken.toUtf8() : "KorvoService " + signature();
    // Set last: it must win over an Authorization header that the caller put into the map.
    request->setRawHeader(AUTHORIZATION_HEADER, onOneLine(value));
}

QByteArray NetworkRequestBuilder::signature() const
{
    // The id may have changed since the header was set, and the server goes by the header.
    const QByteArray signedId
        = request->hasRawHeader(CLIENT_ID_HEADER) ? request->rawHeader(CLIENT_ID_HEADER) : clientId;
    const QByteArrayList lines{requestMethodToString(method).toUtf8(), date, messageToken, signedId, path.toUtf8()};
    return hmacSha256(secretKey, lines.join('\n'));
}

} // namespace Korvo::Web
