#include "ThumbnailLoader.h"

#include "MediaModel.h"

#include <QtConcurrent/QtConcurrentRun>
#include <QtCore/QBuffer>
#include <QtCore/QFutureWatcher>
#include <QtCore/QUrl>
#include <QtGui/QGuiApplication>
#include <QtGui/QImageReader>
#include <QtNetwork/QNetworkReply>

#include <chrono>

namespace Korvo::Desktop {

using namespace std::chrono_literals;

namespace {

constexpr int MOST_AT_ONCE = 4;
constexpr qint64 LARGEST_PICTURE = 32 * 1024 * 1024;
constexpr auto FETCH_LIMIT = 30s;

// Runs on a thread of the pool. The reader is told the size beforehand, so a JPEG is never unpacked whole.
QImage thumbnailOf(const QByteArray &picture, const QSize &frame, qreal ratio)
{
    QBuffer buffer;
    buffer.setData(picture);
    QImageReader reader(&buffer);
    reader.setAutoTransform(true);
    const QSize size = reader.size();
    if (size.isValid())
        reader.setScaledSize(size.scaled(frame * ratio, Qt::KeepAspectRatio));
    QImage image = reader.read();
    image.setDevicePixelRatio(ratio);
    return image;
}

bool isWeb(const QUrl &url)
{
    return url.isValid() && (url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http"));
}

} // namespace

ThumbnailLoader::ThumbnailLoader(MediaModel &filledModel, QObject *parent)
    : QObject(parent)
    , model(filledModel)
{
}

ThumbnailLoader::~ThumbnailLoader()
{
    stop();
}

void ThumbnailLoader::restart()
{
    stop();
    for (int row = 0; row < model.rowCount(); ++row) {
        if (model.state(row) == MediaModel::State::Waiting)
            waiting.append(row);
    }
    fetchNext();
}

void ThumbnailLoader::stop()
{
    ++generation;
    busy = 0;
    waiting.clear();
    const QList<QNetworkReply *> cut = replies;
    replies.clear();
    for (QNetworkReply *const reply : cut) {
        reply->disconnect(this);
        reply->abort();
        reply->deleteLater();
    }
}

void ThumbnailLoader::fetchNext()
{
    while (busy < MOST_AT_ONCE && !waiting.isEmpty())
        fetch(waiting.takeFirst());
}

void ThumbnailLoader::fetch(int row)
{
    const QUrl url(model.link(row).url);
    if (!isWeb(url)) {
        model.setFailed(row);
        return;
    }
    ++busy;
    QNetworkRequest request(url);
    request.setTransferTimeout(static_cast<int>(std::chrono::milliseconds(FETCH_LIMIT).count()));
    QNetworkReply *const reply = network.get(request);
    replies.append(reply);
    connect(reply, &QNetworkReply::downloadProgress, this, [reply](qint64 received, qint64 total) {
        if (qMax(received, total) > LARGEST_PICTURE)
            reply->abort();
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply, row] { take(reply, row); });
}

void ThumbnailLoader::take(QNetworkReply *reply, int row)
{
    replies.removeOne(reply);
    reply->deleteLater();
    if (reply->error() == QNetworkReply::NoError) {
        shrink(reply->readAll(), row);
        return;
    }
    model.setFailed(row);
    --busy;
    fetchNext();
}

void ThumbnailLoader::shrink(const QByteArray &picture, int row)
{
    auto *const watcher = new QFutureWatcher<QImage>(this);
    connect(watcher, &QFutureWatcher<QImage>::finished, this, [this, watcher, row, started = generation] {
        watcher->deleteLater();
        if (started != generation)
            return;
        const QImage image = watcher->result();
        if (image.isNull())
            model.setFailed(row);
        else
            model.setThumbnail(row, image);
        --busy;
        fetchNext();
    });
    watcher->setFuture(
        QtConcurrent::run(thumbnailOf, picture, MediaModel::THUMBNAIL_SIZE, qGuiApp->devicePixelRatio()));
}

} // namespace Korvo::Desktop
