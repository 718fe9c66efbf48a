#pragma once

#include <QtCore/QMutex>
#include <QtCore/QObject>

#include <deque>
#include <functional>

namespace Korvo::Web {

/// Brings what the worker has to say to the host's thread, in order.
///
/// A transfer says five things a step, thousands of times a second. As queued signals each of them would be an event of
/// its own that wakes the host's thread; here that thread is woken once for all that has gathered meanwhile.
class SignalMailbox
{
public:
    using Delivery = std::function<void()>;

    /// @param receiver  lives on the host's thread; deliveries that are still waiting when it goes are never made
    explicit SignalMailbox(QObject *receiver);

    /// Any thread. @p delivery runs later, on the receiver's thread, after all that was posted before.
    void post(Delivery delivery);

private:
    Q_DISABLE_COPY(SignalMailbox)
    void callReceiver();
    void deliver();
    std::size_t beginDelivery();
    bool takeNext(Delivery &delivery);

    QObject *const context;
    QMutex mutex; // guards what follows
    std::deque<Delivery> waiting;
    bool called = false; // an event is on its way that will deliver
};

} // namespace Korvo::Web
