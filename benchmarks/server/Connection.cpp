#include "server/Connection.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>

namespace Korvo::Bench {
namespace {

constexpr std::size_t RECORD_BYTES = 16 * 1024;
constexpr std::size_t RECEIVE_BYTES = 256 * 1024;
constexpr std::size_t HEAD_LIMIT = 64 * 1024;
constexpr std::string_view HEAD_END = "\r\n\r\n";

int descriptorOf(BIO *bio)
{
    return static_cast<int>(reinterpret_cast<std::intptr_t>(BIO_get_data(bio)));
}

void acknowledgeAtOnce(int descriptor)
{
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on);
}

// Clients send header and body apart with Nagle's algorithm on; a delayed acknowledgement would cost 40 ms a request.
// The kernel forgets the option, so it is set around every receive.
int receive(BIO *bio, char *target, int size)
{
    acknowledgeAtOnce(descriptorOf(bio));
    const auto count = ::recv(descriptorOf(bio), target, static_cast<std::size_t>(size), 0);
    acknowledgeAtOnce(descriptorOf(bio));
    return static_cast<int>(count);
}

int transmit(BIO *bio, const char *source, int size)
{
    return static_cast<int>(::send(descriptorOf(bio), source, static_cast<std::size_t>(size), MSG_NOSIGNAL));
}

long control(BIO *, int command, long, void *)
{
    return command == BIO_CTRL_FLUSH ? 1 : 0;
}

BIO_METHOD *socketMethod()
{
    static BIO_METHOD *const METHOD = [] {
        BIO_METHOD *method
            = BIO_meth_new(BIO_get_new_index() | BIO_TYPE_SOURCE_SINK, "socket that acknowledges at once");
        BIO_meth_set_read(method, receive);
        BIO_meth_set_write(method, transmit);
        BIO_meth_set_ctrl(method, control);
        return method;
    }();
    return METHOD;
}

BIO *socketBio(int descriptor)
{
    BIO *bio = BIO_new(socketMethod());
    BIO_set_data(bio, reinterpret_cast<void *>(static_cast<std::intptr_t>(descriptor)));
    BIO_set_init(bio, 1);
    return bio;
}

} // namespace

void tuneForTransfers(SSL_CTX *context)
{
    SSL_CTX_set_min_proto_version(context, TLS1_3_VERSION);
    SSL_CTX_set_read_ahead(context, 1);
    SSL_CTX_set_default_read_buffer_len(context, RECEIVE_BYTES);
    SSL_CTX_clear_mode(context, SSL_MODE_RELEASE_BUFFERS);
}

Connection::Connection(int connectedSocket, SSL_CTX *context)
    : descriptor(connectedSocket)
    , tls(SSL_new(context), SSL_free)
{
    BIO *const bio = socketBio(descriptor);
    SSL_set_bio(tls.get(), bio, bio);
}

bool Connection::open()
{
    char first = 0;
    if (::recv(descriptor, &first, 1, MSG_PEEK) != 1)
        return false;
    return (first != 'C' || answerConnect()) && SSL_accept(tls.get()) == 1;
}

bool Connection::answerConnect()
{
    std::string head;
    char piece[1024];
    while (head.find(HEAD_END) == std::string::npos) {
        acknowledgeAtOnce(descriptor);
        const auto count = ::recv(descriptor, piece, sizeof piece, 0);
        if (count <= 0 || head.size() > HEAD_LIMIT)
            return false;
        head.append(piece, static_cast<std::size_t>(count));
    }
    constexpr std::string_view ANSWER = "HTTP/1.1 200 Connection established\r\n\r\n";
    return ::send(descriptor, ANSWER.data(), ANSWER.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(ANSWER.size());
}

bool Connection::refill()
{
    input.resize(RECORD_BYTES);
    inputAt = 0;
    const int count = SSL_read(tls.get(), input.data(), static_cast<int>(input.size()));
    input.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return count > 0;
}

std::string_view Connection::taken(std::size_t most)
{
    const std::string_view piece = std::string_view(input).substr(inputAt, most);
    inputAt += piece.size();
    return piece;
}

bool Connection::readHead(std::string *head)
{
    head->clear();
    while (head->size() < HEAD_LIMIT) {
        if (inputAt == input.size() && !refill())
            return false;
        const std::size_t before = head->size();
        head->append(input, inputAt, std::string::npos);
        const std::size_t end = head->find(HEAD_END, before < HEAD_END.size() ? 0 : before - HEAD_END.size());
        if (end == std::string::npos) {
            inputAt = input.size();
            continue;
        }
        head->resize(end + HEAD_END.size());
        inputAt += head->size() - before;
        return true;
    }
    return false;
}

bool Connection::readBody(std::int64_t bytes, const Taker &take)
{
    while (bytes > 0) {
        if (inputAt == input.size() && !refill())
            return false;
        const std::string_view piece = taken(static_cast<std::size_t>(std::min<std::int64_t>(bytes, RECORD_BYTES)));
        take(piece);
        bytes -= static_cast<std::int64_t>(piece.size());
    }
    return true;
}

bool Connection::write(std::string_view bytes)
{
    while (!bytes.empty()) {
        const int count = SSL_write(tls.get(), bytes.data(), static_cast<int>(bytes.size()));
        if (count <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

} // namespace Korvo::Bench
