#include "transfer/ProjectFolderScan.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

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

} // namespace

ProjectFolderScan::ProjectFolderScan(const QString &projectPath, const QMap<QString, RemoteFileEntry> &remoteFiles)
    : root(projectPath)
    , remote(remoteFiles)
{
}

QList<LocalUploadFile> ProjectFolderScan::run()
{
    found.clear();
    unreadable.clear();
    scan(root);
    return found;
}

void ProjectFolderScan::scan(const QString &folder)
{
    const QDir dir(folder);
    if (folder.isEmpty() || !dir.exists()) // an empty path would be the host's current folder
        return;
    if (!dir.isReadable())
        unreadable.append(folder);
    const QString canonical = dir.canonicalPath();
    if (enteredFolders.contains(canonical)) // a link that leads back up
        return;
    enteredFolders.append(canonical);
    const QFileInfoList entries = dir.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::NoSort);
    for (const QFileInfo &entry : entries) {
        if (entry.isDir())
            scan(entry.absoluteFilePath());
        else if (!isLeftOut(entry))
            found.append(describe(entry));
    }
    enteredFolders.removeLast();
}

// A database is never left out, whatever else its name says.
bool ProjectFolderScan::isLeftOut(const QFileInfo &file) const
{
    const QString name = file.fileName();
    if (name.contains(DATABASE_MARK))
        return false;
    return isKnownProjectFile(file) || name.contains(BACKUP_MARK);
}

// The project's description goes up again only when it is new or its size has changed; everything else always does.
bool ProjectFolderScan::isKnownProjectFile(const QFileInfo &file) const
{
    const QString name = file.fileName();
    const auto known = remote.constFind(name);
    return name == PROJECT_FILE && known != remote.constEnd() && known->size == file.size();
}

LocalUploadFile ProjectFolderScan::describe(const QFileInfo &file) const
{
    const QString absolutePath = file.absoluteFilePath();
    return LocalUploadFile(absolutePath, relativePath(absolutePath), quint64(file.size()), file.lastModified());
}

QString ProjectFolderScan::relativePath(const QString &absolutePath) const
{
    if (absolutePath.startsWith(QDir::fromNativeSeparators(root), PATH_CASE))
        return absolutePath.mid(root.size());
    // A project path that is relative, or written in a roundabout way.
    return absolutePath.mid(QDir(root).absolutePath().size());
}

} // namespace Korvo::Web
