#include "client/ProbedApplication.h"

#include "support/Figures.h"

#include <QtCore/QEvent>
#include <QtCore/QMetaObject>
#include <QtCore/QThread>

#include <cstring>

namespace Korvo::Bench {

// The worker's first call tells its thread; events before that reach it where it was made.
bool ProbedApplication::isOnWorkerThread(QObject *receiver, const QEvent *event)
{
    if (!workerObject && event->type() == QEvent::MetaCall
        && std::strcmp(receiver->metaObject()->className(), "Korvo::Web::KorvoWebApiWorker") == 0) {
        workerThread = QThread::currentThread();
        workerObject = receiver;
    }
    return QThread::currentThread() == workerThread;
}

// An event may wait for others in a loop of its own; their time is not its time.
bool ProbedApplication::notify(QObject *receiver, QEvent *event)
{
    if (!isOnWorkerThread(receiver, event))
        return QCoreApplication::notify(receiver, event);
    const double nestedOutside = nestedSeconds;
    nestedSeconds = 0;
    const double before = threadSeconds();
    const bool result = QCoreApplication::notify(receiver, event);
    const double seconds = threadSeconds() - before;
    if (recording)
        longest = qMax(longest.load(), seconds - nestedSeconds);
    nestedSeconds = nestedOutside + seconds;
    return result;
}

} // namespace Korvo::Bench
