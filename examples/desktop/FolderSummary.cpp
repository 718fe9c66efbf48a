#include "FolderSummary.h"

#include <QtCore/QDirIterator>
#include <QtCore/QFileInfo>
#include <QtCore/QSet>

namespace Korvo::Desktop {

namespace {

// What the library takes for pictures and videos.
bool isMedia(const QString &fileName)
{
    static const QSet<QString> endings{QStringLiteral("mpg"),  QStringLiteral("avi"), QStringLiteral("mp2"),
                                       QStringLiteral("wmv"),  QStringLiteral("mp4"), QStringLiteral("mov"),
                                       QStringLiteral("bmp"),  QStringLiteral("jpg"), QStringLiteral("jpeg"),
                                       QStringLiteral("tiff"), QStringLiteral("emf"), QStringLiteral("exif"),
                                       QStringLiteral("png"),  QStringLiteral("wmf")};
    return endings.contains(fileName.section(QLatin1Char('.'), -1).toLower());
}

bool isBackup(const QString &fileName)
{
    return fileName.contains(QLatin1String(".xml_bak")) && !fileName.contains(QLatin1String(".db3"));
}

} // namespace

FolderSummary summarise(const QString &folder, const CancelFlag &cancelled)
{
    FolderSummary summary;
    QSet<QString> mediaNames;
    QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext() && !*cancelled) {
        files.next();
        const QFileInfo info = files.fileInfo();
        if (isBackup(info.fileName()))
            continue;
        ++summary.files;
        summary.bytes += info.size();
        summary.emptyFiles += info.size() == 0 ? 1 : 0;
        summary.unreadable += info.isReadable() ? 0 : 1;
        if (!isMedia(info.fileName()))
            continue;
        summary.sameMediaNames += mediaNames.contains(info.fileName()) ? 1 : 0;
        mediaNames.insert(info.fileName());
    }
    return summary;
}

} // namespace Korvo::Desktop
