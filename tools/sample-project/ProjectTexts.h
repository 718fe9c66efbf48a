#pragma once

#include "ProjectPlan.h"

#include <QtCore/QByteArray>

namespace Korvo::Sample {

/// The project's description, as "project.xml" holds it.
QByteArray projectXml(const ProjectPlan &plan, const QString &databaseName);

/// The report that goes to the client.
QByteArray reportText(const ProjectPlan &plan);

/// A laser scan of a manhole, one point a line, @p bytes long.
QByteArray scanText(quint64 seed, qint64 bytes);

} // namespace Korvo::Sample
