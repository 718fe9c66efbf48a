#include <NQKorvoWeb/KorvoWebApi.h>

#include "api/KorvoWebApiPrivate.h"

namespace Korvo::Web {

namespace {

void relaySignals(const KorvoWebApiPrivate *from, const KorvoWebApi *to)
{
    using From = KorvoWebApiPrivate;
    using To = KorvoWebApi;
    QObject::connect(from, &From::uploadFileProgressChanged, to, &To::uploadFileProgressChanged);
    QObject::connect(from, &From::currentUploadFilesChanged, to, &To::currentUploadFilesChanged);
    QObject::connect(from, &From::uploadTotalProgressChanged, to, &To::uploadTotalProgressChanged);
    QObject::connect(from, &From::filesToUploadTotalChanged, to, &To::filesToUploadTotalChanged);
    QObject::connect(from, &From::completedUploadFilesChanged, to, &To::completedUploadFilesChanged);
    QObject::connect(from, &From::uploadActiveChanged, to, &To::uploadActiveChanged);
    QObject::connect(from, &From::anyUploadActiveChanged, to, &To::anyUploadActiveChanged);
    QObject::connect(from, &From::uploadFinished, to, &To::uploadFinished);
    QObject::connect(from, &From::downloadFileProgressChanged, to, &To::downloadFileProgressChanged);
    QObject::connect(from, &From::currentDownloadFilesChanged, to, &To::currentDownloadFilesChanged);
    QObject::connect(from, &From::downloadTotalProgressChanged, to, &To::downloadTotalProgressChanged);
    QObject::connect(from, &From::filesToDownloadTotalChanged, to, &To::filesToDownloadTotalChanged);
    QObject::connect(from, &From::completedDownloadFilesChanged, to, &To::completedDownloadFilesChanged);
    QObject::connect(from, &From::downloadActiveChanged, to, &To::downloadActiveChanged);
    QObject::connect(from, &From::anyDownloadActiveChanged, to, &To::anyDownloadActiveChanged);
    QObject::connect(from, &From::downloadFinished, to, &To::downloadFinished);
    QObject::connect(from, &From::currentUserChanged, to, &To::currentUserChanged);
    QObject::connect(from, &From::loginResult, to, &To::loginResult);
    QObject::connect(from, &From::loginStatusChanged, to, &To::loginStatusChanged);
    QObject::connect(from, &From::projectInfoReceived, to, &To::projectInfoReceived);
    QObject::connect(from, &From::uploadStatusInfoReceived, to, &To::uploadStatusInfoReceived);
    QObject::connect(from, &From::errorOccurred, to, &To::errorOccurred);
    QObject::connect(from, &From::queryRemoteProjectsError, to, &To::queryRemoteProjectsError);
    QObject::connect(from, &From::singleFileDownloadLinkReceived, to, &To::singleFileDownloadLinkReceived);
    QObject::connect(from, &From::allProjectsMediaDownloadLinkReceived, to, &To::allProjectsMediaDownloadLinkReceived);
    QObject::connect(from, &From::loginExpired, to, &To::loginExpired);
    QObject::connect(from, &From::tokenAuthenticationNeeded, to, &To::tokenAuthenticationNeeded);
}

} // namespace

KorvoWebApi::KorvoWebApi(QObject *parent)
    : QObject(parent)
    , d(new KorvoWebApiPrivate)
{
    qRegisterMetaType<Korvo::Web::Error>("Korvo::Web::Error");
    relaySignals(d.data(), this);
}

KorvoWebApi::~KorvoWebApi() = default;

void KorvoWebApi::login(const QString &user, const QString &password)
{
    d->login(user, password);
}

void KorvoWebApi::cancelLogin()
{
    d->cancelLogin();
}

void KorvoWebApi::logout()
{
    d->logout();
}

void KorvoWebApi::resetPassword(const QString &user)
{
    d->resetPassword(user);
}

void KorvoWebApi::loginWithToken(const QString &tokenCode)
{
    d->loginWithToken(tokenCode);
}

void KorvoWebApi::queryRemoteProjects()
{
    d->queryRemoteProjects();
}

unsigned int KorvoWebApi::downloadProject(const QString &projectId, const QString &webProjectFolderName,
                                          const QString &downloadPath, int maxSimultaneousDownloads)
{
    return d->downloadProject(projectId, webProjectFolderName, downloadPath, maxSimultaneousDownloads);
}

unsigned int KorvoWebApi::downloadQuickviewProjectData(const QString &projectId, const QString &outputFilePath)
{
    return d->downloadQuickviewProjectData(projectId, outputFilePath);
}

unsigned int KorvoWebApi::downloadQuickviewSurveyData(const QString &projectId, const QString &outputFilePath)
{
    return d->downloadQuickviewSurveyData(projectId, outputFilePath);
}

unsigned int KorvoWebApi::downloadQuickviewManholeData(const QString &projectId, const QString &outputFilePath)
{
    return d->downloadQuickviewManholeData(projectId, outputFilePath);
}

unsigned int KorvoWebApi::downloadSingleProjectFile(const QString &filePath, const QString &url)
{
    return d->downloadSingleProjectFile(filePath, url);
}

void KorvoWebApi::abortDownload(unsigned int id)
{
    d->abortDownload(id);
}

void KorvoWebApi::pauseDownload(unsigned int id)
{
    d->pauseDownload(id);
}

void KorvoWebApi::resumeDownload(unsigned int id)
{
    d->resumeDownload(id);
}

unsigned int KorvoWebApi::uploadProject(const QString &projectId, const QString &projectName,
                                        const QString &projectPath, const QDateTime &projectCreationDate,
                                        int maxSimultaneousUploads)
{
    return d->uploadProject(projectId, projectName, projectPath, projectCreationDate, maxSimultaneousUploads);
}

unsigned int KorvoWebApi::uploadQZProject(const QString &projectName, const QString &projectPath,
                                          const QDateTime &projectCreationDate)
{
    return d->uploadQZProject(projectName, projectPath, projectCreationDate);
}

unsigned int KorvoWebApi::uploadQuickviewProject(const QUuid &projectId, const QString &projectName,
                                                 const QString &projectPath, const QDateTime &projectCreationDate,
                                                 MediaNamesList manholesMedia)
{
    return d->uploadQuickviewProject(projectId, projectName, projectPath, projectCreationDate, manholesMedia);
}

void KorvoWebApi::abortUpload(unsigned int id)
{
    d->abortUpload(id);
}

void KorvoWebApi::pauseUpload(unsigned int id)
{
    d->pauseUpload(id);
}

void KorvoWebApi::resumeUpload(unsigned int id)
{
    d->resumeUpload(id);
}

void KorvoWebApi::queryUploadProjectStatus(const QList<QString> &projectId)
{
    d->queryUploadProjectStatus(projectId);
}

void KorvoWebApi::startSingleProjectFileDownload(const QUuid &projectId, const QString &fileName)
{
    d->startSingleProjectFileDownload(projectId, fileName);
}

void KorvoWebApi::startAllProjectsMediaDownload(const QString &projectId)
{
    d->startAllProjectsMediaDownload(projectId);
}

QString KorvoWebApi::currentUser() const
{
    return d->currentUser();
}

QString KorvoWebApi::currentUserFirstName() const
{
    return d->currentUserFirstName();
}

QString KorvoWebApi::currentUserLastName() const
{
    return d->currentUserLastName();
}

QString KorvoWebApi::currentUserCompanyId() const
{
    return d->currentUserCompanyId();
}

KorvoWebApi::UserRole KorvoWebApi::currentUserRole() const
{
    return d->currentUserRole();
}

KorvoWebApi::LoginStatus KorvoWebApi::loginStatus() const
{
    return d->loginStatus();
}

bool KorvoWebApi::anyUploadActive() const
{
    return d->anyUploadActive();
}

bool KorvoWebApi::anyDownloadActive() const
{
    return d->anyDownloadActive();
}

} // namespace Korvo::Web
