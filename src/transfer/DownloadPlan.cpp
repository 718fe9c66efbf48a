#include "transfer/DownloadPlan.h"

#include "handles/FailureLog.h"

namespace Korvo::Web {

namespace {

// Entry types as the storage service numbers them.
const QString FOLDER_TYPE = QStringLiteral("0");
const QString FILE_TYPE = QStringLiteral("1");

constexpr int ALREADY_THERE = -1;

void logSkipped(const QString &key)
{
    logFailure(LOG_CATEGORY, QStringLiteral("Skipped a remote file, another one has the same local name: ") + key);
}

} // namespace

DownloadPlan::DownloadPlan(const DownloadTarget &downloadTarget)
    : target(downloadTarget)
{
}

DownloadPlan::Verdict DownloadPlan::add(const RemoteFileEntry &entry)
{
    if (entry.type == FOLDER_TYPE)
        return Verdict::Skip;
    if (entry.type == FILE_TYPE)
        return addFile(entry);
    logFailure(LOG_CATEGORY, QStringLiteral("Remote entry is neither a file nor a folder: ") + entry.key);
    return Verdict::Unknown;
}

DownloadPlan::Verdict DownloadPlan::addFile(const RemoteFileEntry &entry)
{
    if (entry.size == 0 || DownloadTarget::isVideoWebCopy(entry.key))
        return Verdict::Skip;
    const QString path = target.localPath(entry.key);
    if (path.isEmpty()) {
        logFailure(LOG_CATEGORY,
                   QStringLiteral("Refused a remote file, its name leads out of the download path: ") + entry.key);
        return Verdict::Refuse;
    }
    const QString heldPath = target.heldPath(entry.key, entry.size);
    // There, but under a name that this download does not write: it stands in nobody's way.
    if (!heldPath.isEmpty() && heldPath != path)
        return Verdict::Skip;
    const QString identity = target.identity(path);
    const auto claim = claims.constFind(identity);
    if (claim != claims.constEnd() && !giveWay(entry, *claim))
        return Verdict::Skip;
    const bool isThere = !heldPath.isEmpty();
    claims.insert(identity,
                  {DownloadTarget::isInPlaceOfItsOriginal(entry.key), isThere ? ALREADY_THERE : planned.size()});
    if (isThere)
        return Verdict::Skip;
    planned.append({entry.key, entry.fileName, entry.size, path});
    return Verdict::Fetch;
}

// One local file can hold one remote file only: an original goes before its web copy, else the first one stays.
bool DownloadPlan::giveWay(const RemoteFileEntry &entry, const Claim &claim)
{
    if (!claim.isWebCopy || DownloadTarget::isInPlaceOfItsOriginal(entry.key)) {
        logSkipped(entry.key);
        return false;
    }
    if (claim.index != ALREADY_THERE) {
        logSkipped(planned.at(claim.index).key);
        planned[claim.index].key.clear(); // an empty place keeps the indices of the others
        ++replaced;
    }
    return true;
}

QList<RemoteFile> DownloadPlan::files() const
{
    QList<RemoteFile> kept;
    for (const RemoteFile &file : planned) {
        if (!file.key.isEmpty())
            kept.append(file);
    }
    return kept;
}

} // namespace Korvo::Web
