#include "Application.h"

#include "AccountCommands.h"
#include "CommandTable.h"
#include "Console.h"
#include "DataCommand.h"
#include "DownloadCommand.h"
#include "Keys.h"
#include "ListCommands.h"
#include "Network.h"
#include "Session.h"
#include "UploadCommand.h"

#include <NQKorvoWeb/KorvoWebLibrary.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QHash>

#include <functional>

namespace Korvo::Cli {

namespace {

template<class T>
std::unique_ptr<Command> make(Context &context)
{
    return std::make_unique<T>(context);
}

std::unique_ptr<Command> makeCommand(const QString &name, Context &context)
{
    static const QHash<QString, std::function<std::unique_ptr<Command>(Context &)>> MAKERS = {
        {QStringLiteral("login"), make<LoginCommand>},         {QStringLiteral("projects"), make<ProjectsCommand>},
        {QStringLiteral("upload"), make<UploadCommand>},       {QStringLiteral("download"), make<DownloadCommand>},
        {QStringLiteral("status"), make<StatusCommand>},       {QStringLiteral("quickview"), make<QuickviewCommand>},
        {QStringLiteral("link"), make<LinkCommand>},           {QStringLiteral("links"), make<LinksCommand>},
        {QStringLiteral("get"), make<GetCommand>},             {QStringLiteral("reset-password"), make<ResetPasswordCommand>},
    };
    return MAKERS.value(name)(context);
}

// Its thread watches the whole process, so it is never taken down.
Interrupts &processInterrupts()
{
    static auto *const instance = new Interrupts;
    return *instance;
}

} // namespace

Application::Application(const Invocation &givenInvocation)
    : invocation(givenInvocation)
    , output(invocation.common.json ? Output::Form::Json : Output::Form::Text,
             invocation.common.quiet ? Output::Amount::ResultsOnly : Output::Amount::All)
    , log(output, invocation.common.verbose ? LibraryLog::Showing::Yes : LibraryLog::Showing::No)
    , interrupts(processInterrupts())
    , stallWatch(invocation.common.stallTimeout)
    , credentials(invocation.common, output)
    , context{invocation, output, log, interrupts, stallWatch}
{
}

Application::~Application() = default;

int Application::run()
{
    Outcome result{ExitCode::Usage, invocation.complaint, {}};
    if (invocation.isGood())
        result = prepare();
    if (result.isSuccess())
        result = work();
    if (command)
        command->settle(result);
    return report(result);
}

Outcome Application::prepare()
{
    command = makeCommand(invocation.command->name, context);
    Outcome result = command->prepare();
    if (result.isSuccess())
        result = setUpNetwork(invocation.common);
    if (result.isSuccess() && command->needsLogin())
        result = credentials.collect();
    return result;
}

// Facade and session go before anything is reported: what is said about files then holds.
Outcome Application::work()
{
    Web::KorvoWebLibrary::initialize();
    Web::KorvoWebApi api;
    session = std::make_unique<Session>(api, credentials, output, log);
    context.api = &api;
    context.session = session.get();
    connectEnds();
    QMetaObject::invokeMethod(this, &Application::begin, Qt::QueuedConnection);
    loop.exec();
    stallWatch.stop();
    keys.reset();
    session.reset();
    context.api = nullptr;
    context.session = nullptr;
    return outcome;
}

void Application::connectEnds()
{
    connect(command.get(), &Command::finished, this, &Application::end);
    connect(session.get(), &Session::failed, this, &Application::end);
    connect(session.get(), &Session::loggedIn, this, &Application::startCommand);
    connect(session.get(), &Session::signOfLife, &stallWatch, &StallWatch::signOfLife);
    connect(&interrupts, &Interrupts::interrupted, this, [this] { cancel(Command::Reason::Interrupted); });
    connect(&stallWatch, &StallWatch::stalled, this, [this] { cancel(Command::Reason::Stalled); });
    connect(&stallWatch, &StallWatch::waiting, this, &Application::sayThatItWaits);
    connect(&output, &Output::broke, this, [this] { cancel(Command::Reason::OutputBroken); }, Qt::QueuedConnection);
}

void Application::begin()
{
    if (interrupts.hasCome()) {
        cancel(Command::Reason::Interrupted);
        return;
    }
    stallWatch.start();
    if (command->needsLogin())
        session->logIn();
    else
        startCommand();
}

void Application::startCommand()
{
    started = true;
    log.forgetCause();
    stallWatch.signOfLife();
    const bool onTerminal = Console::isTerminal(Console::Stream::Input) && Console::isTerminal(Console::Stream::Output);
    if (command->canPause() && onTerminal) {
        keys = std::make_unique<Keys>(interrupts);
        connect(keys.get(), &Keys::pausePressed, command.get(), &Command::togglePause);
    }
    command->start();
}

void Application::cancel(Command::Reason reason)
{
    if (ended) // what was posted before the end arrives after it
        return;
    if (started)
        command->cancel(reason);
    else
        command->Command::cancel(reason); // there is nothing to abort yet
}

void Application::end(const Outcome &newOutcome)
{
    if (ended)
        return;
    ended = true;
    outcome = newOutcome;
    loop.quit();
}

void Application::sayThatItWaits(int seconds)
{
    const auto limit = invocation.common.stallTimeout.count();
    const QString end = limit > 0 ? QStringLiteral("gives up after %1 s, see --stall-timeout").arg(limit)
                                  : QStringLiteral("waits on, see --stall-timeout");
    output.say(QStringLiteral("No progress for %1 s; korvoweb ").arg(seconds) + end);
    output.event(QStringLiteral("waiting"), {{QStringLiteral("seconds"), seconds}});
}

int Application::report(Outcome result)
{
    QCoreApplication::sendPostedEvents(); // log lines that are still on their way
    QJsonObject members = result.details;
    members.insert(QStringLiteral("command"), invocation.command ? invocation.command->name : QString());
    members.insert(QStringLiteral("exitCode"), static_cast<int>(result.code));
    members.insert(QStringLiteral("outcome"), exitCodeName(result.code));
    if (!result.message.isEmpty())
        members.insert(QStringLiteral("message"), result.message);
    output.result(members);
    if (output.isBroken() && result.isSuccess())
        result = {ExitCode::Output, QStringLiteral("standard output takes no more; the work itself is done"), {}};
    if (!result.isSuccess())
        output.warn(result.message);
    return static_cast<int>(result.code);
}

} // namespace Korvo::Cli
