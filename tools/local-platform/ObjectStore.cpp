#include "ObjectStore.h"

#include "Crypto.h"
#include "Refusal.h"
#include "Text.h"

#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

namespace LocalPlatform {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t READ_BYTES = 256 * 1024;

/// An open file; closed at the end of the scope.
class Descriptor
{
public:
    explicit Descriptor(int opened) : number(opened) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    operator int() const { return number; }
    bool close()
    {
        const bool ok = number < 0 || ::close(number) == 0;
        number = -1;
        return ok;
    }

private:
    int number;
};

void syncFolder(const std::string &folder)
{
    const Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor >= 0)
        fsync(descriptor);
}

[[noreturn]] void throwStorageError(int code)
{
    throw Refusal(code == ENOSPC ? 507 : 500, std::string("storage: ") + std::strerror(code));
}

void writeAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throwStorageError(errno);
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

std::string insertedWeb(const std::string &key)
{
    const std::size_t slash = key.rfind('/');
    return slash == std::string::npos ? "web/" + key : key.substr(0, slash) + "/web" + key.substr(slash);
}

std::string loweredFolder(const std::string &key)
{
    const std::size_t slash = key.rfind('/');
    return slash == std::string::npos ? key : lowered(key.substr(0, slash)) + key.substr(slash);
}

std::int64_t totalSize(const std::vector<Chunk> &chunks)
{
    std::int64_t size = 0;
    for (const Chunk &chunk : chunks)
        size += chunk.size;
    return size;
}

} // namespace

ObjectReader::ObjectReader(std::vector<Chunk> objectChunks, std::string folder, std::shared_ptr<void> filePin)
    : chunks(std::move(objectChunks)), root(std::move(folder)), pin(std::move(filePin)), total(totalSize(chunks))
{
}

bool ObjectReader::read(std::int64_t offset, std::int64_t length, const std::function<bool(const char *, std::size_t)> &take) const
{
    std::vector<char> buffer(static_cast<std::size_t>(std::min<std::int64_t>(READ_BYTES, std::max<std::int64_t>(1, length))));
    for (const Chunk &chunk : chunks) {
        if (offset >= chunk.size) {
            offset -= chunk.size;
            continue;
        }
        const Descriptor descriptor(::open((root + "/" + chunk.file).c_str(), O_RDONLY | O_CLOEXEC));
        if (descriptor < 0)
            return false;
        while (length > 0 && offset < chunk.size) {
            const auto wanted = static_cast<std::size_t>(std::min({static_cast<std::int64_t>(buffer.size()), length, chunk.size - offset}));
            const ssize_t count = pread(descriptor, buffer.data(), wanted, offset);
            if (count <= 0)
                return false;
            if (!take(buffer.data(), static_cast<std::size_t>(count)))
                return true;
            offset += count;
            length -= count;
        }
        offset = 0;
        if (length <= 0)
            return true;
    }
    return length <= 0;
}

ObjectStore::ObjectStore(Database &target, const Clock &platformClock, const std::string &dataFolder, bool syncFiles)
    : database(target), clock(platformClock), root(dataFolder + "/objects"), sync(syncFiles)
{
    for (int i = 0; i < 256; ++i)
        fs::create_directories(root + "/" + hexEncoded(std::string(1, static_cast<char>(i))));
    fs::create_directories(root + "/tmp");
    removeStrayFiles();
}

void ObjectStore::removeStrayFiles()
{
    std::set<std::string> known;
    const auto guard = database.lock();
    Statement row(database, "SELECT file FROM chunks UNION SELECT file FROM parts");
    while (row.step())
        known.insert(row.text(0));
    for (const auto &folder : fs::directory_iterator(root))
        for (const auto &entry : fs::directory_iterator(folder.path()))
            if (known.count(folder.path().filename().string() + "/" + entry.path().filename().string()) == 0)
                fs::remove(entry.path());
}

Chunk ObjectStore::writeChunk(std::string_view bytes, bool failAsFull)
{
    const std::string name = randomHex(16);
    const std::string folder = name.substr(0, 2);
    const std::string temporary = root + "/tmp/" + name;
    try {
        Descriptor descriptor(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        if (descriptor < 0)
            throwStorageError(errno);
        writeAll(descriptor, failAsFull ? bytes.substr(0, bytes.size() / 2) : bytes);
        if (failAsFull)
            throwStorageError(ENOSPC);
        if ((sync && fsync(descriptor) != 0) || !descriptor.close())
            throwStorageError(errno);
        if (rename(temporary.c_str(), (root + "/" + folder + "/" + name).c_str()) != 0)
            throwStorageError(errno);
    } catch (...) {
        unlink(temporary.c_str());
        throw;
    }
    if (sync)
        syncFolder(root + "/" + folder);
    return {folder + "/" + name, static_cast<std::int64_t>(bytes.size())};
}

bool ObjectStore::createBucket(const std::string &name, const std::string &companyId)
{
    const auto guard = database.lock();
    Statement(database, "INSERT OR IGNORE INTO buckets VALUES(?, ?, ?)").bind(name).bind(companyId).bind(isoDate(clock.now())).run();
    return database.changes() > 0;
}

std::optional<std::string> ObjectStore::ownerOfBucket(const std::string &name)
{
    const auto guard = database.lock();
    Statement row(database, "SELECT company_id FROM buckets WHERE name = ?");
    row.bind(name);
    return row.step() ? std::optional(row.text(0)) : std::nullopt;
}

void ObjectStore::put(const std::string &bucket, const std::string &key, std::string_view bytes, bool failAsFull)
{
    const Chunk chunk = writeChunk(bytes, failAsFull);
    replaceObject(bucket, key, {chunk});
}

std::int64_t ObjectStore::objectId(const std::string &bucket, const std::string &key)
{
    Statement row(database, "SELECT id FROM objects WHERE bucket = ? AND key = ?");
    row.bind(bucket).bind(key);
    return row.step() ? row.integer(0) : 0;
}

std::vector<Chunk> ObjectStore::chunksOf(std::int64_t id)
{
    std::vector<Chunk> chunks;
    Statement row(database, "SELECT file, size FROM chunks WHERE object_id = ? ORDER BY position");
    row.bind(id);
    while (row.step())
        chunks.push_back({row.text(0), row.integer(1)});
    return chunks;
}

std::vector<std::string> ObjectStore::filesOfObject(std::int64_t id)
{
    std::vector<std::string> files;
    for (const Chunk &chunk : chunksOf(id))
        files.push_back(chunk.file);
    return files;
}

void ObjectStore::replaceObject(const std::string &bucket, const std::string &key, const std::vector<Chunk> &chunks)
{
    std::vector<std::string> replaced;
    {
        Transaction transaction(database);
        const std::int64_t old = objectId(bucket, key);
        replaced = filesOfObject(old);
        Statement(database, "DELETE FROM chunks WHERE object_id = ?").bind(old).run();
        Statement(database, "DELETE FROM objects WHERE id = ?").bind(old).run();
        Statement(database, "INSERT INTO objects(bucket, key, size, modified) VALUES(?, ?, ?, ?)")
            .bind(bucket).bind(key).bind(totalSize(chunks)).bind(isoDate(clock.now())).run();
        const std::int64_t id = database.lastRowId();
        std::int64_t position = 0;
        for (const Chunk &chunk : chunks)
            Statement(database, "INSERT INTO chunks VALUES(?, ?, ?, ?)").bind(id).bind(position++).bind(chunk.file).bind(chunk.size).run();
        transaction.commit();
    }
    forgetFiles(replaced);
}

void ObjectStore::forgetFiles(const std::vector<std::string> &files)
{
    const auto guard = database.lock();
    for (const std::string &file : files) {
        Statement row(database, "SELECT 1 FROM chunks WHERE file = ? UNION ALL SELECT 1 FROM parts WHERE file = ?");
        row.bind(file).bind(file);
        if (row.step())
            continue;
        const std::lock_guard pinGuard(pinMutex);
        if (pins.count(file) > 0)
            doomed.insert(file);
        else
            unlink((root + "/" + file).c_str());
    }
}

void ObjectStore::unpin(const std::vector<Chunk> &chunks)
{
    const std::lock_guard guard(pinMutex);
    for (const Chunk &chunk : chunks) {
        if (--pins[chunk.file] > 0)
            continue;
        pins.erase(chunk.file);
        if (doomed.erase(chunk.file) > 0)
            unlink((root + "/" + chunk.file).c_str());
    }
}

std::optional<StoredObject> ObjectStore::find(const std::string &bucket, const std::string &key)
{
    const auto guard = database.lock();
    Statement row(database, "SELECT key, size, modified FROM objects WHERE bucket = ? AND key = ?");
    row.bind(bucket).bind(key);
    return row.step() ? std::optional(StoredObject{row.text(0), row.integer(1), row.text(2)}) : std::nullopt;
}

std::vector<StoredObject> ObjectStore::list(const std::string &bucket, const std::vector<std::string> &prefixes)
{
    const auto wanted = [&prefixes](const std::string &key) {
        return prefixes.empty() || std::any_of(prefixes.begin(), prefixes.end(), [&key](const std::string &prefix) { return startsWith(key, prefix); });
    };
    std::vector<StoredObject> objects;
    const auto guard = database.lock();
    Statement row(database, "SELECT key, size, modified FROM objects WHERE bucket = ? ORDER BY key");
    row.bind(bucket);
    while (row.step())
        if (wanted(row.text(0)))
            objects.push_back({row.text(0), row.integer(1), row.text(2)});
    return objects;
}

std::int64_t ObjectStore::usedSpace(const std::string &bucket, const std::string &path)
{
    if (path.empty()) {
        const auto guard = database.lock();
        Statement row(database, "SELECT coalesce(sum(size), 0) FROM objects WHERE bucket = ?");
        row.bind(bucket);
        return row.step() ? row.integer(0) : 0;
    }
    std::int64_t sum = 0;
    for (const StoredObject &object : list(bucket, {path}))
        if (object.key == path || endsWith(path, "/") || object.key[path.size()] == '/')
            sum += object.size;
    return sum;
}

bool ObjectStore::exists(const std::string &bucket, const std::string &path)
{
    if (path.empty())
        return ownerOfBucket(bucket).has_value();
    return find(bucket, path).has_value() || !list(bucket, {endsWith(path, "/") ? path : path + "/"}).empty();
}

std::int64_t ObjectStore::remove(const std::string &bucket, const std::string &path)
{
    std::int64_t freed = 0;
    std::vector<std::string> files;
    {
        Transaction transaction(database);
        for (const StoredObject &object : list(bucket, {})) {
            if (!path.empty() && object.key != path && !startsWith(object.key, endsWith(path, "/") ? path : path + "/"))
                continue;
            const std::int64_t id = objectId(bucket, object.key);
            const auto objectFiles = filesOfObject(id);
            files.insert(files.end(), objectFiles.begin(), objectFiles.end());
            Statement(database, "DELETE FROM chunks WHERE object_id = ?").bind(id).run();
            Statement(database, "DELETE FROM objects WHERE id = ?").bind(id).run();
            freed += object.size;
        }
        transaction.commit();
    }
    forgetFiles(files);
    return freed;
}

std::shared_ptr<ObjectReader> ObjectStore::open(const std::string &bucket, const std::string &key)
{
    const auto guard = database.lock();
    const std::int64_t id = objectId(bucket, key);
    if (id == 0)
        return nullptr;
    const std::vector<Chunk> chunks = chunksOf(id);
    {
        const std::lock_guard pinGuard(pinMutex);
        for (const Chunk &chunk : chunks)
            ++pins[chunk.file];
    }
    std::shared_ptr<void> pin(nullptr, [this, chunks](void *) { unpin(chunks); });
    return std::make_shared<ObjectReader>(chunks, root, std::move(pin));
}

std::string ObjectStore::beginUpload(const std::string &bucket, const std::string &key, const std::string &companyId)
{
    const std::string id = randomHex(16);
    const auto guard = database.lock();
    Statement(database, "INSERT INTO uploads VALUES(?, ?, ?, ?, 'open', ?)").bind(id).bind(bucket).bind(key).bind(companyId).bind(isoDate(clock.now())).run();
    return id;
}

std::optional<Upload> ObjectStore::findUpload(const std::string &id)
{
    const auto guard = database.lock();
    Statement row(database, "SELECT id, bucket, key, company_id, state FROM uploads WHERE id = ?");
    row.bind(id);
    return row.step() ? std::optional(Upload{row.text(0), row.text(1), row.text(2), row.text(3), row.text(4)}) : std::nullopt;
}

void ObjectStore::putPart(const std::string &uploadId, std::int64_t number, std::string_view bytes, bool failAsFull)
{
    const Chunk chunk = writeChunk(bytes, failAsFull);
    std::vector<std::string> replaced;
    {
        Transaction transaction(database);
        Statement row(database, "SELECT file FROM parts WHERE upload_id = ? AND number = ?");
        row.bind(uploadId).bind(number);
        if (row.step())
            replaced.push_back(row.text(0));
        Statement(database, "INSERT OR REPLACE INTO parts VALUES(?, ?, ?, ?)").bind(uploadId).bind(number).bind(chunk.file).bind(chunk.size).run();
        transaction.commit();
    }
    forgetFiles(replaced);
}

std::vector<Chunk> ObjectStore::partsOf(const std::string &uploadId)
{
    std::vector<Chunk> chunks;
    Statement row(database, "SELECT file, size FROM parts WHERE upload_id = ? ORDER BY number");
    row.bind(uploadId);
    while (row.step())
        chunks.push_back({row.text(0), row.integer(1)});
    return chunks;
}

std::int64_t ObjectStore::firstMissingPart(const std::string &uploadId)
{
    const auto guard = database.lock();
    Statement row(database, "SELECT number FROM parts WHERE upload_id = ? ORDER BY number");
    row.bind(uploadId);
    std::int64_t expected = 1;
    while (row.step())
        if (row.integer(0) != expected++)
            return expected - 1;
    return 0;
}

void ObjectStore::completeUpload(const Upload &upload)
{
    const auto guard = database.lock();
    replaceObject(upload.bucket, upload.key, partsOf(upload.id));
    Transaction transaction(database);
    Statement(database, "DELETE FROM parts WHERE upload_id = ?").bind(upload.id).run();
    Statement(database, "UPDATE uploads SET state = 'completed' WHERE id = ?").bind(upload.id).run();
    transaction.commit();
}

void ObjectStore::abortUpload(const std::string &uploadId)
{
    std::vector<std::string> files;
    {
        Transaction transaction(database);
        for (const Chunk &chunk : partsOf(uploadId))
            files.push_back(chunk.file);
        Statement(database, "DELETE FROM parts WHERE upload_id = ?").bind(uploadId).run();
        Statement(database, "UPDATE uploads SET state = 'aborted' WHERE id = ?").bind(uploadId).run();
        transaction.commit();
    }
    forgetFiles(files);
}

void ObjectStore::copyObject(const std::string &bucket, const std::string &from, const std::string &to)
{
    const auto guard = database.lock();
    replaceObject(bucket, to, chunksOf(objectId(bucket, from)));
}

void ObjectStore::transcode(const std::string &bucket, const std::string &key, const std::string &outputKey)
{
    const std::string copy = insertedWeb(key);
    if (webCopies == WebCopies::SameFolder || webCopies == WebCopies::Both)
        copyObject(bucket, key, copy);
    if (webCopies == WebCopies::LowerCaseFolder || webCopies == WebCopies::Both)
        copyObject(bucket, key, loweredFolder(copy));
    const auto guard = database.lock();
    Statement(database, "INSERT INTO jobs(bucket, key, output_key, state, created) VALUES(?, ?, ?, 'finished', ?)")
        .bind(bucket).bind(key).bind(outputKey).bind(isoDate(clock.now())).run();
}

std::string ObjectStore::hashOf(const std::string &bucket, const std::string &key)
{
    Sha256 hash;
    const auto reader = open(bucket, key);
    if (reader)
        reader->read(0, reader->size(), [&hash](const char *bytes, std::size_t count) {
            hash.add({bytes, count});
            return true;
        });
    return hexEncoded(hash.result());
}

nlohmann::json ObjectStore::bucketsOverview(bool withHashes)
{
    nlohmann::json buckets = nlohmann::json::array();
    const auto guard = database.lock();
    Statement row(database, "SELECT name, company_id FROM buckets ORDER BY name");
    while (row.step()) {
        nlohmann::json objects = nlohmann::json::array();
        for (const StoredObject &object : list(row.text(0), {})) {
            nlohmann::json entry = {{"key", printable(object.key)}, {"size", object.size}, {"modified", object.modified}};
            if (withHashes)
                entry["sha256"] = hashOf(row.text(0), object.key);
            objects.push_back(std::move(entry));
        }
        buckets.push_back({{"name", row.text(0)}, {"companyId", row.text(1)}, {"objects", std::move(objects)}});
    }
    return buckets;
}

nlohmann::json ObjectStore::uploadsOverview()
{
    nlohmann::json uploads = nlohmann::json::array();
    const auto guard = database.lock();
    Statement row(database, "SELECT u.id, u.bucket, u.key, u.state, u.started, count(p.number), coalesce(sum(p.size), 0) "
                            "FROM uploads u LEFT JOIN parts p ON p.upload_id = u.id GROUP BY u.id ORDER BY u.rowid");
    while (row.step())
        uploads.push_back({{"id", row.text(0)}, {"bucket", row.text(1)}, {"key", printable(row.text(2))}, {"state", row.text(3)},
                           {"started", row.text(4)}, {"parts", row.integer(5)}, {"bytes", row.integer(6)}});
    return uploads;
}

nlohmann::json ObjectStore::jobsOverview()
{
    nlohmann::json jobs = nlohmann::json::array();
    const auto guard = database.lock();
    Statement row(database, "SELECT bucket, key, output_key, state, created FROM jobs ORDER BY id");
    while (row.step())
        jobs.push_back({{"bucket", row.text(0)}, {"key", printable(row.text(1))}, {"outputKey", printable(row.text(2))},
                        {"state", row.text(3)}, {"created", row.text(4)}});
    return jobs;
}

} // namespace LocalPlatform
