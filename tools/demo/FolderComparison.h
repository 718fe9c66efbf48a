#pragma once

#include "ReturningFiles.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <vector>

namespace Korvo::Demo {

/// Compares what was uploaded with what came back, byte for byte.
struct FolderComparison
{
    int identical = 0;
    qint64 identicalBytes = 0;
    int mediaMoved = 0;        // identical, but in one of the folders for pictures and videos
    int renamed = 0;           // identical, but with "/web" cut out of the path
    int browserCopies = 0;     // made by the platform of what was sent
    QStringList notReturning;  // by design, with the reason
    QStringList faults;        // missing, different, lost, or there although nobody sent it

    bool isWhole() const { return faults.isEmpty(); }
};

FolderComparison compareFolders(const QString &uploadedFolder, const std::vector<TravellingFile> &files,
                                const QString &downloadFolder);

} // namespace Korvo::Demo
