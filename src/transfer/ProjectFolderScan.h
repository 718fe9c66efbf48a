#pragma once

#include "handles/BucketResponses.h"
#include "transfer/LocalUploadFile.h"

#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <deque>
#include <vector>

class QFileInfo;

namespace Korvo::Web {

/// Finds the files of a local project folder that are to be uploaded.
class ProjectFolderScan
{
public:
    /// @param remoteFiles  what the bucket holds already, by file name
    ProjectFolderScan(const QString &projectPath, const QMap<QString, RemoteFileEntry> &remoteFiles);

    /// Every file to upload, depth first, in the order of the file system. Empty when the folder does not exist.
    std::deque<LocalUploadFile> run();

    /// Folders that run() could not look into: what they hold is not among the files.
    QStringList unreadableFolders() const { return unreadable; }

    /// The file as it is on the disk now.
    LocalUploadFile describe(const QFileInfo &file) const;

private:
    struct Subfolder
    {
        QString path;
        std::size_t filesBefore; // so many of the folder's own files come before it
    };
    struct Content
    {
        std::vector<LocalUploadFile> files;
        QVector<Subfolder> subfolders;
    };

    void scan(const QString &folder);
    void take(Content &content, std::size_t from, std::size_t to);
    Content contentOf(const QString &absoluteFolder) const;
    bool isLeftOut(const QString &path, const QFileInfo &file) const;
    bool isKnownProjectFile(const QFileInfo &file) const;
    QString relativePath(const QString &absolutePath) const;

    const QString root;
    const QString rootWithSlashes;
    const QMap<QString, RemoteFileEntry> remote;
    std::deque<LocalUploadFile> found;
    QStringList unreadable;
    QStringList enteredFolders; // canonical paths from the root down to where the scan stands
};

} // namespace Korvo::Web
