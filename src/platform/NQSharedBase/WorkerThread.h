#pragma once

#include <NQSharedBase/NQSharedBaseExport.h>

#include <QtCore/QThread>

#include <condition_variable>
#include <mutex>

namespace Korvo::Shared {

/// A thread with an event loop whose start can be waited for.
class NQSHAREDBASE_EXPORT WorkerThread : public QThread
{
    Q_OBJECT

public:
    explicit WorkerThread(QObject *parent = nullptr);

    /// Ends the event loop and waits for the thread, without a time limit.
    ~WorkerThread() override;

    /// Starts the thread and returns when its event loop runs. Returns at once if it runs already.
    ///
    /// @return false if the thread could not be started, or was told to quit before its event loop came to run
    bool blockingStart();

protected:
    void run() override;

private:
    enum class Phase { Starting, LoopRuns, Ended };

    void enter(Phase newPhase);

    std::mutex mutex; // guards phase; thread checkers see through it, unlike through Qt's own
    std::condition_variable phaseChanged;
    Phase phase = Phase::Starting;
};

} // namespace Korvo::Shared
