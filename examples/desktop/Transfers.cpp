#include "Transfers.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QUuid>

#include <chrono>
#include <utility>

namespace Korvo::Desktop {

using namespace std::chrono_literals;
using Stage = Transfer::Stage;
using Web::Error;
using Web::KorvoWebApi;

namespace {

// The status by which the platform says that it has been told of the end.
constexpr int UPLOAD_BEGUN = 1;
constexpr auto ASK_AGAIN_AFTER = 500ms;
constexpr int MOST_QUESTIONS = 10;
// The library may stand in a wait of ten seconds before it sends anything.
constexpr auto SETTLE_LIMIT = 30s;

bool isSettling(const Transfer &transfer)
{
    return transfer.isUpload() && (transfer.stage == Stage::Confirming || transfer.stage == Stage::Aborting);
}

bool isRunning(const Transfer &transfer)
{
    return !transfer.hasEnded() && !isSettling(transfer);
}

QString shownName(const Transfer &transfer, const QString &key)
{
    const QString name = transfer.isUpload() ? QDir(transfer.folder).relativeFilePath(key) : key;
    return name.startsWith(QLatin1Char('/')) ? name.mid(1) : name;
}

} // namespace

Transfers::Transfers(KorvoWebApi &usedApi, QObject *parent)
    : QObject(parent)
    , api(usedApi)
{
    connectUploads();
    connectDownloads();
    askAgain.setSingleShot(true);
    askAgain.setInterval(ASK_AGAIN_AFTER);
    settleLimit.setSingleShot(true);
    settleLimit.setInterval(SETTLE_LIMIT);
    connect(&settleLimit, &QTimer::timeout, this, &Transfers::settleLate);
    connect(&askAgain, &QTimer::timeout, this, [this] {
        for (const int number : model.numbers()) {
            if (questionsAsked.contains(number))
                askStatus(number);
        }
    });
}

void Transfers::connectUploads()
{
    connect(&api, &KorvoWebApi::uploadFileProgressChanged, this,
            [this](unsigned int id, const QString &file, int percent) {
                model.setFilePercent(uploadNumber(id), file, percent);
            });
    connect(&api, &KorvoWebApi::currentUploadFilesChanged, this,
            [this](unsigned int id, const QStringList &files) { setFiles(uploadNumber(id), files); });
    connect(&api, &KorvoWebApi::uploadTotalProgressChanged, this,
            [this](unsigned int id, int value) { takeTotals(uploadNumber(id), &Transfer::percent, value); });
    connect(&api, &KorvoWebApi::filesToUploadTotalChanged, this,
            [this](unsigned int id, int value) { takeTotals(uploadNumber(id), &Transfer::filesTotal, value); });
    connect(&api, &KorvoWebApi::completedUploadFilesChanged, this,
            [this](unsigned int id, int value) { takeTotals(uploadNumber(id), &Transfer::filesCompleted, value); });
    connect(&api, &KorvoWebApi::uploadActiveChanged, this, &Transfers::handleUploadActive);
    connect(&api, &KorvoWebApi::uploadFinished, this, &Transfers::handleUploadFinished);
    connect(&api, &KorvoWebApi::uploadStatusInfoReceived, this, &Transfers::handleStatuses);
    connect(&api, &KorvoWebApi::projectInfoReceived, this, &Transfers::takeProjects);
}

void Transfers::connectDownloads()
{
    connect(&api, &KorvoWebApi::downloadFileProgressChanged, this,
            [this](unsigned int id, const QString &file, int percent) {
                blame(downloadNumber(id));
                model.setFilePercent(downloadNumber(id), file, percent);
            });
    connect(&api, &KorvoWebApi::currentDownloadFilesChanged, this, [this](unsigned int id, const QStringList &files) {
        blame(downloadNumber(id));
        setFiles(downloadNumber(id), files);
    });
    connect(&api, &KorvoWebApi::downloadTotalProgressChanged, this,
            [this](unsigned int id, int value) { takeTotals(downloadNumber(id), &Transfer::percent, value); });
    connect(&api, &KorvoWebApi::filesToDownloadTotalChanged, this,
            [this](unsigned int id, int value) { takeTotals(downloadNumber(id), &Transfer::filesTotal, value); });
    connect(&api, &KorvoWebApi::completedDownloadFilesChanged, this,
            [this](unsigned int id, int value) { takeTotals(downloadNumber(id), &Transfer::filesCompleted, value); });
    connect(&api, &KorvoWebApi::downloadActiveChanged, this, &Transfers::handleDownloadActive);
    connect(&api, &KorvoWebApi::downloadFinished, this, &Transfers::handleDownloadFinished);
}

// Orders

int Transfers::enter(unsigned int id, Transfer transfer)
{
    if (id == 0)
        return 0;
    transfer.id = id;
    const int number = model.add(transfer);
    Q_EMIT changed();
    return number;
}

int Transfers::startUpload(const Transfer &order)
{
    return enter(orderUpload(order), order);
}

unsigned int Transfers::orderUpload(const Transfer &order)
{
    // With the closing separator the names in the storage begin with the name of a file or folder, not with "/".
    const QString folder = QDir::cleanPath(order.folder) + QLatin1Char('/');
    // The platform takes the clock reading for UTC.
    const QDateTime created = order.created.toUTC();
    switch (order.content) {
    case Transfer::Content::ImportTool:
        return api.uploadQZProject(order.title, folder, created);
    case Transfer::Content::Quickview:
        return api.uploadQuickviewProject(QUuid(order.projectId), order.title, folder, created, order.manholeMedia);
    case Transfer::Content::Standard:
        break;
    }
    return api.uploadProject(order.projectId, order.title, folder, created, order.simultaneousFiles);
}

int Transfers::startDownload(const Transfer &order)
{
    return enter(api.downloadProject(order.projectId, order.folderName, order.folder, order.simultaneousFiles), order);
}

int Transfers::startSingleFile(const Transfer &order)
{
    return enter(api.downloadSingleProjectFile(order.folder, order.link), order);
}

void Transfers::pause(int number)
{
    const Transfer *const transfer = model.find(number);
    if (!transfer || !transfer->canPause())
        return;
    if (transfer->isUpload())
        api.pauseUpload(transfer->id);
    else
        api.pauseDownload(transfer->id);
    setStage(number, Stage::Paused);
}

void Transfers::resume(int number)
{
    const Transfer *const transfer = model.find(number);
    if (!transfer || transfer->stage != Stage::Paused)
        return;
    heldForLogin.remove(number);
    if (transfer->isUpload())
        api.resumeUpload(transfer->id);
    else
        api.resumeDownload(transfer->id);
    setStage(number, Stage::Running);
}

void Transfers::abort(int number)
{
    const Transfer *const transfer = model.find(number);
    if (!transfer || !transfer->canAbort())
        return;
    const unsigned int id = transfer->id;
    const bool isUpload = transfer->isUpload();
    setStage(number, Stage::Aborting);
    if (isUpload)
        api.abortUpload(id);
    else
        api.abortDownload(id);
}

void Transfers::retry(int number)
{
    const Transfer *const old = model.find(number);
    if (!old || !old->canRetry())
        return;
    Transfer order;
    order.kind = old->kind;
    order.content = old->content;
    order.title = old->title;
    order.projectId = old->projectId;
    order.folder = old->folder;
    order.folderName = old->folderName;
    order.link = old->link;
    order.created = old->created;
    order.simultaneousFiles = old->simultaneousFiles;
    order.manholeMedia = old->manholeMedia;
    switch (order.kind) {
    case Transfer::Kind::Upload:
        startUpload(order);
        return;
    case Transfer::Kind::Download:
        startDownload(order);
        return;
    case Transfer::Kind::SingleFile:
        startSingleFile(order);
        return;
    }
}

// What a transfer sends after a logout is refused, and ends an upload.
void Transfers::pauseAll()
{
    for (const int number : model.numbers()) {
        if (!model.find(number)->canPause())
            continue;
        pause(number);
        heldForLogin.insert(number);
    }
}

void Transfers::resumeAll()
{
    const QSet<int> held = heldForLogin;
    for (const int number : held)
        resume(number);
    heldForLogin.clear();
}

bool Transfers::isAnyRunning() const
{
    return model.any(isRunning);
}

bool Transfers::isAnySettling() const
{
    return model.any(isSettling);
}

// What the library tells

int Transfers::numberOf(Transfer::Kind kind, unsigned int id) const
{
    const bool isUpload = kind == Transfer::Kind::Upload;
    return model.numberOf([&](const Transfer &transfer) {
        return transfer.id == id && transfer.isUpload() == isUpload && !transfer.hasEnded();
    });
}

void Transfers::setStage(int number, Stage stage)
{
    const Transfer *const transfer = model.find(number);
    if (!transfer || transfer->stage == stage)
        return;
    model.change(number, [&](Transfer &changing) { changing.stage = stage; });
    const bool hasEnded = transfer->hasEnded();
    if (hasEnded) {
        model.setFiles(number, {});
        heldForLogin.remove(number);
        filesLeft.remove(number);
    }
    Q_EMIT changed();
    if (hasEnded)
        Q_EMIT ended(number);
}

void Transfers::setFiles(int number, const QStringList &keys)
{
    const Transfer *const transfer = model.find(number);
    if (!transfer)
        return;
    QVector<FileInFlight> files;
    for (const QString &key : keys)
        files.append({shownName(*transfer, key), key, 0});
    model.setFiles(number, files);
}

void Transfers::takeTotals(int number, int Transfer::*member, int value)
{
    model.change(number, [&](Transfer &transfer) {
        transfer.*member = value;
        if (transfer.stage == Stage::Starting)
            transfer.stage = Stage::Running;
    });
}

void Transfers::fail(int number, Error error)
{
    model.change(number, [&](Transfer &transfer) { transfer.error = error; });
    setStage(number, Stage::Failed);
}

QString Transfers::claimError(Error error, bool *expected)
{
    *expected = false;
    if (const Transfer *const upload = model.find(endingUpload)) {
        const QString title = upload->title;
        fail(std::exchange(endingUpload, 0), error);
        return title;
    }
    const int aborting = model.numberOf([](const Transfer &transfer) { return transfer.stage == Stage::Aborting; });
    if (error == Error::Cancelled && aborting != 0) {
        *expected = true;
        return model.find(aborting)->title;
    }
    const QString download = claimForDownload(error);
    if (!download.isEmpty())
        return download;
    const int confirming = model.numberOf([](const Transfer &transfer) { return transfer.stage == Stage::Confirming; });
    return confirming == 0 ? QString() : model.find(confirming)->title;
}

QString Transfers::claimForDownload(Error error)
{
    QStringList titles;
    for (const int number : model.numbers()) {
        const Transfer *const transfer = model.find(number);
        if (!transfer->isUpload() && isRunning(*transfer))
            titles.append(transfer->title);
    }
    if (titles.isEmpty())
        return {};
    newestError = error;
    return titles.size() == 1 ? titles.first() : tr("One of %n download(s)", nullptr, titles.size());
}

// The signal that follows a failure of a download is about the same one.
void Transfers::blame(int number)
{
    const Error error = std::exchange(newestError, Error::None);
    if (error != Error::None)
        model.change(number, [&](Transfer &transfer) { transfer.error = error; });
}

// Uploads

void Transfers::handleUploadActive(unsigned int id, bool active)
{
    const int number = uploadNumber(id);
    const Transfer *const transfer = model.find(number);
    if (!transfer || active)
        return;
    if (transfer->stage == Stage::Aborting)
        askStatus(number);
    else
        endingUpload = number;
}

void Transfers::handleUploadFinished(unsigned int id)
{
    endingUpload = 0;
    const int number = uploadNumber(id);
    if (number == 0)
        return;
    model.setFiles(number, {});
    setStage(number, Stage::Confirming);
    askStatus(number);
}

void Transfers::askStatus(int number)
{
    const Transfer *const transfer = model.find(number);
    if (!transfer || !isSettling(*transfer))
        return;
    ++questionsAsked[number];
    settleLimit.start();
    if (transfer->projectId.isEmpty())
        api.queryRemoteProjects();
    else
        api.queryUploadProjectStatus({transfer->projectId});
}

// Listed or not, it is asked again: the list does not say what has become of an upload.
void Transfers::takeProjects(const QList<Web::ProjectInfo> &projects)
{
    const QList<int> waiting = questionsAsked.keys();
    for (const int number : waiting) {
        const Transfer *const transfer = model.find(number);
        if (!transfer || !isSettling(*transfer) || !transfer->projectId.isEmpty())
            continue;
        for (const Web::ProjectInfo &project : projects) {
            if (project.projectName() == transfer->title)
                model.change(number, [&](Transfer &changing) { changing.projectId = project.projectId(); });
        }
        takeAnswer(number, UPLOAD_BEGUN);
    }
}

// An empty list is what comes when the question failed.
void Transfers::handleStatuses(const QList<Web::UploadStatusInfo> &statuses)
{
    const QList<int> waiting = questionsAsked.keys();
    for (const int number : waiting) {
        const Transfer *const transfer = model.find(number);
        if (!transfer || !isSettling(*transfer)) {
            questionsAsked.remove(number);
            continue;
        }
        if (statuses.isEmpty())
            settle(number, tr("the platform has not confirmed it"));
        for (const Web::UploadStatusInfo &info : statuses) {
            if (info.projectId == transfer->projectId && questionsAsked.contains(number))
                takeAnswer(number, info.status);
        }
    }
}

// The question may have overtaken the notice: while the platform still takes the upload for begun, it is asked again.
void Transfers::takeAnswer(int number, int status)
{
    if (status != UPLOAD_BEGUN)
        settle(number, {});
    else if (questionsAsked.value(number) < MOST_QUESTIONS)
        askAgain.start();
    else
        settle(number, tr("the platform has not confirmed it"));
}

void Transfers::settleLate()
{
    const QList<int> waiting = questionsAsked.keys();
    for (const int number : waiting)
        settle(number, tr("the platform has not confirmed it"));
}

void Transfers::settle(int number, const QString &note)
{
    questionsAsked.remove(number);
    const Transfer *const transfer = model.find(number);
    if (!transfer)
        return;
    const bool aborted = transfer->stage == Stage::Aborting;
    model.change(number, [&](Transfer &changing) {
        changing.note = aborted && note.isEmpty() ? tr("The platform has been told.") : note;
    });
    setStage(number, aborted ? Stage::Aborted : Stage::Done);
    if (!aborted)
        Q_EMIT uploadArrived();
}

// Downloads

void Transfers::handleDownloadActive(unsigned int id, bool active)
{
    const int number = downloadNumber(id);
    const Transfer *const transfer = model.find(number);
    if (!transfer || active || transfer->stage != Stage::Aborting)
        return;
    const bool removed = !QFileInfo::exists(transfer->folder);
    model.change(number, [&](Transfer &changing) {
        changing.note
            = removed ? tr("The download folder has been removed.") : tr("The download folder could not be removed.");
    });
    setStage(number, Stage::Aborted);
}

void Transfers::handleDownloadFinished(unsigned int id)
{
    const int number = downloadNumber(id);
    const Transfer *const transfer = model.find(number);
    blame(number);
    if (!transfer)
        return;
    if (transfer->kind == Transfer::Kind::SingleFile)
        finishSingleFile(number);
    else if (wasTheLastFile(number))
        finishDownload(number);
    else
        setStage(number, Stage::LastFiles);
}

// It comes when no file is left to start, and again for each file that is in flight then. One file at a time is never
// in flight by then, even though the last one is still listed.
bool Transfers::wasTheLastFile(int number)
{
    const Transfer &transfer = *model.find(number);
    if (transfer.isWhole() || transfer.simultaneousFiles == 1)
        return true;
    if (!filesLeft.contains(number))
        filesLeft.insert(number, transfer.files.size());
    else
        --filesLeft[number];
    return filesLeft.value(number) <= 0;
}

void Transfers::finishSingleFile(int number)
{
    const Error error = model.find(number)->error;
    if (error != Error::None)
        fail(number, error);
    else
        setStage(number, Stage::Done);
}

// A listing that failed looks like one of no files.
void Transfers::finishDownload(int number)
{
    const Transfer &transfer = *model.find(number);
    if (transfer.filesCompleted > 0 && !transfer.isWhole())
        setStage(number, Stage::Incomplete);
    else if (transfer.error != Error::None)
        fail(number, transfer.error);
    else
        setStage(number, Stage::Done);
}

} // namespace Korvo::Desktop
