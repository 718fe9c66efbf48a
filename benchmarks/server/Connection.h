#pragma once

#include <openssl/ssl.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace Korvo::Bench {

/// One TLS connection, opened directly or behind a CONNECT. Acknowledges at once whatever comes.
class Connection
{
public:
    using Taker = std::function<void(std::string_view)>;

    Connection(int connectedSocket, SSL_CTX *context);

    /// Answers a CONNECT, if that is what comes first, and shakes hands.
    bool open();
    /// The next request up to its blank line; false when the client has gone.
    bool readHead(std::string *head);
    /// The next @p bytes, piece by piece.
    bool readBody(std::int64_t bytes, const Taker &take);
    bool write(std::string_view bytes);

private:
    bool answerConnect();
    bool refill();
    std::string_view taken(std::size_t most);

    int descriptor;
    std::unique_ptr<SSL, decltype(&SSL_free)> tls;
    std::string input;
    std::size_t inputAt = 0;
};

/// Makes a context fit for large transfers: TLS 1.3 only, many records in one receive.
void tuneForTransfers(SSL_CTX *context);

} // namespace Korvo::Bench
