#pragma once

#include "ProjectFolder.h"
#include "ProjectPlan.h"

namespace Korvo::Sample {

/// Writes the project's SQLite database: sections, nodes, inspections and what was observed.
bool writeDatabase(ProjectFolder &folder, const QString &relativePath, const ProjectPlan &plan);

} // namespace Korvo::Sample
