#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QPointer>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>

namespace Korvo::Web::TestSupport {

/// A reply without a network behind it: it arrives and ends as the test says, inside the call.
class FakeReply : public QNetworkReply
{
    Q_OBJECT

public:
    explicit FakeReply(QNetworkAccessManager::Operation operation = QNetworkAccessManager::GetOperation,
                       const QNetworkRequest &request = QNetworkRequest(), QObject *parent = nullptr);

    void setStatus(int status);
    /// Says a Content-Length.
    void announce(qint64 bytes);
    /// More of the body arrives.
    void receive(const QByteArray &bytes);
    /// Ends well after @p rest of the body.
    void finish(const QByteArray &rest = QByteArray());
    /// Ends with an error.
    void fail(QNetworkReply::NetworkError error, const QString &text = QStringLiteral("the cause"),
              const QByteArray &rest = QByteArray());

    /// Like Qt's own replies it closes, reports progress (0, 0) and finishes inside the call.
    void abort() override;
    qint64 bytesAvailable() const override;
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char *data, qint64 maxSize) override;

private:
    void end();

    QByteArray content;
};

/// Takes note of what is sent, and answers with replies that wait for the test's word.
class FakeNetwork : public QNetworkAccessManager
{
    Q_OBJECT

public:
    struct Sent
    {
        Operation operation;
        QNetworkRequest request;
        QByteArray body;
        QPointer<FakeReply> reply;
    };

    using QNetworkAccessManager::QNetworkAccessManager;

    const QList<Sent> &sent() const { return all; }
    int count() const { return all.size(); }
    /// The reply to the newest request; null when it has been deleted.
    FakeReply *last() const { return all.last().reply; }

protected:
    QNetworkReply *createRequest(Operation operation, const QNetworkRequest &request, QIODevice *body) override;

private:
    QList<Sent> all;
};

} // namespace Korvo::Web::TestSupport
