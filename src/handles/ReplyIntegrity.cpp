#include "handles/ReplyIntegrity.h"

#include <QtCore/QTimer>
#include <QtCore/QVariant>
#include <QtNetwork/QNetworkRequest>

namespace Korvo::Web {

namespace {

// Without a limit the network thread outruns the disk and the whole file piles up in memory. A small one, however, makes
// bytes wait in Qt's sockets, and behind an HTTP proxy these now and then lose the wake-up for them: the reply then stands
// still for ever. So the room is wide, and a body that has stopped coming is given up.
constexpr qint64 READ_BUFFER_BYTES = 4 * 1024 * 1024;

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

void watchBody(QNetworkReply *reply, std::chrono::milliseconds silenceLimit)
{
    reply->setReadBufferSize(READ_BUFFER_BYTES);
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

bool carriesContent(const QNetworkReply &reply)
{
    return statusOf(reply) < FIRST_REDIRECT_STATUS;
}

} // namespace Korvo::Web
