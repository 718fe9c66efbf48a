#pragma once

#include <QtCore/QObject>
#include <QtCore/QQueue>

#include <functional>

namespace Korvo::Web {

/// Lets the host's calls through to the worker one at a time and in order.
///
/// The worker awaits some answers in a local event loop. A call that arrives meanwhile would find it half-way through
/// something else, so it is kept until the worker is back. Replies and running jobs are not held up.
class CallGate
{
public:
    using Call = std::function<void()>;

    /// Keeps the gate shut while it lives.
    class Hold
    {
    public:
        explicit Hold(CallGate &heldGate);
        ~Hold();

    private:
        Q_DISABLE_COPY(Hold)
        CallGate &gate;
    };

    /// @param callContext  object on the worker thread; the gate must not outlive it
    explicit CallGate(QObject *callContext);

    /// Makes the call, at once or when it is its turn. Worker thread only.
    void pass(const Call &call);

private:
    Q_DISABLE_COPY(CallGate)
    void release();
    void letNextThrough();

    QObject *const context;
    QQueue<Call> waiting;
    int holds = 0;
};

} // namespace Korvo::Web
