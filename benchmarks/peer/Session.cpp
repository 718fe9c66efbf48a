#include "peer/Session.h"

#include "peer/Base64.h"
#include "peer/Xml.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>

#include <algorithm>
#include <ctime>

namespace Korvo::Bench {
namespace {

const std::string XML_TYPE = "application/xml; charset=UTF-8";
const std::string COMPRESSED = "Accept-Encoding: gzip, deflate";
const std::string ACCEPT = "Accept: text/html,application/xhtml+xml,application/xml;q=0.9,*/*;q=0.8";
const std::string USER = "inspector%40korvo.example";
const std::string PASSWORD = "Camera";

std::string dateNow()
{
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&now, &parts);
    char text[64];
    return std::string(text, std::strftime(text, sizeof text, "%a, %d %b %Y %H:%M:%S GMT", &parts));
}

std::string uuid()
{
    unsigned char bytes[16];
    RAND_bytes(bytes, sizeof bytes);
    static const char DIGITS[] = "0123456789abcdef";
    std::string text = "{";
    for (std::size_t at = 0; at < sizeof bytes; ++at) {
        if (at == 4 || at == 6 || at == 8 || at == 10)
            text += '-';
        text += DIGITS[bytes[at] >> 4];
        text += DIGITS[bytes[at] & 15];
    }
    return text + '}';
}

std::string hmac(const std::string &key, const std::string &text)
{
    unsigned char digest[32];
    unsigned int length = 0;
    HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), reinterpret_cast<const unsigned char *>(text.data()),
         text.size(), digest, &length);
    std::string encoded;
    appendBase64(&encoded, std::string_view(reinterpret_cast<const char *>(digest), length));
    return encoded;
}

/// Blanks are all that the keys of the workloads have to encode.
std::string encoded(const std::string &path)
{
    std::string text;
    for (const char c : path)
        c == ' ' ? text += "%20" : text += c;
    return text;
}

std::string jsonText(const std::string &json, const std::string &name)
{
    const std::string mark = '"' + name + "\":\"";
    const std::size_t start = json.find(mark) + mark.size();
    return json.substr(start, json.find('"', start) - start);
}

} // namespace

PeerRequest Session::plain(const char *method, const std::string &route, const std::string &contentType,
                           std::string body) const
{
    PeerRequest request;
    request.method = method;
    request.url = WEB_ROOT + route;
    request.body = std::move(body);
    // The first three are what Qt adds by itself; "Accept:" without a value and "Expect:" keep libcurl from adding its own.
    request.headers = {"Connection: Keep-Alive", COMPRESSED, "Accept-Language: en,*", "Expect:"};
    if (!contentType.empty())
        request.headers.push_back("Content-Type: " + contentType);
    return request;
}

PeerRequest Session::web(const char *method, const std::string &route, std::string body) const
{
    PeerRequest request = plain(method, route, XML_TYPE, std::move(body));
    request.headers.insert(request.headers.end(),
                           {"Accept:", "User-Agent: bench / 1.0", "X-KorvoService-ClientId: " + clientId,
                            "Authorization: Bearer " + token});
    return request;
}

PeerRequest Session::statuses(std::string body) const
{
    PeerRequest request
        = plain("POST", "api/UploadProject/Statuses", "application/json; charset=UTF-8", std::move(body));
    request.headers.insert(request.headers.end(),
                           {"Accept:", "User-Agent: bench / 1.0", "Authorization: Bearer " + token});
    return request;
}

PeerRequest Session::serviceWithoutSignature(const char *method, const std::string &signedPath, std::string body,
                                             const std::string &query, std::string *toSign) const
{
    PeerRequest request = plain(method, {}, XML_TYPE, std::move(body));
    request.url = SERVICE_ROOT + encoded(signedPath) + query;
    const std::string date = dateNow();
    const std::string messageToken = uuid();
    request.headers.insert(request.headers.end(),
                           {ACCEPT, "User-Agent: bench / 1.0", "Date: " + date, "X-KorvoService-ClientId: " + clientId,
                            "X-KorvoService-MessageToken: " + messageToken});
    *toSign = std::string(method) + '\n' + date + '\n' + messageToken + '\n' + clientId + '\n' + signedPath;
    return request;
}

PeerRequest Session::service(const char *method, const std::string &signedPath, std::string body,
                             const std::string &query) const
{
    std::string toSign;
    PeerRequest request = serviceWithoutSignature(method, signedPath, std::move(body), query, &toSign);
    request.headers.push_back("Authorization: KorvoService " + hmac(secret, toSign));
    return request;
}

PeerRequest Session::listing(const std::string &bucket) const
{
    const std::string prefixes
        = "<Prefixes xmlns:d2p1=\"http://schemas.microsoft.com/2003/10/Serialization/Arrays\"></Prefixes>";
    return service("POST", "api/bucket/listoffilesfromlocations",
                   body("FileListFromLocationsRequest", SERVICE,
                        element("BucketName", bucket) + element("Delimiter", "") + prefixes));
}

PeerRequest Session::download(const std::string &signedPath) const
{
    PeerRequest request = service("GET", signedPath, {}, "?download=true");
    std::replace(request.headers.begin(), request.headers.end(), COMPRESSED, std::string("Accept-Encoding: identity"));
    return request;
}

void Session::logIn()
{
    PeerRequest check = plain("GET", "api/Users/CheckTwoStepAuthentication?username=" + USER, {}, {});
    check.headers.insert(check.headers.end(), {"Accept:", "User-Agent: Mozilla/5.0"});
    requests.wait(std::move(check));

    PeerRequest login = plain("PUT", "Token", "application/x-www-form-urlencoded; charset=UTF-8",
                              "grant_type=password&keepInMind=true&username=" + USER + "&password=" + PASSWORD);
    login.headers.insert(login.headers.end(), {"Accept:", "User-Agent: bench / 1.0"});
    token = jsonText(requests.wait(std::move(login)), "access_token");

    std::string unsignedText;
    requests.wait(serviceWithoutSignature("GET", "api/Status/Get", {}, {}, &unsignedText));

    const std::string credentials = requests.wait(web("GET", "api/Projects/companykorvoservice"));
    clientId = xmlText(credentials, "ClientId");
    secret = xmlText(credentials, "SecretKey");
}

} // namespace Korvo::Bench
