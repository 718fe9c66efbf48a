#include "peer/Upload.h"

#include "peer/Base64.h"
#include "peer/Xml.h"
#include "support/ListingReader.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <stdexcept>

namespace Korvo::Bench {
namespace {

constexpr std::int64_t PART_BYTES = 4 * 1024 * 1024;
constexpr std::size_t SPACE_FOR_TAGS = 1024;

/// A body that is little but the Base64 text of @p bytes, in one block of memory.
std::string contentBody(const std::string &root, const std::string &before, const std::string &name,
                        const std::string &bytes, const std::string &behind)
{
    std::string text;
    text.reserve(bytes.size() / 3 * 4 + SPACE_FOR_TAGS);
    text += opened(root, SERVICE) + before + '<' + name + '>';
    appendBase64(&text, bytes);
    text += "</" + name + '>' + behind + closed(root);
    return text;
}

/// A file that is read from its beginning.
class InputFile
{
public:
    explicit InputFile(const std::string &path)
        : descriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC))
    {
        if (descriptor < 0)
            throw std::runtime_error("cannot open " + path);
    }
    ~InputFile() { ::close(descriptor); }
    InputFile(const InputFile &) = delete;
    InputFile &operator=(const InputFile &) = delete;

    std::string read(std::int64_t most) const
    {
        std::string bytes(static_cast<std::size_t>(most), '\0');
        const auto count = ::read(descriptor, bytes.data(), bytes.size());
        bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
        return bytes;
    }

private:
    int descriptor;
};

} // namespace

struct Upload::PartedFile
{
    explicit PartedFile(const LocalFile &file)
        : input(file.path)
        , left(file.bytes)
    {
    }

    InputFile input;
    std::int64_t left;
    std::string id;
    int part = 1;
};

void Upload::run()
{
    begin();
    ensureBucket();
    readListing(session.requests.wait(session.listing(bucket)));
    scan();
    for (int started = 0; started < most; ++started)
        startNext();
    session.requests.run();
}

void Upload::begin()
{
    const std::string children
        = element("CompanyId", "korvo-company-01") + element("CreationDate", "2026-03-03T14:05:09Z")
          + element("Email", "inspector@korvo.example") + element("HasPermissionsToOverrideAllProject", "true")
          + element("ProjectId", "bench-project") + element("ProjectName", "bench");
    bucket = xmlText(session.requests.wait(
                         session.web("POST", "api/UploadProject/Init", body("InitUploadProcesModel", WEB, children))),
                     "BucketName");
}

void Upload::ensureBucket()
{
    const std::string name = element("BucketName", bucket);
    session.requests.wait(session.service("POST", "api/bucket/exists",
                                          body("ObjectExistsRequest", SERVICE, name + element("RelativePath", ""))));
    session.requests.wait(session.service("PUT", "api/bucket", body("BucketRequest", SERVICE, name)));
}

void Upload::scan()
{
    for (const auto &entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file())
            continue;
        const std::string path = entry.path().string();
        pending.push_back({path, path.substr(folder.size()), static_cast<std::int64_t>(entry.file_size())});
    }
    fileCount = static_cast<int>(pending.size());
}

void Upload::startNext()
{
    if (pending.empty())
        return;
    const LocalFile file = std::move(pending.front());
    pending.pop_front();
    if (file.bytes <= PART_BYTES)
        sendWhole(file);
    else
        sendInParts(file);
}

void Upload::sendWhole(const LocalFile &file)
{
    const std::string bytes = InputFile(file.path).read(file.bytes);
    std::string text = contentBody("PutFileRequest", element("BucketName", bucket), "InputFileArray", bytes,
                                   element("OutputFilePath", file.key) + element("ProjectFolderName", ""));
    session.requests.send(session.service("PUT", "api/bucket/putfile", std::move(text)),
                          [this](const std::string &) { startNext(); });
}

void Upload::sendInParts(const LocalFile &file)
{
    const auto parted = std::make_shared<PartedFile>(file);
    session.requests.send(session.service("PUT", "api/multipartupload/init",
                                          body("InitMultipartUploadRequest", SERVICE,
                                               element("BucketName", bucket) + element("OutputFilePath", file.key))),
                          [this, parted](const std::string &answer) {
                              parted->id = xmlText(answer, "MultipartUploadId");
                              sendNextPart(parted);
                          });
}

void Upload::sendNextPart(const std::shared_ptr<PartedFile> &file)
{
    const std::string id = element("MultipartUploadId", file->id);
    if (file->left == 0) {
        session.requests.send(
            session.service("PUT", "api/multipartupload/complete",
                            body("CompleteMultipartUploadRequest", SERVICE, id + element("ProjectFolderName", ""))),
            [this](const std::string &) { startNext(); });
        return;
    }
    const std::string bytes = file->input.read(PART_BYTES);
    file->left -= static_cast<std::int64_t>(bytes.size());
    std::string text = contentBody("PutMultipartUploadRequest", {}, "InputFilePartArray", bytes,
                                   id + element("PartNumber", std::to_string(file->part++)));
    session.requests.send(session.service("PUT", "api/multipartupload/upload", std::move(text)),
                          [this, file](const std::string &) { sendNextPart(file); });
}

void Upload::finish()
{
    session.requests.wait(session.web("POST", "api/UploadProject/Uploaded",
                                      body("UploadProcesMessageModel", WEB, element("ProjectId", "bench-project"))));
    session.requests.wait(session.statuses("{\n    \"Projects\": [\n        \"bench-project\"\n    ]\n}\n"));
}

} // namespace Korvo::Bench
