#include "peer/Download.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>

namespace Korvo::Bench {
namespace {

constexpr int FILE_MODE = 0644;

} // namespace

void Download::run()
{
    const std::string listing = session.requests.wait(session.listing(bucket));
    for (ListedFile &file : readListing(listing)) {
        if (isWanted(file))
            pending.push_back(std::move(file));
    }
    fileCount = static_cast<int>(pending.size());
    for (int started = 0; started < most; ++started)
        startNext();
    session.requests.run();
}

// A file that is there in its full length is kept.
bool Download::isWanted(const ListedFile &file) const
{
    std::error_code error;
    const auto present = std::filesystem::file_size(folder + '/' + file.key, error);
    return file.type == "1" && file.size > 0 && (error || static_cast<std::int64_t>(present) != file.size);
}

void Download::startNext()
{
    if (pending.empty())
        return;
    const ListedFile file = std::move(pending.front());
    pending.pop_front();
    const std::string path = folder + '/' + file.key;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    const int target = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, FILE_MODE);
    if (target < 0)
        throw std::runtime_error("cannot open " + path);
    PeerRequest request = session.download("webdav/" + bucket + '/' + file.key);
    request.file = target;
    session.requests.send(std::move(request), [this, target](const std::string &) {
        ::close(target);
        startNext();
    });
}

} // namespace Korvo::Bench
