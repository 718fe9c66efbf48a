#include "api/CallGate.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QEventLoop>
#include <QtCore/QScopedPointer>
#include <QtCore/QStringList>
#include <QtTest/QtTest>

using namespace Korvo::Web;

namespace {

/// A worker as far as the gate sees it: an object that owns a gate.
class Worker : public QObject
{
public:
    Worker() : gate(this) { }

    CallGate gate;
};

} // namespace

class tst_CallGate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void openGateMakesTheCallAtOnce();
    void heldGateKeepsCallsInOrder();
    void callDuringACallWaitsForItsEnd();
    void eachHoldCounts();
    void newcomersStayBehindThoseWhoWait();
    void waitingCallThatWaitsItselfHoldsUpTheRest();
    void gateMayBeHeldAgainBeforeTheWaitingCallsRun();
    void callsThatWaitAreDroppedWithTheWorker();

private:
    CallGate::Call note(const QString &name);

    QScopedPointer<Worker> worker;
    QStringList made;
};

void tst_CallGate::init()
{
    worker.reset(new Worker);
    made.clear();
}

void tst_CallGate::cleanup()
{
    worker.reset();
}

CallGate::Call tst_CallGate::note(const QString &name)
{
    return [this, name] { made.append(name); };
}

void tst_CallGate::openGateMakesTheCallAtOnce()
{
    worker->gate.pass(note(QStringLiteral("first")));
    QCOMPARE(made, QStringList { QStringLiteral("first") });
    worker->gate.pass(note(QStringLiteral("second")));
    QCOMPARE(made, QStringList({ QStringLiteral("first"), QStringLiteral("second") }));
}

void tst_CallGate::heldGateKeepsCallsInOrder()
{
    {
        const CallGate::Hold hold(worker->gate);
        for (const char *name : { "a", "b", "c" })
            worker->gate.pass(note(QLatin1String(name)));
        QCoreApplication::processEvents();
        QCOMPARE(made, QStringList());
    }
    // Not from inside the release: whoever holds the gate is not finished yet.
    QCOMPARE(made, QStringList());
    QTRY_COMPARE(made, QStringList({ QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c") }));
}

void tst_CallGate::callDuringACallWaitsForItsEnd()
{
    worker->gate.pass([this] {
        worker->gate.pass(note(QStringLiteral("inner")));
        QCoreApplication::processEvents();
        made.append(QStringLiteral("outer"));
    });
    QTRY_COMPARE(made, QStringList({ QStringLiteral("outer"), QStringLiteral("inner") }));
}

void tst_CallGate::eachHoldCounts()
{
    const CallGate::Hold outer(worker->gate);
    {
        const CallGate::Hold inner(worker->gate);
        worker->gate.pass(note(QStringLiteral("call")));
    }
    QCoreApplication::processEvents();
    QCOMPARE(made, QStringList());
}

void tst_CallGate::newcomersStayBehindThoseWhoWait()
{
    {
        const CallGate::Hold hold(worker->gate);
        worker->gate.pass(note(QStringLiteral("waited")));
    }
    // The gate is open again, but the first one has not been let through yet.
    worker->gate.pass(note(QStringLiteral("newcomer")));
    QTRY_COMPARE(made, QStringList({ QStringLiteral("waited"), QStringLiteral("newcomer") }));
}

void tst_CallGate::waitingCallThatWaitsItselfHoldsUpTheRest()
{
    {
        const CallGate::Hold hold(worker->gate);
        worker->gate.pass([this] {
            made.append(QStringLiteral("wait begins"));
            QEventLoop loop;
            QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
            loop.exec();
            QCoreApplication::processEvents();
            made.append(QStringLiteral("wait ends"));
        });
        worker->gate.pass(note(QStringLiteral("next")));
    }
    QTRY_COMPARE(made, QStringList({ QStringLiteral("wait begins"), QStringLiteral("wait ends"), QStringLiteral("next") }));
}

void tst_CallGate::gateMayBeHeldAgainBeforeTheWaitingCallsRun()
{
    {
        const CallGate::Hold hold(worker->gate);
        worker->gate.pass(note(QStringLiteral("a")));
        worker->gate.pass(note(QStringLiteral("b")));
    }
    {
        const CallGate::Hold hold(worker->gate);
        QCoreApplication::processEvents();
        QCOMPARE(made, QStringList());
    }
    QTRY_COMPARE(made, QStringList({ QStringLiteral("a"), QStringLiteral("b") }));
    QCoreApplication::processEvents();
    QCOMPARE(made.size(), 2);
}

void tst_CallGate::callsThatWaitAreDroppedWithTheWorker()
{
    {
        const CallGate::Hold hold(worker->gate);
        worker->gate.pass(note(QStringLiteral("late")));
    }
    worker.reset();
    QCoreApplication::processEvents();
    QCOMPARE(made, QStringList());
}

QTEST_GUILESS_MAIN(tst_CallGate)

#include "tst_CallGate.moc"
