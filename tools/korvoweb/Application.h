#pragma once

#include "Command.h"
#include "CommandLine.h"
#include "Credentials.h"
#include "Interrupts.h"
#include "LibraryLog.h"
#include "Output.h"
#include "StallWatch.h"

#include <QtCore/QEventLoop>
#include <QtCore/QObject>

#include <memory>

namespace Korvo::Cli {

class Keys;
class Session;

/// One run of the program for one command.
class Application : public QObject
{
    Q_OBJECT
public:
    explicit Application(const Invocation &givenInvocation);
    ~Application() override;

    /// The exit code.
    int run();

private:
    Outcome prepare();
    Outcome work();
    void connectEnds();
    void begin();
    void startCommand();
    void cancel(Command::Reason reason);
    void end(const Outcome &newOutcome);
    void sayThatItWaits(int seconds);
    int report(Outcome outcome);

    const Invocation &invocation;
    Output output;
    LibraryLog log;
    Interrupts &interrupts;
    StallWatch stallWatch;
    Credentials credentials;
    Context context;
    std::unique_ptr<Command> command;
    std::unique_ptr<Session> session;
    std::unique_ptr<Keys> keys;
    QEventLoop loop;
    Outcome outcome;
    bool started = false;
    bool ended = false;
};

} // namespace Korvo::Cli
