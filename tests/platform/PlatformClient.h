#pragma once

#include "PlatformProcess.h"
#include "WireClient.h"

#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace PlatformTest {

using Elements = std::vector<std::pair<std::string, std::string>>;

extern const std::string WEB_HOST;
extern const std::string SERVICE_HOST;
extern const std::string PROJECT_ID;

std::string base64(const std::string &bytes);
std::string sha256Hex(const std::string &bytes);
std::string percentEncodedPath(const std::string &path);
std::string mailDate(std::int64_t offsetSeconds = 0);
std::string newMessageToken();

/// Text of the first element of this name; empty if there is none.
std::string elementText(const std::string &xml, const std::string &name);

std::string webBody(const std::string &root, const Elements &children);
std::string serviceBody(const std::string &root, const Elements &children);
std::string accountBody(const std::string &root, const Elements &children);
std::string listingBody(const std::string &bucket, const std::vector<std::string> &prefixes = {}, const std::string &delimiter = {});

/// The five signed lines, and what is sent for them.
struct SignedLines
{
    std::string method;
    std::string date;
    std::string token;
    std::string clientId;
    std::string path;

    std::array<std::string *, 5> all() { return {&method, &date, &token, &clientId, &path}; }
};

/// Speaks the platform's protocol by hand: signs with OpenSSL, writes bodies as text. Goes through the proxy.
class PlatformClient
{
public:
    explicit PlatformClient(PlatformProcess &running) : platform(running) {}

    WireAnswer login(const std::string &user = "inspector@korvo.example", const std::string &password = "Camera 12%1+Kanal",
                     const std::string &code = {});

    /// Logs in, takes the credentials, begins the upload of a project and makes its bucket. False if a step fails.
    bool prepare();

    WireAnswer web(const std::string &method, const std::string &target, const std::string &body = {},
                   const std::string &type = "application/xml; charset=UTF-8");
    WireAnswer service(const std::string &method, const std::string &path, const std::string &body = {});
    WireAnswer putFile(const std::string &key, const std::string &bytes);
    WireAnswer download(const std::string &key, int milliseconds = 10000);

    SignedLines linesFor(const std::string &method, const std::string &path) const;
    std::string signatureOf(const SignedLines &lines) const;
    WireRequest signedRequest(const SignedLines &sent, const std::string &signature, const std::string &body = {}) const;
    WireRequest putFileRequest(const std::string &key, const std::string &bytes) const;
    WireRequest downloadRequest(const std::string &key) const;
    WireRequest webRequest(const std::string &method, const std::string &target, const std::string &body, const std::string &type) const;

    /// On a connection that is kept as long as it works.
    WireAnswer send(const WireRequest &request, int milliseconds = 10000);
    void disconnect();
    std::unique_ptr<WireClient> freshConnection(const std::string &host) const;

    std::string token;
    std::string clientId;
    std::string secretKey;
    std::string serviceUrl;
    std::string bucket;

private:
    PlatformProcess &platform;
    std::map<std::string, std::unique_ptr<WireClient>> connections;
};

} // namespace PlatformTest
