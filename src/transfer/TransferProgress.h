#pragma once

#include <QtCore/QtGlobal>

#include <limits>

namespace Korvo::Web {

/// Percent of @p total bytes, truncated toward zero; nothing to do counts as done.
inline int percentOf(double doneBytes, double totalBytes)
{
    if (totalBytes == 0)
        return 100;
    const double percent = doneBytes * 100.0 / totalBytes;
    // Sizes come from a server; what does not fit an int is cut off rather than undefined.
    return int(qBound(double(std::numeric_limits<int>::min()), percent, double(std::numeric_limits<int>::max())));
}

} // namespace Korvo::Web
