#include "Answers.h"
#include "BodyReader.h"
#include "BucketName.h"
#include "Refusal.h"
#include "Routes.h"

#include <functional>
#include <map>
#include <set>

namespace LocalPlatform {
namespace {

const std::string WEBDAV = "webdav/";
const std::string MEDIA = "media/";
constexpr std::size_t LONGEST_KEY = 4096;

/// What the handlers of signed requests work on.
struct SignedRequest
{
    Platform &platform;
    Exchange &exchange;
    Company company;
};

using Handler = std::function<void(SignedRequest &)>;

BodyReader bodyOf(const SignedRequest &r, const char *root)
{
    requireContentType(r.exchange, "application/xml");
    return BodyReader(r.exchange.request->body, serviceRoot(root));
}

void requireOwnBucket(SignedRequest &r, const std::string &name)
{
    const auto owner = r.platform.objects.ownerOfBucket(name);
    if (!owner)
        throw Refusal(404, "unknown bucket", "BucketName");
    if (*owner != r.company.id)
        throw Refusal(403, "the bucket belongs to another company", "BucketName");
}

std::string takeOwnBucket(SignedRequest &r, BodyReader &body)
{
    const std::string name = body.takeFilled("BucketName");
    requireOwnBucket(r, name);
    return name;
}

std::string takeKey(BodyReader &body, const char *name)
{
    const std::string key = body.takeFilled(name);
    if (key.size() > LONGEST_KEY)
        throw Refusal(400, "the key is too long", name);
    return key;
}

Upload takeUpload(SignedRequest &r, BodyReader &body)
{
    const auto upload = r.platform.objects.findUpload(body.takeFilled("MultipartUploadId"));
    if (!upload || upload->companyId != r.company.id)
        throw Refusal(404, "unknown multipart upload", "MultipartUploadId");
    return *upload;
}

void requireOpen(const Upload &upload)
{
    if (upload.state != "open")
        throw Refusal(409, "the multipart upload is already " + upload.state, "MultipartUploadId");
}

void answer(SignedRequest &r, const std::string &root, const std::string &children)
{
    answerXml(r.exchange, 200, "<" + root + ">" + children + "</" + root + ">");
}

void createBucket(SignedRequest &r)
{
    BodyReader body = bodyOf(r, "BucketRequest");
    const std::string name = body.takeFilled("BucketName");
    body.end();
    if (!isBucketName(name))
        throw Refusal(400, "a bucket's name consists of a-z, 0-9 and -", "BucketName");
    r.platform.objects.createBucket(name, r.company.id);
    requireOwnBucket(r, name);
    answer(r, "BucketResponse", element("Name", name));
}

void deleteObject(SignedRequest &r)
{
    BodyReader body = bodyOf(r, "DeleteObjectRequest");
    const std::string bucket = takeOwnBucket(r, body);
    const std::string path = body.take("RelativePath");
    body.end();
    answer(r, "DeleteObjectResponse", element("DeletedFilesSize", std::to_string(r.platform.objects.remove(bucket, path))));
}

void usedSpace(SignedRequest &r)
{
    BodyReader body = bodyOf(r, "GetUsedSpaceRequest");
    const std::string bucket = takeOwnBucket(r, body);
    const std::string path = body.take("RelativePath");
    body.end();
    answer(r, "GetUsedSpaceResponse", element("UsedSpace", std::to_string(r.platform.objects.usedSpace(bucket, path))));
}

void objectExists(SignedRequest &r)
{
    BodyReader body = bodyOf(r, "ObjectExistsRequest");
    const std::string bucket = body.takeFilled("BucketName");
    const std::string path = body.take("RelativePath");
    body.end();
    const auto owner = r.platform.objects.ownerOfBucket(bucket);
    if (owner && *owner != r.company.id)
        throw Refusal(403, "the bucket belongs to another company", "BucketName");
    answer(r, "ObjectExistsResponse", element("Exist", owner && r.platform.objects.exists(bucket, path) ? "true" : "false"));
}

void cleanUpVersions(SignedRequest &r)
{
    BodyReader body = bodyOf(r, "CleanupVersionFilesRequest");
    takeOwnBucket(r, body);
    body.take("RelativePath");
    body.takeNumber("KeepNewestVersion");
    body.end();
    // Only the newest version of an object is kept anyway.
    answer(r, "CleanupVersionFilesResponse", element("Success", "true"));
}

std::string fileEntry(const StoredObject &object)
{
    const std::size_t slash = object.key.rfind('/');
    return "<ObjectModel>" + element("Directory", slash == std::string::npos ? "" : object.key.substr(0, slash)) +
           element("FileName", lastPart(object.key)) + element("Key", object.key) + element("ModifiedDate", object.modified) +
           element("Size", std::to_string(object.size)) + element("Type", "1") + "</ObjectModel>";
}

std::string folderEntry(const std::string &folder)
{
    const std::size_t slash = folder.rfind('/');
    return "<ObjectModel>" + element("Directory", slash == std::string::npos ? "" : folder.substr(0, slash)) +
           element("FileName", lastPart(folder)) + element("Key", folder) + element("ModifiedDate", "") + element("Size", "0") +
           element("Type", "0") + "</ObjectModel>";
}

/// The entries of one listing: files, and each folder once, before its first file.
class Listing
{
public:
    Listing(std::vector<std::string> wantedPrefixes, std::string folderDelimiter)
        : prefixes(std::move(wantedPrefixes)), delimiter(std::move(folderDelimiter))
    {
    }

    void add(const StoredObject &object)
    {
        const std::string folded = foldedFolder(object.key);
        if (!folded.empty())
            return addFolder(folded);
        if (delimiter.empty())
            addFoldersOf(object.key);
        append(fileEntry(object));
    }

    std::string xml() const { return element("Count", std::to_string(count)) + "<Files>" + entries + "</Files>"; }

private:
    void append(const std::string &entry)
    {
        entries += entry;
        ++count;
    }

    void addFolder(const std::string &folder)
    {
        if (folders.insert(folder).second)
            append(folderEntry(folder));
    }

    /// The folders on the way to a key, outermost first.
    void addFoldersOf(const std::string &key)
    {
        for (std::size_t slash = key.find('/', 1); slash != std::string::npos; slash = key.find('/', slash + 1))
            addFolder(key.substr(0, slash));
    }

    /// With a delimiter, what lies deeper than the prefix counts as one folder: its name, or nothing.
    std::string foldedFolder(const std::string &key) const
    {
        if (delimiter.empty())
            return {};
        std::size_t start = 0;
        for (const std::string &prefix : prefixes)
            if (startsWith(key, prefix))
                start = std::max(start, prefix.size());
        const std::size_t end = key.find(delimiter, start);
        return end == std::string::npos ? std::string() : key.substr(0, end);
    }

    std::vector<std::string> prefixes;
    std::string delimiter;
    std::string entries;
    std::size_t count = 0;
    std::set<std::string> folders;
};

void listFiles(SignedRequest &r)
{
    BodyReader body = bodyOf(r, "FileListFromLocationsRequest");
    const std::string bucket = takeOwnBucket(r, body);
    const std::string delimiter = body.take("Delimiter");
    const std::vector<std::string> prefixes = body.takePrefixes();
    body.end();
    Listing listing(prefixes, delimiter);
    for (const StoredObject &object : r.platform.objects.list(bucket, prefixes))
        listing.add(object);
    answer(r, "FileListFromLocationsResponse", listing.xml());
}

void putFile(SignedRequest &r)
{
    BodyReader body = bodyOf(r, "PutFileRequest");
    const std::string bucket = takeOwnBucket(r, body);
    const std::string bytes = body.takeBytes("InputFileArray");
    const std::string key = takeKey(body, "OutputFilePath");
    body.take("ProjectFolderName");
    body.end();
    r.platform.objects.put(bucket, key, bytes, r.exchange.hasFault("diskFull"));
    answer(r, "PutFileResponse", element("Key", key) + element("Size", std::to_string(bytes.size())));
}

void beginMultipart(SignedRequest &r)
{
    BodyReader body = bodyOf(r, "InitMultipartUploadRequest");
    const std::string bucket = takeOwnBucket(r, body);
    const std::string key = takeKey(body, "OutputFilePath");
    body.end();
    answer(r, "InitMultipartUploadResponse", element("MultipartUploadId", r.platform.objects.beginUpload(bucket, key, r.company.id)));
}

void putPart(SignedRequest &r)
{
    BodyReader body = bodyOf(r, "PutMultipartUploadRequest");
    const std::string bytes = body.takeBytes("InputFilePartArray");
    const Upload upload = takeUpload(r, body);
    const std::int64_t number = body.takeNumber("PartNumber");
    body.end();
    requireOpen(upload);
    if (number < 1)
        throw Refusal(400, "parts are counted from 1", "PartNumber");
    r.platform.objects.putPart(upload.id, number, bytes, r.exchange.hasFault("diskFull"));
    answer(r, "PutMultipartUploadResponse", element("PartNumber", std::to_string(number)));
}

void completeMultipart(SignedRequest &r)
{
    BodyReader body = bodyOf(r, "CompleteMultipartUploadRequest");
    const Upload upload = takeUpload(r, body);
    body.take("ProjectFolderName");
    body.end();
    // The client may not have seen the first answer.
    if (upload.state != "completed") {
        requireOpen(upload);
        const std::int64_t missing = r.platform.objects.firstMissingPart(upload.id);
        if (missing > 0)
            throw Refusal(400, "part " + std::to_string(missing) + " is missing", "MultipartUploadId");
        r.platform.objects.completeUpload(upload);
    }
    answer(r, "CompleteMultipartUploadResponse", element("Key", upload.key));
}

void abortMultipart(SignedRequest &r)
{
    BodyReader body = bodyOf(r, "AbortMultipartUploadRequest");
    const Upload upload = takeUpload(r, body);
    body.end();
    if (upload.state != "aborted") {
        requireOpen(upload);
        r.platform.objects.abortUpload(upload.id);
    }
    answer(r, "AbortMultipartUploadResponse", element("MultipartUploadId", upload.id));
}

void startTranscoding(SignedRequest &r)
{
    BodyReader body = bodyOf(r, "PutJobForEachPresetRequest");
    const std::string bucket = takeOwnBucket(r, body);
    const std::string key = body.takeFilled("FileKey");
    const std::string outputKey = body.takeFilled("OutputKeyWithoutExtension");
    body.end();
    if (!r.platform.objects.find(bucket, key))
        throw Refusal(404, "no such object", "FileKey");
    r.platform.objects.transcode(bucket, key, outputKey);
    answer(r, "PutJobForEachPresetResponse", element("FileKey", key));
}

/// Bucket and key behind a prefix. The key may begin with "/".
std::pair<std::string, std::string> bucketAndKey(const std::string &path)
{
    const std::size_t slash = path.find('/');
    return {path.substr(0, slash), slash == std::string::npos ? std::string() : path.substr(slash + 1)};
}

void downloadFile(SignedRequest &r)
{
    if (queryValue(r.exchange.query, "download") != "true")
        throw Refusal(400, "missing parameter download=true", "download");
    const auto [bucket, key] = bucketAndKey(percentDecoded(r.exchange.route.substr(WEBDAV.size())).value_or(std::string()));
    requireOwnBucket(r, bucket);
    const auto object = r.platform.objects.open(bucket, key);
    if (!object)
        throw Refusal(404, "no such object", key);
    answerObject(r.exchange, object, key);
}

void downloadByTicket(Platform &platform, Exchange &exchange)
{
    const auto [bucket, key] = bucketAndKey(percentDecoded(exchange.route.substr(MEDIA.size())).value_or(std::string()));
    if (queryValue(exchange.query, "ticket") != platform.mediaSignature(bucket, key))
        throw Refusal(403, "the link is not valid", "ticket");
    const auto object = platform.objects.open(bucket, key);
    if (!object)
        throw Refusal(404, "no such object", key);
    answerObject(exchange, object, key);
}

void answerStatus(Platform &platform, Exchange &exchange)
{
    platform.signatures.verifyHeadersOnly(*exchange.request);
    answerXml(exchange, 200, "<StatusResponse>" + element("CurrentDate", isoDate(exchange.now)) + "</StatusResponse>");
}

/// The text that was signed for a download: on the wire more is encoded than in it.
std::string signedPath(const std::string &route)
{
    if (!startsWith(route, WEBDAV))
        return route;
    const auto decoded = percentDecoded(route);
    if (!decoded)
        throw Refusal(400, "a broken escape in the path");
    std::string text;
    for (const char c : *decoded) {
        if (c == '%' || c == '#' || c == '?')
            text += percentEncoded(std::string_view(&c, 1));
        else
            text += c;
    }
    return text;
}

struct Route
{
    const char *method;
    Handler handler;
};

const std::map<std::string, Route> &serviceRoutes()
{
    static const std::map<std::string, Route> ROUTES = {
        {"api/bucket", {"PUT", createBucket}},
        {"api/bucket/delete", {"POST", deleteObject}},
        {"api/bucket/space", {"POST", usedSpace}},
        {"api/bucket/exists", {"POST", objectExists}},
        {"api/bucket/cleanup", {"POST", cleanUpVersions}},
        {"api/bucket/listoffilesfromlocations", {"POST", listFiles}},
        {"api/bucket/putfile", {"PUT", putFile}},
        {"api/multipartupload/init", {"PUT", beginMultipart}},
        {"api/multipartupload/upload", {"PUT", putPart}},
        {"api/multipartupload/complete", {"PUT", completeMultipart}},
        {"api/multipartupload/abort", {"PUT", abortMultipart}},
        {"api/job/putforeachpresets", {"PUT", startTranscoding}},
    };
    return ROUTES;
}

void requireMethod(const Exchange &exchange, const std::string &method)
{
    if (exchange.request->method != method)
        throw Refusal(405, "this route takes " + method);
}

const Route &routeOf(const Exchange &exchange)
{
    static const Route DOWNLOAD = {"GET", downloadFile};
    if (startsWith(exchange.route, WEBDAV))
        return DOWNLOAD;
    const auto found = serviceRoutes().find(exchange.route);
    if (found == serviceRoutes().end())
        throw Refusal(404, "unknown route");
    return found->second;
}

} // namespace

void handleServiceRequest(Platform &platform, Exchange &exchange)
{
    if (exchange.route == "api/Status/Get") {
        requireMethod(exchange, "GET");
        return answerStatus(platform, exchange);
    }
    if (startsWith(exchange.route, MEDIA)) {
        requireMethod(exchange, "GET");
        return downloadByTicket(platform, exchange);
    }
    const Route &route = routeOf(exchange);
    requireMethod(exchange, route.method);
    const auto verdict = platform.signatures.verify(*exchange.request, signedPath(exchange.route), exchange.now);
    exchange.resent = verdict.resent;
    exchange.user = verdict.company.id;
    SignedRequest request{platform, exchange, verdict.company};
    route.handler(request);
}

} // namespace LocalPlatform
