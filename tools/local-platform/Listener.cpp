#include "Listener.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>

namespace LocalPlatform {
namespace {

constexpr int BACKLOG = 512;

// A tunnelled connection takes three descriptors, and the HTTP library refuses those that select() cannot take (1024).
constexpr std::size_t MOST_CONNECTIONS = 250;
constexpr std::chrono::milliseconds ACCEPT_PAUSE{100};

[[noreturn]] void fail(const std::string &what)
{
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

int portOf(int socket)
{
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    getsockname(socket, reinterpret_cast<sockaddr *>(&address), &length);
    if (address.ss_family == AF_INET6)
        return ntohs(reinterpret_cast<const sockaddr_in6 *>(&address)->sin6_port);
    return ntohs(reinterpret_cast<const sockaddr_in *>(&address)->sin_port);
}

int listeningSocket(const std::string &address, int port)
{
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_PASSIVE | AI_NUMERICHOST;
    addrinfo *found = nullptr;
    if (getaddrinfo(address.c_str(), std::to_string(port).c_str(), &hints, &found) != 0)
        throw std::runtime_error("cannot listen on " + address);
    const int listening = ::socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    setsockopt(listening, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    const bool ok = listening >= 0 && bind(listening, found->ai_addr, found->ai_addrlen) == 0 && listen(listening, BACKLOG) == 0;
    freeaddrinfo(found);
    if (!ok)
        fail("cannot listen on port " + std::to_string(port));
    return listening;
}

} // namespace

void setNoDelay(int socket)
{
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

Listener::Listener(const std::string &address, int wantedPort, Handler connectionHandler)
    : handler(std::move(connectionHandler)), listening(listeningSocket(address, wantedPort)), boundPort(portOf(listening))
{
}

Listener::~Listener()
{
    stop();
    ::close(listening);
}

void Listener::start()
{
    acceptor = std::thread([this] { acceptAll(); });
}

void Listener::acceptAll()
{
    while (!stopping) {
        const int connection = accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
        std::unique_lock guard(mutex);
        if (connection < 0) {
            // Out of descriptors, say: better when a connection has ended.
            connectionEnded.wait_for(guard, ACCEPT_PAUSE);
            continue;
        }
        if (stopping || connections.size() >= MOST_CONNECTIONS) {
            ::close(connection);
            continue;
        }
        connections.insert(connection);
        guard.unlock();
        std::thread([this, connection] { serve(connection); }).detach();
    }
}

void Listener::serve(int connection)
{
    setNoDelay(connection);
    handler(connection);
    const std::lock_guard guard(mutex);
    connections.erase(connection);
    ::close(connection);
    connectionEnded.notify_all();
}

void Listener::stop()
{
    if (!acceptor.joinable())
        return;
    stopping = true;
    shutdown(listening, SHUT_RDWR);
    acceptor.join();
    std::unique_lock guard(mutex);
    for (const int connection : connections)
        shutdown(connection, SHUT_RDWR);
    connectionEnded.wait(guard, [this] { return connections.empty(); });
}

} // namespace LocalPlatform
