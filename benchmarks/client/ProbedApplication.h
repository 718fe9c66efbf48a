#pragma once

#include <QtCore/QCoreApplication>

#include <atomic>

class QThread;

namespace Korvo::Bench {

/// Sees every event that is delivered in this process, on any thread: so the library's worker can be watched without a
/// hook in the library.
class ProbedApplication : public QCoreApplication
{
public:
    using QCoreApplication::QCoreApplication;

    bool notify(QObject *receiver, QEvent *event) override;

    /// From here on the longest event of the worker counts.
    void startRecording() { recording = true; }
    /// Processor time, so that what other threads take from a shared processor is not the worker's.
    double longestWorkerEventSeconds() const { return longest; }

    /// The worker behind the facade, once it has received its first event.
    QObject *worker() const { return workerObject; }

private:
    bool isOnWorkerThread(QObject *receiver, const QEvent *event);

    std::atomic<QObject *> workerObject{nullptr};
    std::atomic<QThread *> workerThread{nullptr};
    std::atomic<bool> recording{false};
    std::atomic<double> longest{0};
    double nestedSeconds = 0; ///< the worker thread's own
};

} // namespace Korvo::Bench
