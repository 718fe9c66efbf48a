#include "support/Listing.h"

namespace Korvo::Bench {
namespace {

std::string element(const std::string &name, const std::string &value)
{
    return "<" + name + ">" + value + "</" + name + ">";
}

std::string fileEntry(const std::string &key, std::int64_t bytes)
{
    const std::size_t slash = key.rfind('/');
    return "<ObjectModel>" + element("Directory", key.substr(0, slash)) + element("FileName", key.substr(slash + 1))
           + element("Key", key) + element("ModifiedDate", "2026-03-03T14:05:09Z")
           + element("Size", std::to_string(bytes)) + element("Type", "1") + "</ObjectModel>\r\n";
}

} // namespace

std::string listingXml(const Workload &workload)
{
    std::string text = "<FileListFromLocationsResponse>" + element("Count", std::to_string(workload.files)) + "<Files>";
    for (int number = 0; number < workload.files; ++number)
        text += fileEntry(keyOf(number), workload.bytes);
    return text + "</Files></FileListFromLocationsResponse>";
}

std::string projectsXml(int projects)
{
    std::string text = "<ArrayOfProjectInfo>";
    for (int number = 0; number < projects; ++number) {
        const std::string digits = std::to_string(number);
        text += "<ProjectInfo>" + element("DiskUsage", std::to_string(number * 1048576LL))
                + element("ProjectDate", "2026-0" + std::to_string(1 + number % 9) + "-1"
                                             + digits.substr(digits.size() - 1) + "T08:30:00")
                + element("ProjectFolderName", "Kanalsanierung " + digits)
                + element("ProjectId", "2c1f6a0e-8a44-4b3c-9d55-" + std::string(12 - digits.size(), '0') + digits)
                + element("ProjectName", "Kanalsanierung " + digits) + "</ProjectInfo>";
    }
    return text + "</ArrayOfProjectInfo>";
}

} // namespace Korvo::Bench
