#pragma once

#include "peer/Session.h"

#include <cstdint>
#include <deque>
#include <string>

namespace Korvo::Bench {

/// Sends a project folder, so many files at a time: small ones whole, large ones in parts.
class Upload
{
public:
    Upload(Session &loggedIn, std::string projectFolder, int filesInFlight)
        : session(loggedIn)
        , folder(std::move(projectFolder))
        , most(filesInFlight)
    {
    }

    /// Ends with the acknowledgement of the last file.
    void run();
    /// Tells the web server, and asks it what has become of the project.
    void finish();
    int files() const { return fileCount; }

private:
    struct LocalFile
    {
        std::string path;
        std::string key;
        std::int64_t bytes = 0;
    };
    struct PartedFile;

    void begin();
    void ensureBucket();
    void scan();
    void startNext();
    void sendWhole(const LocalFile &file);
    void sendInParts(const LocalFile &file);
    void sendNextPart(const std::shared_ptr<PartedFile> &file);

    Session &session;
    std::string folder;
    std::deque<LocalFile> pending;
    int most;
    int fileCount = 0;
    std::string bucket;
};

} // namespace Korvo::Bench
