#include "ReturningFiles.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QHash>

#include <algorithm>

namespace Korvo::Demo {

namespace {

const QStringList VIDEO_ENDINGS = {QStringLiteral("mpg"), QStringLiteral("avi"), QStringLiteral("mp2"),
                                   QStringLiteral("wmv"), QStringLiteral("mp4"), QStringLiteral("mov")};
const QStringList PICTURE_ENDINGS = {QStringLiteral("bmp"),  QStringLiteral("jpg"), QStringLiteral("jpeg"),
                                     QStringLiteral("tiff"), QStringLiteral("emf"), QStringLiteral("exif"),
                                     QStringLiteral("png"),  QStringLiteral("wmf")};

const QString VIDEOS_OF_NODES = QStringLiteral("Video/Nod/");

QString fileNameOf(const QString &path)
{
    return path.section(QLatin1Char('/'), -1);
}

QString joined(const QString &folder, const QString &name)
{
    return folder.isEmpty() ? name : folder + QLatin1Char('/') + name;
}

// A folder that contains itself through a link would never come to an end.
bool isOwnAncestor(const QFileInfo &folder, const QStringList &ancestors)
{
    return ancestors.contains(folder.canonicalFilePath());
}

// Why the upload passes an entry over; empty when it takes it.
QString reasonToPassOver(const QFileInfo &entry)
{
    if (entry.isHidden())
        return QStringLiteral("hidden: not uploaded");
    if (!entry.isDir() && !entry.isFile())
        return QStringLiteral("neither file nor folder: not uploaded");
    const QString name = entry.fileName();
    if (entry.isFile() && name.contains(QLatin1String(".xml_bak")) && !name.contains(QLatin1String(".db3")))
        return QStringLiteral("backup copy of a description: not uploaded");
    return {};
}

} // namespace

ReturningFiles::ReturningFiles(const QString &folder, const QSet<QString> &nodeMediaPaths)
    : root(folder)
    , nodeMedia(nodeMediaPaths)
{
}

bool ReturningFiles::scan()
{
    found.clear();
    unreadable.clear();
    scanFolder(QString(), QString(), {});
    findCollisions();
    return unreadable.isEmpty();
}

void ReturningFiles::scanFolder(const QString &relativeFolder, const QString &reason, QStringList ancestors)
{
    const QFileInfo info(joined(root, relativeFolder));
    if (isOwnAncestor(info, ancestors))
        return;
    if (!info.isReadable() || !info.isExecutable()) {
        unreadable.append(info.filePath());
        return;
    }
    ancestors.append(info.canonicalFilePath());
    const QDir::Filters everything = QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System;
    const QFileInfoList entries = QDir(info.filePath()).entryInfoList(everything, QDir::Name);
    for (const QFileInfo &entry : entries) {
        const QString path = joined(relativeFolder, entry.fileName());
        // What holds for a folder holds for everything in it.
        const QString entryReason = reason.isEmpty() ? reasonToPassOver(entry) : reason;
        if (entry.isDir())
            scanFolder(path, entryReason, ancestors);
        else if (entryReason.isEmpty() && !entry.isReadable())
            unreadable.append(entry.filePath());
        else
            addFile(path, entry.size(), entryReason);
    }
}

void ReturningFiles::addFile(const QString &relativePath, qint64 bytes, const QString &reason)
{
    TravellingFile file;
    file.localPath = relativePath;
    file.bytes = bytes;
    file.reason = reason;
    if (reason.isEmpty())
        followUpload(file);
    found.push_back(file);
}

void ReturningFiles::followUpload(TravellingFile &file) const
{
    file.key = keyFor(file.localPath);
    if (file.bytes == 0)
        file.reason = QStringLiteral("empty: uploaded, but empty files are not downloaded");
    else
        followDownload(file);
}

void ReturningFiles::followDownload(TravellingFile &file) const
{
    // Where the platform keeps the copies that it makes for browsers; nobody downloads those.
    if (file.key.contains(QLatin1String("video/sec/web"))) {
        file.reason = QStringLiteral("stored where the platform keeps videos for browsers: not downloaded");
        file.isLost = true;
        return;
    }
    // The name of that folder is cut out of every other key, and with it whatever else begins with "web".
    QString path = file.key;
    path.replace(QLatin1String("/web"), QLatin1String("/"));
    file.returnsAs = QDir::cleanPath(path);
    // Downloads leave out the copies that the platform makes of section videos, but not those of node videos.
    if (file.key.startsWith(VIDEOS_OF_NODES))
        file.browserCopy = QStringLiteral("video/nod/") + fileNameOf(file.key);
}

QString ReturningFiles::keyFor(const QString &relativePath) const
{
    const QString ending = relativePath.section(QLatin1Char('.'), -1).toLower();
    const QString folder = nodeMedia.contains(relativePath) ? QStringLiteral("Nod/") : QStringLiteral("Sec/");
    if (VIDEO_ENDINGS.contains(ending))
        return QStringLiteral("Video/") + folder + fileNameOf(relativePath);
    if (PICTURE_ENDINGS.contains(ending))
        return QStringLiteral("Picture/") + folder + fileNameOf(relativePath);
    return relativePath;
}

void ReturningFiles::findCollisions()
{
    QHash<QString, QString> takenKeys;
    QHash<QString, QString> takenPaths;
    for (TravellingFile &file : found) {
        if (file.key.isEmpty())
            continue;
        QString other = takenKeys.value(file.key);
        if (other.isEmpty() && !file.returnsAs.isEmpty())
            other = takenPaths.value(file.returnsAs);
        takenKeys.insert(file.key, file.localPath);
        if (!file.returnsAs.isEmpty())
            takenPaths.insert(file.returnsAs, file.localPath);
        if (other.isEmpty())
            continue;
        file.reason = QStringLiteral("stored under the same name as \"%1\": one of the two is lost").arg(other);
        file.isLost = true;
    }
}

} // namespace Korvo::Demo
