#pragma once

#include "handles/BucketResponses.h"
#include "transfer/LocalUploadFile.h"

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QStringMatcher>

#include <deque>
#include <vector>

class QFileInfo;

namespace Korvo::Web {

struct FolderEntry;

/// Finds the files of a local project folder that are to be uploaded.
class ProjectFolderScan
{
public:
    /// @param remoteFiles  what the bucket holds already, by file name
    ProjectFolderScan(const QString &projectPath, const QMap<QString, RemoteFileEntry> &remoteFiles);

    /// Every file to upload, depth first, in the order of the file system. Empty when the folder does not exist.
    std::deque<LocalUploadFile> run();

    /// Folders that run() could not look into, or not at everything: what they hold is not, or not all, among the files.
    QStringList unreadableFolders() const { return unreadable; }

    /// The file as it is on the disk now.
    LocalUploadFile describe(const QFileInfo &file) const;

private:
    struct Subfolder
    {
        QString path;
        std::vector<LocalUploadFile> filesBehind; // up to the next subfolder
    };

    void scan(const QString &folder);
    bool isLeftOut(const FolderEntry &file) const;
    bool isKnownProjectFile(const FolderEntry &file) const;

    const QString root;
    const int lengthBeforeRelative;
    const QMap<QString, RemoteFileEntry> remote;
    const QStringMatcher backupMark; // prepared once: it is looked for in every name
    std::deque<LocalUploadFile> found;
    QStringList unreadable;
    QStringList enteredFolders; // canonical paths from the root down to where the scan stands
};

} // namespace Korvo::Web
