#include "handles/FailureLog.h"

#include <NQLogging/CLogger.h>

namespace Korvo::Web {

namespace {

// The logging library fixes the numbers; the names it gives them differ between its versions.
constexpr auto FAILURE_LEVEL = static_cast<Logging::LogLevel>(1);
constexpr auto RETRY_REFUSAL_LEVEL = static_cast<Logging::LogLevel>(2);

} // namespace

const QString LOG_CATEGORY = QStringLiteral("KorvoWeb");

void logFailure(const QString &category, const QString &message, const QList<QVariant> &arguments)
{
    Logging::CLogger::logMessage(FAILURE_LEVEL, category, message, arguments);
}

void logRetryRefusal(const QString &category, const QString &message)
{
    Logging::CLogger::logMessage(RETRY_REFUSAL_LEVEL, category, message, {});
}

} // namespace Korvo::Web
