#pragma once

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QVariant>

namespace Korvo::Web {

/// Category of the facade, the worker and the jobs; request handles log under their class name.
extern const QString LOG_CATEGORY;

/// A failure that somebody will want to find in the log later.
void logFailure(const QString &category, const QString &message, const QList<QVariant> &arguments = {});

/// A request that the retry mechanism cannot send again.
void logRetryRefusal(const QString &category, const QString &message);

} // namespace Korvo::Web
