#include "ConnectProxy.h"
#include "HttpServer.h"
#include "Listener.h"
#include "Options.h"
#include "Platform.h"

#include <nlohmann/json.hpp>

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <iostream>
#include <stdexcept>

namespace {

using namespace LocalPlatform;

/// Signals that end the program, readable as a file. Blocked before any thread starts, so that none gets them.
int endingSignals()
{
    std::signal(SIGPIPE, SIG_IGN);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC);
}

bool inputIsClosed()
{
    char ignored[256];
    return read(STDIN_FILENO, ignored, sizeof ignored) <= 0;
}

void waitForTheEnd(int signals, bool endWithInput)
{
    pollfd entries[] = {{signals, POLLIN, 0}, {endWithInput ? STDIN_FILENO : -1, POLLIN, 0}};
    for (;;) {
        if (poll(entries, 2, -1) < 0)
            continue;
        if (entries[0].revents != 0 || (entries[1].revents != 0 && inputIsClosed()))
            return;
    }
}

void announce(const Platform &platform, int port, int proxyPort)
{
    const nlohmann::json line = {{"ready", true}, {"port", port}, {"proxyPort", proxyPort}, {"authority", platform.authority.file()},
                                 {"data", platform.data.path}, {"control", "https://localhost:" + std::to_string(port) + "/control"}};
    std::cout << line.dump() << std::endl;
}

void run(const Options &options)
{
    const int signals = endingSignals();
    Platform platform(options);
    HttpServer server(platform);
    Listener listener(options.listenAddress, options.port, [&server](int connection) { server.serve(connection); });
    ConnectProxy proxy(options.listenAddress, options.proxyPort, listener.port(), platform.faults);
    listener.start();
    proxy.start();
    announce(platform, listener.port(), proxy.port());
    waitForTheEnd(signals, options.exitWithStdin);
    proxy.stop();
    listener.stop();
    close(signals);
}

} // namespace

int main(int count, char **arguments)
{
    try {
        const Options options = parsedOptions(count, arguments);
        if (options.help)
            std::cout << helpText();
        else
            run(options);
        return 0;
    } catch (const std::invalid_argument &error) {
        std::cerr << error.what() << "\nTry --help.\n";
        return 2;
    } catch (const std::exception &error) {
        std::cerr << "korvo-local-platform: " << error.what() << "\n";
        return 1;
    }
}
