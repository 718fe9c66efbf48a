#include "Options.h"

#include "Faults.h"

#include <functional>
#include <map>
#include <stdexcept>

namespace LocalPlatform {
namespace {

constexpr const char *USAGE = R"(korvo-local-platform: a local stand-in for the web server and the storage service

usage: korvo-local-platform --data DIR [options]

  --data DIR            folder for everything: authority, database, objects, journal (made when missing)
  --port N              port of both servers, TLS (default 0: any free port)
  --proxy-port N        port of the CONNECT proxy that leads every host to the servers (default 0: any free port)
  --listen ADDRESS      address to listen on (default 127.0.0.1)
  --account JSON        adds or replaces an account, repeatable:
                        {"email": "...", "password": "...", "secondFactor": "123456", "tokenLifetime": 3600,
                         "firstName": "...", "lastName": "...", "companyId": "...", "company": "...", "roles": "..."}
  --fault JSON          puts a fault in force, repeatable: {"kind": "status", "route": "api/bucket/putfile",
                         "nth": 1, "count": 1, "status": 503}
  --clock-skew SECONDS  moves the platform's clock against the machine's
  --service-url URL     what client credentials name as the storage service (default: the root of the build)
  --web-copies WHERE    where a transcoding puts its copy: same, lower, both or none (default same)
  --no-sync             leaves out the fsync of each object: faster, still safe against a killed process
  --exit-with-stdin     ends when standard input is closed
  --help                this text

When ready, one line of JSON goes to standard output:
  {"ready":true,"port":...,"proxyPort":...,"authority":".../ca.pem","data":"...","control":"https://localhost:.../control"}
Clients trust the authority file and reach the servers through the proxy, or directly as localhost. A page to look at is
at https://localhost:PORT/. SIGTERM and SIGINT end the program in good order.

kinds of faults:
)";

std::int64_t numberOf(const std::string &name, const std::string &text)
{
    std::size_t used = 0;
    try {
        const std::int64_t value = std::stoll(text, &used);
        if (used == text.size())
            return value;
    } catch (const std::exception &) {
        used = 0;
    }
    throw std::invalid_argument(name + " takes a number, not \"" + text + "\"");
}

int portOf(const std::string &name, const std::string &text)
{
    const std::int64_t value = numberOf(name, text);
    if (value < 0 || value > 65535)
        throw std::invalid_argument(name + " takes a number from 0 to 65535");
    return static_cast<int>(value);
}

using Setter = std::function<void(Options &, const std::string &)>;

const std::map<std::string, Setter> &settersWithValue()
{
    static const std::map<std::string, Setter> SETTERS = {
        {"--data", [](Options &o, const std::string &v) { o.dataFolder = v; }},
        {"--port", [](Options &o, const std::string &v) { o.port = portOf("--port", v); }},
        {"--proxy-port", [](Options &o, const std::string &v) { o.proxyPort = portOf("--proxy-port", v); }},
        {"--listen", [](Options &o, const std::string &v) { o.listenAddress = v; }},
        {"--account", [](Options &o, const std::string &v) { o.accounts.push_back(v); }},
        {"--fault", [](Options &o, const std::string &v) { o.faults.push_back(v); }},
        {"--clock-skew", [](Options &o, const std::string &v) { o.clockSkewSeconds = numberOf("--clock-skew", v); }},
        {"--service-url", [](Options &o, const std::string &v) { o.serviceUrl = v; }},
        {"--web-copies", [](Options &o, const std::string &v) { o.webCopies = v; }},
    };
    return SETTERS;
}

bool setFlag(Options &options, const std::string &name)
{
    if (name == "--no-sync")
        options.syncFiles = false;
    else if (name == "--exit-with-stdin")
        options.exitWithStdin = true;
    else if (name == "--help" || name == "-h")
        options.help = true;
    else
        return false;
    return true;
}

} // namespace

Options parsedOptions(int count, char **arguments)
{
    Options options;
    for (int i = 1; i < count; ++i) {
        const std::string name = arguments[i];
        if (setFlag(options, name))
            continue;
        const auto setter = settersWithValue().find(name);
        if (setter == settersWithValue().end())
            throw std::invalid_argument("unknown option " + name);
        if (++i == count)
            throw std::invalid_argument(name + " needs a value");
        setter->second(options, arguments[i]);
    }
    if (!options.help && options.dataFolder.empty())
        throw std::invalid_argument("--data DIR is needed");
    return options;
}

std::string helpText()
{
    std::string text = USAGE;
    for (const FaultKind &kind : faultKinds())
        text += "  " + kind.name + std::string(kind.name.size() < 22 ? 22 - kind.name.size() : 1, ' ') + kind.description + "\n";
    return text;
}

} // namespace LocalPlatform
