#pragma once

#include <httplib.h>

#include <cstdint>
#include <memory>
#include <string>

namespace LocalPlatform {

/// How a connection ends that is broken off on purpose.
enum class Ending { Close, Reset, Stall };

/// What is done to an answer on its way out.
struct AnswerDamage
{
    enum class Base { None, Headers, Body };

    Base cutFrom = Base::None; ///< where @c cutAfter counts from
    std::int64_t cutAfter = 0;
    Ending ending = Ending::Reset;
    std::int64_t flipAt = -1; ///< byte of the body in which one bit changes
    std::int64_t bytesPerSecond = 0;
    std::string insteadOfHeaders;
};

/// One TLS connection as the HTTP library reads and writes it: buffered both ways, acknowledging at once, and able to
/// misbehave at an exact byte.
class TlsStream : public httplib::Stream
{
public:
    TlsStream(int connectedSocket, SSL *session);

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char *target, size_t size) override;
    ssize_t write(const char *source, size_t size) override;
    void get_remote_ip_and_port(std::string &ip, int &port) const override;
    void get_local_ip_and_port(std::string &ip, int &port) const override;
    socket_t socket() const override { return descriptor; }

    /// True as soon as the first byte of a further request is there; false on close or after @p milliseconds.
    bool waitForRequest(int milliseconds);
    bool flush();

    /// Waits, at most until the client or the server goes.
    void wait(std::int64_t milliseconds) const;

    /// Discards what comes until the client or the server goes.
    void holdUntilGone();

    /// From here on nothing is read or written any more.
    void breakOff(Ending ending);
    bool isBroken() const { return broken; }
    bool endsWithReset() const { return reset; }

    /// The client went away in the middle of a request.
    bool peerLeft() const { return gone; }

    void startRequest();
    void headersAreRead();

    /// The body of the request breaks off after so many bytes.
    void limitRequestBody(std::int64_t bytes, Ending ending);
    void damageAnswer(const AnswerDamage &planned) { damage = planned; }

private:
    std::int64_t allowance(std::size_t size) const;
    bool send(const char *source, std::size_t size);
    bool sendSlowly(const char *source, std::size_t size);
    bool sendPart(const char *source, std::size_t size);
    void acknowledgeAtOnce() const;
    ssize_t refill();

    int descriptor;
    SSL *tls;
    std::string input;
    std::size_t inputAt = 0;
    std::string output;
    bool broken = false;
    bool reset = false;
    bool gone = false;
    bool inHeaders = true;
    std::int64_t requestBytes = 0;
    std::int64_t requestLimit = -1;
    Ending requestEnding = Ending::Reset;
    std::int64_t answerBytes = 0;
    std::int64_t answerHeaderBytes = 0;
    AnswerDamage damage;
};

/// Waits until the peer has taken what was sent, so that a reset does not overtake it.
void waitUntilSent(int descriptor);

/// The next close() of the socket sends a reset.
void resetOnClose(int descriptor);

} // namespace LocalPlatform
