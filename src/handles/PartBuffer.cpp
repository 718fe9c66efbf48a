#include "handles/PartBuffer.h"

#include <QtCore/QMetaObject>
#include <QtCore/QWeakPointer>

#include <algorithm>
#include <utility>

namespace Korvo::Web {

QSharedPointer<PartBuffer> PartBuffer::ofThisThread()
{
    static thread_local QWeakPointer<PartBuffer> shared;
    QSharedPointer<PartBuffer> buffer = shared.toStrongRef();
    if (!buffer) {
        buffer.reset(new PartBuffer);
        shared = buffer;
    }
    return buffer;
}

bool PartBuffer::takeFor(QObject *file, const Call &callAgain)
{
    if (reader && reader != file) {
        const auto isTheFile = [file](const Waiting &entry) { return entry.file == file; };
        if (std::none_of(waiting.begin(), waiting.end(), isTheFile))
            waiting.push_back({file, callAgain});
        return false;
    }
    reader = file;
    bytes.resize(0);
    return true;
}

// All that wait are called: the first of them may have been paused meanwhile, and would not pass its turn on.
void PartBuffer::leave(const QObject *file)
{
    if (reader != file)
        return;
    reader = nullptr;
    const auto called = std::exchange(waiting, {});
    for (const Waiting &next : called) {
        if (next.file)
            QMetaObject::invokeMethod(next.file, next.callAgain, Qt::QueuedConnection);
    }
}

void PartBuffer::keepBody(QByteArray spent)
{
    if (!spent.isEmpty())
        bodies.append(std::move(spent));
}

QByteArray PartBuffer::takeBody()
{
    return bodies.isEmpty() ? QByteArray() : bodies.takeLast();
}

} // namespace Korvo::Web
