#include "WireClient.h"

#include <openssl/err.h>
#include <openssl/x509v3.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>

namespace PlatformTest {
namespace {

constexpr int CONNECT_MILLISECONDS = 5000;

std::string loweredText(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

int connectedSocket(int port)
{
    const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        ::close(descriptor);
        return -1;
    }
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return descriptor;
}

void setReceiveLimit(int descriptor, int milliseconds)
{
    const timeval limit{milliseconds / 1000, (milliseconds % 1000) * 1000};
    setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
}

void parseHead(WireAnswer &answer)
{
    const std::size_t end = answer.raw.find("\r\n\r\n");
    if (!answer.head.empty() || end == std::string::npos)
        return;
    answer.head = answer.raw.substr(0, end + 4);
    if (answer.head.compare(0, 7, "HTTP/1.") == 0)
        answer.status = std::atoi(answer.head.c_str() + 9);
    std::size_t at = answer.head.find("\r\n") + 2;
    while (at < end) {
        const std::size_t lineEnd = answer.head.find("\r\n", at);
        const std::string line = answer.head.substr(at, lineEnd - at);
        const std::size_t colon = line.find(": ");
        if (colon != std::string::npos)
            answer.headers[loweredText(line.substr(0, colon))] = line.substr(colon + 2);
        at = lineEnd + 2;
    }
    const auto length = answer.headers.find("content-length");
    if (length != answer.headers.end())
        answer.announced = std::atoll(length->second.c_str());
}

bool isComplete(const WireAnswer &answer)
{
    return !answer.head.empty() && answer.announced >= 0 &&
           answer.raw.size() >= answer.head.size() + static_cast<std::size_t>(answer.announced);
}

} // namespace

std::string WireRequest::bytes() const
{
    std::string text = method + " " + target + " HTTP/1.1\r\nHost: " + host + "\r\n";
    bool hasLength = method != "PUT" && method != "POST";
    for (const auto &[name, value] : headers) {
        text += name + ": " + value + "\r\n";
        hasLength = hasLength || loweredText(name) == "content-length" || loweredText(name) == "transfer-encoding";
    }
    if (!hasLength)
        text += "Content-Length: " + std::to_string(body.size()) + "\r\n";
    return text + "\r\n" + body;
}

std::unique_ptr<WireClient> WireClient::direct(int port, const std::string &authority, const std::string &host)
{
    std::unique_ptr<WireClient> client(new WireClient);
    client->connectTo(port);
    if (client->descriptor >= 0)
        client->startTls(authority, host);
    return client;
}

std::unique_ptr<WireClient> WireClient::tunnelled(int proxyPort, const std::string &authority, const std::string &host)
{
    std::unique_ptr<WireClient> client(new WireClient);
    client->connectTo(proxyPort);
    if (client->descriptor >= 0 && client->askForTunnel(host))
        client->startTls(authority, host);
    return client;
}

WireClient::~WireClient()
{
    SSL_free(session);
    SSL_CTX_free(context);
    if (descriptor >= 0)
        ::close(descriptor);
}

void WireClient::connectTo(int port)
{
    std::signal(SIGPIPE, SIG_IGN);
    descriptor = connectedSocket(port);
    if (descriptor < 0)
        failureText = "no connection";
    else
        setReceiveLimit(descriptor, CONNECT_MILLISECONDS);
}

bool WireClient::askForTunnel(const std::string &host)
{
    const std::string request = "CONNECT " + host + ":443 HTTP/1.1\r\nHost: " + host + ":443\r\n\r\n";
    if (::send(descriptor, request.data(), request.size(), MSG_NOSIGNAL) < 0)
        return false;
    std::string head;
    char c = 0;
    while (head.find("\r\n\r\n") == std::string::npos && recv(descriptor, &c, 1, 0) == 1)
        head += c;
    connectStatus = head.size() > 9 ? std::atoi(head.c_str() + 9) : 0;
    if (connectStatus != 200)
        failureText = "the proxy refused";
    return connectStatus == 200;
}

void WireClient::startTls(const std::string &authority, const std::string &host)
{
    context = SSL_CTX_new(TLS_client_method());
    SSL_CTX_load_verify_locations(context, authority.c_str(), nullptr);
    SSL_CTX_set_verify(context, SSL_VERIFY_PEER, nullptr);
    session = SSL_new(context);
    SSL_set_fd(session, descriptor);
    // An address is checked as such, and never named in the handshake.
    if (X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(session), host.c_str()) != 1) {
        SSL_set_tlsext_host_name(session, host.c_str());
        SSL_set1_host(session, host.c_str());
    }
    errno = 0;
    connected = SSL_connect(session) == 1;
    sawReset = !connected && errno == ECONNRESET;
    if (connected)
        return;
    const long verified = SSL_get_verify_result(session);
    failureText = sawReset ? "reset" : verified != X509_V_OK ? X509_verify_cert_error_string(verified) : "no handshake";
}

bool WireClient::send(const std::string &bytes)
{
    if (!connected)
        return false;
    std::size_t at = 0;
    while (at < bytes.size()) {
        errno = 0;
        const int count = SSL_write(session, bytes.data() + at, static_cast<int>(std::min<std::size_t>(bytes.size() - at, 16384)));
        if (count <= 0) {
            // Whoever meets the reset while writing does not meet it again while reading.
            sawReset = errno == ECONNRESET || errno == EPIPE;
            return false;
        }
        at += static_cast<std::size_t>(count);
    }
    return true;
}

int WireClient::readSome(char *bytes, int size, int milliseconds)
{
    setReceiveLimit(descriptor, std::max(1, milliseconds));
    ERR_clear_error();
    errno = 0;
    return SSL_read(session, bytes, size);
}

WireAnswer WireClient::receive(int milliseconds, std::size_t stopAfter)
{
    using namespace std::chrono;
    const auto started = steady_clock::now();
    const auto elapsed = [&started] { return static_cast<int>(duration_cast<std::chrono::milliseconds>(steady_clock::now() - started).count()); };
    WireAnswer answer;
    std::vector<char> buffer(65536);
    while (connected && !isComplete(answer) && answer.raw.size() < stopAfter) {
        const int left = milliseconds - elapsed();
        const int count = left <= 0 ? -1 : readSome(buffer.data(), static_cast<int>(buffer.size()), left);
        if (count <= 0) {
            const int code = errno;
            answer.ending = sawReset || code == ECONNRESET ? Ending::Reset : left <= 0 || code == EAGAIN ? Ending::TimedOut : Ending::Closed;
            break;
        }
        answer.raw.append(buffer.data(), static_cast<std::size_t>(count));
        parseHead(answer);
    }
    if (isComplete(answer))
        answer.ending = Ending::Complete;
    answer.body = answer.raw.substr(answer.head.size());
    answer.milliseconds = elapsed();
    return answer;
}

WireAnswer WireClient::exchange(const WireRequest &request, int milliseconds)
{
    send(request.bytes());
    return receive(milliseconds);
}

std::string plainExchange(int port, const std::string &bytes, int milliseconds)
{
    const int descriptor = connectedSocket(port);
    setReceiveLimit(descriptor, milliseconds);
    ::send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    shutdown(descriptor, SHUT_WR);
    std::string answer;
    char buffer[4096];
    for (ssize_t count = recv(descriptor, buffer, sizeof buffer, 0); count > 0; count = recv(descriptor, buffer, sizeof buffer, 0))
        answer.append(buffer, static_cast<std::size_t>(count));
    ::close(descriptor);
    return answer;
}

} // namespace PlatformTest
