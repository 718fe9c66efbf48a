#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace LocalPlatform {

struct Options
{
    std::string dataFolder;
    std::string listenAddress = "127.0.0.1";
    int port = 0;
    int proxyPort = 0;
    std::string serviceUrl; ///< what client credentials name; empty: the root of the build
    std::string webCopies = "same";
    std::int64_t clockSkewSeconds = 0;
    std::vector<std::string> accounts; ///< JSON objects
    std::vector<std::string> faults;   ///< JSON objects
    bool syncFiles = true;
    bool exitWithStdin = false;
    bool help = false;
};

/// Throws std::invalid_argument with a text for the user.
Options parsedOptions(int count, char **arguments);

std::string helpText();

} // namespace LocalPlatform
