#include "DownloadCommand.h"

#include "CommandLine.h"
#include "Failure.h"
#include "Output.h"
#include "StallWatch.h"
#include "Text.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>

#include <chrono>

namespace Korvo::Cli {

using Web::KorvoWebApi;

namespace {

using namespace std::chrono_literals;

// Removing the folder takes its time.
constexpr std::chrono::seconds ABORT_LIMIT = 30s;
constexpr int NAMED_FILES = 3;

constexpr QDir::Filters EVERYTHING = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;

Outcome refuse(const QString &message)
{
    return {ExitCode::LocalFile, message, {}};
}

} // namespace

DownloadCommand::DownloadCommand(Context &usedContext)
    : TransferCommand(usedContext)
    , folder(QDir::cleanPath(QFileInfo(usedContext.invocation.arguments.at(2)).absoluteFilePath()))
{
    limit.setSingleShot(true);
    connect(&limit, &QTimer::timeout, this, [this] { finish(cancelOutcome); });
}

// The library removes the whole folder when a download is aborted: nothing else may lie in it.
Outcome DownloadCommand::prepare()
{
    const QFileInfo info(folder);
    const QString shown = shownName(folder);
    folderIsNew = !info.exists();
    if (folderIsNew && info.isSymLink())
        return refuse(shown + QStringLiteral(" is a link that leads nowhere; give another folder"));
    if (folderIsNew)
        return {};
    if (!info.isDir())
        return refuse(shown + QStringLiteral(" is not a folder; give a new or empty one"));
    if (!QDir(folder).isEmpty(EVERYTHING))
        return refuse(shown + QStringLiteral(" is not empty; give a new or empty folder"));
    if (!info.isWritable())
        return refuse(shown + QStringLiteral(" cannot be written; check its rights"));
    return {};
}

void DownloadCommand::start()
{
    const QStringList &arguments = context.invocation.arguments;
    context.output.say(QStringLiteral("Downloading ") + shownName(arguments.at(1)) + QStringLiteral(" into ") + shownName(folder));
    connectProgress();
    connect(&api(), &KorvoWebApi::errorOccurred, this, &DownloadCommand::takeError);
    beginDisplay();
    id = api().downloadProject(arguments.at(0), arguments.at(1), folder, context.invocation.jobs);
    if (id == 0)
        finish(failureOf(Web::Error::InvalidParameter, context.log));
}

void DownloadCommand::connectProgress()
{
    const auto ifOurs = [this](auto slot) {
        return [this, slot](unsigned int downloadId, const auto &...values) {
            if (downloadId == id)
                (this->*slot)(values...);
        };
    };
    connect(&api(), &KorvoWebApi::downloadFileProgressChanged, this, ifOurs(&DownloadCommand::takeFileProgress));
    connect(&api(), &KorvoWebApi::currentDownloadFilesChanged, this, ifOurs(&DownloadCommand::takeCurrentFiles));
    connect(&api(), &KorvoWebApi::downloadTotalProgressChanged, this, ifOurs(&DownloadCommand::takeTotalProgress));
    connect(&api(), &KorvoWebApi::filesToDownloadTotalChanged, this, ifOurs(&DownloadCommand::takeFilesTotal));
    connect(&api(), &KorvoWebApi::completedDownloadFilesChanged, this, ifOurs(&DownloadCommand::takeFilesCompleted));
    connect(&api(), &KorvoWebApi::downloadActiveChanged, this, ifOurs(&DownloadCommand::handleActive));
    connect(&api(), &KorvoWebApi::downloadFinished, this, ifOurs(&DownloadCommand::handleFinished));
}

// After its first "finished" the library takes no more orders for a download.
bool DownloadCommand::setPaused(bool paused)
{
    if (noFileIsLeftToStart || cancelling) {
        context.output.say(QStringLiteral("Too late to pause: the last files are on their way"));
        return false;
    }
    if (paused)
        api().pauseDownload(id);
    else
        api().resumeDownload(id);
    return true;
}

QString DownloadCommand::shortName(const QString &name) const
{
    return name;
}

// The listing's sizes are not told, so the file on the disk has to do.
void DownloadCommand::measureFile(const QString &name, Portion &file) const
{
    file.doneBytes = QFileInfo(folder + QLatin1Char('/') + name).size();
    if (file.percent > 0)
        file.totalBytes = file.doneBytes * 100 / file.percent;
}

void DownloadCommand::measureTotal()
{
    for (const QString &name : currentFiles())
        seenFiles.insert(name);
    if (state.total.percent > 0)
        state.total.totalBytes = state.total.doneBytes * 100 / state.total.percent;
}

void DownloadCommand::handleFinished()
{
    noFileIsLeftToStart = true;
    if (!cancelling && wasTheLastFile())
        conclude();
}

// It comes when no file is left to start, and again for each file in flight that ends after that; with one file left it
// is heard twice: when that one is the only one, and when it has ended.
bool DownloadCommand::wasTheLastFile()
{
    const bool isWhole = state.counted && state.filesCompleted >= state.filesTotal;
    if (context.invocation.jobs == 1 || isWhole || currentFiles().isEmpty() || oneFileWasLeft)
        return true;
    oneFileWasLeft = currentFiles().size() == 1;
    return false;
}

void DownloadCommand::conclude()
{
    endDisplay();
    const Outcome outcome = verdict();
    if (outcome.isSuccess())
        context.output.say(QStringLiteral("Downloaded ") + figures(state.filesCompleted, state.total.doneBytes)
                           + QStringLiteral(" into ") + shownName(folder));
    finish(outcome);
}

Outcome DownloadCommand::verdict() const
{
    if (errorCount > 0 && state.filesCompleted > 0)
        return partlyDone();
    if (errorCount > 0) {
        Outcome outcome = failureOf(firstError, context.log);
        outcome.details.insert(QStringLiteral("filesTotal"), state.filesTotal);
        return outcome;
    }
    if (state.filesTotal == 0)
        return {ExitCode::NotFound,
                QStringLiteral("the platform lists no file there; give ID and BUCKET as \"korvoweb projects\" prints them"), {}};
    if (state.filesCompleted < state.filesTotal)
        return partlyDone();
    return {ExitCode::Success, {}, details()};
}

Outcome DownloadCommand::partlyDone() const
{
    const QStringList unwhole = unwholeFiles();
    QString message = QString::number(state.filesCompleted) + QStringLiteral(" of ")
        + fileCount(state.filesTotal) + QStringLiteral(" arrived, ") + QString::number(errorCount)
        + (errorCount == 1 ? QStringLiteral(" failure: ") : QStringLiteral(" failures, the first: "))
        + errorText(firstError, context.log);
    if (!unwhole.isEmpty())
        message += QStringLiteral("; not whole: ") + shownName(unwhole.mid(0, NAMED_FILES).join(QStringLiteral(", ")));
    Outcome outcome{ExitCode::PartlyDone, message, details()};
    outcome.details.insert(QStringLiteral("error"), errorName(firstError));
    outcome.details.insert(QStringLiteral("notWhole"), QJsonArray::fromStringList(unwhole));
    return outcome;
}

QStringList DownloadCommand::unwholeFiles() const
{
    QStringList names;
    for (const QString &name : seenFiles) {
        if (percentOf(name) < 100)
            names.append(name);
    }
    names.sort();
    return names;
}

// A stalled download keeps what it has: the files that are whole may be all that can be had.
void DownloadCommand::cancel(Reason reason)
{
    context.stallWatch.stop();
    if (cancelling)
        return;
    cancelling = true;
    removing = reason != Reason::Stalled;
    cancelOutcome = outcomeOf(reason);
    context.output.event(QStringLiteral("cancelling"));
    if (!removing || noFileIsLeftToStart) {
        endDisplay();
        finish(cancelOutcome);
        return;
    }
    context.output.say(QStringLiteral("Cancelling the download and removing the folder; press Ctrl-C again to leave at once"));
    limit.start(ABORT_LIMIT);
    api().abortDownload(id);
}

void DownloadCommand::handleActive(bool active)
{
    if (active || !cancelling)
        return;
    endDisplay();
    finish(cancelOutcome);
}

void DownloadCommand::settle(Outcome &outcome)
{
    if (removing)
        removeFolder(outcome);
    else if (cancelling)
        keepFolder(outcome);
    else if (!outcome.isSuccess() && folderIsNew)
        QDir().rmdir(folder); // only when nothing is in it
}

void DownloadCommand::removeFolder(Outcome &outcome)
{
    const bool removed = !QFileInfo::exists(folder) || QDir(folder).removeRecursively();
    outcome.message += QStringLiteral("; ") + shownName(folder)
        + (removed ? QStringLiteral(" has been removed") : QStringLiteral(" could not be removed: it holds files that are not whole"));
    outcome.details.insert(QStringLiteral("folderRemoved"), removed);
}

void DownloadCommand::keepFolder(Outcome &outcome)
{
    const QStringList unwhole = unwholeFiles();
    for (const QString &name : unwhole)
        QFile::remove(folder + QLatin1Char('/') + name);
    outcome.message += QStringLiteral("; ") + fileCount(state.filesCompleted) + QStringLiteral(" of ")
        + QString::number(state.filesTotal) + QStringLiteral(" arrived and stay in ") + shownName(folder);
    outcome.details.insert(QStringLiteral("filesCompleted"), state.filesCompleted);
    outcome.details.insert(QStringLiteral("filesTotal"), state.filesTotal);
}

QJsonObject DownloadCommand::details() const
{
    return {{QStringLiteral("folder"), folder},
            {QStringLiteral("filesCompleted"), state.filesCompleted},
            {QStringLiteral("filesTotal"), state.filesTotal},
            {QStringLiteral("bytes"), state.total.doneBytes},
            {QStringLiteral("milliseconds"), state.clock.elapsed()}};
}

} // namespace Korvo::Cli
