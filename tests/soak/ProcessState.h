#pragma once

#include <QtCore/QString>
#include <QtCore/QtGlobal>

namespace Korvo::Web::TestSupport {

/// What a process holds at one moment. Linux only, with the GNU library's account of the heap.
struct ProcessState
{
    qint64 residentBytes = 0;
    qint64 heapBytes = 0; ///< handed out by the allocator and not given back
    int descriptors = 0;
    int threads = 0;
    int objects = 0; ///< QObjects alive

    static ProcessState now();

    /// Everything that can be counted exactly is what it was then.
    bool holdsNoMoreThan(const ProcessState &before) const
    {
        return descriptors <= before.descriptors && threads <= before.threads && objects <= before.objects;
    }

    QString words() const;
};

/// From here on QObjects are counted; to be called before the first one is made.
void countObjects();

} // namespace Korvo::Web::TestSupport
