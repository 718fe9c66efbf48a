#pragma once

#include "Faults.h"
#include "Listener.h"

#include <atomic>
#include <string>

namespace LocalPlatform {

/// An HTTP proxy that knows CONNECT only and leads every host to the platform itself.
class ConnectProxy
{
public:
    ConnectProxy(const std::string &address, int wantedPort, int platformPort, Faults &faultsInForce);

    int port() const { return listener.port(); }
    void start() { listener.start(); }
    void stop();

private:
    void serve(int client);

    Faults &faults;
    std::string targetAddress;
    int targetPort;
    std::atomic<bool> stopping{false};
    Listener listener;
};

} // namespace LocalPlatform
