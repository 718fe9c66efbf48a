#include "ProjectStore.h"

#include "BucketName.h"

#include <nlohmann/json.hpp>

namespace LocalPlatform {
namespace {

constexpr const char *COLUMNS = "company_id, project_id, name, folder, creation_date, bucket, owner, state, import_type, ever_uploaded";

Project projectOf(const Statement &row)
{
    return {row.text(0), row.text(1), row.text(2), row.text(3), row.text(4), row.text(5), row.text(6),
            static_cast<ProjectState>(row.integer(7)), row.text(8), row.integer(9) != 0};
}

} // namespace

Project ProjectStore::begin(const Project &announced)
{
    Project project = announced;
    project.folder = project.name;
    project.bucket = bucketNameFor(project.companyId, project.projectId, project.folder);
    const auto guard = database.lock();
    Statement(database, std::string("INSERT INTO projects(") + COLUMNS + ") VALUES(?, ?, ?, ?, ?, ?, ?, 1, '', 0) "
                        "ON CONFLICT(company_id, project_id) DO UPDATE SET name = excluded.name, folder = excluded.folder, "
                        "creation_date = excluded.creation_date, bucket = excluded.bucket, owner = excluded.owner, state = 1")
        .bind(project.companyId).bind(project.projectId).bind(project.name).bind(project.folder).bind(project.creationDate)
        .bind(project.bucket).bind(project.owner).run();
    return project;
}

bool ProjectStore::finish(const std::string &companyId, const std::string &projectId, const std::string &importType)
{
    const auto guard = database.lock();
    Statement(database, "UPDATE projects SET state = 2, ever_uploaded = 1, import_type = ? WHERE company_id = ? AND project_id = ?")
        .bind(importType).bind(companyId).bind(projectId).run();
    return database.changes() > 0;
}

bool ProjectStore::cancel(const std::string &companyId, const std::string &projectId)
{
    const auto guard = database.lock();
    Statement(database, "UPDATE projects SET state = 3 WHERE company_id = ? AND project_id = ?").bind(companyId).bind(projectId).run();
    return database.changes() > 0;
}

std::optional<Project> ProjectStore::find(const std::string &companyId, const std::string &projectId)
{
    const auto guard = database.lock();
    Statement row(database, std::string("SELECT ") + COLUMNS + " FROM projects WHERE company_id = ? AND project_id = ?");
    row.bind(companyId).bind(projectId);
    return row.step() ? std::optional(projectOf(row)) : std::nullopt;
}

std::vector<Project> ProjectStore::listed(const std::string &companyId)
{
    std::vector<Project> projects;
    const auto guard = database.lock();
    Statement row(database, std::string("SELECT ") + COLUMNS +
                                " FROM projects WHERE company_id = ? AND NOT (state = 3 AND ever_uploaded = 0) ORDER BY rowid");
    row.bind(companyId);
    while (row.step())
        projects.push_back(projectOf(row));
    return projects;
}

nlohmann::json ProjectStore::overview()
{
    nlohmann::json list = nlohmann::json::array();
    const auto guard = database.lock();
    Statement row(database, std::string("SELECT ") + COLUMNS + " FROM projects ORDER BY rowid");
    while (row.step()) {
        const Project project = projectOf(row);
        list.push_back({{"companyId", project.companyId}, {"projectId", project.projectId}, {"name", project.name},
                        {"folder", project.folder}, {"creationDate", project.creationDate}, {"bucket", project.bucket},
                        {"owner", project.owner}, {"status", static_cast<int>(project.state)},
                        {"importType", project.importType}, {"everUploaded", project.everUploaded}});
    }
    return list;
}

} // namespace LocalPlatform
