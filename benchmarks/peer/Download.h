#pragma once

#include "peer/Session.h"
#include "support/ListingReader.h"

#include <deque>
#include <string>

namespace Korvo::Bench {

/// Fetches the files of a bucket into a folder, so many at a time.
class Download
{
public:
    Download(Session &loggedIn, std::string bucketName, std::string targetFolder, int filesInFlight)
        : session(loggedIn)
        , bucket(std::move(bucketName))
        , folder(std::move(targetFolder))
        , most(filesInFlight)
    {
    }

    void run();
    int files() const { return fileCount; }

private:
    bool isWanted(const ListedFile &file) const;
    void startNext();

    Session &session;
    std::string bucket;
    std::string folder;
    std::deque<ListedFile> pending;
    int most;
    int fileCount = 0;
};

} // namespace Korvo::Bench
