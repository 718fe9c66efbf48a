#pragma once

#include <QtNetwork/QNetworkReply>

#include <deque>
#include <string>

namespace Korvo::Bench {

/// A reply that has arrived whole but for its end, held as Qt's own replies hold theirs: in pieces, each let go when it
/// has been read.
class ArrivedReply : public QNetworkReply
{
    Q_OBJECT

public:
    explicit ArrivedReply(const std::string &text);

    void finish();
    void abort() override { }
    qint64 bytesAvailable() const override { return left + QNetworkReply::bytesAvailable(); }
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char *target, qint64 most) override;

private:
    std::deque<QByteArray> pieces;
    int readOfFirst = 0;
    qint64 left = 0;
};

} // namespace Korvo::Bench
