#pragma once

#include "transfer/AbstractDownload.h"

#include <QtCore/QFile>
#include <QtCore/QPointer>

class QNetworkReply;

namespace Korvo::Web {

class WebCommunicator;

/// Writes the body of one reply into one local file as it arrives.
///
/// Always ends with downloadCompleted(), after errorOccurred() when it failed, except after pause() and abort().
class DynDataDownload : public AbstractDownload
{
    Q_OBJECT

public:
    DynDataDownload(WebCommunicator *usedCommunicator, int id, QObject *parent = nullptr);

    /// Follows @p newReply to its end and owns it; a null reply counts as one that failed.
    virtual void attachReply(QNetworkReply *newReply);
    /// Ends the download and removes its file.
    virtual void abort();
    /// Starts over from the first byte.
    virtual void resume();
    /// Cuts the reply off and throws away what has arrived.
    virtual void pause();
    virtual void sendRequest() = 0;
    /// Makes the file and its folder; false, after errorOccurred(), when that is not possible.
    virtual bool start(const QString &newOutputFilePath, const QString &newDataId);

    void deleteWhenIdle() { deleteLater(); }

public Q_SLOTS:
    void onNetworkReplyReadyRead();
    void onNetworkReplyFinished();

protected:
    WebCommunicator *const communicator;
    const qint32 downloadId;
    QString outputFilePath;
    QString dataId;
    QFile outputFile;
    QPointer<QNetworkReply> reply;
    bool paused = false;
    bool aborted = false;

private:
    bool refuse(Error error, const QString &message);
    void closeFile();
    void discard();
    void complete(Error error);

    qint64 receivedBytes = 0;
    bool writeFailed = false;
};

} // namespace Korvo::Web
