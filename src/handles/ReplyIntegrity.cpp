#include "handles/ReplyIntegrity.h"

#include <QtCore/QTimer>
#include <QtCore/QVariant>
#include <QtNetwork/QNetworkRequest>

namespace Korvo::Web {

namespace {

// Without a limit the network thread outruns the disk and the whole file piles up in memory. A limit, however, makes bytes
// wait in Qt's sockets, and behind an HTTP proxy these do not ask again for the last of them once nothing more comes from
// the network: the reply would stand still for ever. So the limit is lifted while the end is still far enough away not to
// be in the sockets yet: these hold some 64 KiB each in three layers, before and after the bytes that wait here.
constexpr qint64 READ_BUFFER_BYTES = 256 * 1024;
constexpr qint64 UNLIMITED_BYTES = 1024 * 1024;
constexpr qint64 UNLIMITED = 0;
// Where the end cannot be seen coming, room makes it unlikely at least.
constexpr qint64 WIDE_READ_BUFFER_BYTES = 4 * 1024 * 1024;

constexpr char BYTES_READ[] = "korvoBytesRead";
constexpr char STALLED[] = "korvoStalled";

constexpr int FIRST_REDIRECT_STATUS = 300;
constexpr int FIRST_CLIENT_ERROR_STATUS = 400;

int statusOf(const QNetworkReply &reply)
{
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

bool isRedirect(const QNetworkReply &reply)
{
    const int status = statusOf(reply);
    return status >= FIRST_REDIRECT_STATUS && status < FIRST_CLIENT_ERROR_STATUS;
}

qint64 readBufferFor(qint64 remainingBytes)
{
    if (remainingBytes < 0)
        return WIDE_READ_BUFFER_BYTES;
    return remainingBytes <= UNLIMITED_BYTES ? UNLIMITED : READ_BUFFER_BYTES;
}

void setReadBuffer(QNetworkReply &reply, qint64 bytes)
{
    if (reply.readBufferSize() != bytes)
        reply.setReadBufferSize(bytes);
}

bool isCutShort(const QNetworkReply &reply, qint64 bytesReceived)
{
    // Qt drops this header when it unpacks a compressed body, so a length that is there can be trusted.
    const QVariant announced = reply.header(QNetworkRequest::ContentLengthHeader);
    return announced.isValid() && bytesReceived < announced.toLongLong();
}

} // namespace

QNetworkReply::NetworkError errorOf(const QNetworkReply &reply, qint64 bytesReceived)
{
    if (reply.property(STALLED).toBool())
        return QNetworkReply::TimeoutError;
    if (reply.error() != QNetworkReply::NoError)
        return reply.error();
    if (isRedirect(reply))
        return QNetworkReply::TooManyRedirectsError;
    if (isCutShort(reply, bytesReceived))
        return QNetworkReply::RemoteHostClosedError;
    return QNetworkReply::NoError;
}

void watchBody(QNetworkReply *reply, qint64 expectedBytes, std::chrono::milliseconds silenceLimit)
{
    setReadBuffer(*reply, readBufferFor(expectedBytes));
    auto *const silence = new QTimer(reply);
    silence->setSingleShot(true);
    silence->setInterval(silenceLimit);
    QObject::connect(reply, &QNetworkReply::readyRead, silence, qOverload<>(&QTimer::start));
    QObject::connect(reply, &QNetworkReply::finished, silence, &QTimer::stop);
    QObject::connect(silence, &QTimer::timeout, reply, [reply] {
        reply->setProperty(STALLED, true);
        reply->abort();
    });
}

QByteArray readBody(QNetworkReply &reply)
{
    const QByteArray chunk = reply.readAll();
    const qint64 bytesRead = reply.property(BYTES_READ).toLongLong() + chunk.size();
    reply.setProperty(BYTES_READ, bytesRead);
    const QVariant announced = reply.header(QNetworkRequest::ContentLengthHeader);
    // A length that was only expected is forgotten: nothing holds the server to it.
    const qint64 remaining = announced.isValid() ? qMax(announced.toLongLong() - bytesRead, qint64(0)) : -1;
    setReadBuffer(reply, readBufferFor(remaining));
    return chunk;
}

bool carriesContent(const QNetworkReply &reply)
{
    return statusOf(reply) < FIRST_REDIRECT_STATUS;
}

} // namespace Korvo::Web
