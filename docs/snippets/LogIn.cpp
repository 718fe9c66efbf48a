#include "Host.h"

namespace Korvo::Web::Snippets {

void Host::logIn(const QString &user, const QString &password)
{
    connect(&api, &KorvoWebApi::tokenAuthenticationNeeded, this, [this] {
        secondFactor = askForCode(); // a member: it has to live until the result is there
        api.loginWithToken(secondFactor);
    });
    connect(&api, &KorvoWebApi::loginResult, this, [this](const QString &, KorvoWebApi::LoginResult result) {
        switch (result) {
        case KorvoWebApi::LoginResult::LoginResultSuccess:
            showMainWindow();
            break;
        case KorvoWebApi::LoginResult::LoginResultFalseCredentials:
            showLogin(tr("User name, password or code is wrong."));
            break;
        case KorvoWebApi::LoginResult::LoginResultTimeOut:
            showLogin(tr("The platform cannot be reached."));
            break;
        case KorvoWebApi::LoginResult::LoginResultCancelled:
            showLogin(QString());
            break;
        }
    });

    api.login(user, password);
}

void Host::forgetPassword(const QString &user)
{
    api.resetPassword(user);
    showLogin(tr("If %1 is known to the platform, it has sent a message.").arg(user));
}

void Host::surviveExpiry()
{
    connect(&api, &KorvoWebApi::loginExpired, this, [this] {
        if (api.anyUploadActive())
            api.pauseUpload(currentUpload);
        showLogin(tr("Your login has run out. Please log in again; the upload goes on where it was."));
    });
    connect(&api, &KorvoWebApi::loginResult, this, [this](const QString &, KorvoWebApi::LoginResult result) {
        if (result == KorvoWebApi::LoginResult::LoginResultSuccess && api.anyUploadActive())
            api.resumeUpload(currentUpload);
    });
}

void Host::listProjects()
{
    connect(&api, &KorvoWebApi::projectInfoReceived, this, [this](const QList<ProjectInfo> &projects) {
        for (const ProjectInfo &project : projects)
            addProject(project);
    });
    connect(&api, &KorvoWebApi::queryRemoteProjectsError, this, [this](Error error) {
        showError(tr("The projects cannot be listed (code %1).").arg(static_cast<int>(error)));
    });

    api.queryRemoteProjects();
}

} // namespace Korvo::Web::Snippets
