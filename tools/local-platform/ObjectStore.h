#pragma once

#include "Clock.h"
#include "Database.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace LocalPlatform {

struct Chunk
{
    std::string file; ///< generated name below the object folder; a key never becomes a path
    std::int64_t size = 0;
};

struct StoredObject
{
    std::string key;
    std::int64_t size = 0;
    std::string modified;
};

/// An object that is being read; its files stay as long as this lives.
class ObjectReader
{
public:
    ObjectReader(std::vector<Chunk> objectChunks, std::string folder, std::shared_ptr<void> filePin);

    std::int64_t size() const { return total; }

    /// Hands out bytes from @p offset on until @p take returns false; false if a file cannot be read.
    bool read(std::int64_t offset, std::int64_t length, const std::function<bool(const char *, std::size_t)> &take) const;

private:
    std::vector<Chunk> chunks;
    std::string root;
    std::shared_ptr<void> pin;
    std::int64_t total = 0;
};

/// How far a multipart upload has come.
struct Upload
{
    std::string id;
    std::string bucket;
    std::string key;
    std::string companyId;
    std::string state; ///< "open", "completed" or "aborted"
};

enum class WebCopies { SameFolder, LowerCaseFolder, Both, None };

/// Buckets and their objects. Bytes are files under generated names, written beside, synced and renamed before the row
/// that makes them an object is committed: an object is there whole or not at all, whenever the process dies.
class ObjectStore
{
public:
    ObjectStore(Database &target, const Clock &platformClock, const std::string &dataFolder, bool syncFiles);

    bool createBucket(const std::string &name, const std::string &companyId);
    std::optional<std::string> ownerOfBucket(const std::string &name);

    /// With @p failAsFull the disk counts as full half way through.
    void put(const std::string &bucket, const std::string &key, std::string_view bytes, bool failAsFull = false);
    std::optional<StoredObject> find(const std::string &bucket, const std::string &key);
    std::vector<StoredObject> list(const std::string &bucket, const std::vector<std::string> &prefixes);
    std::int64_t usedSpace(const std::string &bucket, const std::string &path);
    bool exists(const std::string &bucket, const std::string &path);

    /// Removes the object, or all below the folder, of this path; an empty path means all. Returns the bytes freed.
    std::int64_t remove(const std::string &bucket, const std::string &path);
    std::shared_ptr<ObjectReader> open(const std::string &bucket, const std::string &key);

    std::string beginUpload(const std::string &bucket, const std::string &key, const std::string &companyId);
    std::optional<Upload> findUpload(const std::string &id);
    void putPart(const std::string &uploadId, std::int64_t number, std::string_view bytes, bool failAsFull = false);

    /// The first part number missing from 1..n, 0 if none is.
    std::int64_t firstMissingPart(const std::string &uploadId);
    void completeUpload(const Upload &upload);
    void abortUpload(const std::string &uploadId);

    void transcode(const std::string &bucket, const std::string &key, const std::string &outputKey);
    void setWebCopies(WebCopies where) { webCopies = where; }

    nlohmann::json bucketsOverview(bool withHashes);
    nlohmann::json uploadsOverview();
    nlohmann::json jobsOverview();

private:
    Chunk writeChunk(std::string_view bytes, bool failAsFull);
    void replaceObject(const std::string &bucket, const std::string &key, const std::vector<Chunk> &chunks);
    std::vector<std::string> filesOfObject(std::int64_t id);
    std::int64_t objectId(const std::string &bucket, const std::string &key);
    std::vector<Chunk> chunksOf(std::int64_t id);
    std::vector<Chunk> partsOf(const std::string &uploadId);
    void forgetFiles(const std::vector<std::string> &files);
    void unpin(const std::vector<Chunk> &chunks);
    void removeStrayFiles();
    void copyObject(const std::string &bucket, const std::string &from, const std::string &to);
    std::string hashOf(const std::string &bucket, const std::string &key);

    Database &database;
    const Clock &clock;
    std::string root;
    bool sync;
    WebCopies webCopies = WebCopies::SameFolder;
    std::mutex pinMutex; ///< guards pins and doomed
    std::map<std::string, int> pins;
    std::set<std::string> doomed; ///< no longer part of an object, but still being read
};

} // namespace LocalPlatform
