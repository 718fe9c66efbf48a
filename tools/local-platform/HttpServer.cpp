#include "HttpServer.h"

#include "Answers.h"
#include "FaultyAnswer.h"
#include "Refusal.h"
#include "Routes.h"

#include <nlohmann/json.hpp>

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>

namespace LocalPlatform {
namespace {

constexpr std::size_t LARGEST_BODY = 64 * 1024 * 1024;

// A body beyond this is not even read to its end before it is refused.
constexpr std::int64_t LARGEST_DISCARDED_BODY = 1024 * 1024 * 1024;
constexpr int HANDSHAKE_SECONDS = 20;
constexpr int TRANSFER_SECONDS = 120;
constexpr int KEEP_ALIVE_MILLISECONDS = 120 * 1000;
constexpr std::string_view SERVICE_PREFIX = "korvoservice/";
constexpr std::size_t MOST_REQUESTS = 1000000;

// The request that this connection's thread is busy with; the HTTP library calls back without it.
thread_local Exchange *current = nullptr;

void setTimeouts(int socket, int seconds)
{
    const timeval limit{seconds, 0};
    setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

/// What the handshake of one connection is told to do, chosen when the client has named its host.
struct HandshakePlan
{
    Platform *platform;
    int connection;
    bool reset = false;
};

CertificateFlavour flavourOf(const std::string &kind)
{
    if (kind == "certificateWrongHost")
        return CertificateFlavour::WrongHost;
    if (kind == "certificateExpired")
        return CertificateFlavour::Expired;
    return kind == "certificateSelfSigned" ? CertificateFlavour::SelfSigned : CertificateFlavour::Right;
}

int chooseCertificate(SSL *session, int *, void *)
{
    auto *plan = static_cast<HandshakePlan *>(SSL_get_ex_data(session, 0));
    const char *name = SSL_get_servername(session, TLSEXT_NAMETYPE_host_name);
    const auto fault = plan->platform->faults.takeForConnection(lowered(name ? name : ""));
    if (!fault)
        return SSL_TLSEXT_ERR_OK;
    if (fault->kind == "handshakeReset") {
        plan->reset = true;
        // The alert that says why must not go out before the reset.
        SSL_set0_wbio(session, BIO_new(BIO_s_null()));
        return SSL_TLSEXT_ERR_ALERT_FATAL;
    }
    if (fault->kind == "handshakeStall") {
        pollfd entry{plan->connection, POLLRDHUP, 0};
        poll(&entry, 1, -1);
        return SSL_TLSEXT_ERR_ALERT_FATAL;
    }
    SSL_set_SSL_CTX(session, plan->platform->authority.context(flavourOf(fault->kind)));
    return SSL_TLSEXT_ERR_OK;
}

std::string hostOf(const httplib::Request &request)
{
    const std::string host = request.get_header_value("Host");
    return lowered(host.substr(0, host.rfind(':')));
}

Area areaOf(const std::string &path)
{
    if (startsWith(path, SERVICE_PREFIX))
        return Area::Service;
    if (startsWith(path, "control/"))
        return Area::Control;
    return path.empty() || path == "favicon.ico" ? Area::Page : Area::Web;
}

void locate(Exchange &exchange, const std::string &target)
{
    const std::size_t question = std::min(target.find('?'), target.size());
    const std::size_t start = startsWith(target, "/") ? 1 : 0;
    const std::string path = target.substr(start, question - start);
    exchange.query = parsedQuery(std::string_view(target).substr(std::min(question + 1, target.size())));
    exchange.area = areaOf(path);
    exchange.route = exchange.area == Area::Service ? path.substr(SERVICE_PREFIX.size()) : path;
}

bool mayFail(const Exchange &exchange)
{
    return exchange.area == Area::Web || exchange.area == Area::Service;
}

const char *reasonOf(int status)
{
    switch (status) {
    case 411: return "a body needs a Content-Length";
    case 413: return "the body is larger than 64 MiB";
    case 414: return "the address is too long";
    default:  return "not a well-formed request";
    }
}

void answerRefusal(Platform &platform, Exchange &exchange, const Refusal &refusal)
{
    exchange.refusal = refusal.what();
    exchange.refusedElement = refusal.element;
    if (mayFail(exchange))
        platform.journal.countRefusal({{"method", exchange.request->method}, {"route", printable(exchange.route)}, {"status", refusal.status},
                                       {"reason", refusal.what()}, {"element", printable(refusal.element)}});
    answerXml(exchange, refusal.status, "<Refused>" + element("Reason", refusal.what()) + element("Element", printable(refusal.element)) + "</Refused>");
}

void carryOut(Platform &platform, Exchange &exchange)
{
    try {
        switch (exchange.area) {
        case Area::Web:     return handleWebRequest(platform, exchange);
        case Area::Service: return handleServiceRequest(platform, exchange);
        case Area::Control: return handleControlRequest(platform, exchange);
        case Area::Page:    return handlePageRequest(platform, exchange);
        }
    } catch (const Refusal &refusal) {
        answerRefusal(platform, exchange, refusal);
    } catch (const std::exception &error) {
        answerRefusal(platform, exchange, Refusal(500, error.what()));
    }
}

nlohmann::json journalEntry(const Exchange &exchange, const httplib::Request &request, const httplib::Response &response)
{
    using namespace std::chrono;
    const auto answered = response.body.empty() ? response.content_length_ : response.body.size();
    nlohmann::json entry = {
        {"connection", exchange.connection}, {"method", request.method}, {"host", printable(exchange.host)},
        {"route", printable(percentDecoded(exchange.route).value_or(exchange.route))},
        {"server", exchange.area == Area::Service ? "service" : "web"},
        {"requestBytes", request.body.empty() ? exchange.announcedBytes : static_cast<std::int64_t>(request.body.size())},
        {"answerBytes", answered}, {"status", response.status},
        {"milliseconds", duration_cast<milliseconds>(steady_clock::now() - exchange.started).count()}};
    if (!exchange.user.empty())
        entry["user"] = printable(exchange.user);
    if (!exchange.refusal.empty())
        entry["refused"] = {{"reason", exchange.refusal}, {"element", printable(exchange.refusedElement)}};
    if (exchange.fault)
        entry["fault"] = exchange.fault->kind;
    if (exchange.resent)
        entry["resent"] = true;
    return entry;
}

} // namespace

void requireContentType(const Exchange &exchange, const char *type)
{
    const std::string sent = exchange.request->get_header_value("Content-Type");
    if (lowered(sent.substr(0, sent.find(';'))) != type)
        throw Refusal(415, std::string("expected a body of type ") + type, "Content-Type");
}

HttpServer::HttpServer(Platform &sharedPlatform) : platform(sharedPlatform)
{
    // The library takes a server without a listening socket for one that shuts down, and sends no contents.
    svr_sock_ = 0;
    const auto handler = [this](const httplib::Request &request, httplib::Response &response) { handle(request, response); };
    Get("/", handler).Post("/", handler).Put("/", handler).Delete("/", handler).Patch("/", handler).Options("/", handler);
    set_pre_routing_handler([this](const httplib::Request &request, httplib::Response &response) { return refuseEarly(request, response); });
    set_post_routing_handler([this](const httplib::Request &request, httplib::Response &response) { finish(request, response); });
    set_error_handler([](const httplib::Request &, httplib::Response &response) {
        // Refused by the HTTP library itself or before anyone looked at the request.
        if (current->request == nullptr)
            response.set_content("<Refused>" + element("Reason", reasonOf(response.status)) + "</Refused>", "application/xml; charset=utf-8");
    });
    set_payload_max_length(LARGEST_BODY);
    SSL_CTX_set_tlsext_servername_callback(platform.authority.context(CertificateFlavour::Right), chooseCertificate);
    set_keep_alive_max_count(MOST_REQUESTS);
    set_keep_alive_timeout(KEEP_ALIVE_MILLISECONDS / 1000);
}

void HttpServer::serve(int connection)
{
    setTimeouts(connection, HANDSHAKE_SECONDS);
    HandshakePlan plan{&platform, connection};
    SSL_CTX *context = platform.authority.context(CertificateFlavour::Right);
    const std::unique_ptr<SSL, decltype(&SSL_free)> session(SSL_new(context), SSL_free);
    SSL_set_fd(session.get(), connection);
    SSL_set_ex_data(session.get(), 0, &plan);
    if (SSL_accept(session.get()) != 1) {
        if (plan.reset)
            resetOnClose(connection);
        return;
    }
    setTimeouts(connection, TRANSFER_SECONDS);
    TlsStream stream(connection, session.get());
    serveRequests(stream, ++connectionCount);
    if (stream.endsWithReset())
        resetOnClose(connection);
    else
        SSL_shutdown(session.get());
}

void HttpServer::serveRequests(TlsStream &stream, std::int64_t number)
{
    bool over = false;
    while (!over && !stream.isBroken() && stream.waitForRequest(KEEP_ALIVE_MILLISECONDS)) {
        Exchange exchange(stream);
        exchange.connection = number;
        current = &exchange;
        stream.startRequest();
        const bool processed = process_request(stream, false, over, [this, &exchange](httplib::Request &request) { prepare(request, exchange); });
        stream.flush();
        current = nullptr;
        if (exchange.hasFault("resetAfterBody"))
            stream.breakOff(Ending::Reset);
        over = over || !processed || exchange.closesAfterwards;
    }
}

void HttpServer::prepare(httplib::Request &request, Exchange &exchange)
{
    exchange.stream.headersAreRead();
    exchange.host = hostOf(request);
    exchange.announcedBytes = parsedDecimal(request.get_header_value("Content-Length")).value_or(0);
    locate(exchange, request.target);
    // One handler takes all; and answers go out as they are, so that damage to them is exact.
    request.path = "/";
    request.headers.erase("Accept-Encoding");
    if (!mayFail(exchange))
        return;
    exchange.fault = platform.faults.takeForRequest(request.method, percentDecoded(exchange.route).value_or(exchange.route));
    if (exchange.fault)
        damageRequest(exchange);
}

httplib::Server::HandlerResponse HttpServer::refuseEarly(const httplib::Request &request, httplib::Response &response)
{
    const bool withBody = request.method != "GET" && request.method != "HEAD";
    const bool chunked = request.has_header("Transfer-Encoding");
    const std::string length = request.get_header_value("Content-Length");
    int status = 0;
    if (request.get_header_value_count("Content-Length") > 1 || (!length.empty() && !parsedDecimal(length)))
        status = 400;
    else if (chunked || (withBody && length.empty()))
        status = 411;
    else if (parsedDecimal(length).value_or(0) > LARGEST_DISCARDED_BODY)
        status = 413;
    else if (!withBody && parsedDecimal(length).value_or(0) > 0)
        status = 400;
    if (status == 0)
        return HandlerResponse::Unhandled;
    response.status = status;
    response.set_header("Connection", "close");
    current->closesAfterwards = true;
    return HandlerResponse::Handled;
}

void HttpServer::handle(const httplib::Request &request, httplib::Response &response)
{
    Exchange &exchange = *current;
    exchange.request = &request;
    exchange.response = &response;
    exchange.now = platform.clock.now() + (exchange.hasFault("wrongClock") ? exchange.fault->seconds : 0);
    if (exchange.fault)
        platform.faults.noteArrival(exchange.fault->id);
    if (exchange.hasFault("delay"))
        exchange.stream.wait(exchange.fault->delayMs);
    if (!exchange.fault || exchange.fault->work)
        carryOut(platform, exchange);
    if (exchange.fault)
        damageAnswer(exchange);
}

void HttpServer::finish(const httplib::Request &request, httplib::Response &response)
{
    Exchange &exchange = *current;
    const bool early = exchange.request == nullptr;
    const bool brokenOff = exchange.stream.peerLeft() || exchange.stream.isBroken();
    if (early && response.status >= 400 && !brokenOff)
        countEarlyRefusal(exchange, request, response.status);
    // Written before the answer leaves: who has the answer finds the entry.
    if (early || mayFail(exchange)) {
        nlohmann::json entry = journalEntry(exchange, request, response);
        if (early && brokenOff)
            entry["brokenOff"] = true;
        platform.journal.add(std::move(entry));
    }
    if (exchange.fault && !early)
        damageHeaders(exchange);
}

void HttpServer::countEarlyRefusal(Exchange &exchange, const httplib::Request &request, int status)
{
    exchange.refusal = reasonOf(status);
    platform.journal.countRefusal({{"method", request.method}, {"route", printable(exchange.route)}, {"status", status},
                                   {"reason", exchange.refusal}, {"element", ""}});
}

} // namespace LocalPlatform
