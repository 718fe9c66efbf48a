#include "Faults.h"

#include "Refusal.h"
#include "Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace LocalPlatform {
namespace {

const char *phaseName(FaultPhase phase)
{
    switch (phase) {
    case FaultPhase::Connection: return "connection";
    case FaultPhase::Request:    return "request";
    case FaultPhase::Tunnel:     return "tunnel";
    }
    return "";
}

const FaultKind &kindOf(const std::string &name)
{
    for (const FaultKind &kind : faultKinds())
        if (kind.name == name)
            return kind;
    throw Refusal(400, "unknown kind of fault: " + name, "kind");
}

bool routeMatches(const std::string &pattern, const std::string &route)
{
    if (endsWith(pattern, "*"))
        return startsWith(route, std::string_view(pattern).substr(0, pattern.size() - 1));
    return pattern.empty() || pattern == route;
}

void refuseUnknownMembers(const nlohmann::json &description)
{
    static const std::vector<std::string> KNOWN = {"kind", "route", "method", "host", "nth", "count", "status", "body", "contentType",
                                                   "location", "delayMs", "bytes", "bytesPerSecond", "seconds", "work"};
    for (const auto &item : description.items())
        if (std::find(KNOWN.begin(), KNOWN.end(), item.key()) == KNOWN.end())
            throw Refusal(400, "a fault has no member " + item.key(), item.key());
}

void setDefaults(Fault &fault)
{
    if (fault.kind == "status")
        fault.status = 503;
    else if (fault.kind == "redirect")
        fault.status = 302;
    else if (fault.kind == "tunnelStatus")
        fault.status = 502;
    else if (fault.kind == "hugeBody")
        fault.bytes = 8 * 1024 * 1024;
    fault.location = "https://elsewhere.korvo.example/";
    fault.delayMs = fault.kind == "tunnelLatency" ? 100 : 1000;
    fault.bytesPerSecond = fault.phase == FaultPhase::Tunnel ? 65536 : 64;
    fault.seconds = 3600;
}

Fault faultOf(const nlohmann::json &d)
{
    if (!d.is_object())
        throw Refusal(400, "a fault is a JSON object");
    refuseUnknownMembers(d);
    Fault fault;
    fault.kind = d.value("kind", "");
    const FaultKind &kind = kindOf(fault.kind);
    fault.phase = kind.phase;
    setDefaults(fault);
    fault.route = d.value("route", "");
    fault.method = d.value("method", "");
    fault.host = d.value("host", "");
    fault.nth = std::max<std::int64_t>(1, d.value("nth", fault.nth));
    fault.count = d.value("count", fault.count);
    fault.status = d.value("status", fault.status);
    fault.body = d.value("body", "");
    fault.contentType = d.value("contentType", "");
    fault.location = d.value("location", fault.location);
    fault.delayMs = d.value("delayMs", fault.delayMs);
    fault.bytes = d.value("bytes", fault.bytes);
    fault.bytesPerSecond = std::max<std::int64_t>(1, d.value("bytesPerSecond", fault.bytesPerSecond));
    fault.seconds = d.value("seconds", fault.seconds);
    fault.work = d.value("work", kind.work);
    if (fault.status != 0 && (fault.status < 200 || fault.status > 599))
        throw Refusal(400, "status lies between 200 and 599", "status");
    return fault;
}

bool isSpent(const Fault &fault)
{
    return fault.count > 0 && fault.hits >= fault.count;
}

} // namespace

const std::vector<FaultKind> &faultKinds()
{
    constexpr FaultPhase REQUEST = FaultPhase::Request;
    constexpr FaultPhase CONNECTION = FaultPhase::Connection;
    constexpr FaultPhase TUNNEL = FaultPhase::Tunnel;
    static const std::vector<FaultKind> KINDS = {
        {"status", REQUEST, false, "answers \"status\" (503) with \"body\""},
        {"delay", REQUEST, true, "answers \"delayMs\" (1000) late"},
        {"noAnswer", REQUEST, false, "never answers, keeps the connection"},
        {"closeWithoutAnswer", REQUEST, false, "closes in good order instead of answering"},
        {"resetInRequest", REQUEST, false, "resets after \"bytes\" of the request's body (half)"},
        {"stallInRequest", REQUEST, false, "stops reading after \"bytes\" of the request's body (half)"},
        {"resetBeforeAnswer", REQUEST, true, "resets instead of answering"},
        {"resetInHeaders", REQUEST, true, "resets after \"bytes\" (10) of the answer's headers"},
        {"resetAfterHeaders", REQUEST, true, "resets between headers and body"},
        {"resetInBody", REQUEST, true, "resets after \"bytes\" of the body (half)"},
        {"resetAfterBody", REQUEST, true, "resets after the last byte of the answer"},
        {"cutBody", REQUEST, true, "closes in good order after \"bytes\" of the body (half)"},
        {"stallInBody", REQUEST, true, "stops after \"bytes\" of the body (half), keeps the connection"},
        {"contentLengthTooLong", REQUEST, true, "announces \"bytes\" (10) more than it sends"},
        {"contentLengthTooShort", REQUEST, true, "announces \"bytes\" (10) less than it sends, then closes"},
        {"noContentLength", REQUEST, true, "announces no length; the end is the close"},
        {"garbage", REQUEST, true, "well-formed HTTP with nonsense instead of XML or JSON"},
        {"emptyBody", REQUEST, true, "a good status with no body"},
        {"hugeBody", REQUEST, true, "\"bytes\" (8 MiB) of nonsense as body"},
        {"truncatedBody", REQUEST, true, "the first \"bytes\" of the body (half), correctly announced"},
        {"corruptBody", REQUEST, true, "flips one bit of byte \"bytes\" of the body (the middle one)"},
        {"trickle", REQUEST, true, "sends \"bytesPerSecond\" (64)"},
        {"redirect", REQUEST, false, "answers \"status\" (302) to \"location\""},
        {"expiredToken", REQUEST, true, "lets the bearer token expire and answers 401, then and later"},
        {"wrongClock", REQUEST, true, "carries the request out with a clock \"seconds\" (3600) off"},
        {"diskFull", REQUEST, true, "the disk is full half way through writing"},
        {"badStatusLine", REQUEST, true, "something that is not HTTP, then closes"},
        {"certificateWrongHost", CONNECTION, false, "shows a certificate for another host"},
        {"certificateExpired", CONNECTION, false, "shows a certificate that has expired"},
        {"certificateSelfSigned", CONNECTION, false, "shows a certificate that signs itself"},
        {"handshakeReset", CONNECTION, false, "resets in the TLS handshake"},
        {"handshakeStall", CONNECTION, false, "never answers the TLS handshake"},
        {"tunnelStatus", TUNNEL, false, "the proxy answers CONNECT with \"status\" (502)"},
        {"tunnelLatency", TUNNEL, false, "every byte arrives \"delayMs\" (100) late"},
        {"tunnelBandwidth", TUNNEL, false, "\"bytesPerSecond\" (65536) each way"},
        {"tunnelCut", TUNNEL, false, "closes in good order after \"bytes\" (65536)"},
        {"tunnelReset", TUNNEL, false, "resets after \"bytes\" (65536)"},
        {"tunnelStall", TUNNEL, false, "moves nothing more after \"bytes\" (65536) until the fault is cleared"},
    };
    return KINDS;
}

std::int64_t Faults::add(const nlohmann::json &description)
{
    try {
        Fault fault = faultOf(description);
        const std::lock_guard guard(mutex);
        fault.id = nextId++;
        faults.push_back(std::move(fault));
        ++changes;
        return faults.back().id;
    } catch (const nlohmann::json::exception &) {
        throw Refusal(400, "a member of the fault has the wrong type");
    }
}

bool Faults::remove(std::int64_t id)
{
    const std::lock_guard guard(mutex);
    const auto end = std::remove_if(faults.begin(), faults.end(), [id](const Fault &fault) { return fault.id == id; });
    const bool found = end != faults.end();
    faults.erase(end, faults.end());
    ++changes;
    return found;
}

void Faults::clear()
{
    const std::lock_guard guard(mutex);
    faults.clear();
    ++changes;
}

bool Faults::isInForce(std::int64_t id) const
{
    const std::lock_guard guard(mutex);
    return std::any_of(faults.begin(), faults.end(), [id](const Fault &fault) { return fault.id == id; });
}

nlohmann::json Faults::overview() const
{
    nlohmann::json list = nlohmann::json::array();
    const std::lock_guard guard(mutex);
    for (const Fault &fault : faults)
        list.push_back({{"id", fault.id}, {"kind", fault.kind}, {"phase", phaseName(fault.phase)}, {"route", fault.route},
                        {"method", fault.method}, {"host", fault.host}, {"nth", fault.nth}, {"count", fault.count},
                        {"status", fault.status}, {"delayMs", fault.delayMs}, {"bytes", fault.bytes},
                        {"bytesPerSecond", fault.bytesPerSecond}, {"seconds", fault.seconds}, {"work", fault.work},
                        {"seen", fault.seen}, {"hits", fault.hits}, {"arrived", fault.arrived},
                        {"spent", isSpent(fault)}});
    return list;
}

template<typename Matches>
std::optional<Fault> Faults::take(FaultPhase phase, Matches matches)
{
    const std::lock_guard guard(mutex);
    std::optional<Fault> taken;
    for (Fault &fault : faults) {
        if (fault.phase != phase || !matches(fault))
            continue;
        ++fault.seen;
        if (taken || fault.seen < fault.nth || isSpent(fault))
            continue;
        ++fault.hits;
        taken = fault;
    }
    return taken;
}

std::optional<Fault> Faults::takeForRequest(const std::string &method, const std::string &route)
{
    return take(FaultPhase::Request, [&](const Fault &fault) {
        return (fault.method.empty() || fault.method == method) && routeMatches(fault.route, route);
    });
}

void Faults::noteArrival(std::int64_t id)
{
    const std::lock_guard guard(mutex);
    for (Fault &fault : faults)
        fault.arrived += fault.id == id ? 1 : 0;
}

std::optional<Fault> Faults::takeForConnection(const std::string &host)
{
    return take(FaultPhase::Connection, [&](const Fault &fault) { return fault.host.empty() || fault.host == host; });
}

std::optional<Fault> Faults::takeForConnect(const std::string &host)
{
    return take(FaultPhase::Tunnel, [&](const Fault &fault) {
        return fault.kind == "tunnelStatus" && (fault.host.empty() || fault.host == host);
    });
}

std::optional<Fault> Faults::takeForTunnel(const std::string &host)
{
    return take(FaultPhase::Tunnel, [&](const Fault &fault) {
        return fault.kind != "tunnelStatus" && (fault.host.empty() || fault.host == host);
    });
}

} // namespace LocalPlatform
