#pragma once

#include <NQLogging/NQLoggingExport.h>

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QVariant>

#include <functional>

namespace Korvo::Logging {

/// How much a message matters; the smaller the number, the more.
enum class LogLevel : int {
    Fatal = 0,   ///< the application cannot go on
    Failure = 1, ///< something was to be done and has not been done
    Warning = 2, ///< something was left out or refused
    Info = 3,
    Debug = 4
};

/// The door to the log. All functions may be called from every thread.
///
/// Messages go to Qt's logging under the category given, so the host's message handler and QT_LOGGING_RULES apply,
/// unless a sink takes them.
class NQLOGGING_EXPORT CLogger
{
public:
    /// Takes one message; runs on the thread that logs, possibly on several at the same time, and must not throw.
    using Sink = std::function<void(LogLevel level, const QString &category, const QString &message,
                                    const QList<QVariant> &arguments)>;

    /// Logs @p message. @p arguments carry values that belong to it, the id of a job for one.
    static void logMessage(LogLevel level, const QString &category, const QString &message, QList<QVariant> arguments);

    /// Sends all further messages to @p sink instead of Qt's logging. An empty function is the same as unsetSink().
    ///
    /// A message that another thread is just logging may still reach the former sink after the call.
    static void setSink(Sink sink);

    /// Sends all further messages to Qt's logging again.
    static void unsetSink();

    CLogger() = delete;
};

} // namespace Korvo::Logging
