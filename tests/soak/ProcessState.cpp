#include "soak/ProcessState.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <atomic>
#include <malloc.h>
#include <unistd.h>

// Qt's own place for tools that follow objects from their construction to their end.
extern quintptr Q_CORE_EXPORT qtHookData[];

namespace Korvo::Web::TestSupport {

namespace {

constexpr int OBJECT_ADDED_HOOK = 3;
constexpr int OBJECT_REMOVED_HOOK = 4;

std::atomic<int> objectsAlive{0};

void noteAdded(QObject *)
{
    ++objectsAlive;
}

void noteRemoved(QObject *)
{
    --objectsAlive;
}

int entriesOf(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

qint64 residentPages()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLongLong() : 0;
}

} // namespace

void countObjects()
{
    qtHookData[OBJECT_ADDED_HOOK] = quintptr(&noteAdded);
    qtHookData[OBJECT_REMOVED_HOOK] = quintptr(&noteRemoved);
}

ProcessState ProcessState::now()
{
    malloc_trim(0); // what has been given back does not count as resident
    ProcessState state;
    state.residentBytes = residentPages() * sysconf(_SC_PAGESIZE);
    const struct mallinfo2 heap = mallinfo2();
    state.heapBytes = qint64(heap.uordblks + heap.hblkhd);
    state.descriptors = entriesOf(QStringLiteral("/proc/self/fd"));
    state.threads = entriesOf(QStringLiteral("/proc/self/task"));
    state.objects = objectsAlive;
    return state;
}

QString ProcessState::words() const
{
    return QStringLiteral("%1 descriptors, %2 threads, %3 objects").arg(descriptors).arg(threads).arg(objects);
}

} // namespace Korvo::Web::TestSupport
