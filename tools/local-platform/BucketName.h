#pragma once

#include <string>
#include <string_view>

namespace LocalPlatform {

/// Name of the bucket of one project: nine characters each of company and project id, then the whole folder name,
/// reduced to lower-case letters, digits and hyphens.
std::string bucketNameFor(std::string_view companyId, std::string_view projectId, std::string_view folderName);

bool isBucketName(std::string_view name);

} // namespace LocalPlatform
