#pragma once

#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <vector>

namespace Korvo::Demo {

/// What becomes of one file on its way to the platform and back.
struct TravellingFile
{
    QString localPath;    // relative to the project folder
    qint64 bytes = 0;
    QString key;          // name in the project's storage, empty when the file is not uploaded
    QString returnsAs;    // relative to the download folder, empty when it does not return
    QString browserCopy;  // where a copy that the platform made of it comes along, empty when none does
    QString reason;       // why it does not return
    bool isLost = false;  // it does not return although it has content and was uploaded
};

/// Says of every file of a project folder where it is found after an upload and a download, or why it is not.
///
/// Made from the rules of the platform, not from the library's code: a second opinion on what a transfer has to do.
class ReturningFiles
{
public:
    /// @param nodeMediaPaths  relative paths of pictures and videos that belong to nodes
    ReturningFiles(const QString &folder, const QSet<QString> &nodeMediaPaths);

    /// False when something in the folder cannot be read; problems() tells what.
    bool scan();

    const std::vector<TravellingFile> &files() const { return found; }
    QStringList problems() const { return unreadable; }

private:
    void scanFolder(const QString &relativeFolder, const QString &reason, QStringList ancestors);
    void addFile(const QString &relativePath, qint64 bytes, const QString &reason);
    void followUpload(TravellingFile &file) const;
    void followDownload(TravellingFile &file) const;
    void findCollisions();
    QString keyFor(const QString &relativePath) const;

    QString root;
    QSet<QString> nodeMedia;
    std::vector<TravellingFile> found;
    QStringList unreadable;
};

} // namespace Korvo::Demo
