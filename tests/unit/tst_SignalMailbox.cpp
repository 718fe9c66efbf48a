#include "api/SignalMailbox.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtCore/QEventLoop>
#include <QtCore/QScopedPointer>
#include <QtCore/QSemaphore>
#include <QtCore/QStringList>
#include <QtCore/QThread>
#include <QtTest/QtTest>

using namespace Korvo::Web;

namespace {

/// A host as far as the mailbox sees it: an object that owns one, and counts how often it is woken.
class Host : public QObject
{
public:
    Host()
        : mailbox(&sender, this)
    {
    }

    bool event(QEvent *event) override
    {
        if (event->type() == QEvent::MetaCall)
            ++wakes;
        return QObject::event(event);
    }

    QObject sender;
    SignalMailbox mailbox;
    int wakes = 0;
};

/// By then everything that was posted has gone its way, whoever had to be called first.
void letAllArrive()
{
    for (int turn = 0; turn < 5; ++turn)
        QCoreApplication::processEvents();
}

} // namespace

class tst_SignalMailbox : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void nothingIsDeliveredInsideThePost();
    void deliveriesKeepTheirOrder();
    void manyDeliveriesWakeTheHostOnce();
    void postedDuringADeliveryComesLater();
    void loopInsideADeliveryHearsOfTheRest();
    void nothingIsDeliveredToAHostThatIsGone();
    void hostMayGoInsideADelivery();
    void hostMayGoInsideALoopOfADelivery();
    void hostIsLeftAloneUntilTheSenderIsThrough();
    void otherThreadsLoseNothing();

private:
    SignalMailbox::Delivery note(const QString &name);
    void post(const QString &names);

    QScopedPointer<Host> host;
    QStringList heard;
};

void tst_SignalMailbox::init()
{
    host.reset(new Host);
    heard.clear();
}

SignalMailbox::Delivery tst_SignalMailbox::note(const QString &name)
{
    return [this, name] { heard.append(name); };
}

void tst_SignalMailbox::post(const QString &names)
{
    for (const QChar name : names)
        host->mailbox.post(note(name));
}

void tst_SignalMailbox::nothingIsDeliveredInsideThePost()
{
    post(QStringLiteral("a"));
    QCOMPARE(heard, QStringList());
    letAllArrive();
    QCOMPARE(heard, QStringList{QStringLiteral("a")});
}

void tst_SignalMailbox::deliveriesKeepTheirOrder()
{
    post(QStringLiteral("abc"));
    letAllArrive();
    post(QStringLiteral("de"));
    letAllArrive();
    QCOMPARE(heard.join(QString()), QStringLiteral("abcde"));
}

void tst_SignalMailbox::manyDeliveriesWakeTheHostOnce()
{
    for (int i = 0; i < 1000; ++i)
        host->mailbox.post(note(QString::number(i)));
    letAllArrive();
    QCOMPARE(heard.size(), 1000);
    QVERIFY2(host->wakes <= 2, qPrintable(QString::number(host->wakes)));
}

void tst_SignalMailbox::postedDuringADeliveryComesLater()
{
    host->mailbox.post([this] {
        post(QStringLiteral("c"));
        heard.append(QStringLiteral("a"));
    });
    post(QStringLiteral("b"));
    QTRY_COMPARE(heard.join(QString()), QStringLiteral("abc"));
}

// A host that opens a dialog when it hears of a failure goes on hearing of everything else.
void tst_SignalMailbox::loopInsideADeliveryHearsOfTheRest()
{
    QEventLoop loop;
    host->mailbox.post([&] {
        heard.append(QStringLiteral("begin"));
        loop.exec();
        heard.append(QStringLiteral("end"));
    });
    post(QStringLiteral("ab"));
    host->mailbox.post([&] { post(QStringLiteral("c")); });
    host->mailbox.post([&] {
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    letAllArrive();
    QCOMPARE(heard, QStringList({QStringLiteral("begin"), QStringLiteral("a"), QStringLiteral("b"),
                                 QStringLiteral("c"), QStringLiteral("end")}));
}

void tst_SignalMailbox::nothingIsDeliveredToAHostThatIsGone()
{
    post(QStringLiteral("ab"));
    host.reset();
    letAllArrive();
    QCOMPARE(heard, QStringList());
}

void tst_SignalMailbox::hostMayGoInsideADelivery()
{
    post(QStringLiteral("a"));
    host->mailbox.post([this] { host.reset(); });
    post(QStringLiteral("b"));
    letAllArrive();
    QCOMPARE(heard, QStringList{QStringLiteral("a")});
}

void tst_SignalMailbox::hostMayGoInsideALoopOfADelivery()
{
    QEventLoop loop;
    host->mailbox.post([&] {
        loop.exec();
        heard.append(QStringLiteral("end"));
    });
    host->mailbox.post([&] {
        host.reset();
        loop.quit();
    });
    post(QStringLiteral("a"));
    letAllArrive();
    QCOMPARE(heard, QStringList{QStringLiteral("end")});
}

// Otherwise both threads would take the processor from each other with every word.
void tst_SignalMailbox::hostIsLeftAloneUntilTheSenderIsThrough()
{
    QThread thread;
    QScopedPointer<QObject, QScopedPointerDeleteLater> sender(new QObject);
    sender->moveToThread(&thread);
    SignalMailbox mailbox(sender.data(), host.data());
    QSemaphore posted;
    QSemaphore through;
    thread.start();
    QMetaObject::invokeMethod(sender.data(), [&] {
        mailbox.post(note(QStringLiteral("a")));
        posted.release();
        through.acquire();
        mailbox.post(note(QStringLiteral("b")));
    });
    posted.acquire();
    letAllArrive();
    QCOMPARE(heard, QStringList());
    QCOMPARE(host->wakes, 0);
    through.release();
    QTRY_COMPARE(heard.join(QString()), QStringLiteral("ab"));
    letAllArrive();
    QVERIFY2(host->wakes <= 2, qPrintable(QString::number(host->wakes)));
    sender.reset();
    thread.quit();
    QVERIFY(thread.wait());
}

void tst_SignalMailbox::otherThreadsLoseNothing()
{
    constexpr int COUNT = 20000;
    QVector<int> numbers;
    QScopedPointer<QThread> worker(QThread::create([&] {
        for (int i = 0; i < COUNT; ++i)
            host->mailbox.post([&numbers, i] { numbers.append(i); });
    }));
    worker->start();
    QTRY_COMPARE_WITH_TIMEOUT(numbers.size(), COUNT, 60000);
    QVERIFY(worker->wait());
    for (int i = 0; i < COUNT; ++i)
        QCOMPARE(numbers.at(i), i);
}

QTEST_GUILESS_MAIN(tst_SignalMailbox)

#include "tst_SignalMailbox.moc"
