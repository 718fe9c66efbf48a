#include "support/LogCapture.h"
#include "support/ScriptedServer.h"

#include "request/ServerRoots.h"

#include <NQLogging/CLogger.h>

#include <QtCore/QUrl>
#include <QtNetwork/QNetworkAccessManager>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QNetworkRequest>
#include <QtTest/QtTest>

#include <memory>

using Korvo::Logging::CLogger;
using Korvo::Logging::LogLevel;
using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

using Reply = std::unique_ptr<QNetworkReply>;

// Qt lets a manager reuse connections, so each test has one of its own.
struct Client
{
    Reply get(const QByteArray &url) { return Reply(manager.get(QNetworkRequest(QUrl::fromEncoded(url)))); }

    QNetworkAccessManager manager;
};

} // namespace

/// The other tests believe what this server tells them; here it is held against Qt's own client.
class tst_ScriptedServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void plainRequestIsRecordedAndAnswered();
    void hostNamesOfTheLibraryAreServedWithTls_data();
    void hostNamesOfTheLibraryAreServedWithTls();
    void oncePrecedesAlwaysPrecedesDefault();
    void connectionIsKept();
    void heldAnswerWaitsForItsRelease();
    void pausedBodyComesPieceByPiece();
    void cutAnswersAreSeenAsSuch_data();
    void cutAnswersAreSeenAsSuch();
    void routeIsTakenBack();
    void logIsCaptured();
};

void tst_ScriptedServer::plainRequestIsRecordedAndAnswered()
{
    ScriptedServer server;
    Client client;
    server.enqueue("/a b", ScriptedAnswer(500));
    server.enqueue("/a%20b", ScriptedAnswer(201, "body").withHeader("X-Reply", "yes"));
    QNetworkRequest request(QUrl::fromEncoded(server.plainRoot() + "/a%20b?q=1"));
    request.setRawHeader("X-Asked", "in Order");
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("text/plain"));
    const Reply reply(client.manager.put(request, "sent"));
    QTRY_VERIFY(reply->isFinished());

    QCOMPARE(reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), 201);
    QCOMPARE(reply->rawHeader("X-Reply"), QByteArray("yes"));
    QCOMPARE(reply->readAll(), QByteArray("body"));
    QCOMPARE(server.requestCount(), 1);
    const RecordedRequest recorded = server.lastRequest();
    QCOMPARE(recorded.method, QByteArray("PUT"));
    QCOMPARE(recorded.target, QByteArray("/a%20b?q=1"));
    QCOMPARE(recorded.path(), QByteArray("/a%20b"));
    QCOMPARE(recorded.url(), server.plainRoot() + "/a%20b?q=1");
    QCOMPARE(recorded.header("x-asked"), QByteArray("in Order"));
    QVERIFY(!recorded.hasHeader("Authorization"));
    QCOMPARE(recorded.body, QByteArray("sent"));
    QCOMPARE(recorded.connection, 1);
    QVERIFY(!recorded.secure);
}

void tst_ScriptedServer::hostNamesOfTheLibraryAreServedWithTls_data()
{
    QTest::addColumn<QByteArray>("root");
    QTest::newRow("web") << QByteArray(ServerRoots::PRODUCTION_WEB);
    QTest::newRow("service") << QByteArray(ServerRoots::PRODUCTION_SERVICE);
    QTest::newRow("beta web") << QByteArray(ServerRoots::BETA_WEB);
    QTest::newRow("beta service") << QByteArray(ServerRoots::BETA_SERVICE);
}

void tst_ScriptedServer::hostNamesOfTheLibraryAreServedWithTls()
{
    QFETCH(QByteArray, root);
    ScriptedServer server;
    const RouteToServer route(server);
    Client client;
    server.setDefaultAnswer(ScriptedAnswer::ok("secure"));
    const Reply reply = client.get(root + "x");
    QTRY_VERIFY(reply->isFinished());

    QVERIFY2(reply->error() == QNetworkReply::NoError, qPrintable(reply->errorString()));
    QCOMPARE(reply->readAll(), QByteArray("secure"));
    QCOMPARE(server.lastRequest().url(), root + "x");
    QVERIFY(server.lastRequest().secure);
}

void tst_ScriptedServer::oncePrecedesAlwaysPrecedesDefault()
{
    ScriptedServer server;
    Client client;
    server.always("/x", ScriptedAnswer::ok("older"));
    server.always("/x", ScriptedAnswer::ok("always"));
    server.enqueue("/x", ScriptedAnswer::ok("first"));
    server.enqueue("/x", ScriptedAnswer::ok("second"));
    server.setDefaultAnswer(ScriptedAnswer(404, "default"));
    const auto bodyOf = [&](const QByteArray &path) {
        const Reply reply = client.get(server.plainRoot() + path);
        return QTest::qWaitFor([&] { return reply->isFinished(); }) ? reply->readAll() : QByteArray("no answer");
    };

    QCOMPARE(bodyOf("/x"), QByteArray("first"));
    QCOMPARE(bodyOf("/y"), QByteArray("default"));
    QCOMPARE(bodyOf("/x"), QByteArray("second"));
    QCOMPARE(bodyOf("/x"), QByteArray("always"));
    QCOMPARE(bodyOf("/x?q"), QByteArray("always"));
}

void tst_ScriptedServer::connectionIsKept()
{
    ScriptedServer server;
    Client client;
    for (int i = 1; i <= 3; ++i) {
        const Reply reply = client.get(server.plainRoot() + '/');
        QTRY_VERIFY(reply->isFinished());
        QCOMPARE(server.lastRequest().connection, 1);
    }
    QCOMPARE(server.openConnections(), 1);
}

void tst_ScriptedServer::heldAnswerWaitsForItsRelease()
{
    ScriptedServer server;
    Client client;
    server.always("/held", ScriptedAnswer::held("late"));
    const Reply held = client.get(server.plainRoot() + "/held");
    QVERIFY(server.waitForRequests(1));
    const Reply other = client.get(server.plainRoot() + "/other");
    QTRY_VERIFY(other->isFinished());
    QVERIFY(!held->isFinished());
    server.release("/elsewhere");
    server.release("/held");
    QTRY_VERIFY(held->isFinished());
    QCOMPARE(held->readAll(), QByteArray("late"));
}

void tst_ScriptedServer::pausedBodyComesPieceByPiece()
{
    ScriptedServer server;
    Client client;
    server.enqueue("/", ScriptedAnswer::ok("one two three").pausedAt(4).pausedAt(8));
    const Reply reply = client.get(server.plainRoot() + '/');
    QTRY_COMPARE(reply->peek(100), QByteArray("one "));
    server.release();
    QTRY_COMPARE(reply->peek(100), QByteArray("one two "));
    QVERIFY(!reply->isFinished());
    server.release();
    QTRY_VERIFY(reply->isFinished());
    QCOMPARE(reply->readAll(), QByteArray("one two three"));
}

void tst_ScriptedServer::cutAnswersAreSeenAsSuch_data()
{
    QTest::addColumn<ScriptedAnswer>("answer");
    QTest::addColumn<QNetworkReply::NetworkError>("error");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("dropped") << ScriptedAnswer::dropped() << QNetworkReply::RemoteHostClosedError << QByteArray();
    QTest::newRow("cut") << ScriptedAnswer::ok("12345").closedAt(2) << QNetworkReply::RemoteHostClosedError
                         << QByteArray("12");
    QTest::newRow("announced too much") << ScriptedAnswer::ok("12345").announcing(6)
                                        << QNetworkReply::RemoteHostClosedError << QByteArray("12345");
    QTest::newRow("announced too little") << ScriptedAnswer::ok("12345").announcing(3) << QNetworkReply::NoError
                                          << QByteArray("123");
    QTest::newRow("no length") << ScriptedAnswer::ok("12345").withoutLength() << QNetworkReply::NoError
                               << QByteArray("12345");
}

void tst_ScriptedServer::cutAnswersAreSeenAsSuch()
{
    QFETCH(ScriptedAnswer, answer);
    QFETCH(QNetworkReply::NetworkError, error);
    QFETCH(QByteArray, body);
    ScriptedServer server;
    Client client;
    server.setDefaultAnswer(answer);
    const Reply reply = client.get(server.plainRoot() + '/');
    QTRY_VERIFY(reply->isFinished());
    QCOMPARE(reply->error(), error);
    QCOMPARE(reply->readAll(), body);
    QTRY_COMPARE(server.openConnections(), 0);
}

void tst_ScriptedServer::routeIsTakenBack()
{
    const QList<QSslCertificate> before = QSslConfiguration::defaultConfiguration().caCertificates();
    {
        ScriptedServer server;
        const RouteToServer route(server);
        QCOMPARE(QNetworkProxy::applicationProxy().port(), server.port());
        QCOMPARE(QSslConfiguration::defaultConfiguration().caCertificates().size(), 1);
    }
    QCOMPARE(QNetworkProxy::applicationProxy().port(), quint16(0));
    QCOMPARE(QSslConfiguration::defaultConfiguration().caCertificates(), before);
}

void tst_ScriptedServer::logIsCaptured()
{
    LogCapture log;
    CLogger::logMessage(LogLevel::Failure, QStringLiteral("Category"), QStringLiteral("Message"),
                        {QStringLiteral("argument")});
    QCOMPARE(log.count(), 1);
    QCOMPARE(log.messages(), QStringList{QStringLiteral("Message")});
    QCOMPARE(log.entries().first().level, 1);
    QVERIFY(log.contains(QStringLiteral("Cat")));
    QVERIFY(log.contains(QStringLiteral("argu")));
    QVERIFY(!log.contains(QStringLiteral("other")));
    log.clear();
    QCOMPARE(log.count(), 0);
}

QTEST_GUILESS_MAIN(tst_ScriptedServer)
#include "tst_ScriptedServer.moc"
