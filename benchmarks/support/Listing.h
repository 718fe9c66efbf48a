#pragma once

#include "support/Workload.h"

#include <string>

namespace Korvo::Bench {

/// The service's answer to a request for the files of a bucket.
std::string listingXml(const Workload &workload);

/// The web server's list of so many projects.
std::string projectsXml(int projects);

} // namespace Korvo::Bench
