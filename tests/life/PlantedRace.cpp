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

void count(bool isGuarded)
{
    if (!isGuarded) {
        ++counter;
        return;
    }
    const QMutexLocker lock(&counterMutex);
    ++counter;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const bool isGuarded = QCoreApplication::arguments().contains(QStringLiteral("guarded"));
    QThread thread;
    QObject worker;
    worker.moveToThread(&thread);
    thread.start();
    std::atomic<bool> begun(false); // relaxed, so that it orders nothing
    QMetaObject::invokeMethod(&worker, [&] {
        begun.store(true, std::memory_order_relaxed);
        count(isGuarded);
    });
    while (!begun.load(std::memory_order_relaxed))
        QThread::yieldCurrentThread();
    count(isGuarded);
    thread.quit();
    thread.wait();
    std::printf("counted to %d\n", counter);
    return 0;
}
