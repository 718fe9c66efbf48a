#include "Platform.h"

#include "Crypto.h"
#include "Refusal.h"
#include "Text.h"

#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>

namespace LocalPlatform {
namespace {

std::string preparedFolder(const std::string &folder)
{
    std::filesystem::create_directories(folder);
    return std::filesystem::canonical(folder).string();
}

std::vector<std::string> certificateNames(const Options &options)
{
    std::vector<std::string> names = {hostOfUrl(roots().productionWeb), hostOfUrl(roots().productionService),
                                      hostOfUrl(roots().betaWeb), hostOfUrl(roots().betaService), "localhost", "127.0.0.1"};
    if (options.listenAddress != "127.0.0.1" && options.listenAddress != "0.0.0.0" && options.listenAddress != "::")
        names.push_back(options.listenAddress);
    return names;
}

/// A secret that lives as long as the data folder.
std::string keptSecret(Database &database)
{
    Statement(database, "INSERT OR IGNORE INTO meta VALUES('link secret', ?)").bind(randomHex(32)).run();
    Statement row(database, "SELECT value FROM meta WHERE name = 'link secret'");
    row.step();
    return row.text(0);
}

nlohmann::json parsedOption(const std::string &text)
{
    try {
        return nlohmann::json::parse(text);
    } catch (const nlohmann::json::exception &) {
        throw std::invalid_argument("not JSON: " + text);
    }
}

} // namespace

const Roots &roots()
{
    static const Roots ROOTS = {KORVO_PRODUCTION_WEB_ROOT, KORVO_PRODUCTION_SERVICE_ROOT, KORVO_BETA_WEB_ROOT, KORVO_BETA_SERVICE_ROOT};
    return ROOTS;
}

std::string hostOfUrl(const std::string &url)
{
    const std::size_t start = url.find("://") + 3;
    return lowered(url.substr(start, url.find_first_of(":/", start) - start));
}

WebCopies webCopiesNamed(const std::string &name)
{
    if (name == "same")
        return WebCopies::SameFolder;
    if (name == "lower")
        return WebCopies::LowerCaseFolder;
    if (name == "both")
        return WebCopies::Both;
    if (name == "none")
        return WebCopies::None;
    throw Refusal(400, "web copies are same, lower, both or none", "webCopies");
}

DataFolder::DataFolder(const std::string &folder)
    : path(preparedFolder(folder)), lockFile(::open((path + "/lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600))
{
    if (lockFile < 0 || flock(lockFile, LOCK_EX | LOCK_NB) != 0)
        throw std::runtime_error("the data folder is in use: " + path);
}

DataFolder::~DataFolder()
{
    ::close(lockFile);
}

Platform::Platform(const Options &chosen)
    : options(chosen), data(options.dataFolder), database(data.path + "/platform.sqlite"),
      authority(data.path, certificateNames(options)), accounts(database, clock), projects(database),
      objects(database, clock, data.path, options.syncFiles), signatures(accounts), journal(data.path + "/journal.jsonl"),
      linkSecret(keptSecret(database))
{
    clock.setSkewSeconds(options.clockSkewSeconds);
    objects.setWebCopies(webCopiesNamed(options.webCopies));
    accounts.addDefaults();
    for (const std::string &account : options.accounts)
        accounts.add(parsedOption(account));
    for (const std::string &fault : options.faults)
        faults.add(parsedOption(fault));
}

std::string Platform::serviceRootFor(const std::string &host) const
{
    if (!options.serviceUrl.empty())
        return options.serviceUrl;
    const bool beta = host == hostOfUrl(roots().betaWeb) || host == hostOfUrl(roots().betaService);
    return beta ? roots().betaService : roots().productionService;
}

std::string Platform::mediaSignature(const std::string &bucket, const std::string &key) const
{
    return hexEncoded(hmacSha256(linkSecret, bucket + "\n" + key));
}

std::string Platform::mediaLink(const std::string &host, const std::string &bucket, const std::string &key) const
{
    return serviceRootFor(host) + "media/" + bucket + "/" + percentEncoded(key, "/") + "?ticket=" + mediaSignature(bucket, key);
}

} // namespace LocalPlatform
