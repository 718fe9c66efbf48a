#pragma once

#include <NQKorvoWeb/MediaNamesList.h>

#include <QtCore/QDateTime>
#include <QtCore/QString>

namespace Korvo::Web {

/// One file of a local project folder, and what kind of media its name says it is.
struct LocalUploadFile
{
    /// @param modificationTime  null when it is to be looked up on the disk by whoever asks for it
    LocalUploadFile(const QString &absoluteFilePath, const QString &relativeFilePath, quint64 fileSize,
                    const QDateTime &modificationTime = QDateTime());

    /// The time given, else what the disk says now. Looked up late: local time is the dearest thing about a file, and a
    /// scan of a large project would spend most of its time on it.
    QDateTime lastModified() const;

    /// The name under which the file is stored. Media are gathered in four folders by their file name, whatever their
    /// local folder; every other file keeps its relative path.
    /// @param nodeMediaFiles  relative paths of the media that belong to nodes, with or without a leading separator
    QString remoteKey(const MediaNamesList &nodeMediaFiles) const;

    QString absolutePath;
    QString relativePath; ///< keeps a leading separator when the project path has no trailing one
    quint64 size;         ///< bytes
    bool isVideo = false;
    bool isPicture = false;

private:
    void classify();
    bool belongsToNode(const MediaNamesList &nodeMediaFiles) const;

    QDateTime knownModificationTime;
};

} // namespace Korvo::Web
