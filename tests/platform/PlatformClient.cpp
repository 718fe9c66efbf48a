#include "PlatformClient.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>
#include <openssl/sha.h>

#include <cctype>
#include <ctime>

namespace PlatformTest {

const std::string WEB_HOST = "web.korvo.example";
const std::string SERVICE_HOST = "service.korvo.example";
const std::string PROJECT_ID = "0f8fad5b-d9cb-469f-a165-70867728950e";

namespace {

const std::string CONTRACTS = "http://schemas.datacontract.org/2004/07/Norbel.Korvo.";

std::string hexText(const unsigned char *bytes, std::size_t count)
{
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += {DIGITS[bytes[i] >> 4], DIGITS[bytes[i] & 15]};
    return text;
}

std::string xmlBody(const std::string &root, const std::string &contract, const std::string &content)
{
    return "<" + root + " xmlns:i=\"http://www.w3.org/2001/XMLSchema-instance\" xmlns=\"" + CONTRACTS + contract + "\">" + content + "</" + root + ">";
}

std::string joined(const Elements &children)
{
    std::string text;
    for (const auto &[name, value] : children)
        text += "<" + name + ">" + value + "</" + name + ">";
    return text;
}

} // namespace

std::string base64(const std::string &bytes)
{
    std::string text(bytes.size() / 3 * 4 + 5, '\0');
    const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char *>(text.data()),
                                       reinterpret_cast<const unsigned char *>(bytes.data()), static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::string sha256Hex(const std::string &bytes)
{
    unsigned char digest[SHA256_DIGEST_LENGTH];
    SHA256(reinterpret_cast<const unsigned char *>(bytes.data()), bytes.size(), digest);
    return hexText(digest, sizeof digest);
}

std::string percentEncodedPath(const std::string &path)
{
    std::string text;
    for (const char c : path) {
        if (std::isalnum(static_cast<unsigned char>(c)) || std::string("-._~/").find(c) != std::string::npos) {
            text += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        text += "%" + hexText(&byte, 1);
    }
    return text;
}

std::string mailDate(std::int64_t offsetSeconds)
{
    static const char *const DAYS[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static const char *const MONTHS[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::time_t time = std::time(nullptr) + offsetSeconds;
    std::tm t{};
    gmtime_r(&time, &t);
    char text[64];
    std::snprintf(text, sizeof text, "%s, %02d %s %04d %02d:%02d:%02d GMT", DAYS[t.tm_wday], t.tm_mday, MONTHS[t.tm_mon],
                  t.tm_year + 1900, t.tm_hour, t.tm_min, t.tm_sec);
    return text;
}

std::string newMessageToken()
{
    unsigned char bytes[16];
    RAND_bytes(bytes, sizeof bytes);
    const std::string hex = hexText(bytes, sizeof bytes);
    return "{" + hex.substr(0, 8) + "-" + hex.substr(8, 4) + "-" + hex.substr(12, 4) + "-" + hex.substr(16, 4) + "-" + hex.substr(20) + "}";
}

std::string elementText(const std::string &xml, const std::string &name)
{
    const std::size_t start = xml.find("<" + name + ">");
    if (start == std::string::npos)
        return {};
    const std::size_t from = start + name.size() + 2;
    return xml.substr(from, xml.find("</" + name + ">", from) - from);
}

std::string webBody(const std::string &root, const Elements &children)
{
    return xmlBody(root, "Web.Business.Models", joined(children));
}

std::string serviceBody(const std::string &root, const Elements &children)
{
    return xmlBody(root, "Service.SDK.Models.Request", joined(children));
}

std::string accountBody(const std::string &root, const Elements &children)
{
    return xmlBody(root, "Web.Client.Controllers.Api", joined(children));
}

std::string listingBody(const std::string &bucket, const std::vector<std::string> &prefixes, const std::string &delimiter)
{
    std::string content = joined({{"BucketName", bucket}, {"Delimiter", delimiter}}) +
                          "<Prefixes xmlns:d2p1=\"http://schemas.microsoft.com/2003/10/Serialization/Arrays\">";
    for (const std::string &prefix : prefixes)
        content += "<d2p1:string>" + prefix + "</d2p1:string>";
    return xmlBody("FileListFromLocationsRequest", "Service.SDK.Models.Request", content + "</Prefixes>");
}

WireAnswer PlatformClient::login(const std::string &user, const std::string &password, const std::string &code)
{
    const std::string form = "grant_type=password&keepInMind=true&username=" + percentEncodedPath(user) + "&password=" + password +
                             (code.empty() ? "" : "&twoFactorAuthenticationCode=" + code);
    WireRequest request{"PUT", "/Token", {{"Content-Type", "application/x-www-form-urlencoded; charset=UTF-8"}}, form, WEB_HOST};
    const WireAnswer answer = send(request);
    const auto json = nlohmann::json::parse(answer.body, nullptr, false);
    token = json.is_object() ? json.value("access_token", "") : "";
    return answer;
}

bool PlatformClient::prepare()
{
    if (login().status != 200)
        return false;
    const std::string credentials = web("GET", "/api/Projects/companykorvoservice").body;
    clientId = elementText(credentials, "ClientId");
    secretKey = elementText(credentials, "SecretKey");
    serviceUrl = elementText(credentials, "Url");
    const WireAnswer begun = web("POST", "/api/UploadProject/Init",
                                 webBody("InitUploadProcesModel", {{"CompanyId", "korvo-company-01"}, {"CreationDate", "2026-03-03T14:05:09Z"},
                                                                   {"Email", "inspector@korvo.example"}, {"HasPermissionsToOverrideAllProject", "true"},
                                                                   {"ProjectId", PROJECT_ID}, {"ProjectName", "Kanal_2026"}}));
    bucket = elementText(begun.body, "BucketName");
    return service("PUT", "api/bucket", serviceBody("BucketRequest", {{"BucketName", bucket}})).status == 200;
}

WireRequest PlatformClient::webRequest(const std::string &method, const std::string &target, const std::string &body, const std::string &type) const
{
    return {method, target, {{"Authorization", "Bearer " + token}, {"Content-Type", type}}, body, WEB_HOST};
}

WireAnswer PlatformClient::web(const std::string &method, const std::string &target, const std::string &body, const std::string &type)
{
    return send(webRequest(method, target, body, type));
}

SignedLines PlatformClient::linesFor(const std::string &method, const std::string &path) const
{
    return {method, mailDate(), newMessageToken(), clientId, path};
}

std::string PlatformClient::signatureOf(const SignedLines &lines) const
{
    const std::string text = lines.method + "\n" + lines.date + "\n" + lines.token + "\n" + lines.clientId + "\n" + lines.path;
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    HMAC(EVP_sha256(), secretKey.data(), static_cast<int>(secretKey.size()), reinterpret_cast<const unsigned char *>(text.data()),
         text.size(), digest, &length);
    return base64(std::string(reinterpret_cast<const char *>(digest), length));
}

WireRequest PlatformClient::signedRequest(const SignedLines &sent, const std::string &signature, const std::string &body) const
{
    return {sent.method, "/korvoservice/" + sent.path,
            {{"Date", sent.date}, {"X-KorvoService-MessageToken", sent.token}, {"X-KorvoService-ClientId", sent.clientId},
             {"Authorization", "KorvoService " + signature}, {"Content-Type", "application/xml; charset=UTF-8"}},
            body, SERVICE_HOST};
}

WireAnswer PlatformClient::service(const std::string &method, const std::string &path, const std::string &body)
{
    const SignedLines lines = linesFor(method, path);
    return send(signedRequest(lines, signatureOf(lines), body));
}

WireRequest PlatformClient::putFileRequest(const std::string &key, const std::string &bytes) const
{
    const SignedLines lines = linesFor("PUT", "api/bucket/putfile");
    return signedRequest(lines, signatureOf(lines),
                         serviceBody("PutFileRequest", {{"BucketName", bucket}, {"InputFileArray", base64(bytes)}, {"OutputFilePath", key}, {"ProjectFolderName", ""}}));
}

WireAnswer PlatformClient::putFile(const std::string &key, const std::string &bytes)
{
    return send(putFileRequest(key, bytes));
}

WireRequest PlatformClient::downloadRequest(const std::string &key) const
{
    std::string part;
    for (const char c : key)
        part += c == '%' ? "%25" : c == '#' ? "%23" : c == '?' ? "%3F" : std::string(1, c);
    const SignedLines lines = linesFor("GET", "webdav/" + bucket + "/" + part);
    WireRequest request = signedRequest(lines, signatureOf(lines));
    request.target = "/korvoservice/webdav/" + bucket + "/" + percentEncodedPath(key) + "?download=true";
    return request;
}

WireAnswer PlatformClient::download(const std::string &key, int milliseconds)
{
    return send(downloadRequest(key), milliseconds);
}

std::unique_ptr<WireClient> PlatformClient::freshConnection(const std::string &host) const
{
    return WireClient::tunnelled(platform.proxyPort(), platform.authority(), host);
}

WireAnswer PlatformClient::send(const WireRequest &request, int milliseconds)
{
    auto &connection = connections[request.host];
    if (!connection)
        connection = freshConnection(request.host);
    const WireAnswer answer = connection->exchange(request, milliseconds);
    const auto closing = answer.headers.find("connection");
    if (answer.ending != Ending::Complete || (closing != answer.headers.end() && closing->second == "close"))
        connection.reset();
    return answer;
}

void PlatformClient::disconnect()
{
    connections.clear();
}

} // namespace PlatformTest
