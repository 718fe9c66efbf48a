#include "support/ServerEngine.h"

#include <QtNetwork/QSslCertificate>
#include <QtNetwork/QSslConfiguration>
#include <QtNetwork/QSslKey>

#include <algorithm>

#ifdef Q_OS_LINUX
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#endif

namespace Korvo::Web::TestSupport {

namespace {

const QByteArray HEAD_END = "\r\n\r\n";

QPair<QByteArray, QByteArray> headerFrom(const QByteArray &line)
{
    const int colon = line.indexOf(':');
    const int valueStart = line.mid(colon + 1, 1) == " " ? colon + 2 : colon + 1;
    return {line.left(colon), line.mid(valueStart)};
}

// Qt sends head and body of a request in small pieces and waits between them for a word from us, which the system holds
// back for 40 ms in the hope of an answer to go with it: a body of 4 MiB takes more than a second that way.
void acknowledgeAtOnce(qintptr descriptor)
{
#ifdef Q_OS_LINUX
    const int on = 1;
    setsockopt(int(descriptor), IPPROTO_TCP, TCP_QUICKACK, &on, sizeof on);
#else
    Q_UNUSED(descriptor)
#endif
}

} // namespace

ServerEngine::ServerEngine(const TestAuthority &testAuthority)
    : authority(testAuthority)
{
    setDefaultAnswer(ScriptedAnswer());
}

quint16 ServerEngine::open()
{
    if (!listen(QHostAddress::LocalHost))
        qFatal("the scripted server cannot listen");
    return serverPort();
}

void ServerEngine::incomingConnection(qintptr descriptor)
{
    new ServerConnection(descriptor, ++connectionsSoFar, this);
    const std::lock_guard<std::mutex> guard(mutex);
    ++connectionsOpen;
}

void ServerEngine::release(const ScriptedServer::Matcher &matches)
{
    {
        const std::lock_guard<std::mutex> guard(mutex);
        releases.append(matches);
    }
    QMetaObject::invokeMethod(this, "releasePaused", Qt::QueuedConnection);
}

void ServerEngine::releasePaused()
{
    QList<ScriptedServer::Matcher> pending;
    {
        const std::lock_guard<std::mutex> guard(mutex);
        pending.swap(releases);
    }
    for (const ScriptedServer::Matcher &matches : pending) {
        for (ServerConnection *connection : findChildren<ServerConnection *>())
            connection->release(matches);
    }
}

void ServerEngine::addOnce(const Rule &rule)
{
    const std::lock_guard<std::mutex> guard(mutex);
    once.append(rule);
}

void ServerEngine::addStanding(const Rule &rule)
{
    const std::lock_guard<std::mutex> guard(mutex);
    standing.prepend(rule); // the newest one counts
}

void ServerEngine::setDefaultAnswer(const ScriptedAnswer &answer)
{
    const std::lock_guard<std::mutex> guard(mutex);
    standardResponder = [answer](const RecordedRequest &) { return answer; };
}

QList<RecordedRequest> ServerEngine::recorded() const
{
    const std::lock_guard<std::mutex> guard(mutex);
    return requests;
}

void ServerEngine::forgetRequests()
{
    const std::lock_guard<std::mutex> guard(mutex);
    requests.clear();
}

int ServerEngine::openConnections() const
{
    const std::lock_guard<std::mutex> guard(mutex);
    return connectionsOpen;
}

void ServerEngine::noteClosed()
{
    const std::lock_guard<std::mutex> guard(mutex);
    --connectionsOpen;
}

void ServerEngine::speakOnly(QSsl::SslProtocol protocol)
{
    const std::lock_guard<std::mutex> guard(mutex);
    tlsVersion = protocol;
}

// The old versions of TLS are spoken only by who lowers OpenSSL's level of security.
void ServerEngine::startEncryption(QSslSocket *socket) const
{
    QSslConfiguration configuration = socket->sslConfiguration();
    {
        const std::lock_guard<std::mutex> guard(mutex);
        configuration.setProtocol(tlsVersion);
    }
    if (configuration.protocol() != QSsl::SecureProtocols)
        configuration.setBackendConfigurationOption("CipherString", QByteArrayLiteral("DEFAULT@SECLEVEL=0"));
    socket->setSslConfiguration(configuration);
    socket->setLocalCertificate(QSslCertificate(authority.hostCertificate));
    socket->setPrivateKey(QSslKey(authority.hostKey, QSsl::Ec));
    socket->startServerEncryption();
}

ScriptedAnswer ServerEngine::answerTo(const RecordedRequest &request)
{
    const ScriptedServer::Responder respond = responderTo(request);
    record(request);
    return respond(request);
}

void ServerEngine::record(const RecordedRequest &request)
{
    {
        const std::lock_guard<std::mutex> guard(mutex);
        requests.append(request);
    }
    Q_EMIT requestReceived();
}

ScriptedServer::Responder ServerEngine::responderTo(const RecordedRequest &request)
{
    const auto fits = [&](const Rule &rule) { return rule.matches(request); };
    const std::lock_guard<std::mutex> guard(mutex);
    const auto next = std::find_if(once.begin(), once.end(), fits);
    if (next != once.end()) {
        const Rule rule = *next;
        once.erase(next);
        return rule.respond;
    }
    const auto rule = std::find_if(standing.cbegin(), standing.cend(), fits);
    return rule == standing.cend() ? standardResponder : rule->respond;
}

ServerConnection::ServerConnection(qintptr descriptor, int number, ServerEngine *serverEngine)
    : QObject(serverEngine)
    , engine(serverEngine)
    , socket(new QSslSocket(this))
    , connectionNumber(number)
{
    connect(socket, &QSslSocket::readyRead, this, &ServerConnection::readMore);
    connect(socket, &QSslSocket::disconnected, this, &ServerConnection::close);
    socket->setSocketDescriptor(descriptor);
}

void ServerConnection::close()
{
    disconnect(socket, nullptr, this, nullptr);
    paused = false;
    engine->noteClosed();
    deleteLater();
}

void ServerConnection::readMore()
{
    acknowledgeAtOnce(socket->socketDescriptor());
    incoming += socket->readAll();
    while (!answering && takeRequest()) {
        if (request.method == "CONNECT")
            openTunnel();
        else
            startAnswer();
    }
}

// True when there was a whole one.
bool ServerConnection::takeRequest()
{
    const int headEnd = incoming.indexOf(HEAD_END);
    if (headEnd < 0)
        return false;
    parseHead(incoming.left(headEnd));
    const int bodyStart = headEnd + HEAD_END.size();
    const int length = request.header("Content-Length").toInt();
    if (incoming.size() < bodyStart + length)
        return false;
    request.body = incoming.mid(bodyStart, length);
    incoming.remove(0, bodyStart + length);
    return true;
}

void ServerConnection::parseHead(const QByteArray &head)
{
    QList<QByteArray> lines = head.split('\n');
    const QList<QByteArray> words = lines.takeFirst().trimmed().split(' ');
    request = RecordedRequest();
    request.method = words.value(0);
    request.target = words.value(1);
    request.connection = connectionNumber;
    request.secure = !tunnelHost.isEmpty();
    for (QByteArray line : lines) {
        if (line.endsWith('\r'))
            line.chop(1);
        request.headers.append(headerFrom(line));
    }
    request.host = request.secure ? tunnelHost : request.header("Host");
}

void ServerConnection::openTunnel()
{
    tunnelHost = request.target.left(request.target.lastIndexOf(':'));
    socket->write("HTTP/1.1 200 Connection established" + HEAD_END);
    engine->startEncryption(socket);
}

void ServerConnection::startAnswer()
{
    answering = true;
    answer = engine->answerTo(request);
    const QByteArray head = answer.head();
    outgoing = request.method == "HEAD" ? head : head + (answer.withoutAnswer ? QByteArray() : answer.content);
    stops.clear();
    for (const qint64 pause : answer.pauses)
        stops.append(pause < 0 ? 0 : qMin(head.size() + pause, qint64(outgoing.size())));
    sent = 0;
    goOn();
}

void ServerConnection::release(const ScriptedServer::Matcher &matches)
{
    if (!paused || !matches(request))
        return;
    goOn();
    readMore();
}

void ServerConnection::goOn()
{
    paused = !stops.isEmpty();
    const qint64 end = paused ? stops.takeFirst() : outgoing.size();
    socket->write(outgoing.mid(int(sent), int(end - sent)));
    sent = end;
    if (!paused)
        endAnswer();
}

void ServerConnection::endAnswer()
{
    if (answer.closedBehind)
        socket->disconnectFromHost(); // the connection takes no further request
    else
        answering = false;
}

} // namespace Korvo::Web::TestSupport
