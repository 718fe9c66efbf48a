#pragma once

#include "ProjectFolder.h"
#include "ProjectPlan.h"

namespace Korvo::Sample {

/// Writes every file of the project; false with the folder's failure() set when one could not be written.
bool writeProject(ProjectFolder &folder, const ProjectPlan &plan, const ProjectSize &size);

} // namespace Korvo::Sample
