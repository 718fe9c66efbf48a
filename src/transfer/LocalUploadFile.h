#pragma once

#include <NQKorvoWeb/MediaNamesList.h>

#include <QtCore/QDateTime>
#include <QtCore/QString>
#include <QtCore/QStringRef>
#include <QtCore/QStringView>

namespace Korvo::Web {

/// One file of a local project folder, and what kind of media its name says it is.
struct LocalUploadFile
{
    /// @param relativeFilePath  the end of @p absoluteFilePath; any other text has to stand in memory by itself
    /// @param modificationTime  null when it is to be looked up on the disk by whoever asks for it
    LocalUploadFile(const QString &absoluteFilePath, QStringView relativeFilePath, quint64 fileSize,
                    const QDateTime &modificationTime = QDateTime());

    /// The time given, else what the disk says now. Looked up late: local time is the dearest thing about a file, and a
    /// scan of a large project would spend most of its time on it.
    QDateTime lastModified() const;

    /// The name under which the file is stored. Media are gathered in four folders by their file name, whatever their
    /// local folder; every other file keeps its relative path.
    /// @param nodeMediaFiles  relative paths of the media that belong to nodes, with or without a leading separator
    QString remoteKey(const MediaNamesList &nodeMediaFiles) const;

    /// Keeps a leading separator when the project path has no trailing one.
    QString relativePath() const { return relativePart().toString(); }

    QString absolutePath;
    quint64 size; ///< bytes
    bool isVideo = false;
    bool isPicture = false;

private:
    QStringRef relativePart() const;
    void classify();
    bool belongsToNode(const MediaNamesList &nodeMediaFiles) const;

    // Of a large project a hundred thousand wait, and half of each would be what the absolute path says already.
    int relativeLength;
    QString otherRelativePath; // where it is not the end of the absolute path
    QDateTime knownModificationTime;
};

} // namespace Korvo::Web
