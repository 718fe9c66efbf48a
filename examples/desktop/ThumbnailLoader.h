#pragma once

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtGui/QImage>
#include <QtNetwork/QNetworkAccessManager>

class QNetworkReply;

namespace Korvo::Desktop {

class MediaModel;

/// Fetches the pictures of a MediaModel a few at a time and makes them small, without ever keeping the window waiting.
///
/// A link is an address like any other: it takes no credentials, and the application's proxy and authorities hold for it.
class ThumbnailLoader : public QObject
{
    Q_OBJECT
public:
    explicit ThumbnailLoader(MediaModel &filledModel, QObject *parent = nullptr);
    ~ThumbnailLoader() override;

    /// Starts over with what the model holds now.
    void restart();
    void stop();

private:
    void fetchNext();
    void fetch(int row);
    void take(QNetworkReply *reply, int row);
    void shrink(const QByteArray &picture, int row);

    MediaModel &model;
    QNetworkAccessManager network;
    QList<int> waiting;
    QList<QNetworkReply *> replies;
    int busy = 0;       ///< fetches and shrinkings on their way
    int generation = 0; ///< what belongs to an earlier one is of no interest
};

} // namespace Korvo::Desktop
