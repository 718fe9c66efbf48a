#include "RoundTrip.h"

#include "ErrorText.h"
#include "FolderComparison.h"
#include "Step.h"
#include "Terminal.h"
#include "TransferView.h"

#include <NQKorvoWeb/KorvoWebLibrary.h>

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QMetaEnum>
#include <QtCore/QUuid>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QSslConfiguration>

namespace Korvo::Demo {

using Web::KorvoWebApi;
using Web::ProjectInfo;

namespace {

// The account of the local platform that asks for a second factor, and the code that it accepts.
const QString USER = QStringLiteral("secure@korvo.example");
const QString PASSWORD = QStringLiteral("Second-Factor-1");
const QString SECOND_FACTOR = QStringLiteral("123456");

QString keyOf(KorvoWebApi::LoginResult result)
{
    return QString::fromLatin1(QMetaEnum::fromType<KorvoWebApi::LoginResult>().valueToKey(static_cast<int>(result)));
}

QString rate(qint64 bytes, qint64 milliseconds)
{
    if (bytes == 0 || milliseconds == 0)
        return {};
    const double megabytesPerSecond = static_cast<double>(bytes) / 1e3 / static_cast<double>(milliseconds);
    return QString::number(megabytesPerSecond, 'f', 1) + QStringLiteral(" MB/s");
}

} // namespace

RoundTrip::RoundTrip(const RoundTripOptions &givenOptions, QTextStream &stream)
    : options(givenOptions)
    , out(stream)
    , travellers(options.folder, options.nodeMedia)
    , platform(options.platformProgram)
{
}

RoundTrip::~RoundTrip() = default;

bool RoundTrip::run()
{
    const bool whole = lookAtFolder()
        && timed(QStringLiteral("start of the platform"), 0, &RoundTrip::startPlatform)
        && timed(QStringLiteral("login, second factor included"), 0, &RoundTrip::logIn)
        && timed(QStringLiteral("upload"), bytesUp, &RoundTrip::upload)
        && timed(QStringLiteral("list of projects"), 0, &RoundTrip::listProjects)
        && timed(QStringLiteral("download"), bytesDown, &RoundTrip::download)
        && timed(QStringLiteral("comparison"), bytesDown, &RoundTrip::compare);
    const bool stopped = stopEverything();
    printStages();
    return whole && stopped;
}

bool RoundTrip::lookAtFolder()
{
    if (!travellers.scan())
        return fail(QStringLiteral("cannot be read:\n  ") + travellers.problems().join(QStringLiteral("\n  ")));
    int count = 0;
    for (const TravellingFile &file : travellers.files()) {
        if (file.key.isEmpty())
            continue;
        ++count;
        bytesUp += file.bytes;
        sizesByPath.insert(options.folder + QLatin1Char('/') + file.localPath, file.bytes);
        sizesByKey.insert(file.key, file.bytes);
        if (!file.returnsAs.isEmpty())
            bytesDown += file.bytes;
    }
    out << "Project folder: " << QDir::toNativeSeparators(options.folder) << ", " << count << " files to upload, "
        << sizeText(bytesUp) << '\n';
    return true;
}

bool RoundTrip::startPlatform()
{
    out << "Starting the local platform\n";
    out.flush();
    if (!platform.start())
        return fail(platform.failure());
    if (!trustAuthority())
        return fail(QStringLiteral("the platform's certificate authority cannot be read: ") + platform.authorityFile());
    // All that a host has to change to work with the local platform instead of the real one: the proxy and the authority.
    QNetworkProxy::setApplicationProxy(
        QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"), platform.proxyPort()));
    Web::KorvoWebLibrary::initialize();
    api.reset(new KorvoWebApi);
    return true;
}

bool RoundTrip::trustAuthority()
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    if (!configuration.addCaCertificates(platform.authorityFile()))
        return false;
    QSslConfiguration::setDefaultConfiguration(configuration);
    return true;
}

bool RoundTrip::logIn()
{
    out << "Logging in as " << USER << '\n';
    Step step(options.stallLimit);
    watchForFailures(step);
    connect(api.data(), &KorvoWebApi::tokenAuthenticationNeeded, &step, [this, &step] {
        out << "  the account asks for a second factor\n";
        step.signOfLife();
        secondFactor = SECOND_FACTOR;
        api->loginWithToken(secondFactor);
    });
    connect(api.data(), &KorvoWebApi::loginResult, &step, [&step](const QString &, KorvoWebApi::LoginResult result) {
        if (result == KorvoWebApi::LoginResult::LoginResultSuccess)
            step.succeed();
        else
            step.fail(keyOf(result));
    });
    api->login(USER, PASSWORD);
    if (!waitFor(step, QStringLiteral("login")))
        return false;
    out << "  logged in: " << api->currentUserFirstName() << ' ' << api->currentUserLastName() << ", company "
        << api->currentUserCompanyId() << '\n';
    return true;
}

bool RoundTrip::upload()
{
    out << "Uploading, " << options.simultaneousFiles << " files at a time\n";
    Step step(options.stallLimit);
    TransferView view(out, options.folder + QLatin1Char('/'), sizesByPath);
    watchForFailures(step);
    showUpload(view, step);
    connect(api.data(), &KorvoWebApi::uploadFinished, &step, &Step::succeed);
    if (startUpload() == 0)
        step.fail(QStringLiteral("it was not started"));
    return waitFor(step, view, QStringLiteral("upload"));
}

unsigned int RoundTrip::startUpload()
{
    const QUuid id = QUuid::createUuid();
    projectId = id.toString(QUuid::WithoutBraces);
    const QString name = QDir(options.folder).dirName();
    const QDateTime created = QDateTime::currentDateTimeUtc();
    // With the closing separator the names in the storage begin with the name of a file or folder, not with "/".
    const QString path = options.folder + QLatin1Char('/');
    if (options.isQuickview)
        return api->uploadQuickviewProject(id, name, path, created, options.nodeMedia);
    return api->uploadProject(projectId, name, path, created, options.simultaneousFiles);
}

void RoundTrip::showUpload(TransferView &view, Step &step)
{
    connect(api.data(), &KorvoWebApi::uploadFileProgressChanged, &step,
            [&](unsigned int, const QString &name, int percent) {
                step.signOfLife();
                view.setFileProgress(name, percent);
            });
    connect(api.data(), &KorvoWebApi::currentUploadFilesChanged, &step,
            [&](unsigned int, const QStringList &names) { view.setCurrentFiles(names); });
    connect(api.data(), &KorvoWebApi::uploadTotalProgressChanged, &step,
            [&](unsigned int, int percent) { view.setTotalProgress(percent); });
    connect(api.data(), &KorvoWebApi::filesToUploadTotalChanged, &step,
            [&](unsigned int, int count) { view.setFilesTotal(count); });
    connect(api.data(), &KorvoWebApi::completedUploadFilesChanged, &step, [&](unsigned int, int count) {
        step.signOfLife();
        view.setFilesCompleted(count);
    });
}

bool RoundTrip::listProjects()
{
    Step step(options.stallLimit);
    watchForFailures(step);
    connect(api.data(), &KorvoWebApi::queryRemoteProjectsError, &step,
            [&step](Web::Error error) { step.fail(errorText(error)); });
    connect(api.data(), &KorvoWebApi::projectInfoReceived, &step,
            [this, &step](const QList<ProjectInfo> &projects) { takeProjects(projects, step); });
    out << "Projects on the platform\n";
    api->queryRemoteProjects();
    return waitFor(step, QStringLiteral("list of projects"));
}

void RoundTrip::takeProjects(const QList<ProjectInfo> &projects, Step &step)
{
    for (const ProjectInfo &project : projects) {
        out << "    " << project.projectName() << " (" << project.projectId() << "), created "
            << project.creationDate().toString(Qt::ISODate) << ", "
            << sizeText(static_cast<qint64>(project.diskUsage())) << '\n';
        if (QUuid(project.projectId()) == QUuid(projectId))
            listedProject = project;
    }
    if (listedProject.projectId().isEmpty())
        step.fail(QStringLiteral("the uploaded project is not in it"));
    else
        step.succeed();
}

bool RoundTrip::download()
{
    out << "Downloading into " << QDir::toNativeSeparators(options.target) << ", " << options.simultaneousFiles
        << " files at a time\n";
    Step step(options.stallLimit);
    TransferView view(out, QString(), sizesByKey);
    watchForFailures(step);
    showDownload(view, step);
    const unsigned int id = api->downloadProject(listedProject.projectId(), listedProject.projectFolderName(),
                                                 options.target, options.simultaneousFiles);
    if (id == 0)
        step.fail(QStringLiteral("it was not started"));
    return waitFor(step, view, QStringLiteral("download"));
}

void RoundTrip::showDownload(TransferView &view, Step &step)
{
    connect(api.data(), &KorvoWebApi::downloadFileProgressChanged, &step,
            [&](unsigned int, const QString &name, int percent) {
                step.signOfLife();
                view.setFileProgress(name, percent);
            });
    connect(api.data(), &KorvoWebApi::currentDownloadFilesChanged, &step,
            [&](unsigned int, const QStringList &names) { view.setCurrentFiles(names); });
    connect(api.data(), &KorvoWebApi::downloadTotalProgressChanged, &step,
            [&](unsigned int, int percent) { view.setTotalProgress(percent); });
    connect(api.data(), &KorvoWebApi::filesToDownloadTotalChanged, &step,
            [&](unsigned int, int count) { view.setFilesTotal(count); });
    connect(api.data(), &KorvoWebApi::completedDownloadFilesChanged, &step, [&](unsigned int, int count) {
        step.signOfLife();
        view.setFilesCompleted(count);
    });
    // It comes as soon as no file is left to start, while others may still be on their way, and again with the last of
    // them: the counts decide.
    connect(api.data(), &KorvoWebApi::downloadFinished, &step, [&](unsigned int) {
        if (view.isComplete())
            step.succeed();
    });
}

bool RoundTrip::compare()
{
    const FolderComparison result = compareFolders(options.folder, travellers.files(), options.target);
    printComparison(result);
    return result.isWhole() || fail(QStringLiteral("%1 faults").arg(result.faults.size()));
}

void RoundTrip::printComparison(const FolderComparison &result)
{
    out << "Comparing\n  " << result.identical << " files, " << sizeText(result.identicalBytes)
        << ": identical (SHA-256)\n";
    if (result.mediaMoved > 0) {
        out << "    " << result.mediaMoved << " of them, pictures and videos, under the names by which the platform keeps them:\n"
            << "    Picture/Sec, Picture/Nod, Video/Sec and Video/Nod with the file name alone\n";
    }
    if (result.renamed > 0)
        out << "    " << result.renamed << " of them with \"/web\" cut out of the path, as in the path of every download\n";
    if (result.browserCopies > 0)
        out << "  " << result.browserCopies << " files besides: the platform's copies of node videos for browsers\n";
    for (const QString &line : result.notReturning)
        out << "  not to be expected back: " << line << '\n';
    for (const QString &line : result.faults)
        out << "  FAULT: " << line << '\n';
}

bool RoundTrip::stopEverything()
{
    api.reset();
    return platform.stop() || fail(platform.failure());
}

bool RoundTrip::timed(const QString &name, qint64 bytes, bool (RoundTrip::*stage)())
{
    QElapsedTimer clock;
    clock.start();
    const bool good = (this->*stage)();
    stages.push_back({name, clock.elapsed(), good ? bytes : 0});
    return good;
}

bool RoundTrip::waitFor(Step &step, const QString &what)
{
    out.flush();
    return step.wait() || fail(what + QStringLiteral(": ") + step.failure());
}

bool RoundTrip::waitFor(Step &step, TransferView &view, const QString &what)
{
    out.flush();
    const bool good = step.wait();
    view.finish(good);
    return good || fail(what + QStringLiteral(": ") + step.failure());
}

void RoundTrip::watchForFailures(Step &step)
{
    connect(&platform, &LocalPlatform::died, &step, &Step::fail);
    connect(api.data(), &KorvoWebApi::errorOccurred, &step, [&step](Web::Error error) { step.fail(errorText(error)); });
}

void RoundTrip::printStages()
{
    if (!stages.empty())
        out << "Time taken\n";
    for (const Stage &stage : stages) {
        out << "  " << stage.name.leftJustified(32) << seconds(stage.milliseconds).rightJustified(9)
            << rate(stage.bytes, stage.milliseconds).rightJustified(13) << '\n';
    }
    out.flush();
}

bool RoundTrip::fail(const QString &reason)
{
    out << "FAILED: " << reason << '\n';
    out.flush();
    return false;
}

} // namespace Korvo::Demo
