#include "transfer/DownloadTarget.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>

#include <algorithm>

namespace Korvo::Web {

namespace {

const QString WEB_FOLDER = QStringLiteral("/web");

bool isBelow(const QString &folder, const QString &path)
{
    const QString start = folder.endsWith(QLatin1Char('/')) ? folder : folder + QLatin1Char('/');
    return path.size() > start.size() && path.startsWith(start);
}

// Windows drops trailing dots and blanks, reads ":" as a drive or a stream, and keeps some names for devices.
bool isUnsafeOnWindows(const QString &part)
{
    static const QRegularExpression device(
        QStringLiteral("^(con|prn|aux|nul|com[0-9¹²³]|lpt[0-9¹²³]|conin\\$|conout\\$) *(\\..*)?$"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
    if (part.isEmpty() || part == QLatin1String(".") || part == QLatin1String(".."))
        return false;
    return part.contains(QLatin1Char(':')) || part.endsWith(QLatin1Char('.')) || part.endsWith(QLatin1Char(' '))
           || device.match(part).hasMatch();
}

bool isSafeOnWindows(const QString &path)
{
    const QStringList parts = path.split(QLatin1Char('/'));
    return std::none_of(parts.cbegin(), parts.cend(), isUnsafeOnWindows);
}

} // namespace

DownloadTarget::PathRules DownloadTarget::nativeRules()
{
#ifdef Q_OS_WIN
    return PathRules::Windows;
#else
    return PathRules::Posix;
#endif
}

DownloadTarget::DownloadTarget(const QString &downloadPath, PathRules pathRules)
    : root(QDir::cleanPath(QFileInfo(downloadPath).absoluteFilePath()))
    , rules(pathRules)
{
}

QString DownloadTarget::localForm(const QString &key)
{
    return QString(key).replace(WEB_FOLDER, QString(QDir::separator()));
}

bool DownloadTarget::isVideoWebCopy(const QString &key)
{
    return key.contains(QLatin1String("video/sec/web"));
}

bool DownloadTarget::isPictureWebCopy(const QString &key)
{
    return key.contains(QLatin1String("picture/nod/web"), Qt::CaseInsensitive)
           || key.contains(QLatin1String("picture/sec/web"), Qt::CaseInsensitive);
}

bool DownloadTarget::isInPlaceOfItsOriginal(const QString &key)
{
    return isPictureWebCopy(key) || key.contains(WEB_FOLDER + QLatin1Char('/'));
}

QString DownloadTarget::localPath(const QString &key) const
{
    const QString path = below(localForm(key));
    return !path.isEmpty() && staysBelowThroughLinks(path) ? path : QString();
}

QString DownloadTarget::heldPath(const QString &key, qint64 size) const
{
    const QString path = below(isPictureWebCopy(key) ? localForm(key) : key);
    const QFileInfo file(path);
    return !path.isEmpty() && file.isFile() && file.size() == size ? path : QString();
}

QString DownloadTarget::identity(const QString &localPath) const
{
    return rules == PathRules::Windows ? localPath.toCaseFolded() : localPath;
}

QString DownloadTarget::below(const QString &relativePath) const
{
    QString relative = relativePath;
    if (rules == PathRules::Windows)
        relative.replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (relative.contains(QChar(QChar::Null)))
        return {};
    if (rules == PathRules::Windows && !isSafeOnWindows(relative))
        return {};
    const QString path = QDir::cleanPath(root + QLatin1Char('/') + relative);
    return isBelow(root, path) ? path : QString();
}

// A junction of Windows passes for a plain folder, and its canonical path for one below the root.
bool DownloadTarget::leadsThroughJunction(QString folder) const
{
    while (isBelow(root, folder)) {
        const QFileInfo info(folder);
        if (info.isJunction())
            return true;
        folder = info.absolutePath();
    }
    return false;
}

// A link that was there before must not lead a file out of the folder.
bool DownloadTarget::staysBelowThroughLinks(const QString &path) const
{
    const QFileInfo target(path);
    if (target.isSymLink())
        return isBelow(QFileInfo(root).canonicalFilePath(), target.canonicalFilePath());
    const QString folder = target.absolutePath();
    auto known = knownFolders.constFind(folder);
    if (known == knownFolders.constEnd())
        known = knownFolders.insert(folder, folderStaysBelow(folder));
    return *known;
}

bool DownloadTarget::folderStaysBelow(const QString &wantedFolder) const
{
    QString folder = wantedFolder;
    while (folder != root && !QFileInfo::exists(folder) && !QFileInfo(folder).isSymLink())
        folder = QFileInfo(folder).absolutePath();
    if (leadsThroughJunction(folder))
        return false;
    const QString canonicalRoot = QFileInfo(root).canonicalFilePath();
    const QString canonicalFolder = QFileInfo(folder).canonicalFilePath();
    return canonicalFolder == canonicalRoot || isBelow(canonicalRoot, canonicalFolder);
}

} // namespace Korvo::Web
