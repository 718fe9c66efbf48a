#pragma once

#include <QtCore/QString>

#include <functional>

namespace Korvo::Web {

/// A file or folder that lies directly in another folder.
struct FolderEntry
{
    QString name;
    bool isFolder;
    quint64 size; ///< bytes; 0 for a folder, and for a file that tells no size
};

using EntryTaker = std::function<void(const FolderEntry &)>;

/// Hands every file and folder of @p absoluteFolder to @p take, in the order of the file system. A link is what it leads
/// to. Left out are hidden entries, links that lead nowhere, and pipes, sockets and devices, also behind a link: whoever
/// opens one may wait for ever.
///
/// @return false when an entry was lost: the folder or what a link leads to may not be looked at, or a name cannot be
///         spelled as text; true when there is no such folder
bool listFolder(const QString &absoluteFolder, const EntryTaker &take);

/// listFolder() by QDirIterator, for every system. Of entries that are lost it tells only when all of them are.
bool listFolderByQt(const QString &absoluteFolder, const EntryTaker &take);

#if defined(Q_OS_UNIX) && !defined(Q_OS_DARWIN)
/// listFolder() by std::filesystem, for systems that hide what begins with a dot and nothing else.
bool listFolderByStandardLibrary(const QString &absoluteFolder, const EntryTaker &take);
#endif

} // namespace Korvo::Web
