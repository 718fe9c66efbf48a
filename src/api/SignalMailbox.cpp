#include "api/SignalMailbox.h"

#include <QtCore/QMutexLocker>
#include <QtCore/QPointer>

#include <utility>

namespace Korvo::Web {

SignalMailbox::SignalMailbox(QObject *sender, QObject *receiver)
    : gatherer(sender)
    , context(receiver)
{
}

void SignalMailbox::post(Delivery delivery)
{
    {
        const QMutexLocker lock(&mutex);
        waiting.push_back(std::move(delivery));
        if (called || std::exchange(gathering, true))
            return;
    }
    QMetaObject::invokeMethod(
        gatherer, [this] { endGathering(); }, Qt::QueuedConnection);
}

void SignalMailbox::endGathering()
{
    {
        const QMutexLocker lock(&mutex);
        gathering = false;
        if (waiting.empty() || std::exchange(called, true))
            return;
    }
    callReceiver();
}

void SignalMailbox::callReceiver()
{
    QMetaObject::invokeMethod(
        context, [this] { deliver(); }, Qt::QueuedConnection);
}

// Whoever hears of something may wait in a loop of its own, or destroy the receiver and this mailbox with it.
void SignalMailbox::deliver()
{
    const QPointer<QObject> receiver(context);
    Delivery next;
    for (std::size_t due = beginDelivery(); due > 0 && takeNext(next); --due) {
        next();
        if (!receiver)
            return;
    }
}

// What is posted meanwhile waits for another event, so that the host's own ones get their turn. That event is also what
// goes on with the rest when somebody who hears of the first waits in a loop of its own.
std::size_t SignalMailbox::beginDelivery()
{
    std::size_t due = 0;
    {
        const QMutexLocker lock(&mutex);
        due = waiting.size();
        called = due > 1;
    }
    if (due > 1)
        callReceiver();
    return due;
}

bool SignalMailbox::takeNext(Delivery &delivery)
{
    const QMutexLocker lock(&mutex);
    if (waiting.empty())
        return false;
    delivery = std::move(waiting.front());
    waiting.pop_front();
    return true;
}

} // namespace Korvo::Web
