#include "inner/Replies.h"

#include "inner/ArrivedReply.h"
#include "handles/BucketHandles.h"
#include "handles/ProjectHandles.h"
#include "support/Listing.h"
#include "support/ListingReader.h"

#include <NQKorvoWeb/ProjectInfo.h>

#include <chrono>
#include <stdexcept>

namespace Korvo::Bench {
namespace {

class Stopwatch
{
public:
    double seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count(); }

private:
    std::chrono::steady_clock::time_point started = std::chrono::steady_clock::now();
};

Workload listed(int entries)
{
    return {entries, 20480};
}

void requireCount(int expected, int found)
{
    if (found != expected)
        throw std::runtime_error("expected " + std::to_string(expected) + " entries, found " + std::to_string(found));
}

Figures memoryFigures(double seconds, std::size_t replyBytes, std::int64_t idleBytes)
{
    Figures figures;
    figures.add("seconds", seconds);
    figures.add("replyBytes", static_cast<double>(replyBytes));
    figures.add("peakBytes", static_cast<double>(peakBytes() - idleBytes));
    return figures;
}

/// Seconds from the reply's end to the response that @p Handle makes of it.
template <class Handle, class Keep>
double secondsToResponse(ArrivedReply *reply, Keep keep)
{
    Handle handle;
    handle.setReply(reply);
    QObject::connect(&handle, &Handle::requestFinished, &handle, keep);
    const Stopwatch watch;
    reply->finish();
    return watch.seconds();
}

} // namespace

Figures listingByLibrary(int entries)
{
    const std::int64_t idle = residentBytes();
    std::size_t bytes = 0;
    ArrivedReply *reply = nullptr;
    {
        const std::string text = listingXml(listed(entries));
        bytes = text.size();
        reply = new ArrivedReply(text);
    }
    resetPeak();
    Web::ListOfFilesFromLocationResponse kept;
    const double seconds = secondsToResponse<Web::ListFilesFromLocationsRequestHandle>(
        reply, [&](const Web::ListOfFilesFromLocationResponse &response) { kept = response; });
    requireCount(entries, kept.entries().size());
    return memoryFigures(seconds, bytes, idle);
}

Figures listingByExpat(int entries)
{
    const std::int64_t idle = residentBytes();
    const std::string text = listingXml(listed(entries));
    resetPeak();
    const Stopwatch watch;
    const std::vector<ListedFile> files = readListing(text);
    const double seconds = watch.seconds();
    requireCount(entries, static_cast<int>(files.size()));
    return memoryFigures(seconds, text.size(), idle);
}

Figures projectsByLibrary(int projects)
{
    int found = 0;
    const double seconds = secondsToResponse<Web::UserProjectsRequestHandle>(
        new ArrivedReply(projectsXml(projects)), [&](const Web::UserProjectsResponse &response, Web::Error) {
            for (const Web::ProjectInfo &project : response.projects())
                found += project.creationDate().isValid() ? 1 : 0;
        });
    requireCount(projects, found);
    Figures figures;
    figures.add("seconds", seconds);
    return figures;
}

} // namespace Korvo::Bench
