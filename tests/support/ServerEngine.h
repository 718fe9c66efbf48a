#pragma once

#include "support/ScriptedServer.h"
#include "support/TestAuthority.h"

#include <QtNetwork/QSslSocket>
#include <QtNetwork/QTcpServer>

#include <mutex>

namespace Korvo::Web::TestSupport {

/// Whom an answer is for, and the answer.
struct Rule
{
    ScriptedServer::Matcher matches;
    ScriptedServer::Responder respond;
};

/// The part of the server that lives on its thread.
class ServerEngine : public QTcpServer
{
    Q_OBJECT

public:
    explicit ServerEngine(const TestAuthority &testAuthority);

    /// Listens on a free port, which is returned. To be called before the engine moves to its thread.
    quint16 open();

    // These may be called from every thread.
    void release(const ScriptedServer::Matcher &matches);
    void addOnce(const Rule &rule);
    void addStanding(const Rule &rule);
    void setDefaultAnswer(const ScriptedAnswer &answer);
    void speakOnly(QSsl::SslProtocol protocol);
    QList<RecordedRequest> recorded() const;
    void forgetRequests();
    int openConnections() const;

    // Called by the connections.
    void startEncryption(QSslSocket *socket) const;
    ScriptedAnswer answerTo(const RecordedRequest &request);
    void noteClosed();

Q_SIGNALS:
    void requestReceived();

protected:
    void incomingConnection(qintptr descriptor) override;

private Q_SLOTS:
    void releasePaused();

private:
    ScriptedServer::Responder responderTo(const RecordedRequest &request);
    void record(const RecordedRequest &request);

    const TestAuthority authority;
    int connectionsSoFar = 0;
    mutable std::mutex mutex; // guards all below; not Qt's, which thread sanitizers cannot see
    QList<Rule> once;
    QList<Rule> standing;
    ScriptedServer::Responder standardResponder;
    QList<RecordedRequest> requests;
    QList<ScriptedServer::Matcher> releases;
    int connectionsOpen = 0;
    QSsl::SslProtocol tlsVersion = QSsl::SecureProtocols;
};

/// One client: takes its requests one after the other and sends it what the engine says.
class ServerConnection : public QObject
{
    Q_OBJECT

public:
    ServerConnection(qintptr descriptor, int number, ServerEngine *serverEngine);

    /// Goes on with the answer that is paused, if it is one to such a request.
    void release(const ScriptedServer::Matcher &matches);

private:
    void readMore();
    bool takeRequest();
    void parseHead(const QByteArray &head);
    void openTunnel();
    void startAnswer();
    void goOn();
    void endAnswer();
    void close();

    ServerEngine *engine;
    QSslSocket *socket;
    QByteArray incoming;
    QByteArray tunnelHost;
    RecordedRequest request;
    ScriptedAnswer answer;
    QByteArray outgoing;
    QList<qint64> stops; // offsets in outgoing at which to wait for a release
    qint64 sent = 0;
    const int connectionNumber;
    bool answering = false;
    bool paused = false;
};

} // namespace Korvo::Web::TestSupport
