#include "transfer/ProjectFolderScan.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFileInfo>

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

} // namespace

ProjectFolderScan::ProjectFolderScan(const QString &projectPath, const QMap<QString, RemoteFileEntry> &remoteFiles)
    : root(projectPath)
    , rootWithSlashes(QDir::fromNativeSeparators(projectPath))
    , remote(remoteFiles)
{
}

std::deque<LocalUploadFile> ProjectFolderScan::run()
{
    found.clear();
    unreadable.clear();
    scan(root);
    return std::exchange(found, {});
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
    Content content = contentOf(dir.absolutePath());
    std::size_t taken = 0;
    for (const Subfolder &subfolder : qAsConst(content.subfolders)) {
        take(content, taken, subfolder.filesBefore);
        taken = subfolder.filesBefore;
        scan(subfolder.path);
    }
    take(content, taken, content.files.size());
    enteredFolders.removeLast();
}

void ProjectFolderScan::take(Content &content, std::size_t from, std::size_t to)
{
    const auto files = content.files.begin();
    std::move(files + std::ptrdiff_t(from), files + std::ptrdiff_t(to), std::back_inserter(found));
}

// Read to the end before any subfolder is entered: a deep tree would keep too many folders open.
ProjectFolderScan::Content ProjectFolderScan::contentOf(const QString &absoluteFolder) const
{
    Content content;
    QDirIterator entries(absoluteFolder, QDir::AllEntries | QDir::NoDotAndDotDot);
    while (entries.hasNext()) {
        const QString path = entries.next();
        const QFileInfo entry = entries.fileInfo();
        if (entry.isDir())
            content.subfolders.append({path, content.files.size()});
        else if (!isLeftOut(path, entry))
            content.files.emplace_back(path, relativePath(path), quint64(entry.size()));
    }
    return content;
}

// A database is never left out, whatever else its name says.
bool ProjectFolderScan::isLeftOut(const QString &path, const QFileInfo &file) const
{
    const QStringRef name = path.midRef(path.lastIndexOf(QLatin1Char('/')) + 1);
    if (name.contains(DATABASE_MARK))
        return false;
    return name.contains(BACKUP_MARK) || (name == PROJECT_FILE && isKnownProjectFile(file));
}

// The project's description goes up again only when it is new or its size has changed; everything else always does.
bool ProjectFolderScan::isKnownProjectFile(const QFileInfo &file) const
{
    const auto known = remote.constFind(PROJECT_FILE);
    return known != remote.constEnd() && known->size == file.size();
}

LocalUploadFile ProjectFolderScan::describe(const QFileInfo &file) const
{
    const QString absolutePath = file.absoluteFilePath();
    return LocalUploadFile(absolutePath, relativePath(absolutePath), quint64(file.size()));
}

QString ProjectFolderScan::relativePath(const QString &absolutePath) const
{
    if (absolutePath.startsWith(rootWithSlashes, PATH_CASE))
        return absolutePath.mid(root.size());
    // A project path that is relative, or written in a roundabout way.
    return absolutePath.mid(QDir(root).absolutePath().size());
}

} // namespace Korvo::Web
