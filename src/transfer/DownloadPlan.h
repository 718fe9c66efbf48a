#pragma once

#include "handles/BucketResponses.h"
#include "transfer/DownloadTarget.h"

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>

namespace Korvo::Web {

/// A file to fetch from a bucket.
struct RemoteFile
{
    QString key;
    QString name;
    qint64 size = 0; ///< bytes, by the listing
    QString localPath;
};

/// Decides, entry by entry of a listing, which files of a bucket are fetched, and where each is written.
class DownloadPlan
{
public:
    enum class Verdict {
        Fetch,   ///< taken into the plan
        Skip,    ///< a folder, an empty file, a copy that is not wanted, or a file that is there already
        Unknown, ///< neither a file nor a folder
        Refuse   ///< its name would lead out of the download folder
    };

    explicit DownloadPlan(const DownloadTarget &downloadTarget);

    Verdict add(const RemoteFileEntry &entry);

    /// The files to fetch, in the order of the listing.
    QList<RemoteFile> files() const;

    /// Names taken out again because the original of a web copy came later in the listing.
    int replacedCopies() const { return replaced; }

private:
    struct Claim
    {
        bool isWebCopy;
        int index; // into planned, or -1 when the file is there already
    };

    Verdict addFile(const RemoteFileEntry &entry);
    bool giveWay(const RemoteFileEntry &entry, const Claim &claim);

    DownloadTarget target;
    QList<RemoteFile> planned;
    QHash<QString, Claim> claims; // by the identity of the local path
    int replaced = 0;
};

} // namespace Korvo::Web
