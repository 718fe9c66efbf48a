#include "api/CallGate.h"

namespace Korvo::Web {

CallGate::Hold::Hold(CallGate &heldGate)
    : gate(heldGate)
{
    ++gate.holds;
}

CallGate::Hold::~Hold()
{
    gate.release();
}

CallGate::CallGate(QObject *callContext)
    : context(callContext)
{
}

void CallGate::pass(const Call &call)
{
    if (holds > 0 || !waiting.isEmpty()) {
        waiting.enqueue(call);
        return;
    }
    const Hold hold(*this);
    call();
}

// Queued, so that a thread that has been asked to stop makes no further calls.
void CallGate::release()
{
    --holds;
    if (holds == 0 && !waiting.isEmpty())
        QMetaObject::invokeMethod(
            context, [this] { letNextThrough(); }, Qt::QueuedConnection);
}

void CallGate::letNextThrough()
{
    if (holds > 0 || waiting.isEmpty())
        return;
    const Hold hold(*this);
    const Call call = waiting.dequeue();
    call();
}

} // namespace Korvo::Web
