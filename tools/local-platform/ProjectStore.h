#pragma once

#include "Database.h"

#include <nlohmann/json_fwd.hpp>

#include <optional>
#include <string>
#include <vector>

namespace LocalPlatform {

/// The numbers that the upload statuses answer.
enum class ProjectState { Unknown = 0, Uploading = 1, Uploaded = 2, Cancelled = 3 };

struct Project
{
    std::string companyId;
    std::string projectId;
    std::string name;
    std::string folder;
    std::string creationDate; ///< "yyyy-MM-ddThh:mm:ss", no zone
    std::string bucket;
    std::string owner;
    ProjectState state = ProjectState::Unknown;
    std::string importType;
    bool everUploaded = false;
};

/// Projects with the state of their upload.
class ProjectStore
{
public:
    explicit ProjectStore(Database &target) : database(target) {}

    /// Begins the upload of a new project or once more that of a known one.
    Project begin(const Project &announced);

    /// False if there is no such project.
    bool finish(const std::string &companyId, const std::string &projectId, const std::string &importType);
    bool cancel(const std::string &companyId, const std::string &projectId);

    std::optional<Project> find(const std::string &companyId, const std::string &projectId);

    /// What the user sees: all but those whose first upload was cancelled.
    std::vector<Project> listed(const std::string &companyId);
    nlohmann::json overview();

private:
    Database &database;
};

} // namespace LocalPlatform
