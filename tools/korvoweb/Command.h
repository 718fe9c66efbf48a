#pragma once

#include "Outcome.h"

#include <NQKorvoWeb/KorvoWebApi.h>

#include <QtCore/QObject>
#include <QtCore/QString>

#include <chrono>

namespace Korvo::Cli {

class Interrupts;
class LibraryLog;
class Output;
class Session;
class StallWatch;
struct Invocation;

/// What commands work with. Facade and session come once the user has been asked for everything.
struct Context
{
    const Invocation &invocation;
    Output &output;
    LibraryLog &log;
    Interrupts &interrupts;
    StallWatch &stallWatch;
    Web::KorvoWebApi *api = nullptr;
    Session *session = nullptr;
};

/// One command from its checks to its outcome.
class Command : public QObject
{
    Q_OBJECT
public:
    enum class Reason { Interrupted, Stalled, OutputBroken };

    explicit Command(Context &usedContext);

    virtual bool needsLogin() const { return true; }
    virtual bool canPause() const { return false; }
    /// Looks at local files, before anybody is asked or anything is sent.
    virtual Outcome prepare();
    /// Begins the work; finished() follows.
    virtual void start() = 0;
    /// Ends the work in good order; finished() follows, within a limit.
    virtual void cancel(Reason reason);
    virtual void togglePause();
    /// Last look at local files, when the library is gone and nothing is written any more.
    virtual void settle(Outcome &outcome);

Q_SIGNALS:
    void finished(const Korvo::Cli::Outcome &outcome);

protected:
    /// Only the first outcome counts.
    void finish(const Outcome &outcome);
    Outcome outcomeOf(Reason reason) const;
    Web::KorvoWebApi &api() const { return *context.api; }

    Context &context;

private:
    bool done = false;
};

} // namespace Korvo::Cli
