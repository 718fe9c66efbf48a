#pragma once

#include "Outcome.h"

#include <QtCore/QHash>
#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QStringList>

class QFileInfo;

namespace Korvo::Cli {

/// The folder as an upload will find it: what will go, and what stands in the way.
class UploadFolder
{
public:
    explicit UploadFolder(const QString &path);

    /// Looks at every file; not successful when the upload would fail, or lose a file in silence.
    Outcome scan();

    /// Absolute, with the closing separator: names in the storage then begin with the name of a file or folder.
    QString path() const { return root; }
    /// Sizes by absolute path.
    const QHash<QString, qint64> &sizes() const { return sizesByPath; }
    qint64 bytes() const;
    /// Entries that are neither files nor folders; they are left out.
    const QStringList &leftOut() const { return leftOutPaths; }

private:
    void scanFolder(const QString &folder);
    void findUnnameable(const QString &folder);
    void take(const QFileInfo &entry);
    void object(const QFileInfo &entry, const QString &reason);

    const QString givenPath;
    QString root;
    QHash<QString, qint64> sizesByPath;
    QStringList leftOutPaths;
    QStringList objections;
    QStringList enteredFolders;
};

} // namespace Korvo::Cli
