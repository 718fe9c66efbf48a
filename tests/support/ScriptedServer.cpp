#include "support/ScriptedServer.h"

#include "request/ServerRoots.h"
#include "support/ServerEngine.h"

#include <QtCore/QEventLoop>
#include <QtCore/QTimer>
#include <QtCore/QUrl>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QSslCertificate>
#include <QtNetwork/QSslConfiguration>

namespace Korvo::Web::TestSupport {

namespace {

const QByteArray LINE_END = "\r\n";

QList<QByteArray> hostNames()
{
    QList<QByteArray> names{"localhost"};
    for (const char *root : {ServerRoots::PRODUCTION_WEB, ServerRoots::PRODUCTION_SERVICE, ServerRoots::BETA_WEB,
                             ServerRoots::BETA_SERVICE})
        names.append(QUrl(QString::fromUtf8(root)).host().toUtf8());
    return names;
}

ScriptedServer::Matcher isFor(const QByteArray &path)
{
    return [path](const RecordedRequest &request) { return request.path() == path; };
}

ScriptedServer::Responder says(const ScriptedAnswer &answer)
{
    return [answer](const RecordedRequest &) { return answer; };
}

} // namespace

QByteArray RecordedRequest::header(const QByteArray &name) const
{
    for (const auto &header : headers) {
        if (header.first.compare(name, Qt::CaseInsensitive) == 0)
            return header.second;
    }
    return {};
}

QByteArray RecordedRequest::url() const
{
    // What a proxy is asked for in the open comes with the whole address.
    if (!target.startsWith('/'))
        return target;
    return (secure ? "https://" : "http://") + host + target;
}

QByteArray RecordedRequest::path() const
{
    const int start = target.startsWith('/') ? 0 : target.indexOf('/', target.indexOf("://") + 3);
    return target.mid(start, target.indexOf('?') < 0 ? -1 : target.indexOf('?') - start);
}

ScriptedAnswer::ScriptedAnswer(int status, const QByteArray &body)
    : statusCode(status)
    , content(body)
{
}

ScriptedAnswer ScriptedAnswer::redirect(const QByteArray &location)
{
    return ScriptedAnswer(302).withHeader("Location", location);
}

ScriptedAnswer ScriptedAnswer::dropped()
{
    ScriptedAnswer answer;
    answer.withoutAnswer = true;
    answer.closedBehind = true;
    return answer;
}

ScriptedAnswer &ScriptedAnswer::withHeader(const QByteArray &name, const QByteArray &value)
{
    headerList.append({name, value});
    return *this;
}

ScriptedAnswer &ScriptedAnswer::announcing(qint64 bytes)
{
    announcedLength = bytes;
    closedBehind = true;
    return *this;
}

ScriptedAnswer &ScriptedAnswer::withoutLength()
{
    lengthLeftOut = true;
    closedBehind = true;
    return *this;
}

ScriptedAnswer &ScriptedAnswer::pausedBeforeHead()
{
    pauses.prepend(-1);
    return *this;
}

ScriptedAnswer &ScriptedAnswer::pausedAt(qint64 bodyBytes)
{
    pauses.append(bodyBytes);
    return *this;
}

ScriptedAnswer &ScriptedAnswer::closedAt(qint64 bodyBytes)
{
    announcing(announcedLength.value_or(content.size()));
    content.truncate(int(bodyBytes));
    return *this;
}

QByteArray ScriptedAnswer::head() const
{
    if (withoutAnswer)
        return {};
    QByteArray text = "HTTP/1.1 " + QByteArray::number(statusCode) + " Scripted" + LINE_END;
    for (const auto &header : headerList)
        text += header.first + ": " + header.second + LINE_END;
    if (!lengthLeftOut)
        text += "Content-Length: " + QByteArray::number(announcedLength.value_or(content.size())) + LINE_END;
    return text + LINE_END;
}

ScriptedServer::ScriptedServer(QObject *parent)
    : QObject(parent)
    , authority(TestAuthority::forHosts(hostNames()))
    , engine(new ServerEngine(authority))
    , listeningPort(engine->open())
{
    engine->moveToThread(&thread);
    connect(&thread, &QThread::finished, engine, &QObject::deleteLater);
    connect(engine, &ServerEngine::requestReceived, this, &ScriptedServer::requestReceived);
    thread.start();
}

ScriptedServer::~ScriptedServer()
{
    thread.quit();
    thread.wait();
}

quint16 ScriptedServer::port() const
{
    return listeningPort;
}

QByteArray ScriptedServer::plainRoot() const
{
    return "http://127.0.0.1:" + QByteArray::number(listeningPort);
}

QByteArray ScriptedServer::authorityCertificate() const
{
    return authority.authorityCertificate;
}

void ScriptedServer::speakOnly(QSsl::SslProtocol protocol)
{
    engine->speakOnly(protocol);
}

void ScriptedServer::enqueue(const QByteArray &path, const ScriptedAnswer &answer)
{
    enqueue(isFor(path), answer);
}

void ScriptedServer::enqueue(const Matcher &matches, const ScriptedAnswer &answer)
{
    engine->addOnce({matches, says(answer)});
}

void ScriptedServer::always(const QByteArray &path, const ScriptedAnswer &answer)
{
    always(isFor(path), answer);
}

void ScriptedServer::always(const Matcher &matches, const ScriptedAnswer &answer)
{
    engine->addStanding({matches, says(answer)});
}

void ScriptedServer::always(const QByteArray &path, const Responder &responder)
{
    engine->addStanding({isFor(path), responder});
}

void ScriptedServer::setDefaultAnswer(const ScriptedAnswer &answer)
{
    engine->setDefaultAnswer(answer);
}

void ScriptedServer::release()
{
    release([](const RecordedRequest &) { return true; });
}

void ScriptedServer::release(const QByteArray &path)
{
    release(isFor(path));
}

void ScriptedServer::release(const Matcher &matches)
{
    engine->release(matches);
}

QList<RecordedRequest> ScriptedServer::requests() const
{
    return engine->recorded();
}

QList<RecordedRequest> ScriptedServer::requests(const QByteArray &path) const
{
    QList<RecordedRequest> fitting;
    for (const RecordedRequest &request : requests()) {
        if (request.path() == path)
            fitting.append(request);
    }
    return fitting;
}

int ScriptedServer::requestCount() const
{
    return requests().size();
}

int ScriptedServer::requestCount(const QByteArray &path) const
{
    return requests(path).size();
}

RecordedRequest ScriptedServer::lastRequest() const
{
    const QList<RecordedRequest> all = requests();
    return all.isEmpty() ? RecordedRequest() : all.last();
}

int ScriptedServer::openConnections() const
{
    return engine->openConnections();
}

void ScriptedServer::forgetRequests()
{
    engine->forgetRequests();
}

bool ScriptedServer::waitForRequests(int count, int limitMs) const
{
    QEventLoop loop;
    QTimer limit;
    limit.setSingleShot(true);
    connect(&limit, &QTimer::timeout, &loop, &QEventLoop::quit);
    connect(this, &ScriptedServer::requestReceived, &loop, &QEventLoop::quit);
    limit.start(limitMs);
    while (requestCount() < count && limit.isActive())
        loop.exec();
    return requestCount() >= count;
}

RouteToServer::RouteToServer(const ScriptedServer &server)
    : formerProxy(QNetworkProxy::applicationProxy())
    , formerConfiguration(QSslConfiguration::defaultConfiguration())
{
    QNetworkProxy::setApplicationProxy(
        QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"), server.port()));
    QSslConfiguration configuration = formerConfiguration;
    configuration.setCaCertificates({QSslCertificate(server.authorityCertificate())});
    QSslConfiguration::setDefaultConfiguration(configuration);
}

RouteToServer::~RouteToServer()
{
    QSslConfiguration::setDefaultConfiguration(formerConfiguration);
    QNetworkProxy::setApplicationProxy(formerProxy);
}

} // namespace Korvo::Web::TestSupport
