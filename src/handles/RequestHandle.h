#pragma once

#include <NQKorvoWeb/Error.h>

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtNetwork/QNetworkReply>

class QNetworkAccessManager;

namespace Korvo::Web {

/// Follows one request in flight to its end: reads the reply, logs transport failures, sends the request again where
/// that was enabled, and hands the text to its subclass, which parses it into a response and emits it.
///
/// Lives on the worker thread. Owns the reply in flight (as its child); is itself disposed of by whoever receives its
/// response, with deleteLater(). Deleting it earlier deletes the reply with it, without a signal.
class RequestHandle : public QObject
{
    Q_OBJECT

public:
    explicit RequestHandle(QObject *parent = nullptr);
    ~RequestHandle() override;

    /// Installs the reply in flight. One that was installed before is no longer watched and is deleted later.
    virtual void setReply(QNetworkReply *newReply);

    /// Allows up to five re-sends, at once and without a pause between them. @p manager is not owned.
    void enableRetry(QNetworkAccessManager *manager, const QByteArray &body);

    /// Aborts the reply in flight, if any; it finishes as cancelled inside this call.
    void abort();

    /// Waits in a local event loop until the reply has finished, @p timeoutMs milliseconds at most.
    ///
    /// @return the text of the reply, whatever its status: a reply that has finished counts as answered. After a
    ///         time-out an empty text, with TimeoutError in @p error; the reply then stays in flight.
    QString waitForReply(int timeoutMs, QNetworkReply::NetworkError *error = nullptr);

    /// How the last reply ended; what waitForReply() deliberately does not tell.
    QNetworkReply::NetworkError replyError() const { return lastError; }

    /// Whether a request is on its way.
    bool isInFlight() const { return reply != nullptr; }

Q_SIGNALS:
    /// A local file cannot be used. Emitted by the handles that move files, never by the base.
    void errorOccurred(Korvo::Web::Error error);

protected:
    virtual void retry();
    virtual void handleNetworkError();
    virtual void handleResponse(const QString &data, QNetworkReply::NetworkError error);
    virtual void handleUploadProgress(qint64 bytesSent, qint64 bytesTotal);

    /// Takes @p newReply as a child, or none; the one before is no longer watched and is deleted later.
    void replaceReply(QNetworkReply *newReply);
    /// Notes how the installed reply ended, given the bytes of its body that have arrived.
    void judgeReply(qint64 bytesReceived);
    bool mayRetry() const;
    void countRetry() { ++retryCount; }
    void sendAgain();
    /// Disposes of @p finishedReply; forgets it too if it is still the one installed.
    void disposeOf(QNetworkReply *finishedReply);
    QString className() const;

    QByteArray responseData;
    QByteArray requestBody;
    QNetworkReply *reply = nullptr;
    QNetworkAccessManager *networkManager = nullptr;
    qint32 retryCount = 0;
    bool retryEnabled = false;
    bool readsBytes = false; // handleResponse() wants responseData itself and gets no text
    bool tooLong = false;    // the reply was given up because it did not end
    QNetworkReply::NetworkError lastError = QNetworkReply::NoError;

protected Q_SLOTS:
    void onReplyFinished();
    void onReplyUploadProgress(qint64 bytesSent, qint64 bytesTotal);

private:
    void limitLength(qint64 bytesReceived);

    Q_DISABLE_COPY(RequestHandle)
};

/// The response of class @p ResponseClass to a reply with this text and this end.
template <class ResponseClass>
ResponseClass answered(const QString &text, QNetworkReply::NetworkError error)
{
    ResponseClass response;
    response.setOutcome(error);
    response.parse(text);
    return response;
}

/// Waits for the reply of @p handle and parses it; a time-out is a response with code 1.
template <class ResponseClass>
ResponseClass awaited(RequestHandle &handle, int timeoutMs)
{
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    const QString text = handle.waitForReply(timeoutMs, &error);
    return answered<ResponseClass>(text, error);
}

} // namespace Korvo::Web
