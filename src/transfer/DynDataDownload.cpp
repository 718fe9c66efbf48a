#include "transfer/DynDataDownload.h"

#include "handles/FailureLog.h"
#include "handles/NetworkOutcome.h"
#include "handles/ReplyIntegrity.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

namespace Korvo::Web {

namespace {

// Other than for the requests of the handles, an end without a name counts among "any other" here.
Error endOf(QNetworkReply::NetworkError error)
{
    return error == QNetworkReply::UnknownNetworkError ? Error::Network : errorFor(error);
}

QString quoted(const QString &text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

} // namespace

DynDataDownload::DynDataDownload(WebCommunicator *usedCommunicator, int id, QObject *parent)
    : AbstractDownload(parent)
    , communicator(usedCommunicator)
    , downloadId(id)
{
}

bool DynDataDownload::start(const QString &newOutputFilePath, const QString &newDataId)
{
    outputFilePath = QFileInfo(newOutputFilePath).absoluteFilePath(); // the host's current folder may change
    dataId = newDataId;
    receivedBytes = 0;
    writeFailed = false;
    const QString folder = QFileInfo(outputFilePath).absolutePath();
    if (!QDir().mkpath(folder))
        return refuse(Error::DownloadFolder, QStringLiteral("Could not create download path: ") + quoted(folder));
    outputFile.setFileName(outputFilePath);
    if (!outputFile.open(QIODevice::ReadWrite | QIODevice::Truncate))
        return refuse(Error::FileOpen, QStringLiteral("Could not open output file: ") + quoted(newOutputFilePath));
    return true;
}

bool DynDataDownload::refuse(Error error, const QString &message)
{
    logFailure(LOG_CATEGORY, message);
    Q_EMIT errorOccurred(downloadId, error);
    return false;
}

void DynDataDownload::attachReply(QNetworkReply *newReply)
{
    reply = newReply;
    if (!reply) {
        closeFile();
        complete(Error::Network);
        return;
    }
    reply->setParent(this);
    watchBody(reply);
    connect(reply, &QNetworkReply::readyRead, this, &DynDataDownload::onNetworkReplyReadyRead);
    connect(reply, &QNetworkReply::finished, this, &DynDataDownload::onNetworkReplyFinished);
}

void DynDataDownload::onNetworkReplyReadyRead()
{
    // Qt closes a reply that is given up, and would complain in the host's log when somebody reads it nevertheless.
    if (!reply || !reply->isOpen() || !outputFile.isOpen())
        return;
    const QByteArray chunk = readBody(*reply);
    receivedBytes += chunk.size();
    // The text of a refusal is not the data asked for.
    if (carriesContent(*reply) && outputFile.write(chunk) != chunk.size())
        writeFailed = true;
}

void DynDataDownload::onNetworkReplyFinished()
{
    if (!reply || sender() != reply)
        return;
    if (paused || aborted) {
        discard();
        return;
    }
    onNetworkReplyReadyRead(); // what came with the end of the reply
    const Error error = endOf(errorOf(*reply, receivedBytes));
    reply->deleteLater();
    reply.clear();
    closeFile();
    complete(error);
}

void DynDataDownload::discard()
{
    reply->deleteLater();
    reply.clear();
    outputFile.close();
    outputFile.remove();
}

// A full disk shows no earlier than here: until the flush the file only promises to write.
void DynDataDownload::closeFile()
{
    if (!outputFile.flush())
        writeFailed = true;
    outputFile.close();
}

// The end follows every error, so that the caller always sees one.
void DynDataDownload::complete(Error error)
{
    const QPointer<DynDataDownload> self(this);
    if (error != Error::None)
        Q_EMIT errorOccurred(downloadId, error);
    if (self && writeFailed && !aborted)
        refuse(Error::FileWrite,
               QStringLiteral("Error while writing to file: ") + quoted(outputFilePath) + QLatin1Char(' '));
    if (self && aborted) // by whoever heard of the error
        outputFile.remove();
    else if (self)
        Q_EMIT downloadCompleted(downloadId);
}

void DynDataDownload::abort()
{
    if (aborted)
        return;
    aborted = true;
    if (reply)
        reply->abort(); // its end discards the file
}

void DynDataDownload::pause()
{
    if (paused)
        return;
    paused = true;
    if (reply)
        reply->abort(); // its end discards the file
}

void DynDataDownload::resume()
{
    if (!paused || aborted)
        return;
    paused = false;
    if (start(outputFilePath, dataId))
        sendRequest();
    else
        Q_EMIT downloadCompleted(downloadId);
}

} // namespace Korvo::Web
