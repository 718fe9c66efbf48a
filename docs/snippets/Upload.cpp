#include "Host.h"

#include <QtCore/QDateTime>
#include <QtCore/QFileInfo>
#include <QtCore/QUuid>

namespace Korvo::Web::Snippets {

void Host::upload(const QString &id, const QString &name, const QString &folder)
{
    if (!QFileInfo(folder).isDir())
        return showError(tr("There is no such folder."));
    const QDateTime created = QDateTime::currentDateTime();
    currentUpload = api.uploadProject(id, name, folder + QLatin1Char('/'), created, 3);
    if (currentUpload == 0)
        return; // errorOccurred(Error::InvalidParameter) has come inside the call
    projectId = id;
}

void Host::watchUploads()
{
    connect(&api, &KorvoWebApi::uploadTotalProgressChanged, this,
            [this](unsigned int id, int percent) { showProgress(id, percent); });
    // The end comes first, then either uploadFinished() or errorOccurred(): so the error finds the upload it belongs to.
    connect(&api, &KorvoWebApi::uploadActiveChanged, this, [this](unsigned int id, bool active) {
        if (!active)
            endedUpload = id;
    });
    connect(&api, &KorvoWebApi::uploadFinished, this, [this](unsigned int id) {
        endedUpload = 0;
        showUploadEnd(id, true);
        api.queryUploadProjectStatus({projectId}); // its answer proves that the last notice has left
    });
    connect(&api, &KorvoWebApi::errorOccurred, this, [this] {
        if (endedUpload != 0)
            showUploadEnd(endedUpload, false);
        endedUpload = 0;
    });
}

void Host::control(unsigned int upload)
{
    api.pauseUpload(upload);  // what is on its way arrives, nothing new starts
    api.resumeUpload(upload); // goes on
    api.abortUpload(upload);  // ends it and tells the web server
}

void Host::uploadOtherKinds(const QString &folder, const QDateTime &created)
{
    // A project of the import tool: its id is made from the name.
    api.uploadQZProject(tr("Main Street"), folder, created);

    // A Quickview project: these pictures and videos belong to manholes, all others to sections.
    const MediaNamesList manholes{QStringLiteral("Pictures/M17.jpg"), QStringLiteral("Videos/M17.mp4")};
    api.uploadQuickviewProject(QUuid::createUuid(), tr("Main Street"), folder, created, manholes);
}

void Host::learnWhatBecame()
{
    connect(&api, &KorvoWebApi::uploadStatusInfoReceived, this, [](const QList<UploadStatusInfo> &statuses) {
        for (const UploadStatusInfo &info : statuses)
            qInfo("%s: %d", qUtf8Printable(info.projectId), info.status);
    });
    api.queryUploadProjectStatus({projectId});
}

} // namespace Korvo::Web::Snippets
