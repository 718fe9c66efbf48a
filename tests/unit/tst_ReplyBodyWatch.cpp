#include "handles/ReplyIntegrity.h"

#include "support/FakeNetwork.h"

#include <QtTest/QtTest>

#include <chrono>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;
using namespace std::chrono_literals;

class tst_ReplyBodyWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fewBytesWaitUnread();
    void bodyThatStopsComingIsATimeOut();
    void silenceBeforeTheBodyIsPatience();
    void endedReplyIsLeftAlone();
};

void tst_ReplyBodyWatch::fewBytesWaitUnread()
{
    FakeReply reply;
    watchBody(&reply);
    QCOMPARE(reply.readBufferSize(), qint64(4 * 1024 * 1024));
}

void tst_ReplyBodyWatch::bodyThatStopsComingIsATimeOut()
{
    FakeReply reply;
    QSignalSpy finished(&reply, &QNetworkReply::finished);
    watchBody(&reply, 20ms);
    reply.setStatus(200);
    reply.announce(10);
    reply.receive("half");
    QVERIFY(finished.wait());
    QCOMPARE(finished.count(), 1);
    QCOMPARE(errorOf(reply, 4), QNetworkReply::TimeoutError);
}

// Whether an answer begins at all is not the watch's business: a server may take its time.
void tst_ReplyBodyWatch::silenceBeforeTheBodyIsPatience()
{
    FakeReply silent;
    FakeReply speaking;
    watchBody(&silent, 1ms);
    watchBody(&speaking, 20ms);
    QSignalSpy finished(&speaking, &QNetworkReply::finished);
    speaking.receive("a");
    QVERIFY(finished.wait());
    QVERIFY(!silent.isFinished());
}

void tst_ReplyBodyWatch::endedReplyIsLeftAlone()
{
    FakeReply whole;
    FakeReply other;
    QSignalSpy finished(&whole, &QNetworkReply::finished);
    QSignalSpy otherFinished(&other, &QNetworkReply::finished);
    watchBody(&whole, 1ms);
    watchBody(&other, 20ms);
    whole.setStatus(200);
    whole.receive("a");
    whole.finish();
    other.receive("a");
    QVERIFY(otherFinished.wait());
    QCOMPARE(finished.count(), 1);
    QCOMPARE(errorOf(whole, 1), QNetworkReply::NoError);
}

QTEST_GUILESS_MAIN(tst_ReplyBodyWatch)

#include "tst_ReplyBodyWatch.moc"
