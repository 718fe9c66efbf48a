#pragma once

#include <NQKorvoWeb/KorvoWebApi.h>

#include <QtCore/QMap>
#include <QtCore/QObject>
#include <QtCore/QString>

namespace Korvo::Web::Snippets {

/// What the snippets of the guide take for granted: a host with a facade, and a user interface that is not shown.
class Host : public QObject
{
public:
    void logIn(const QString &user, const QString &password);
    void forgetPassword(const QString &user);
    void surviveExpiry();
    void listProjects();
    void upload(const QString &id, const QString &name, const QString &folder);
    void watchUploads();
    void control(unsigned int upload);
    void uploadOtherKinds(const QString &folder, const QDateTime &created);
    void learnWhatBecame();
    void download(const ProjectInfo &project, const QString &folder);
    void watchDownloads();
    void fetchQuickview(const QUuid &project, const QString &folder);
    void reportErrors();
    void useProxy();
    bool trustAuthority(const QString &file);
    void keepLog();
    void useFromAnotherThread();
    void shutDown();

private:
    QString askForCode();
    void showLogin(const QString &reason);
    void showMainWindow();
    void addProject(const ProjectInfo &project);
    void showProgress(unsigned int id, int percent);
    void showError(const QString &text);
    void showUploadEnd(unsigned int id, bool good);
    void showDownloadEnd(unsigned int id, bool whole);

    KorvoWebApi api;
    QString secondFactor;
    QString projectId;
    QMap<unsigned int, int> filesToFetch;
    unsigned int currentUpload = 0;
    unsigned int endedUpload = 0;
};

} // namespace Korvo::Web::Snippets
