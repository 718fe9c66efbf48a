#pragma once

#include <QtCore/QEventLoop>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QTimer>

#include <chrono>

namespace Korvo::Demo {

/// One thing that is waited for: it succeeds, fails, or stalls, which is a failure too.
///
/// Connect with the step as context object; when it goes, so do the connections.
class Step : public QObject
{
    Q_OBJECT
public:
    /// @param stallLimit  the longest time without a sign of life
    explicit Step(std::chrono::seconds stallLimit);

    /// Runs the event loop until the end; true for a success. Returns at once if the end has come already.
    bool wait();

    void succeed();
    void fail(const QString &reason);
    /// There was progress: the stall limit counts from now again.
    void signOfLife();

    QString failure() const { return reasonOfFailure; }

private:
    enum class State { Running, Succeeded, Failed };

    void end(State endState);

    QEventLoop loop;
    QTimer watchdog;
    State state = State::Running;
    QString reasonOfFailure;
};

} // namespace Korvo::Demo
