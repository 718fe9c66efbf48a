#include "handles/ReplyIntegrity.h"

#include "support/FakeNetwork.h"
#include "support/ScriptedServer.h"

#include <QtTest/QtTest>

#include <memory>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

class tst_ReplyIntegrity : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void errorOf_data();
    void errorOf();
    void lengthLeftOutIsNoFailure();
    void errorOfTheReplyComesFirst();
    void onlyAnAnswerCarriesContent_data();
    void onlyAnAnswerCarriesContent();

    void unpackedBodyIsWhole();
    void cutBodyIsNoticed_data();
    void cutBodyIsNoticed();
};

void tst_ReplyIntegrity::errorOf_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<qint64>("announced");
    QTest::addColumn<qint64>("received");
    QTest::addColumn<QNetworkReply::NetworkError>("error");
    using Reply = QNetworkReply;
    QTest::newRow("whole") << 200 << qint64(10) << qint64(10) << Reply::NoError;
    QTest::newRow("empty") << 200 << qint64(0) << qint64(0) << Reply::NoError;
    QTest::newRow("a byte short") << 200 << qint64(10) << qint64(9) << Reply::RemoteHostClosedError;
    QTest::newRow("nothing came") << 200 << qint64(1) << qint64(0) << Reply::RemoteHostClosedError;
    QTest::newRow("more than announced") << 200 << qint64(10) << qint64(11) << Reply::NoError;
    QTest::newRow("larger than an int") << 206 << qint64(5'000'000'000) << qint64(4'999'999'999)
                                        << Reply::RemoteHostClosedError;
    QTest::newRow("last success") << 299 << qint64(1) << qint64(1) << Reply::NoError;
    QTest::newRow("first redirect") << 300 << qint64(1) << qint64(1) << Reply::TooManyRedirectsError;
    QTest::newRow("redirect") << 302 << qint64(0) << qint64(0) << Reply::TooManyRedirectsError;
    QTest::newRow("not modified") << 304 << qint64(0) << qint64(0) << Reply::TooManyRedirectsError;
    QTest::newRow("last redirect") << 399 << qint64(1) << qint64(1) << Reply::TooManyRedirectsError;
    QTest::newRow("short redirect") << 302 << qint64(5) << qint64(1) << Reply::TooManyRedirectsError;
}

void tst_ReplyIntegrity::errorOf()
{
    QFETCH(int, status);
    QFETCH(qint64, announced);
    QFETCH(qint64, received);
    FakeReply reply;
    reply.setStatus(status);
    reply.announce(announced);
    QTEST(Korvo::Web::errorOf(reply, received), "error");
}

void tst_ReplyIntegrity::lengthLeftOutIsNoFailure()
{
    FakeReply reply;
    QCOMPARE(Korvo::Web::errorOf(reply, 0), QNetworkReply::NoError);
}

void tst_ReplyIntegrity::errorOfTheReplyComesFirst()
{
    FakeReply reply;
    reply.setStatus(302);
    reply.announce(10);
    reply.fail(QNetworkReply::TimeoutError);
    QCOMPARE(Korvo::Web::errorOf(reply, 0), QNetworkReply::TimeoutError);
}

void tst_ReplyIntegrity::onlyAnAnswerCarriesContent_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<bool>("carries");
    QTest::newRow("200") << 200 << true;
    QTest::newRow("206") << 206 << true;
    QTest::newRow("299") << 299 << true;
    QTest::newRow("300") << 300 << false;
    QTest::newRow("302") << 302 << false;
    QTest::newRow("404") << 404 << false;
    QTest::newRow("500") << 500 << false;
}

void tst_ReplyIntegrity::onlyAnAnswerCarriesContent()
{
    QFETCH(int, status);
    FakeReply reply;
    reply.setStatus(status);
    QTEST(carriesContent(reply), "carries");
}

// A packed body has another length than was announced.
void tst_ReplyIntegrity::unpackedBodyIsWhole()
{
    const QByteArray packed = qCompress(QByteArray(10000, 'x')).mid(4); // without Qt's own length
    ScriptedServer server;
    server.setDefaultAnswer(ScriptedAnswer::ok(packed).withHeader("Content-Encoding", "deflate"));
    QNetworkAccessManager manager;
    const std::unique_ptr<QNetworkReply> reply(manager.get(QNetworkRequest(QUrl::fromEncoded(server.plainRoot()))));
    QTRY_VERIFY(reply->isFinished());
    const QByteArray body = reply->readAll();
    QCOMPARE(body, QByteArray(10000, 'x'));
    QCOMPARE(Korvo::Web::errorOf(*reply, body.size()), QNetworkReply::NoError);
}

void tst_ReplyIntegrity::cutBodyIsNoticed_data()
{
    QTest::addColumn<bool>("connectionIsReused");
    QTest::newRow("first request of a connection") << false;
    QTest::newRow("later request of a connection") << true;
}

void tst_ReplyIntegrity::cutBodyIsNoticed()
{
    QFETCH(bool, connectionIsReused);
    ScriptedServer server;
    QNetworkAccessManager manager;
    const QNetworkRequest request(QUrl::fromEncoded(server.plainRoot() + '/'));
    if (connectionIsReused) {
        const std::unique_ptr<QNetworkReply> reply(manager.get(request));
        QTRY_VERIFY(reply->isFinished());
    }
    server.setDefaultAnswer(ScriptedAnswer::ok(QByteArray(1000, 'x')).closedAt(999));
    const std::unique_ptr<QNetworkReply> reply(manager.get(request));
    QTRY_VERIFY(reply->isFinished());
    QCOMPARE(server.lastRequest().connection, 1);
    QCOMPARE(Korvo::Web::errorOf(*reply, reply->readAll().size()), QNetworkReply::RemoteHostClosedError);
}

QTEST_GUILESS_MAIN(tst_ReplyIntegrity)
#include "tst_ReplyIntegrity.moc"
