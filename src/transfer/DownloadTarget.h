#pragma once

#include <QtCore/QHash>
#include <QtCore/QString>

namespace Korvo::Web {

/// Maps the keys of a bucket to files below one download folder. Keys come from a server and are hostile until checked.
///
/// Made for one listing: what it has found out about a folder on the disk it does not look up again.
class DownloadTarget
{
public:
    /// What a path may hold depends on who reads it.
    enum class PathRules { Posix, Windows };

    static PathRules nativeRules();

    explicit DownloadTarget(const QString &downloadPath, PathRules pathRules = nativeRules());

    /// The key with the "/web" of media copies taken out of its folders.
    static QString localForm(const QString &key);
    /// A copy that the platform has made of a video; never downloaded.
    static bool isVideoWebCopy(const QString &key);
    /// A copy that the platform has made of a picture; downloaded in place of a picture that is not there.
    static bool isPictureWebCopy(const QString &key);
    /// Any copy made by the platform that is stored where its original belongs.
    static bool isInPlaceOfItsOriginal(const QString &key);

    /// Absolute path of the file that @p key is stored in; empty when it would not lie below the download folder.
    QString localPath(const QString &key) const;

    /// Where the key's file lies already, with this size in bytes; empty when it does not.
    QString heldPath(const QString &key, qint64 size) const;
    bool holds(const QString &key, qint64 size) const { return !heldPath(key, size).isEmpty(); }

    /// Same for two paths that name one file, as far as their letters tell.
    QString identity(const QString &localPath) const;

private:
    QString below(const QString &relativePath) const;
    bool leadsThroughJunction(QString folder) const;
    bool staysBelowThroughLinks(const QString &path) const;
    bool folderStaysBelow(const QString &folder) const;

    QString root;                              // absolute and clean
    mutable QHash<QString, bool> knownFolders; // whether each stays below; a listing names few of them many times
    PathRules rules;
};

} // namespace Korvo::Web
