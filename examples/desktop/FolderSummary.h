#pragma once

#include <QtCore/QString>

#include <atomic>
#include <memory>

namespace Korvo::Desktop {

/// What an upload of a folder will carry, and what the user should know beforehand.
struct FolderSummary
{
    int files = 0;
    qint64 bytes = 0;
    int emptyFiles = 0;     ///< these are uploaded, but never downloaded again
    int sameMediaNames = 0; ///< pictures and videos are stored by their names: one replaces the other
    int unreadable = 0;
};

using CancelFlag = std::shared_ptr<std::atomic<bool>>;

/// Looks at every file below @p folder, on any thread; ends early when @p cancelled becomes true.
FolderSummary summarise(const QString &folder, const CancelFlag &cancelled);

} // namespace Korvo::Desktop
