#include "UploadCommand.h"

#include "CommandLine.h"
#include "Failure.h"
#include "Output.h"
#include "Session.h"
#include "StallWatch.h"
#include "Text.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QUuid>

#include <chrono>

namespace Korvo::Cli {

using Web::KorvoWebApi;

namespace {

using namespace std::chrono_literals;

// What ends an upload follows its end at once.
constexpr std::chrono::seconds VERDICT_LIMIT = 5s;
// The library may stand in a wait of ten seconds when it is told to abort.
constexpr std::chrono::seconds ABORT_LIMIT = 15s;
constexpr std::chrono::seconds ANSWER_LIMIT = 10s;
constexpr std::chrono::seconds ANSWER_LIMIT_AFTER_STALL = 3s;
// The first answer may have overtaken the notice of the end.
constexpr int ANSWERS_TO_CONFIRM = 2;

QString listedPath(QString line)
{
    line = line.trimmed();
    line.replace(QLatin1Char('\\'), QLatin1Char('/'));
    while (line.startsWith(QLatin1String("./")))
        line.remove(0, 2);
    return line.startsWith(QLatin1Char('/')) ? line.mid(1) : line;
}

} // namespace

UploadCommand::UploadCommand(Context &usedContext)
    : TransferCommand(usedContext)
    , folder(usedContext.invocation.arguments.first())
    , projectId(usedContext.invocation.upload.id)
{
    limit.setSingleShot(true);
    connect(&limit, &QTimer::timeout, this, &UploadCommand::handleLimit);
}

Outcome UploadCommand::prepare()
{
    const Outcome outcome = folder.scan();
    for (const QString &path : folder.leftOut())
        context.output.warn(shownName(path) + QStringLiteral(" is left out: it is no regular file"));
    if (!outcome.isSuccess() || context.invocation.upload.manholeMediaFile.isEmpty())
        return outcome;
    return readManholeMedia();
}

Outcome UploadCommand::readManholeMedia()
{
    const QString path = context.invocation.upload.manholeMediaFile;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {ExitCode::LocalFile,
                QStringLiteral("--manhole-media: ") + shownName(path) + QStringLiteral(": ") + file.errorString(), {}};
    const QStringList listed = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    for (const QString &line : listed) {
        const QString name = listedPath(line);
        if (name.isEmpty())
            continue;
        if (!folder.sizes().contains(folder.path() + name))
            return {ExitCode::LocalFile,
                    QStringLiteral("--manhole-media: the folder holds no ") + shownName(name) + QStringLiteral("; nothing was sent"), {}};
        manholeMedia.insert(name);
    }
    return {};
}

void UploadCommand::start()
{
    state.total.totalBytes = folder.bytes();
    context.output.say(QStringLiteral("Uploading ") + shownName(QDir::cleanPath(folder.path())) + QStringLiteral(": ")
                       + fileCount(folder.sizes().size()) + QStringLiteral(", ") + sizeText(folder.bytes()));
    connectProgress();
    connect(&api(), &KorvoWebApi::errorOccurred, this, &UploadCommand::handleError);
    connect(&api(), &KorvoWebApi::uploadStatusInfoReceived, this, &UploadCommand::handleStatuses);
    connect(&api(), &KorvoWebApi::projectInfoReceived, this, &UploadCommand::handleProjects);
    connect(&api(), &KorvoWebApi::queryRemoteProjectsError, this, &UploadCommand::handleError);
    connect(context.session, &Session::expiring, this, &UploadCommand::handleExpiry);
    connect(context.session, &Session::renewed, this, &UploadCommand::handleRenewal);
    beginDisplay();
    id = startUpload();
    if (id == 0)
        finish(failureOf(Web::Error::InvalidParameter, context.log));
}

void UploadCommand::connectProgress()
{
    const auto ifOurs = [this](auto slot) {
        return [this, slot](unsigned int uploadId, const auto &...values) {
            if (uploadId == id)
                (this->*slot)(values...);
        };
    };
    connect(&api(), &KorvoWebApi::uploadFileProgressChanged, this, ifOurs(&UploadCommand::takeFileProgress));
    connect(&api(), &KorvoWebApi::currentUploadFilesChanged, this, ifOurs(&UploadCommand::takeCurrentFiles));
    connect(&api(), &KorvoWebApi::uploadTotalProgressChanged, this, ifOurs(&UploadCommand::takeTotalProgress));
    connect(&api(), &KorvoWebApi::filesToUploadTotalChanged, this, ifOurs(&UploadCommand::takeFilesTotal));
    connect(&api(), &KorvoWebApi::completedUploadFilesChanged, this, ifOurs(&UploadCommand::takeFilesCompleted));
    connect(&api(), &KorvoWebApi::uploadActiveChanged, this, ifOurs(&UploadCommand::handleActive));
    connect(&api(), &KorvoWebApi::uploadFinished, this, ifOurs(&UploadCommand::handleFinished));
}

unsigned int UploadCommand::startUpload()
{
    const UploadOptions &options = context.invocation.upload;
    switch (options.kind) {
    case UploadKind::Qz:
        return api().uploadQZProject(options.name, folder.path(), options.created);
    case UploadKind::Quickview:
        projectId = QUuid(options.id).toString(QUuid::WithoutBraces);
        return api().uploadQuickviewProject(QUuid(options.id), options.name, folder.path(), options.created, manholeMedia);
    case UploadKind::Standard:
        break;
    }
    return api().uploadProject(options.id, options.name, folder.path(), options.created, context.invocation.jobs);
}

bool UploadCommand::setPaused(bool paused)
{
    if (step != Step::Running || context.session->isRenewing())
        return false;
    if (paused)
        api().pauseUpload(id);
    else
        api().resumeUpload(id);
    return true;
}

QString UploadCommand::shortName(const QString &name) const
{
    return name.startsWith(folder.path()) ? name.mid(folder.path().size()) : name;
}

void UploadCommand::measureFile(const QString &name, Portion &file) const
{
    file.totalBytes = folder.sizes().value(name);
    file.doneBytes = file.totalBytes * file.percent / 100;
}

void UploadCommand::measureTotal()
{
    state.total.totalBytes = std::max(folder.bytes(), state.total.doneBytes);
}

// Files that an abort has cut off are no news, and what a renewal of the login meets is told by the session.
bool UploadCommand::isOtherMatter(Web::Error error) const
{
    if (step == Step::Cancelling || step == Step::Telling)
        return error == Web::Error::Cancelled;
    return step == Step::Running && context.session->isRenewing();
}

// A failure that ends the upload comes with its end.
void UploadCommand::handleError(Web::Error error)
{
    if (isOtherMatter(error))
        return;
    takeError(error);
    if (step == Step::Ending || step == Step::Confirming)
        fail();
    else if (step == Step::Telling)
        finishCancelled(false);
}

// The end of an upload needs a login that is good. While it is renewed nothing can be sent, so nothing may be begun.
void UploadCommand::handleExpiry()
{
    if (step != Step::Running)
        return;
    api().pauseUpload(id);
    context.session->renew();
}

void UploadCommand::handleRenewal()
{
    context.stallWatch.signOfLife();
    if (step == Step::Running && !state.paused)
        api().resumeUpload(id);
}

void UploadCommand::handleActive(bool active)
{
    if (active)
        return;
    if (step == Step::Cancelling) {
        step = Step::Telling;
        askServer();
    } else if (step == Step::Running && errorCount > 0) {
        fail();
    } else if (step == Step::Running) {
        step = Step::Ending;
        limit.start(VERDICT_LIMIT);
    }
}

void UploadCommand::handleFinished()
{
    if (step != Step::Running && step != Step::Ending)
        return;
    step = Step::Confirming;
    context.output.event(QStringLiteral("uploaded"));
    askServer();
}

void UploadCommand::handleLimit()
{
    switch (step) {
    case Step::Cancelling:
    case Step::Telling:
        finishCancelled(false);
        return;
    case Step::Running:
    case Step::Ending:
    case Step::Confirming:
        firstError = firstError == Web::Error::None ? Web::Error::TimeOut : firstError;
        fail();
        return;
    }
}

// A project of the import tool has an id that only the list of projects tells.
void UploadCommand::askServer()
{
    const bool afterStall = cancelOutcome.code == ExitCode::Network;
    limit.start(afterStall ? ANSWER_LIMIT_AFTER_STALL : ANSWER_LIMIT);
    if (projectId.isEmpty())
        api().queryRemoteProjects();
    else
        api().queryUploadProjectStatus({projectId});
}

void UploadCommand::handleStatuses(const QList<Web::UploadStatusInfo> &statuses)
{
    if (!statuses.isEmpty())
        serverStatus = statuses.first().status;
    takeServerAnswer();
}

void UploadCommand::handleProjects(const QList<Web::ProjectInfo> &projects)
{
    for (const Web::ProjectInfo &project : projects) {
        if (project.projectName() == context.invocation.upload.name)
            projectId = project.projectId();
    }
    takeServerAnswer();
}

void UploadCommand::takeServerAnswer()
{
    ++serverAnswers;
    if (step == Step::Telling)
        finishCancelled(true);
    else if (step == Step::Confirming && serverAnswers < ANSWERS_TO_CONFIRM)
        askServer();
    else if (step == Step::Confirming)
        succeed();
}

void UploadCommand::succeed()
{
    endDisplay();
    context.output.say(QStringLiteral("Uploaded ") + figures(state.filesCompleted, state.total.doneBytes));
    finish({ExitCode::Success, {}, details()});
}

void UploadCommand::fail()
{
    endDisplay();
    const bool allArrived = step == Step::Confirming;
    Outcome outcome{exitCodeFor(firstError, context.log), errorText(firstError, context.log), details()};
    outcome.message += allArrived
        ? QStringLiteral("; every file has arrived, but the server did not confirm the end: look at \"korvoweb status\"")
        : QStringLiteral("; the upload is not complete on the server, run it again");
    outcome.details.insert(QStringLiteral("error"), errorName(firstError));
    finish(outcome);
}

void UploadCommand::cancel(Reason reason)
{
    context.stallWatch.stop();
    if (step == Step::Cancelling || step == Step::Telling)
        return;
    cancelOutcome = outcomeOf(reason);
    if (step == Step::Ending || step == Step::Confirming) {
        endDisplay();
        cancelOutcome.message += QStringLiteral("; the upload was at its end: \"korvoweb status\" tells what the server "
                                                "knows of it");
        finish(cancelOutcome);
        return;
    }
    step = Step::Cancelling;
    context.output.say(QStringLiteral("Cancelling the upload and telling the server; press Ctrl-C again to leave at once"));
    context.output.event(QStringLiteral("cancelling"));
    limit.start(ABORT_LIMIT);
    api().abortUpload(id);
}

void UploadCommand::finishCancelled(bool serverWasTold)
{
    endDisplay();
    Outcome outcome = cancelOutcome;
    outcome.message += serverWasTold ? QStringLiteral("; the server has been told that the upload is cancelled")
                                     : QStringLiteral("; the server could not be told: it may keep the unfinished upload");
    const QJsonObject more = details();
    for (auto member = more.begin(); member != more.end(); ++member)
        outcome.details.insert(member.key(), member.value());
    outcome.details.insert(QStringLiteral("serverWasTold"), serverWasTold);
    finish(outcome);
}

QJsonObject UploadCommand::details() const
{
    QJsonObject members{{QStringLiteral("projectId"), projectId},
                        {QStringLiteral("filesCompleted"), state.filesCompleted},
                        {QStringLiteral("filesTotal"), state.filesTotal},
                        {QStringLiteral("bytes"), state.total.doneBytes},
                        {QStringLiteral("milliseconds"), state.clock.elapsed()}};
    if (serverStatus >= 0)
        members.insert(QStringLiteral("status"), serverStatus);
    return members;
}

} // namespace Korvo::Cli
