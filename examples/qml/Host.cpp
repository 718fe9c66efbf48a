#include "Host.h"

#include <QtCore/QDir>
#include <QtCore/QTimer>
#include <QtCore/QUuid>
#include <QtQml/qqml.h>

#include <chrono>

// The resource lives in a static library, where nothing refers to it by itself. Not in a namespace: that is the macro's.
static void takeWindowAlong()
{
    Q_INIT_RESOURCE(korvo_qml);
}

namespace Korvo::Qml {

using namespace std::chrono_literals;
using Web::Error;
using Web::KorvoWebApi;

namespace {

constexpr int UPLOAD_BEGUN = 1;
constexpr auto ASK_AGAIN_AFTER = 500ms;
constexpr int FILES_AT_ONCE = 3;

} // namespace

Host::Host(QObject *parent)
    : QObject(parent)
{
    connect(&facade, &KorvoWebApi::projectInfoReceived, &projectModel, &ProjectListModel::setProjects);
    connect(&facade, &KorvoWebApi::uploadFinished, this, &Host::askForConfirmation);
    connect(&facade, &KorvoWebApi::uploadStatusInfoReceived, this, &Host::takeStatuses);
}

void Host::registerTypes()
{
    takeWindowAlong();
    qmlRegisterUncreatableType<KorvoWebApi>("Korvo.Web", 1, 0, "KorvoWebApi", QStringLiteral("The host makes it."));
    qRegisterMetaType<ProjectListModel *>();
}

void Host::sendCode(const QString &newCode)
{
    code = newCode;
    facade.loginWithToken(code);
}

int Host::uploadFolder(const QUrl &folder)
{
    const QDir dir(folder.toLocalFile());
    if (!folder.isLocalFile() || !dir.exists())
        return 0;
    setUploadConfirmed(false);
    uploadedProject = QUuid::createUuid().toString(QUuid::WithoutBraces);
    // With the closing separator the names in the storage begin with the name of a file or folder, not with "/".
    const QString path = dir.absolutePath() + QLatin1Char('/');
    return static_cast<int>(
        facade.uploadProject(uploadedProject, dir.dirName(), path, QDateTime::currentDateTimeUtc(), FILES_AT_ONCE));
}

// Every file has arrived, but the notice of it is still on its way to the platform.
void Host::askForConfirmation(unsigned int)
{
    facade.queryUploadProjectStatus({uploadedProject});
}

void Host::takeStatuses(const QList<Web::UploadStatusInfo> &statuses)
{
    for (const Web::UploadStatusInfo &info : statuses) {
        if (info.projectId != uploadedProject)
            continue;
        if (info.status == UPLOAD_BEGUN)
            QTimer::singleShot(ASK_AGAIN_AFTER, this, [this] { askForConfirmation(0); });
        else
            setUploadConfirmed(true);
    }
}

void Host::setUploadConfirmed(bool confirmed)
{
    if (uploadConfirmed == confirmed)
        return;
    uploadConfirmed = confirmed;
    Q_EMIT uploadConfirmedChanged();
    if (confirmed)
        facade.queryRemoteProjects();
}

QString Host::errorText(int error)
{
    switch (static_cast<Error>(error)) {
    case Error::TimeOut:
        return tr("The platform did not answer in time.");
    case Error::Server:
        return tr("The platform reports a failure of its own. Try again later.");
    case Error::AuthenticationRequired:
        return tr("Log in again.");
    case Error::Cancelled:
        return tr("A file was cut off by the abort.");
    case Error::FileOpen:
        return tr("A local file cannot be read.");
    case Error::UnreadableLogin:
    case Error::Network:
        return tr("The platform could not be reached. Check the network and the proxy.");
    case Error::None:
    case Error::CreationDate:
    case Error::DownloadFolder:
    case Error::FileWrite:
    case Error::InvalidParameter:
        break;
    }
    return tr("Something failed (code %1).").arg(error);
}

} // namespace Korvo::Qml
