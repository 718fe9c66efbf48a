#include "TlsStream.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <linux/sockios.h>

#include <algorithm>
#include <string_view>

namespace LocalPlatform {
namespace {

constexpr std::size_t INPUT_BYTES = 64 * 1024;
constexpr std::size_t OUTPUT_BYTES = 64 * 1024;
constexpr std::int64_t HEADER_LIMIT = 256 * 1024;
constexpr std::string_view INTERIM = "HTTP/1.1 100 ";
constexpr int SENT_CHECK_MILLISECONDS = 1;
constexpr int SENT_WAIT_MILLISECONDS = 2000;

void addressOf(const sockaddr_storage &address, std::string &ip, int &port)
{
    char text[INET6_ADDRSTRLEN] = "";
    if (address.ss_family == AF_INET) {
        const auto *v4 = reinterpret_cast<const sockaddr_in *>(&address);
        inet_ntop(AF_INET, &v4->sin_addr, text, sizeof text);
        port = ntohs(v4->sin_port);
    } else if (address.ss_family == AF_INET6) {
        const auto *v6 = reinterpret_cast<const sockaddr_in6 *>(&address);
        inet_ntop(AF_INET6, &v6->sin6_addr, text, sizeof text);
        port = ntohs(v6->sin6_port);
    }
    ip = text;
}

/// "100 Continue" precedes the answer proper and takes no damage.
bool isInterimAnswer(const char *source, std::size_t size)
{
    return std::string_view(source, size).substr(0, INTERIM.size()) == INTERIM;
}

} // namespace

void waitUntilSent(int descriptor)
{
    int pending = 0;
    for (int waited = 0; waited < SENT_WAIT_MILLISECONDS; waited += SENT_CHECK_MILLISECONDS) {
        if (ioctl(descriptor, SIOCOUTQ, &pending) != 0 || pending == 0)
            return;
        pollfd entry{descriptor, 0, 0};
        if (poll(&entry, 1, SENT_CHECK_MILLISECONDS) != 0)
            return;
    }
}

void resetOnClose(int descriptor)
{
    const linger option{1, 0};
    setsockopt(descriptor, SOL_SOCKET, SO_LINGER, &option, sizeof option);
}

TlsStream::TlsStream(int connectedSocket, SSL *session) : descriptor(connectedSocket), tls(session) {}

bool TlsStream::is_readable() const
{
    return !broken && (inputAt < input.size() || SSL_pending(tls) > 0);
}

bool TlsStream::is_writable() const
{
    return !broken;
}

void TlsStream::acknowledgeAtOnce() const
{
    // Clients send header and body apart with Nagle's algorithm on; a delayed acknowledgement would cost 40 ms a request.
    // The kernel forgets the option, so it is set around every receive.
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on);
}

ssize_t TlsStream::refill()
{
    input.resize(INPUT_BYTES);
    inputAt = 0;
    acknowledgeAtOnce();
    const int count = SSL_read(tls, input.data(), static_cast<int>(input.size()));
    acknowledgeAtOnce();
    input.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return count;
}

ssize_t TlsStream::read(char *target, size_t size)
{
    if (broken || size == 0)
        return broken ? -1 : 0;
    if (inHeaders && requestBytes > HEADER_LIMIT)
        return -1;
    if (!inHeaders && requestLimit >= 0 && requestBytes >= requestLimit) {
        breakOff(requestEnding);
        return -1;
    }
    // Whoever is asked to go on must have been told so before he is waited for.
    gone = inputAt == input.size() && (!flush() || refill() <= 0);
    if (gone)
        return -1;
    std::size_t count = std::min(size, input.size() - inputAt);
    if (!inHeaders && requestLimit >= 0)
        count = static_cast<std::size_t>(std::min<std::int64_t>(static_cast<std::int64_t>(count), requestLimit - requestBytes));
    std::copy_n(input.data() + inputAt, count, target);
    inputAt += count;
    requestBytes += static_cast<std::int64_t>(count);
    return static_cast<ssize_t>(count);
}

std::int64_t TlsStream::allowance(std::size_t size) const
{
    const auto wanted = static_cast<std::int64_t>(size);
    switch (damage.cutFrom) {
    case AnswerDamage::Base::None:    return wanted;
    case AnswerDamage::Base::Headers: return damage.cutAfter - answerBytes;
    case AnswerDamage::Base::Body:    return answerHeaderBytes + damage.cutAfter - answerBytes;
    }
    return wanted;
}

ssize_t TlsStream::write(const char *source, size_t size)
{
    if (broken)
        return -1;
    if (isInterimAnswer(source, size))
        return send(source, size) ? static_cast<ssize_t>(size) : -1;
    const bool headers = answerBytes == 0;
    if (headers)
        answerHeaderBytes = static_cast<std::int64_t>(size);
    if (headers && !damage.insteadOfHeaders.empty()) {
        send(damage.insteadOfHeaders.data(), damage.insteadOfHeaders.size());
        breakOff(Ending::Close);
        return -1;
    }
    const std::int64_t allowed = allowance(size);
    const auto count = static_cast<std::size_t>(std::clamp<std::int64_t>(allowed, 0, static_cast<std::int64_t>(size)));
    if (!sendPart(source, count))
        return -1;
    if (count < size || (damage.cutFrom == AnswerDamage::Base::Body && allowed == static_cast<std::int64_t>(size) && headers)) {
        breakOff(damage.ending);
        return -1;
    }
    return static_cast<ssize_t>(size);
}

bool TlsStream::sendPart(const char *source, std::size_t size)
{
    const std::int64_t flip = damage.flipAt < 0 ? -1 : answerHeaderBytes + damage.flipAt - answerBytes;
    answerBytes += static_cast<std::int64_t>(size);
    if (flip < 0 || flip >= static_cast<std::int64_t>(size))
        return send(source, size);
    std::string changed(source, size);
    changed[static_cast<std::size_t>(flip)] = static_cast<char>(changed[static_cast<std::size_t>(flip)] ^ 1);
    return send(changed.data(), changed.size());
}

bool TlsStream::send(const char *source, std::size_t size)
{
    if (damage.bytesPerSecond > 0)
        return sendSlowly(source, size);
    output.append(source, size);
    return output.size() < OUTPUT_BYTES || flush();
}

bool TlsStream::sendSlowly(const char *source, std::size_t size)
{
    const auto perTick = static_cast<std::size_t>(std::max<std::int64_t>(1, damage.bytesPerSecond / 10));
    const std::int64_t tick = damage.bytesPerSecond < 10 ? 1000 / damage.bytesPerSecond : 100;
    for (std::size_t at = 0; at < size; at += perTick) {
        output.append(source + at, std::min(perTick, size - at));
        if (!flush())
            return false;
        wait(tick);
    }
    return true;
}

bool TlsStream::flush()
{
    std::size_t at = 0;
    while (!broken && at < output.size()) {
        const int count = SSL_write(tls, output.data() + at, static_cast<int>(output.size() - at));
        if (count <= 0)
            broken = true;
        else
            at += static_cast<std::size_t>(count);
    }
    output.clear();
    return !broken;
}

bool TlsStream::waitForRequest(int milliseconds)
{
    if (is_readable())
        return true;
    pollfd entry{descriptor, POLLIN, 0};
    return poll(&entry, 1, milliseconds) > 0 && refill() > 0;
}

void TlsStream::wait(std::int64_t milliseconds) const
{
    pollfd entry{descriptor, POLLRDHUP, 0};
    poll(&entry, 1, static_cast<int>(std::min<std::int64_t>(milliseconds, 24 * 3600 * 1000)));
}

void TlsStream::holdUntilGone()
{
    pollfd entry{descriptor, POLLRDHUP, 0};
    poll(&entry, 1, -1);
}

void TlsStream::breakOff(Ending ending)
{
    flush();
    if (ending == Ending::Stall)
        holdUntilGone();
    if (ending == Ending::Reset)
        waitUntilSent(descriptor);
    reset = ending == Ending::Reset;
    broken = true;
}

void TlsStream::startRequest()
{
    inHeaders = true;
    requestBytes = 0;
    requestLimit = -1;
    answerBytes = 0;
    answerHeaderBytes = 0;
    damage = {};
}

void TlsStream::headersAreRead()
{
    inHeaders = false;
    requestBytes = 0;
}

void TlsStream::limitRequestBody(std::int64_t bytes, Ending ending)
{
    requestLimit = bytes;
    requestEnding = ending;
}

void TlsStream::get_remote_ip_and_port(std::string &ip, int &port) const
{
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    if (getpeername(descriptor, reinterpret_cast<sockaddr *>(&address), &length) == 0)
        addressOf(address, ip, port);
}

void TlsStream::get_local_ip_and_port(std::string &ip, int &port) const
{
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    if (getsockname(descriptor, reinterpret_cast<sockaddr *>(&address), &length) == 0)
        addressOf(address, ip, port);
}

} // namespace LocalPlatform
