#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace Korvo::Sample {

/// The folder that the sample is written into, and the only place that is written to.
class ProjectFolder
{
public:
    explicit ProjectFolder(const QString &path);

    /// Creates the folder. False, with failure() set, when it cannot be created, or holds something while @p mustBeEmpty.
    bool prepare(bool mustBeEmpty);

    /// The absolute path for a file that is about to be written: its folder exists and nothing stands in its place.
    /// Empty, with failure() set, when that cannot be had, or when a link on the way leads out of the folder.
    QString makeRoomFor(const QString &relativePath);

    bool write(const QString &relativePath, const QByteArray &bytes);

    /// Keeps @p reason, and returns false for the caller to return.
    bool fail(const QString &reason);
    QString failure() const { return reasonOfFailure; }

private:
    bool contains(QString folder) const;

    QString root;
    QString canonicalRoot;
    QString reasonOfFailure;
};

} // namespace Korvo::Sample
