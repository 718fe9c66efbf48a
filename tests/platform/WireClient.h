#pragma once

#include <openssl/ssl.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace PlatformTest {

/// How the reading of an answer came to its end.
enum class Ending { Complete, Closed, Reset, TimedOut };

struct WireRequest
{
    std::string method;
    std::string target;
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;
    std::string host = "localhost";

    /// The bytes of the request; a Content-Length is added for PUT and POST unless there is one.
    std::string bytes() const;
};

struct WireAnswer
{
    std::string raw; ///< everything that came
    std::string head;
    int status = 0;
    std::map<std::string, std::string> headers; ///< names in lower case
    std::string body;
    std::int64_t announced = -1; ///< the Content-Length
    Ending ending = Ending::TimedOut;
    std::int64_t milliseconds = 0;
};

/// One TLS connection, seen byte by byte: what an HTTP library would hide, a test of faults has to see.
class WireClient
{
public:
    /// Directly to a port of 127.0.0.1, or through the CONNECT proxy there.
    static std::unique_ptr<WireClient> direct(int port, const std::string &authority, const std::string &host = "localhost");
    static std::unique_ptr<WireClient> tunnelled(int proxyPort, const std::string &authority, const std::string &host);
    ~WireClient();
    WireClient(const WireClient &) = delete;
    WireClient &operator=(const WireClient &) = delete;

    bool isConnected() const { return connected; }
    bool wasReset() const { return sawReset; }

    /// Why there is no TLS connection, and what the proxy answered.
    const std::string &failure() const { return failureText; }
    int proxyStatus() const { return connectStatus; }

    bool send(const std::string &bytes);
    WireAnswer receive(int milliseconds = 10000, std::size_t stopAfter = SIZE_MAX);
    WireAnswer exchange(const WireRequest &request, int milliseconds = 10000);

private:
    WireClient() = default;
    void connectTo(int port);
    bool askForTunnel(const std::string &host);
    void startTls(const std::string &authority, const std::string &host);
    int readSome(char *bytes, int size, int milliseconds);

    int descriptor = -1;
    SSL_CTX *context = nullptr;
    SSL *session = nullptr;
    bool connected = false;
    bool sawReset = false;
    int connectStatus = 0;
    std::string failureText;
};

/// A plain TCP exchange: sends, then reads until the end or the limit.
std::string plainExchange(int port, const std::string &bytes, int milliseconds = 3000);

} // namespace PlatformTest
