#pragma once

#include <NQLogging/CLogger.h>

#include <QtCore/QMutex>
#include <QtCore/QObject>
#include <QtCore/QString>

namespace Korvo::Cli {

class Output;

/// Listens to the library's log: with --verbose it goes to standard error, and its last failure explains an error code.
class LibraryLog : public QObject
{
    Q_OBJECT
public:
    enum class Showing { No, Yes };

    LibraryLog(Output &usedOutput, Showing showing);
    ~LibraryLog() override;

    /// What the library logged last as the cause of a failure, in one line; empty when it logged nothing.
    QString lastCause() const;
    /// Qt's name of the failure of the last request that failed; empty when none did.
    QString lastNetworkError() const;
    void forgetCause();

Q_SIGNALS:
    void lineLogged(const QString &line);

private:
    // Runs on the library's thread.
    void take(Logging::LogLevel level, const QString &category, const QString &message, const QList<QVariant> &arguments);
    void keepCause(const QString &message);

    mutable QMutex mutex; // guards both texts
    QString cause;
    QString networkError;
};

} // namespace Korvo::Cli
