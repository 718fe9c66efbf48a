#include <NQSharedBase/WorkerThread.h>

#include <QtCore/QMetaObject>
#include <QtCore/QObject>

namespace Korvo::Shared {

WorkerThread::WorkerThread(QObject *parent)
    : QThread(parent)
{
}

WorkerThread::~WorkerThread()
{
    quit();
    wait();
    // Nobody holds it any more; thread checkers learn from it what wait() made certain.
    const std::lock_guard locker(mutex);
}

bool WorkerThread::blockingStart()
{
    std::unique_lock locker(mutex);
    if (!isRunning()) {
        phase = Phase::Starting;
        start();
    }
    while (phase == Phase::Starting && isRunning()) {
        phaseChanged.wait(locker);
    }
    return phase == Phase::LoopRuns;
}

void WorkerThread::run()
{
    enter(Phase::Starting);
    // Delivered by the loop itself, so its arrival proves that the loop runs.
    QObject firstEvent;
    QMetaObject::invokeMethod(
        &firstEvent, [this] { enter(Phase::LoopRuns); }, Qt::QueuedConnection);
    exec();
    // A quit that came first keeps the loop from running at all; whoever waits for it must not wait for ever.
    enter(Phase::Ended);
}

void WorkerThread::enter(Phase newPhase)
{
    const std::lock_guard locker(mutex);
    phase = newPhase;
    phaseChanged.notify_all();
}

} // namespace Korvo::Shared
