#include "handles/ReplyIntegrity.h"

#include "support/FakeNetwork.h"

#include <QtTest/QtTest>

#include <chrono>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;
using namespace std::chrono_literals;

namespace {

constexpr qint64 MEGABYTE = 1024 * 1024;
constexpr qint64 NO_LIMIT = 0;
constexpr qint64 ROOM = MEGABYTE / 4;
constexpr qint64 TAIL = MEGABYTE;
constexpr qint64 WIDE = 4 * MEGABYTE;

} // namespace

class tst_ReplyBodyWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fewBytesWaitUnread_data();
    void fewBytesWaitUnread();
    void lastBytesNeverWait();
    void announcementBeatsExpectation_data();
    void announcementBeatsExpectation();
    void bodyThatStopsComingIsATimeOut();
    void silenceBeforeTheBodyIsPatience();
    void endedReplyIsLeftAlone();
};

void tst_ReplyBodyWatch::fewBytesWaitUnread_data()
{
    QTest::addColumn<qint64>("expected");
    QTest::addColumn<qint64>("buffer");
    QTest::newRow("nobody knows how many come") << qint64(-1) << WIDE;
    QTest::newRow("none") << qint64(0) << NO_LIMIT;
    QTest::newRow("all of them may wait") << TAIL << NO_LIMIT;
    QTest::newRow("one more than that") << TAIL + 1 << ROOM;
    QTest::newRow("a film") << qint64(20) * 1024 * MEGABYTE << ROOM;
}

void tst_ReplyBodyWatch::fewBytesWaitUnread()
{
    QFETCH(qint64, expected);
    FakeReply reply;
    watchBody(&reply, expected);
    QTEST(reply.readBufferSize(), "buffer");
}

// Bytes at the end of a body that wait in a socket behind a proxy are never asked for again.
void tst_ReplyBodyWatch::lastBytesNeverWait()
{
    const QByteArray chunk(int(MEGABYTE / 4), 'x');
    FakeReply reply;
    watchBody(&reply, 3 * MEGABYTE);
    reply.setStatus(200);
    reply.announce(3 * MEGABYTE);
    QList<qint64> buffers;
    for (qint64 read = 0; read < 3 * MEGABYTE; read += chunk.size()) {
        reply.receive(chunk);
        QCOMPARE(readBody(reply), chunk);
        buffers.append(reply.readBufferSize());
    }
    QList<qint64> expected;
    for (int i = 0; i < 12; ++i)
        expected.append(i < 7 ? ROOM : NO_LIMIT);
    QCOMPARE(buffers, expected);
}

void tst_ReplyBodyWatch::announcementBeatsExpectation_data()
{
    QTest::addColumn<qint64>("expected");
    QTest::addColumn<qint64>("announced");
    QTest::addColumn<qint64>("buffer");
    QTest::newRow("much more than expected") << qint64(10) << 9 * MEGABYTE << ROOM;
    QTest::newRow("much less than expected") << 9 * MEGABYTE << qint64(10) << NO_LIMIT;
    QTest::newRow("less than what has come") << 9 * MEGABYTE << qint64(1) << NO_LIMIT;
    QTest::newRow("nothing was expected") << qint64(-1) << 9 * MEGABYTE << ROOM;
    QTest::newRow("nothing is announced") << qint64(10) << qint64(-1) << WIDE;
}

void tst_ReplyBodyWatch::announcementBeatsExpectation()
{
    QFETCH(qint64, expected);
    QFETCH(qint64, announced);
    FakeReply reply;
    watchBody(&reply, expected);
    reply.setStatus(200);
    if (announced >= 0)
        reply.announce(announced);
    reply.receive("some");
    QCOMPARE(readBody(reply), QByteArray("some"));
    QTEST(reply.readBufferSize(), "buffer");
}

void tst_ReplyBodyWatch::bodyThatStopsComingIsATimeOut()
{
    FakeReply reply;
    QSignalSpy finished(&reply, &QNetworkReply::finished);
    watchBody(&reply, -1, 20ms);
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
    watchBody(&silent, -1, 1ms);
    watchBody(&speaking, -1, 20ms);
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
    watchBody(&whole, -1, 1ms);
    watchBody(&other, -1, 20ms);
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
