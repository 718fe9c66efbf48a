#pragma once

#include "Exchange.h"
#include "Platform.h"

#include <httplib.h>

#include <atomic>

namespace LocalPlatform {

/// Both servers on one TLS port. The HTTP library parses requests and writes answers; connections, TLS and everything
/// that goes wrong on purpose are this program's own.
class HttpServer : private httplib::Server
{
public:
    explicit HttpServer(Platform &sharedPlatform);

    /// Serves one connection until its end.
    void serve(int connection);

private:
    bool process_and_close_socket(socket_t) override { return false; }

    void serveRequests(TlsStream &stream, std::int64_t number);
    void prepare(httplib::Request &request, Exchange &exchange);
    HandlerResponse refuseEarly(const httplib::Request &request, httplib::Response &response);
    void handle(const httplib::Request &request, httplib::Response &response);
    void finish(const httplib::Request &request, httplib::Response &response);
    void countEarlyRefusal(Exchange &exchange, const httplib::Request &request, int status);

    Platform &platform;
    std::atomic<std::int64_t> connectionCount{0};
};

} // namespace LocalPlatform
