#include "Step.h"

namespace Korvo::Demo {

Step::Step(std::chrono::seconds stallLimit)
{
    watchdog.setSingleShot(true);
    watchdog.setInterval(stallLimit);
    connect(&watchdog, &QTimer::timeout, this, [this, stallLimit] {
        fail(QStringLiteral("no progress for %1 s").arg(stallLimit.count()));
    });
}

bool Step::wait()
{
    if (state == State::Running) {
        watchdog.start();
        loop.exec();
    }
    return state == State::Succeeded;
}

void Step::succeed()
{
    end(State::Succeeded);
}

void Step::fail(const QString &reason)
{
    if (state == State::Running)
        reasonOfFailure = reason;
    end(State::Failed);
}

void Step::signOfLife()
{
    if (watchdog.isActive())
        watchdog.start();
}

void Step::end(State endState)
{
    // The first end counts: an error that follows a success belongs to the next step.
    if (state != State::Running)
        return;
    state = endState;
    watchdog.stop();
    loop.quit();
}

} // namespace Korvo::Demo
