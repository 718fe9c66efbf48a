#include "transfer/ProjectFolderScan.h"

#include "transfer/FolderListing.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QStringView>

#include <algorithm>
#include <iterator>
#include <utility>

namespace Korvo::Web {

namespace {

const QString DATABASE_MARK = QStringLiteral(".db3");
const QString BACKUP_MARK = QStringLiteral(".xml_bak");
#ifdef Q_OS_WIN
constexpr Qt::CaseSensitivity PATH_CASE = Qt::CaseInsensitive;
#else
constexpr Qt::CaseSensitivity PATH_CASE = Qt::CaseSensitive;
#endif

const QString PROJECT_FILE = QStringLiteral("project.xml");

/// So many characters of the absolute path of each file stand before its relative one.
int lengthBeforeRelativePaths(const QString &root)
{
    const QString absoluteRoot = QDir(root).absolutePath();
    const QString inRoot = absoluteRoot.endsWith(QLatin1Char('/')) ? absoluteRoot : absoluteRoot + QLatin1Char('/');
    // Else the project path is relative, or written in a roundabout way.
    return inRoot.startsWith(QDir::fromNativeSeparators(root), PATH_CASE) ? root.size() : absoluteRoot.size();
}

} // namespace

ProjectFolderScan::ProjectFolderScan(const QString &projectPath, const QMap<QString, RemoteFileEntry> &remoteFiles)
    : root(projectPath)
    , lengthBeforeRelative(lengthBeforeRelativePaths(projectPath))
    , remote(remoteFiles)
    , backupMark(BACKUP_MARK)
{
}

std::deque<LocalUploadFile> ProjectFolderScan::run()
{
    found.clear();
    unreadable.clear();
    if (!root.isEmpty() && QDir(root).exists()) // an empty path would be the host's current folder
        scan(root);
    return std::exchange(found, {});
}

void ProjectFolderScan::scan(const QString &folder)
{
    const QDir dir(folder);
    const QString canonical = dir.canonicalPath();
    if (enteredFolders.contains(canonical)) // a link that leads back up
        return;
    enteredFolders.append(canonical);
    // Read to the end before any subfolder is entered: a deep tree would keep too many folders open.
    std::vector<Subfolder> subfolders;
    const QString path = dir.absolutePath();
    const QString place = path.endsWith(QLatin1Char('/')) ? path : path + QLatin1Char('/');
    const bool isWhole = listFolder(path, [&](const FolderEntry &entry) {
        if (entry.isFolder)
            subfolders.push_back({place + entry.name, {}});
        else if (isLeftOut(entry))
            return;
        else if (subfolders.empty())
            found.emplace_back(place, entry.name, lengthBeforeRelative, entry.size);
        else
            subfolders.back().filesBehind.emplace_back(place, entry.name, lengthBeforeRelative, entry.size);
    });
    if (!isWhole)
        unreadable.append(folder);
    for (Subfolder &subfolder : subfolders) {
        scan(subfolder.path);
        std::move(subfolder.filesBehind.begin(), subfolder.filesBehind.end(), std::back_inserter(found));
    }
    enteredFolders.removeLast();
}

// A database is never left out, whatever else its name says.
bool ProjectFolderScan::isLeftOut(const FolderEntry &file) const
{
    if (backupMark.indexIn(file.name) >= 0)
        return !file.name.contains(DATABASE_MARK);
    return file.name == PROJECT_FILE && isKnownProjectFile(file);
}

// The project's description goes up again only when it is new or its size has changed; everything else always does.
bool ProjectFolderScan::isKnownProjectFile(const FolderEntry &file) const
{
    const auto known = remote.constFind(PROJECT_FILE);
    return known != remote.constEnd() && quint64(known->size) == file.size;
}

LocalUploadFile ProjectFolderScan::describe(const QFileInfo &file) const
{
    const QString absolutePath = file.absoluteFilePath();
    return LocalUploadFile(absolutePath, absolutePath.midRef(lengthBeforeRelative), quint64(file.size()));
}

} // namespace Korvo::Web
