#include "FolderComparison.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QSet>

namespace Korvo::Demo {

namespace {

QString quoted(const QString &text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

// Empty when the file cannot be read to its end.
QByteArray checksum(const QString &path)
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file))
        return {};
    return hash.result();
}

// Why the two files are not the same; empty when they are.
QString difference(const QString &sent, const QString &received)
{
    const QFileInfo sentInfo(sent);
    const QFileInfo receivedInfo(received);
    if (!receivedInfo.isFile())
        return QStringLiteral("did not come back");
    if (sentInfo.size() != receivedInfo.size())
        return QStringLiteral("came back with %1 instead of %2 bytes").arg(receivedInfo.size()).arg(sentInfo.size());
    const QByteArray sentChecksum = checksum(sent);
    if (sentChecksum.isEmpty())
        return QStringLiteral("cannot be read any more");
    if (sentChecksum != checksum(received))
        return QStringLiteral("came back with other content");
    return {};
}

void compareFile(FolderComparison &result, const QString &uploadedFolder, const TravellingFile &file,
                 const QString &downloadFolder)
{
    if (file.returnsAs.isEmpty() || file.isLost) {
        QStringList &list = file.isLost ? result.faults : result.notReturning;
        list.append(quoted(file.localPath) + QStringLiteral(": ") + file.reason);
        return;
    }
    const QString found = difference(uploadedFolder + QLatin1Char('/') + file.localPath,
                                     downloadFolder + QLatin1Char('/') + file.returnsAs);
    if (!found.isEmpty()) {
        result.faults.append(quoted(file.localPath) + QLatin1Char(' ') + found);
        return;
    }
    ++result.identical;
    result.identicalBytes += file.bytes;
    if (file.key != file.localPath)
        ++result.mediaMoved;
    if (file.returnsAs != file.key)
        ++result.renamed;
}

void findStrangers(FolderComparison &result, const std::vector<TravellingFile> &files, const QString &downloadFolder)
{
    QSet<QString> expected;
    QSet<QString> copies;
    for (const TravellingFile &file : files) {
        expected.insert(file.returnsAs);
        copies.insert(file.browserCopy);
    }
    const QDir folder(downloadFolder);
    QDirIterator iterator(downloadFolder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (iterator.hasNext()) {
        const QString path = folder.relativeFilePath(iterator.next());
        if (copies.contains(path) && !expected.contains(path))
            ++result.browserCopies;
        else if (!expected.contains(path))
            result.faults.append(quoted(path) + QStringLiteral(" came back although nobody sent it"));
    }
}

} // namespace

FolderComparison compareFolders(const QString &uploadedFolder, const std::vector<TravellingFile> &files,
                                const QString &downloadFolder)
{
    FolderComparison result;
    for (const TravellingFile &file : files)
        compareFile(result, uploadedFolder, file, downloadFolder);
    findStrangers(result, files, downloadFolder);
    return result;
}

} // namespace Korvo::Demo
