#pragma once

#include <QtCore/QMutex>
#include <QtCore/QObject>

#include <deque>
#include <functional>

namespace Korvo::Web {

/// Brings what the worker has to say to the host's thread, in order.
///
/// A transfer says five things a step, thousands of times a second. As queued signals each of them would be an event of
/// its own that wakes the host's thread, which then takes the processor from the worker amid what it does. Here the host's
/// thread is woken once for all that has gathered, when the worker has come back to its event loop.
class SignalMailbox
{
public:
    using Delivery = std::function<void()>;

    /// @param sender    lives on the worker's thread, and as long as that runs
    /// @param receiver  lives on the host's thread; deliveries that are still waiting when it goes are never made
    SignalMailbox(QObject *sender, QObject *receiver);

    /// Any thread. @p delivery runs later, on the receiver's thread, after all that was posted before.
    void post(Delivery delivery);

private:
    Q_DISABLE_COPY(SignalMailbox)
    void endGathering();
    void callReceiver();
    void deliver();
    std::size_t beginDelivery();
    bool takeNext(Delivery &delivery);

    QObject *const gatherer;
    QObject *const context;
    QMutex mutex; // guards what follows
    std::deque<Delivery> waiting;
    bool gathering = false; // an event is on its way to the sender that will call the receiver
    bool called = false;    // an event is on its way to the receiver that will deliver
};

} // namespace Korvo::Web
