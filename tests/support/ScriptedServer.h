#pragma once

#include "support/TestAuthority.h"

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QMetaType>
#include <QtCore/QObject>
#include <QtCore/QPair>
#include <QtCore/QThread>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QSsl>
#include <QtNetwork/QSslConfiguration>

#include <functional>
#include <optional>

namespace Korvo::Web::TestSupport {

using HeaderList = QList<QPair<QByteArray, QByteArray>>;

/// One request as it came over the wire.
struct RecordedRequest
{
    QByteArray method;
    QByteArray target;  ///< as in the request line: path and query
    QByteArray host;    ///< "web.korvo.example" through the proxy, else the value of the "Host" header
    HeaderList headers; ///< in the order sent, names and values as sent
    QByteArray body;
    int connection = 0; ///< counted from 1, in the order the connections came
    bool secure = false;

    /// Value of the first header of this name; null when there is none. Upper and lower case are the same.
    QByteArray header(const QByteArray &name) const;
    bool hasHeader(const QByteArray &name) const { return !header(name).isNull(); }
    /// Scheme, host and target.
    QByteArray url() const;
    /// The target without the query.
    QByteArray path() const;
};

/// What the server does with one request. Without further calls it is a complete answer on a connection kept open.
class ScriptedAnswer
{
public:
    ScriptedAnswer() = default;
    explicit ScriptedAnswer(int status, const QByteArray &body = QByteArray());

    /// Status 200 with this body.
    static ScriptedAnswer ok(const QByteArray &body = QByteArray()) { return ScriptedAnswer(200, body); }
    /// Status 302 with a "Location".
    static ScriptedAnswer redirect(const QByteArray &location);
    /// Closes the connection without a word. Qt sends such a request a second time by itself.
    static ScriptedAnswer dropped();
    /// No answer before ScriptedServer::release(); then status 200 with this body.
    static ScriptedAnswer held(const QByteArray &body = QByteArray()) { return ok(body).pausedBeforeHead(); }

    ScriptedAnswer &withHeader(const QByteArray &name, const QByteArray &value);
    /// Says another Content-Length than that of the body. The connection is closed behind the body.
    ScriptedAnswer &announcing(qint64 bytes);
    /// Says no Content-Length: the end of the connection is the end of the body.
    ScriptedAnswer &withoutLength();
    /// Waits for ScriptedServer::release() before the first byte.
    ScriptedAnswer &pausedBeforeHead();
    /// Sends so many bytes of the body, then waits for ScriptedServer::release(). May be called with growing numbers.
    ScriptedAnswer &pausedAt(qint64 bodyBytes);
    /// Closes the connection after so many bytes of the body; 0: behind the head.
    ScriptedAnswer &closedAt(qint64 bodyBytes);

private:
    friend class ServerConnection;

    QByteArray head() const;

    int statusCode = 200;
    QByteArray content;
    HeaderList headerList;
    std::optional<qint64> announcedLength;
    bool lengthLeftOut = false;
    bool closedBehind = false;
    bool withoutAnswer = false;
    QList<qint64> pauses; // offsets in the body; -1: before the head
};

class ServerEngine;

/// An HTTP/1.1 server for tests that says exactly what the test tells it to, and remembers what it was asked.
///
/// It runs on a thread of its own, so a test may block while it waits for an answer. One port serves both plain HTTP and,
/// as a CONNECT proxy, TLS under every host name of the library; see RouteToServer.
///
/// @code
/// ScriptedServer server;
/// RouteToServer route(server);
/// server.enqueue("/korvoservice/api/bucket", ScriptedAnswer(500));
/// server.always("/korvoservice/api/bucket", ScriptedAnswer::ok("<BucketResponse/>"));
/// ...
/// QTRY_COMPARE(server.requestCount("/korvoservice/api/bucket"), 2);
/// @endcode
///
/// An answer that was enqueued is given once, the oldest that fits first; then comes the newest standing answer that
/// fits, then the default answer. All functions may be called from every thread.
class ScriptedServer : public QObject
{
    Q_OBJECT

public:
    using Matcher = std::function<bool(const RecordedRequest &request)>;
    /// Runs on the server's thread.
    using Responder = std::function<ScriptedAnswer(const RecordedRequest &request)>;

    explicit ScriptedServer(QObject *parent = nullptr);
    ~ScriptedServer() override;

    quint16 port() const;
    /// "http://127.0.0.1:PORT", reached without a proxy.
    QByteArray plainRoot() const;
    /// PEM text of the authority that vouches for the host names. Made anew by every server.
    QByteArray authorityCertificate() const;

    /// From now on TLS is spoken in this version alone.
    void speakOnly(QSsl::SslProtocol protocol);

    /// Answers the next request for @p path (query left out) on whatever host.
    void enqueue(const QByteArray &path, const ScriptedAnswer &answer);
    void enqueue(const Matcher &matches, const ScriptedAnswer &answer);
    /// Answers all requests for which nothing is enqueued.
    void always(const QByteArray &path, const ScriptedAnswer &answer);
    void always(const Matcher &matches, const ScriptedAnswer &answer);
    void always(const QByteArray &path, const Responder &responder);
    /// For every other request; at first status 200 with an empty body.
    void setDefaultAnswer(const ScriptedAnswer &answer);

    /// Lets each answer that is paused go on to its next pause or to its end.
    void release();
    /// The same for requests to @p path alone.
    void release(const QByteArray &path);

    QList<RecordedRequest> requests() const;
    QList<RecordedRequest> requests(const QByteArray &path) const;
    int requestCount() const;
    int requestCount(const QByteArray &path) const;
    /// The newest request; an empty one when there is none.
    RecordedRequest lastRequest() const;
    /// Connections that are open at this moment.
    int openConnections() const;
    /// Forgets the requests, not the answers.
    void forgetRequests();

    /// Runs the event loop until that many requests have come in all, or @p limitMs milliseconds have passed.
    bool waitForRequests(int count, int limitMs = 5000) const;

Q_SIGNALS:
    /// Comes when the request is recorded, on this object's thread.
    void requestReceived();

private:
    void release(const Matcher &matches);

    const TestAuthority authority;
    ServerEngine *engine; // deletes itself when the thread ends
    const quint16 listeningPort;
    QThread thread;
};

/// Leads all connections of this process through the server, and has its authority trusted; undone by the destructor.
///
/// Loopback addresses and "localhost" go round every proxy; real host names do not reach the network any more.
/// Make it before the access manager whose connections it is to lead.
class RouteToServer
{
public:
    explicit RouteToServer(const ScriptedServer &server);
    ~RouteToServer();

private:
    Q_DISABLE_COPY(RouteToServer)

    const QNetworkProxy formerProxy;
    const QSslConfiguration formerConfiguration;
};

} // namespace Korvo::Web::TestSupport

Q_DECLARE_METATYPE(Korvo::Web::TestSupport::ScriptedAnswer)
