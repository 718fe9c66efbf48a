#include "ProjectFolder.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

namespace Korvo::Sample {

ProjectFolder::ProjectFolder(const QString &path)
    : root(QDir::cleanPath(QFileInfo(path).absoluteFilePath()))
{
}

bool ProjectFolder::prepare(bool mustBeEmpty)
{
    const QFileInfo info(root);
    if (info.exists() && !info.isDir())
        return fail(root + QStringLiteral(" is not a folder"));
    if (!QDir().mkpath(root))
        return fail(QStringLiteral("cannot create ") + root);
    if (mustBeEmpty && !QDir(root).isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System))
        return fail(root + QStringLiteral(" is not empty (--force writes into it nevertheless)"));
    canonicalRoot = info.canonicalFilePath();
    return true;
}

bool ProjectFolder::contains(QString folder) const
{
    // What does not exist yet will lie where its nearest existing parent lies.
    while (!QFileInfo::exists(folder) && folder.contains(QLatin1Char('/')))
        folder = folder.section(QLatin1Char('/'), 0, -2);
    const QString canonical = QFileInfo(folder).canonicalFilePath();
    return canonical == canonicalRoot || canonical.startsWith(canonicalRoot + QLatin1Char('/'));
}

QString ProjectFolder::makeRoomFor(const QString &relativePath)
{
    const QFileInfo target(root + QLatin1Char('/') + relativePath);
    const QString parent = target.absolutePath();
    if (!contains(parent)) {
        fail(parent + QStringLiteral(" leads out of the project folder"));
        return {};
    }
    if (!QDir().mkpath(parent)) {
        fail(QStringLiteral("cannot create ") + parent);
        return {};
    }
    // Removed rather than overwritten: writing through a link would change a file elsewhere.
    if ((target.exists() || target.isSymLink()) && !QFile::remove(target.filePath())) {
        fail(QStringLiteral("cannot replace ") + target.filePath());
        return {};
    }
    return target.filePath();
}

bool ProjectFolder::write(const QString &relativePath, const QByteArray &bytes)
{
    const QString path = makeRoomFor(relativePath);
    if (path.isEmpty())
        return false;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush())
        return fail(QStringLiteral("cannot write ") + path + QStringLiteral(": ") + file.errorString());
    return true;
}

bool ProjectFolder::fail(const QString &reason)
{
    reasonOfFailure = reason;
    return false;
}

} // namespace Korvo::Sample
