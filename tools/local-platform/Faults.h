#pragma once

#include <nlohmann/json_fwd.hpp>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace LocalPlatform {

/// Where a fault strikes: while a TLS connection is made, on one request, or in a tunnel of the proxy.
enum class FaultPhase { Connection, Request, Tunnel };

struct FaultKind
{
    std::string name;
    FaultPhase phase;
    bool work; ///< whether the request is carried out before its answer is spoilt, unless the fault says otherwise
    std::string description;
};

const std::vector<FaultKind> &faultKinds();

struct Fault
{
    std::int64_t id = 0;
    std::string kind;
    FaultPhase phase = FaultPhase::Request;
    std::string route;  ///< "api/bucket/putfile", "webdav/*", empty for all
    std::string method; ///< empty for all
    std::string host;   ///< connection and tunnel faults: only this host; empty for all
    std::int64_t nth = 1;   ///< the first of the matching ones that is hit
    std::int64_t count = 1; ///< how many are hit; 0 until cleared
    std::int64_t status = 0;
    std::string body;
    std::string contentType;
    std::string location;
    std::int64_t delayMs = 0;
    std::int64_t bytes = -1; ///< -1: the kind's own choice
    std::int64_t bytesPerSecond = 0;
    std::int64_t seconds = 0;
    bool work = false;

    std::int64_t seen = 0; ///< matching ones so far
    std::int64_t hits = 0;
    std::int64_t arrived = 0; ///< of the hit requests, those that have come whole
};

/// The faults in force.
class Faults
{
public:
    /// Throws Refusal when the description cannot be understood. Returns the id.
    std::int64_t add(const nlohmann::json &description);
    bool remove(std::int64_t id);
    void clear();
    nlohmann::json overview() const;

    std::optional<Fault> takeForRequest(const std::string &method, const std::string &route);
    void noteArrival(std::int64_t id);
    std::optional<Fault> takeForConnection(const std::string &host);

    /// A refusal of the proxy, decided when a tunnel is asked for.
    std::optional<Fault> takeForConnect(const std::string &host);

    /// What befalls the bytes in a tunnel.
    std::optional<Fault> takeForTunnel(const std::string &host);

    /// Grows with every change, so that a running tunnel need not ask all the time.
    std::int64_t generation() const { return changes; }
    bool isInForce(std::int64_t id) const;

private:
    template<typename Matches>
    std::optional<Fault> take(FaultPhase phase, Matches matches);

    mutable std::mutex mutex; ///< guards faults and nextId
    std::vector<Fault> faults;
    std::int64_t nextId = 1;
    std::atomic<std::int64_t> changes{1};
};

} // namespace LocalPlatform
