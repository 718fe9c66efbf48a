#include "ConnectProxy.h"

#include "Text.h"
#include "TlsStream.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <deque>
#include <vector>

namespace LocalPlatform {
namespace {

using SteadyClock = std::chrono::steady_clock;
using TimePoint = SteadyClock::time_point;

constexpr std::size_t HEAD_LIMIT = 16 * 1024;
constexpr int HEAD_WAIT_MILLISECONDS = 10000;
constexpr std::size_t PIECE_BYTES = 64 * 1024;
constexpr std::size_t QUEUE_LIMIT = 1024 * 1024;
constexpr int IDLE_MILLISECONDS = 250;
constexpr std::int64_t DEFAULT_CUT_BYTES = 65536;

void acknowledgeAtOnce(int socket)
{
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on);
}

bool sendAll(int socket, const std::string &text)
{
    return ::send(socket, text.data(), text.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(text.size());
}

/// The bytes up to and including the blank line; empty if none comes.
std::string readHead(int client)
{
    std::string head;
    char c = 0;
    while (head.size() < HEAD_LIMIT && !endsWith(head, "\r\n\r\n")) {
        pollfd entry{client, POLLIN, 0};
        if (poll(&entry, 1, HEAD_WAIT_MILLISECONDS) <= 0 || recv(client, &c, 1, 0) != 1)
            return {};
        head += c;
    }
    return endsWith(head, "\r\n\r\n") ? head : std::string();
}

bool hasLeft(int socket)
{
    pollfd entry{socket, POLLRDHUP, 0};
    return poll(&entry, 1, 0) != 0;
}

int connectTo(const std::string &address, int port)
{
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICHOST;
    addrinfo *found = nullptr;
    if (getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &found) != 0)
        return -1;
    const int target = ::socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool ok = target >= 0 && connect(target, found->ai_addr, found->ai_addrlen) == 0;
    freeaddrinfo(found);
    if (ok)
        return target;
    ::close(target);
    return -1;
}

/// Who listens on all addresses is reached on the loopback one.
std::string reachableAddress(const std::string &listenAddress)
{
    if (listenAddress == "0.0.0.0")
        return "127.0.0.1";
    return listenAddress == "::" ? "::1" : listenAddress;
}

/// One way through a tunnel: what was read waits here until it may go on.
struct Direction
{
    int from;
    int to;
    struct Piece
    {
        std::string bytes;
        TimePoint due;
    };
    std::deque<Piece> queue{};
    std::size_t queued = 0;
    std::size_t firstSent = 0;
    TimePoint freeAt{};
    bool ended = false;
    bool closed = false;
};

/// Moves bytes both ways until both ends are closed, under the tunnel fault in force.
class Tunnel
{
public:
    Tunnel(int clientSocket, int serverSocket, std::string hostName, Faults &faultsInForce, const std::atomic<bool> &stopFlag)
        : host(std::move(hostName)), faults(faultsInForce), stopping(stopFlag),
          ways{Direction{clientSocket, serverSocket}, Direction{serverSocket, clientSocket}}
    {
    }

    void run()
    {
        while (!stopping && !over && !(ways[0].closed && ways[1].closed)) {
            takeFault();
            step();
        }
    }

private:
    void takeFault()
    {
        if (generation == faults.generation())
            return;
        generation = faults.generation();
        if (fault && !faults.isInForce(fault->id))
            fault.reset();
        if (!fault && !isEnding() && (fault = faults.takeForTunnel(host)))
            movedUnderFault = 0;
    }

    /// A tunnel that one end has left has nothing to do with what is asked for next.
    bool isEnding() const { return hasLeft(ways[0].from) || hasLeft(ways[1].from); }

    bool is(const char *kind) const { return fault && fault->kind == kind; }

    /// Bytes that may still pass before the fault strikes; -1 without limit.
    std::int64_t allowance() const
    {
        if (!is("tunnelCut") && !is("tunnelReset") && !is("tunnelStall"))
            return -1;
        const std::int64_t limit = fault->bytes < 0 ? DEFAULT_CUT_BYTES : fault->bytes;
        return std::max<std::int64_t>(0, limit - movedUnderFault);
    }

    void step()
    {
        const TimePoint now = SteadyClock::now();
        std::vector<pollfd> entries;
        int wait = IDLE_MILLISECONDS;
        for (Direction &way : ways) {
            const bool sendable = !way.queue.empty() && dueTime(way) <= now;
            if (!way.queue.empty() && !sendable)
                wait = std::min(wait, 1 + static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(dueTime(way) - now).count()));
            entries.push_back({way.from, static_cast<short>(!way.ended && way.queued < QUEUE_LIMIT ? POLLIN : 0), 0});
            entries.push_back({way.to, static_cast<short>(sendable ? POLLOUT : 0), 0});
        }
        for (pollfd &entry : entries)
            if (entry.events == 0)
                entry.fd = -1;
        poll(entries.data(), entries.size(), wait);
        for (std::size_t i = 0; i < ways.size() && !over; ++i) {
            if (entries[2 * i].revents != 0)
                receive(ways[i]);
            if (entries[2 * i + 1].revents != 0 && !over)
                deliver(ways[i]);
            closeIfDone(ways[i]);
        }
    }

    TimePoint dueTime(const Direction &way) const { return std::max(way.queue.front().due, way.freeAt); }

    void receive(Direction &way)
    {
        std::string bytes(PIECE_BYTES, '\0');
        acknowledgeAtOnce(way.from);
        const ssize_t count = recv(way.from, bytes.data(), bytes.size(), MSG_DONTWAIT);
        acknowledgeAtOnce(way.from);
        if (count < 0 && (errno == EAGAIN || errno == EINTR))
            return;
        if (count < 0) {
            passResetOn(way);
            return;
        }
        if (count == 0) {
            way.ended = true;
            return;
        }
        takeFault();
        bytes.resize(static_cast<std::size_t>(count));
        const auto late = std::chrono::milliseconds(is("tunnelLatency") ? fault->delayMs : 0);
        way.queued += bytes.size();
        way.queue.push_back({std::move(bytes), SteadyClock::now() + late});
        if (way.queue.size() == 1)
            deliver(way);
    }

    void deliver(Direction &way)
    {
        if (way.queue.empty() || dueTime(way) > SteadyClock::now())
            return;
        Direction::Piece &piece = way.queue.front();
        std::size_t wanted = piece.bytes.size() - way.firstSent;
        if (is("tunnelBandwidth"))
            wanted = std::min<std::size_t>(wanted, static_cast<std::size_t>(std::max<std::int64_t>(1, fault->bytesPerSecond / 20)));
        const std::int64_t allowed = allowance();
        if (allowed >= 0)
            wanted = std::min(wanted, static_cast<std::size_t>(allowed));
        const ssize_t count = wanted == 0 ? 0 : ::send(way.to, piece.bytes.data() + way.firstSent, wanted, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count < 0 && errno != EAGAIN && errno != EINTR) {
            passResetOn(way);
            return;
        }
        countDelivered(way, std::max<ssize_t>(0, count));
        if (allowance() == 0)
            strike(way);
    }

    void countDelivered(Direction &way, ssize_t count)
    {
        movedUnderFault += count;
        way.queued -= static_cast<std::size_t>(count);
        way.firstSent += static_cast<std::size_t>(count);
        if (is("tunnelBandwidth"))
            way.freeAt = SteadyClock::now() + std::chrono::microseconds(count * 1000000 / fault->bytesPerSecond);
        if (way.firstSent < way.queue.front().bytes.size())
            return;
        way.queue.pop_front();
        way.firstSent = 0;
    }

    void strike(Direction &way)
    {
        if (is("tunnelStall")) {
            // Asked again a little later: clearing the fault lets the tunnel go on.
            way.freeAt = SteadyClock::now() + std::chrono::milliseconds(50);
            return;
        }
        if (is("tunnelReset"))
            for (const Direction &end : ways) {
                waitUntilSent(end.to);
                resetOnClose(end.to);
            }
        over = true;
    }

    /// A reset on one side becomes a reset on the other, after what was read before it.
    void passResetOn(Direction &way)
    {
        for (; !way.queue.empty() && allowance() < 0; way.queue.pop_front(), way.firstSent = 0) {
            const std::string &bytes = way.queue.front().bytes;
            if (::send(way.to, bytes.data() + way.firstSent, bytes.size() - way.firstSent, MSG_NOSIGNAL) < 0)
                break;
        }
        waitUntilSent(way.to);
        resetOnClose(way.to);
        over = true;
    }

    static void closeIfDone(Direction &way)
    {
        if (!way.ended || !way.queue.empty() || way.closed)
            return;
        shutdown(way.to, SHUT_WR);
        way.closed = true;
    }

    std::string host;
    Faults &faults;
    const std::atomic<bool> &stopping;
    std::vector<Direction> ways;
    std::optional<Fault> fault;
    std::int64_t generation = 0;
    std::int64_t movedUnderFault = 0;
    bool over = false;
};

/// Host of "CONNECT host:port HTTP/1.1"; empty if it is no such request.
std::string connectHost(const std::string &head)
{
    const std::vector<std::string> words = split(head.substr(0, head.find("\r\n")), ' ');
    if (words.size() != 3 || words[0] != "CONNECT" || !startsWith(words[2], "HTTP/1."))
        return {};
    return lowered(words[1].substr(0, words[1].rfind(':')));
}

} // namespace

ConnectProxy::ConnectProxy(const std::string &address, int wantedPort, int platformPort, Faults &faultsInForce)
    : faults(faultsInForce), targetAddress(reachableAddress(address)), targetPort(platformPort),
      listener(address, wantedPort, [this](int client) { serve(client); })
{
}

void ConnectProxy::stop()
{
    stopping = true;
    listener.stop();
}

void ConnectProxy::serve(int client)
{
    const std::string head = readHead(client);
    if (head.empty())
        return;
    const std::string host = connectHost(head);
    if (host.empty()) {
        sendAll(client, "HTTP/1.1 405 Method Not Allowed\r\nAllow: CONNECT\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        return;
    }
    if (const auto refused = faults.takeForConnect(host)) {
        sendAll(client, "HTTP/1.1 " + std::to_string(refused->status) + " Refused\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        return;
    }
    const int server = connectTo(targetAddress, targetPort);
    if (server < 0) {
        sendAll(client, "HTTP/1.1 502 Bad Gateway\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
        return;
    }
    setNoDelay(server);
    if (sendAll(client, "HTTP/1.1 200 Connection established\r\n\r\n"))
        Tunnel(client, server, host, faults, stopping).run();
    ::close(server);
}

} // namespace LocalPlatform
