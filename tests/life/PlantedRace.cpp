// A race on purpose: a thread sanitizer that does not find it would not find one in the library either, whatever it is told
// about Qt's own hand-overs. With the argument "guarded" the same two threads take turns, and there is nothing to be found.
#include <QtCore/QCoreApplication>
#include <QtCore/QMutex>
#include <QtCore/QMutexLocker>
#include <QtCore/QThread>

#include <atomic>
#include <cstdio>

namespace {

int counter = 0;
QMutex counterMutex; // guards counter, if asked to

// As in the library, the receiver is of a class of its own: events to a mere QObject pass by what tells the sanitizer of
// Qt's hand-overs.
class Receiver : public QObject
{
};

void count(bool isGuarded)
{
    if (!isGuarded) {
        ++counter;
        return;
    }
    const QMutexLocker lock(&counterMutex);
    ++counter;
}

// Relaxed, so that it orders nothing.
void waitFor(const std::atomic<bool> &flag)
{
    while (!flag.load(std::memory_order_relaxed))
        QThread::yieldCurrentThread();
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const bool isGuarded = QCoreApplication::arguments().contains(QStringLiteral("guarded"));
    QThread thread;
    Receiver worker;
    worker.moveToThread(&thread);
    thread.start();
    std::atomic<bool> posted(false);
    std::atomic<bool> counted(false);
    QMetaObject::invokeMethod(&worker, [&] {
        waitFor(posted); // else the two might still be in order by the hand-over of the call
        count(isGuarded);
        counted.store(true, std::memory_order_relaxed);
    });
    posted.store(true, std::memory_order_relaxed);
    waitFor(counted);
    count(isGuarded);
    thread.quit();
    thread.wait();
    std::printf("counted to %d\n", counter);
    return 0;
}
