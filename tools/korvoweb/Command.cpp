#include "Command.h"

#include "CommandLine.h"

namespace Korvo::Cli {

Command::Command(Context &usedContext)
    : context(usedContext)
{
}

Outcome Command::prepare()
{
    return {};
}

void Command::cancel(Reason reason)
{
    finish(outcomeOf(reason));
}

void Command::togglePause()
{
}

void Command::settle(Outcome &outcome)
{
    Q_UNUSED(outcome)
}

void Command::finish(const Outcome &outcome)
{
    if (done)
        return;
    done = true;
    // After an error the library may still send an empty answer.
    if (context.api)
        context.api->disconnect(this);
    Q_EMIT finished(outcome);
}

Outcome Command::outcomeOf(Reason reason) const
{
    switch (reason) {
    case Reason::Interrupted:
        return {ExitCode::Cancelled, QStringLiteral("cancelled"), {}};
    case Reason::Stalled:
        return {ExitCode::Network,
                QStringLiteral("given up after %1 s without progress (--stall-timeout); check the network")
                    .arg(context.invocation.common.stallTimeout.count()),
                {{QStringLiteral("error"), QStringLiteral("Stalled")}}};
    case Reason::OutputBroken:
        break;
    }
    return {ExitCode::Output, QStringLiteral("standard output takes no more; make its reader wait, or room on the disk"), {}};
}

} // namespace Korvo::Cli
