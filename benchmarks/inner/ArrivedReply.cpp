#include "inner/ArrivedReply.h"

#include <QtNetwork/QNetworkRequest>

#include <cstring>

namespace Korvo::Bench {
namespace {

constexpr std::size_t PIECE_BYTES = 16 * 1024;
constexpr int OK = 200;

} // namespace

ArrivedReply::ArrivedReply(const std::string &text)
    : left(qint64(text.size()))
{
    setOperation(QNetworkAccessManager::PostOperation);
    setAttribute(QNetworkRequest::HttpStatusCodeAttribute, OK);
    setHeader(QNetworkRequest::ContentLengthHeader, left);
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    for (std::size_t at = 0; at < text.size(); at += PIECE_BYTES)
        pieces.emplace_back(text.data() + at, int(std::min(PIECE_BYTES, text.size() - at)));
}

void ArrivedReply::finish()
{
    setFinished(true);
    Q_EMIT finished();
}

qint64 ArrivedReply::readData(char *target, qint64 most)
{
    qint64 done = 0;
    while (done < most && !pieces.empty()) {
        const QByteArray &piece = pieces.front();
        const auto count = int(qMin(most - done, qint64(piece.size() - readOfFirst)));
        std::memcpy(target + done, piece.constData() + readOfFirst, size_t(count));
        done += count;
        readOfFirst += count;
        if (readOfFirst < piece.size())
            break;
        pieces.pop_front();
        readOfFirst = 0;
    }
    left -= done;
    return done;
}

} // namespace Korvo::Bench
