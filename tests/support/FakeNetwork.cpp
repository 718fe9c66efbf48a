#include "support/FakeNetwork.h"

#include <cstring>

namespace Korvo::Web::TestSupport {

FakeReply::FakeReply(QNetworkAccessManager::Operation newOperation, const QNetworkRequest &newRequest, QObject *parent)
    : QNetworkReply(parent)
{
    setOperation(newOperation);
    setRequest(newRequest);
    setUrl(newRequest.url());
    setStatus(200);
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

void FakeReply::setStatus(int status)
{
    setAttribute(QNetworkRequest::HttpStatusCodeAttribute, status);
}

void FakeReply::announce(qint64 bytes)
{
    setHeader(QNetworkRequest::ContentLengthHeader, bytes);
}

void FakeReply::receive(const QByteArray &bytes)
{
    content += bytes;
    Q_EMIT readyRead();
}

void FakeReply::finish(const QByteArray &rest)
{
    content += rest;
    end();
}

void FakeReply::fail(QNetworkReply::NetworkError newError, const QString &text, const QByteArray &rest)
{
    content += rest;
    setError(newError, text);
    end();
}

void FakeReply::abort()
{
    if (isFinished())
        return;
    close();
    setError(OperationCanceledError, QStringLiteral("Operation canceled"));
    Q_EMIT uploadProgress(0, 0);
    end();
}

qint64 FakeReply::bytesAvailable() const
{
    return content.size() + QNetworkReply::bytesAvailable();
}

qint64 FakeReply::readData(char *data, qint64 maxSize)
{
    const int size = int(qMin(maxSize, qint64(content.size())));
    std::memcpy(data, content.constData(), size_t(size));
    content.remove(0, size);
    return size;
}

void FakeReply::end()
{
    setFinished(true);
    Q_EMIT finished();
}

QNetworkReply *FakeNetwork::createRequest(Operation operation, const QNetworkRequest &request, QIODevice *body)
{
    auto *const reply = new FakeReply(operation, request, this);
    all.append({operation, request, body ? body->readAll() : QByteArray(), reply});
    return reply;
}

} // namespace Korvo::Web::TestSupport
