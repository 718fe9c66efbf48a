#include "bare/BareTransfer.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QUrl>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>

#include <algorithm>
#include <stdexcept>

namespace Korvo::Bench {
namespace {

constexpr std::int64_t PART_BYTES = 4 * 1024 * 1024;
constexpr qint64 READ_BUFFER_BYTES = 256 * 1024;
constexpr qint64 STEP_BYTES = 128 * 1024;
// What stands around the content of a file in the bodies of the real clients.
constexpr std::int64_t WRAPPING_BYTES = 300;

const QString ROOT = QStringLiteral(SERVICE_ROOT);

QNetworkRequest requestFor(const QString &route)
{
    QNetworkRequest request{QUrl(ROOT + route)};
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/xml; charset=UTF-8"));
    request.setRawHeader("Accept-Encoding", "identity");
    return request;
}

std::int64_t bodyBytes(std::int64_t contentBytes)
{
    return (contentBytes + 2) / 3 * 4 + WRAPPING_BYTES;
}

} // namespace

BareTransfer::BareTransfer(const Workload &movedWorkload, int filesInFlight)
    : workload(movedWorkload)
    , inFlight(filesInFlight)
{
}

void BareTransfer::run(int requests, const Start &start)
{
    startRequest = start;
    waiting = requests;
    for (int i = 0; i < inFlight; ++i)
        startNext();
    loop.exec();
    if (!failure.isEmpty())
        throw std::runtime_error(failure.toStdString());
}

void BareTransfer::startNext()
{
    if (waiting == 0)
        return;
    --waiting;
    ++running;
    QNetworkReply *const reply = startRequest(next++);
    QObject::connect(reply, &QNetworkReply::finished, &manager, [this, reply] { finish(reply); });
}

void BareTransfer::finish(QNetworkReply *reply)
{
    reply->deleteLater();
    --running;
    if (reply->error() != QNetworkReply::NoError)
        failure = reply->errorString();
    if (failure.isEmpty())
        startNext();
    if (running == 0 || !failure.isEmpty())
        loop.quit();
}

QNetworkReply *BareTransfer::put(const QByteArray &body)
{
    return manager.put(requestFor(QStringLiteral("api/bucket/putfile")), body);
}

// Large files go in parts, all of which are as long as a whole one.
void BareTransfer::upload()
{
    const std::int64_t part = std::min(workload.bytes, PART_BYTES);
    const auto parts = static_cast<int>(part > 0 ? (workload.bytes + part - 1) / part : 1);
    const QByteArray body(static_cast<int>(bodyBytes(part)), 'x');
    run(workload.files * parts, [&](int) { return put(body); });
}

QNetworkReply *BareTransfer::get(int number, const QString &folder)
{
    const QString key = QString::fromStdString(keyOf(number));
    QNetworkReply *const reply = manager.get(
        requestFor(QStringLiteral("webdav/") + QString::fromStdString(workload.text()) + QLatin1Char('/') + key));
    reply->setReadBufferSize(READ_BUFFER_BYTES);
    auto *const file = new QFile(folder + QLatin1Char('/') + key, reply);
    if (!file->open(QIODevice::WriteOnly))
        throw std::runtime_error("cannot write " + key.toStdString());
    QObject::connect(reply, &QNetworkReply::readyRead, file, [reply, file] {
        if (reply->bytesAvailable() >= STEP_BYTES)
            file->write(reply->readAll());
    });
    QObject::connect(reply, &QNetworkReply::finished, file, [reply, file] { file->write(reply->readAll()); });
    return reply;
}

void BareTransfer::download(const QString &folder)
{
    for (int number = 0; number < workload.files; ++number)
        QDir().mkpath(QFileInfo(folder + QLatin1Char('/') + QString::fromStdString(keyOf(number))).path());
    run(workload.files, [&](int number) { return get(number, folder); });
}

} // namespace Korvo::Bench
