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

    /// @param place   the absolute path of the folder, with a slash at its end; files of one folder share its text
    /// @param lengthBeforeRelative  of the absolute path: what follows is the relative one
    LocalUploadFile(const QString &place, const QString &name, int lengthBeforeRelative, quint64 fileSize);

    /// The time given, else what the disk says now. Looked up late: local time is the dearest thing about a file, and a
    /// scan of a large project would spend most of its time on it.
    QDateTime lastModified() const;

    /// The name under which the file is stored. Media are gathered in four folders by their file name, whatever their
    /// local folder; every other file keeps its relative path.
    /// @param nodeMediaFiles  relative paths of the media that belong to nodes, with or without a leading separator
    QString remoteKey(const MediaNamesList &nodeMediaFiles) const;

    QString absolutePath() const { return folder + fileName; }
    /// Keeps a leading separator when the project path has no trailing one.
    QString relativePath() const;

    quint64 size; ///< bytes
    bool isVideo = false;
    bool isPicture = false;

private:
    void classify();
    bool belongsToNode(const MediaNamesList &nodeMediaFiles) const;

    // Of a large project a hundred thousand wait, and most of each would be what another one says already.
    QString folder; // with a slash at its end
    QString fileName;
    int relativeStart;         // in the absolute path
    QString otherRelativePath; // where it is not the end of the absolute path
    QDateTime knownModificationTime;
};

} // namespace Korvo::Web
