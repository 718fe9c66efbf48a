#pragma once

#include <curl/curl.h>

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Korvo::Bench {

struct PeerRequest
{
    const char *method = "GET";
    std::string url;
    std::vector<std::string> headers;
    std::string body;
    int file = -1; ///< where the answer goes; -1: into the answer's text
};

/// Runs requests side by side on one thread and keeps connections open.
class Requests
{
public:
    /// Called with the answer's text when it has arrived whole.
    using Done = std::function<void(const std::string &)>;

    /// @p proxy is empty for direct connections.
    Requests(std::string authorityFile, std::string proxyAddress);
    ~Requests();
    Requests(const Requests &) = delete;
    Requests &operator=(const Requests &) = delete;

    void send(PeerRequest request, Done done);
    /// Runs until nothing is in flight; throws std::runtime_error when a request fails.
    void run();
    /// One request after the other.
    std::string wait(PeerRequest request);

private:
    struct Flight;
    using FlightPointer = std::unique_ptr<Flight>;

    FlightPointer freeFlight();
    void prepare(Flight &flight);
    void finishEnded();
    void finish(Flight *flight, CURLcode code);

    std::string authority;
    std::string proxy;
    CURLM *multi;
    std::vector<FlightPointer> inFlight;
    std::vector<FlightPointer> spare;
};

} // namespace Korvo::Bench
