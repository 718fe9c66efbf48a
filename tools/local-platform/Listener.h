#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <thread>

namespace LocalPlatform {

/// Accepts connections and serves each in a thread of its own. The handler gets the connected socket; the listener
/// closes it afterwards.
class Listener
{
public:
    using Handler = std::function<void(int)>;

    Listener(const std::string &address, int wantedPort, Handler connectionHandler);
    ~Listener();
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;

    int port() const { return boundPort; }
    void start();

    /// Ends all connections and waits for their threads.
    void stop();

private:
    void acceptAll();
    void serve(int connection);

    Handler handler;
    int listening = -1;
    int boundPort = 0;
    std::thread acceptor;
    std::atomic<bool> stopping{false};
    std::mutex mutex; ///< guards connections
    std::condition_variable connectionEnded;
    std::set<int> connections;
};

/// Small answers leave at once.
void setNoDelay(int socket);

} // namespace LocalPlatform
