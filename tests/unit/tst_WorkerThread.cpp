#include <NQSharedBase/WorkerThread.h>

#include <QtCore/QMetaObject>
#include <QtTest/QTest>

#include <atomic>

#ifdef Q_OS_UNIX
#include <sys/resource.h>
#endif

using Korvo::Shared::WorkerThread;

namespace {

constexpr int LIMIT_MS = 10000;

} // namespace

class tst_WorkerThread : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void loopRunsWhenStartReturns();
    void blockingCallAfterTheStartReturns();
    void startOfARunningThreadReturnsAtOnce();
    void startWaitsForALoopThatAnotherStartBegan();
    void startsAgainAfterItsEnd();
    void everyStartOfManyEnds();
    void quitThatComesFirstDoesNotHangTheStart();
    void aThreadThatCannotBeStartedIsReported();
    void destructionEndsTheLoop();
    void belongsToItsParent();
};

void tst_WorkerThread::loopRunsWhenStartReturns()
{
    WorkerThread thread;
    QVERIFY(thread.blockingStart());
    QVERIFY(thread.isRunning());
    QCOMPARE(thread.loopLevel(), 1);
}

void tst_WorkerThread::blockingCallAfterTheStartReturns()
{
    WorkerThread thread;
    auto *worker = new QObject;
    worker->moveToThread(&thread);
    connect(&thread, &QThread::finished, worker, &QObject::deleteLater);
    QVERIFY(thread.blockingStart());
    std::atomic<QThread *> where{nullptr};
    QVERIFY(QMetaObject::invokeMethod(worker, [&] { where = QThread::currentThread(); }, Qt::BlockingQueuedConnection));
    QCOMPARE(where.load(), static_cast<QThread *>(&thread));
}

void tst_WorkerThread::startOfARunningThreadReturnsAtOnce()
{
    WorkerThread thread;
    QVERIFY(thread.blockingStart());
    QVERIFY(thread.blockingStart());
    QCOMPARE(thread.loopLevel(), 1);
}

void tst_WorkerThread::startWaitsForALoopThatAnotherStartBegan()
{
    WorkerThread thread;
    thread.start();
    QVERIFY(thread.blockingStart());
    QCOMPARE(thread.loopLevel(), 1);
}

void tst_WorkerThread::startsAgainAfterItsEnd()
{
    WorkerThread thread;
    for (int i = 0; i < 3; ++i) {
        QVERIFY(thread.blockingStart());
        thread.quit();
        QVERIFY(thread.wait(LIMIT_MS));
    }
}

void tst_WorkerThread::everyStartOfManyEnds()
{
    for (int i = 0; i < 500; ++i) {
        WorkerThread thread;
        QVERIFY(thread.blockingStart());
    }
}

void tst_WorkerThread::quitThatComesFirstDoesNotHangTheStart()
{
    for (int i = 0; i < 200; ++i) {
        WorkerThread thread;
        // Emitted in the new thread, before its loop.
        connect(&thread, &QThread::started, &thread, [&thread] { thread.quit(); }, Qt::DirectConnection);
        QVERIFY(!thread.blockingStart());
        QVERIFY(thread.wait(LIMIT_MS));
    }
}

void tst_WorkerThread::aThreadThatCannotBeStartedIsReported()
{
    WorkerThread thread;
    // No address space holds a stack of this size.
    thread.setStackSize(~0u);
#if defined(Q_OS_UNIX) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    rlimit former {};
    QCOMPARE(getrlimit(RLIMIT_AS, &former), 0);
    rlimit small = former;
    small.rlim_cur = 1024 * 1024 * 1024;
    QCOMPARE(setrlimit(RLIMIT_AS, &small), 0);
    const bool started = thread.blockingStart();
    QCOMPARE(setrlimit(RLIMIT_AS, &former), 0);
    QVERIFY(!started);
    QVERIFY(!thread.isRunning());
#endif
    thread.setStackSize(0);
    QVERIFY(thread.blockingStart());
}

void tst_WorkerThread::destructionEndsTheLoop()
{
    std::atomic<bool> ended{false};
    {
        WorkerThread thread;
        connect(&thread, &QThread::finished, &thread, [&ended] { ended = true; }, Qt::DirectConnection);
        QVERIFY(thread.blockingStart());
    }
    QVERIFY(ended);
}

void tst_WorkerThread::belongsToItsParent()
{
    QObject parent;
    auto *thread = new WorkerThread(&parent);
    QCOMPARE(thread->parent(), &parent);
    QVERIFY(thread->blockingStart());
}

QTEST_GUILESS_MAIN(tst_WorkerThread)

#include "tst_WorkerThread.moc"
