#include "DataCommand.h"

#include "CommandLine.h"
#include "Failure.h"
#include "Output.h"
#include "StallWatch.h"
#include "Text.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <chrono>

namespace Korvo::Cli {

using Web::KorvoWebApi;

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds LOOK_INTERVAL = 200ms;
constexpr std::chrono::seconds ABORT_LIMIT = 10s;

// The number keeps two runs for the same file apart.
QString unfinishedName(const QString &target)
{
    return target + QStringLiteral(".part%1").arg(QCoreApplication::applicationPid());
}

} // namespace

DataCommand::DataCommand(Context &usedContext, const QString &file)
    : TransferCommand(usedContext)
    , target(QFileInfo(file).absoluteFilePath())
    , unfinished(unfinishedName(target))
{
    limit.setSingleShot(true);
    connect(&limit, &QTimer::timeout, this, [this] { finish(cancelOutcome); });
    connect(&timer, &QTimer::timeout, this, &DataCommand::look);
}

Outcome DataCommand::prepare()
{
    const QFileInfo info(target);
    if (info.isDir())
        return {ExitCode::LocalFile, shownName(target) + QStringLiteral(" is a folder; give the name of a file"), {}};
    // Replacing a device would break more than this download.
    if (info.exists() && !info.isFile())
        return {ExitCode::LocalFile, shownName(target) + QStringLiteral(" is no regular file; give another name"), {}};
    return {};
}

void DataCommand::start()
{
    connect(&api(), &KorvoWebApi::errorOccurred, this, &DataCommand::takeError);
    connect(&api(), &KorvoWebApi::downloadFinished, this, &DataCommand::handleFinished);
    connect(&api(), &KorvoWebApi::downloadActiveChanged, this, &DataCommand::handleActive);
    beginDisplay();
    state.total.name = shownName(QFileInfo(target).fileName());
    state.total.percent = UNKNOWN_PERCENT;
    timer.start(LOOK_INTERVAL);
    id = startDownload(unfinished);
    if (id == 0)
        finish(failureOf(Web::Error::InvalidParameter, context.log));
}

void DataCommand::look()
{
    measure();
    if (state.total.doneBytes == seenBytes)
        return;
    seenBytes = state.total.doneBytes;
    context.stallWatch.signOfLife();
    context.output.event(QStringLiteral("received"), {{QStringLiteral("bytes"), seenBytes}});
}

bool DataCommand::setPaused(bool paused)
{
    if (cancelling)
        return false;
    if (paused)
        api().pauseDownload(id);
    else
        api().resumeDownload(id);
    return true;
}

QString DataCommand::shortName(const QString &name) const
{
    return name;
}

void DataCommand::measureFile(const QString &name, Portion &file) const
{
    Q_UNUSED(name)
    Q_UNUSED(file)
}

void DataCommand::measureTotal()
{
    state.total.doneBytes = QFileInfo(unfinished).size();
}

void DataCommand::handleFinished(unsigned int downloadId)
{
    if (downloadId != id || cancelling)
        return;
    timer.stop();
    measure();
    endDisplay();
    finish(errorCount > 0 ? failureOf(firstError, context.log) : keep());
}

Outcome DataCommand::keep()
{
    const qint64 bytes = QFileInfo(unfinished).size();
    const bool isFree = !QFile::exists(target) || QFile::remove(target);
    if (!isFree || !QFile::rename(unfinished, target))
        return {ExitCode::LocalFile, shownName(target) + QStringLiteral(" cannot be replaced; check its rights"), {}};
    context.output.say(QStringLiteral("Received ") + sizeText(bytes) + QStringLiteral(" in ")
                       + secondsText(state.clock.elapsed()) + QStringLiteral(": ") + shownName(target));
    return {ExitCode::Success, {},
            {{QStringLiteral("file"), target}, {QStringLiteral("bytes"), bytes},
             {QStringLiteral("milliseconds"), state.clock.elapsed()}}};
}

void DataCommand::cancel(Reason reason)
{
    context.stallWatch.stop();
    if (cancelling)
        return;
    cancelling = true;
    cancelOutcome = outcomeOf(reason);
    context.output.event(QStringLiteral("cancelling"));
    limit.start(ABORT_LIMIT);
    api().abortDownload(id);
}

void DataCommand::handleActive(unsigned int downloadId, bool active)
{
    if (downloadId != id || active || !cancelling)
        return;
    endDisplay();
    finish(cancelOutcome);
}

void DataCommand::settle(Outcome &outcome)
{
    if (!QFile::exists(unfinished) && outcome.code != ExitCode::Cancelled)
        return;
    const bool removed = !QFile::exists(unfinished) || QFile::remove(unfinished);
    outcome.message += removed ? QStringLiteral("; nothing of the file is kept")
                               : QStringLiteral("; an unfinished file is left: ") + shownName(unfinished);
}

QuickviewCommand::QuickviewCommand(Context &usedContext)
    : DataCommand(usedContext, usedContext.invocation.arguments.at(2))
{
}

unsigned int QuickviewCommand::startDownload(const QString &path)
{
    const QStringList &arguments = context.invocation.arguments;
    if (arguments.at(0) == QLatin1String("project"))
        return api().downloadQuickviewProjectData(arguments.at(1), path);
    if (arguments.at(0) == QLatin1String("survey"))
        return api().downloadQuickviewSurveyData(arguments.at(1), path);
    return api().downloadQuickviewManholeData(arguments.at(1), path);
}

GetCommand::GetCommand(Context &usedContext)
    : DataCommand(usedContext, usedContext.invocation.arguments.at(1))
{
}

unsigned int GetCommand::startDownload(const QString &path)
{
    return api().downloadSingleProjectFile(path, context.invocation.arguments.at(0));
}

} // namespace Korvo::Cli
