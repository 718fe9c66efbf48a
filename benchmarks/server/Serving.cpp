#include "server/Serving.h"

#include "server/Routes.h"
#include "support/Workload.h"

#include "Crypto.h"
#include "Text.h"

#include <algorithm>
#include <cctype>
#include <optional>

namespace Korvo::Bench {
namespace {

using LocalPlatform::Sha256;

// Short bodies are read; of the content of files nobody wants to know more than that it has come.
constexpr std::size_t KEPT_BYTES = 64 * 1024;
constexpr std::size_t PIECE_BYTES = 128 * 1024;

std::int64_t contentLength(const std::string &head)
{
    static const std::string NAME = "\r\ncontent-length:";
    const auto sameLetter = [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; };
    const auto found = std::search(head.begin(), head.end(), NAME.begin(), NAME.end(), sameLetter);
    return found == head.end() ? 0
                               : std::stoll(std::string(found + static_cast<std::ptrdiff_t>(NAME.size()), head.end()));
}

std::string_view targetOf(const std::string &head)
{
    const std::size_t start = head.find(' ') + 1;
    return std::string_view(head).substr(start, head.find(' ', start) - start);
}

/// Where answers go, and the hash of what was in them if somebody wants it.
class Output
{
public:
    Output(Connection &openConnection, bool hashWanted)
        : connection(openConnection)
        , wanted(hashWanted)
    {
    }

    bool send(const Answer &answer)
    {
        const std::int64_t length
            = answer.fileBytes < 0 ? static_cast<std::int64_t>(answer.text.size()) : answer.fileBytes;
        // Only the content of files is worth a comparison; the other answers carry dates.
        if (wanted && answer.fileBytes >= 0)
            hash.emplace();
        std::string head = "HTTP/1.1 " + std::to_string(answer.status) + (answer.status == 200 ? " OK" : " Refused")
                           + "\r\nContent-Type: " + answer.type + "\r\nContent-Length: " + std::to_string(length)
                           + "\r\n\r\n";
        return answer.fileBytes < 0 ? sendPiece(head, answer.text) : sendFile(head, answer);
    }

    std::string result() { return hash ? LocalPlatform::hexEncoded(hash->result()) : std::string("(text)"); }

private:
    bool sendFile(std::string &head, const Answer &answer)
    {
        std::size_t at = answer.fileStart;
        std::int64_t left = answer.fileBytes;
        do {
            const std::string_view piece
                = std::string_view(contentBlock())
                      .substr(at, static_cast<std::size_t>(std::min<std::int64_t>(left, PIECE_BYTES)));
            if (!sendPiece(head, piece))
                return false;
            head.clear();
            left -= static_cast<std::int64_t>(piece.size());
            at = (at + piece.size()) % contentBlock().size();
        } while (left > 0);
        return true;
    }

    // A short answer is one record and one packet.
    bool sendPiece(const std::string &head, std::string_view piece)
    {
        if (hash)
            hash->add(piece);
        return head.empty() ? connection.write(piece) : connection.write(head + std::string(piece));
    }

    Connection &connection;
    bool wanted;
    std::optional<Sha256> hash;
};

} // namespace

void serve(Connection &connection, Record &record)
{
    std::string head;
    std::string body;
    while (connection.readHead(&head)) {
        std::optional<Sha256> bodyHash;
        if (record.isWanted())
            bodyHash.emplace();
        body.clear();
        const auto take = [&](std::string_view piece) {
            if (body.size() < KEPT_BYTES)
                body += piece;
            if (bodyHash)
                bodyHash->add(piece);
        };
        if (!connection.readBody(contentLength(head), take))
            return;
        Output output(connection, record.isWanted());
        if (!output.send(answerTo(targetOf(head), body)))
            return;
        if (bodyHash)
            record.add(head, LocalPlatform::hexEncoded(bodyHash->result()), output.result());
    }
}

} // namespace Korvo::Bench
