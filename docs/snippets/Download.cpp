#include "Host.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QUuid>

namespace Korvo::Web::Snippets {

void Host::download(const ProjectInfo &project, const QString &folder)
{
    // A folder of its own: an abort removes it with everything in it.
    if (!QDir(folder).isEmpty())
        return showError(tr("Please choose a new or empty folder."));
    const unsigned int id = api.downloadProject(project.projectId(), project.projectFolderName(), folder, 3);
    if (id == 0)
        return; // errorOccurred(Error::InvalidParameter) has come inside the call
}

void Host::watchDownloads()
{
    connect(&api, &KorvoWebApi::downloadTotalProgressChanged, this,
            [this](unsigned int id, int percent) { showProgress(id, percent); });
    connect(&api, &KorvoWebApi::filesToDownloadTotalChanged, this,
            [this](unsigned int id, int files) { filesToFetch[id] = files; });
    connect(&api, &KorvoWebApi::completedDownloadFilesChanged, this, [this](unsigned int id, int files) {
        if (files == filesToFetch.value(id))
            showDownloadEnd(id, true);
    });
}

void Host::fetchQuickview(const QUuid &project, const QString &folder)
{
    const QString id = project.toString(QUuid::WithoutBraces);
    api.downloadQuickviewProjectData(id, folder + QStringLiteral("/project.xml"));
    api.downloadQuickviewSurveyData(id, folder + QStringLiteral("/surveys.xml"));
    api.downloadQuickviewManholeData(id, folder + QStringLiteral("/manholes.xml"));

    connect(&api, &KorvoWebApi::allProjectsMediaDownloadLinkReceived, this,
            [this, folder](const QList<SingleMediaFileLinkData> &links) {
                for (const SingleMediaFileLinkData &link : links) {
                    // A server's text: only its last part, so that it cannot lead out of the folder.
                    const QString name = QFileInfo(link.name).fileName();
                    if (!name.isEmpty())
                        api.downloadSingleProjectFile(folder + QLatin1Char('/') + name, link.url);
                }
            });
    api.startAllProjectsMediaDownload(id);
}

} // namespace Korvo::Web::Snippets
