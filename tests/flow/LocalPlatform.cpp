#include "flow/LocalPlatform.h"

#include "flow/SignalRecorder.h"
#include "support/SecretWatch.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QUrlQuery>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QNetworkReply>
#include <QtNetwork/QSslCertificate>
#include <QtNetwork/QSslConfiguration>

#include <chrono>

using namespace std::chrono_literals;

namespace Korvo::Web::TestSupport {

namespace {

constexpr auto START_LIMIT = 30s;
constexpr int STOP_LIMIT_MILLISECONDS = 10000;

QJsonValue jsonOf(const QByteArray &text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text);
    return document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
}

QByteArray textOf(const QJsonValue &value)
{
    const QJsonDocument document = value.isArray() ? QJsonDocument(value.toArray()) : QJsonDocument(value.toObject());
    return document.toJson(QJsonDocument::Compact);
}

} // namespace

const QString COMPANY = QStringLiteral("korvo-company-01");

LocalPlatform::~LocalPlatform()
{
    if (process.state() == QProcess::NotRunning)
        return;
    expectNoPasswordInProcessList();
    stop();
    expectNoSecretIn(QString::fromUtf8(process.readAllStandardOutput()), "the output of the platform");
    expectNoSecretIn(QString::fromUtf8(journalFile()), "the journal of the platform");
}

void LocalPlatform::stop()
{
    process.closeWriteChannel();
    if (process.waitForFinished(STOP_LIMIT_MILLISECONDS))
        return;
    process.kill();
    process.waitForFinished(STOP_LIMIT_MILLISECONDS);
}

QString LocalPlatform::start(const QStringList &options)
{
    watchMessages();
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral(LOCAL_PLATFORM_PROGRAM),
                  QStringList { QStringLiteral("--data"), data.path(), QStringLiteral("--port"), QStringLiteral("0"),
                                QStringLiteral("--proxy-port"), QStringLiteral("0"), QStringLiteral("--no-sync"),
                                QStringLiteral("--exit-with-stdin") }
                      + options);
    return process.waitForStarted() ? readReadyLine() : process.errorString();
}

QString LocalPlatform::readReadyLine()
{
    const QDeadlineTimer deadline(START_LIMIT);
    while (!process.canReadLine()) {
        if (!process.waitForReadyRead(int(deadline.remainingTime())))
            return QStringLiteral("the local platform did not get ready");
    }
    const QJsonObject ready = QJsonDocument::fromJson(process.readLine()).object();
    if (!ready.value(QLatin1String("ready")).toBool())
        return QStringLiteral("the local platform's first line cannot be read");
    control = ready.value(QLatin1String("control")).toString();
    leadHere(quint16(ready.value(QLatin1String("proxyPort")).toInt()), ready.value(QLatin1String("authority")).toString());
    return {};
}

void LocalPlatform::leadHere(quint16 proxyPort, const QString &authority)
{
    QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"), proxyPort));
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates(QSslCertificate::fromPath(authority));
    QSslConfiguration::setDefaultConfiguration(configuration);
}

QJsonValue LocalPlatform::get(const QString &route)
{
    return answer(manager.get(QNetworkRequest(QUrl(control + QLatin1Char('/') + route))));
}

QJsonValue LocalPlatform::post(const QString &route, const QJsonValue &body)
{
    QNetworkRequest request(QUrl(control + QLatin1Char('/') + route));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArrayLiteral("application/json"));
    return answer(manager.post(request, textOf(body)));
}

QJsonValue LocalPlatform::answer(QNetworkReply *reply)
{
    bool isGood = false;
    const QByteArray text = bytes(reply, &isGood);
    return isGood ? jsonOf(text) : QJsonValue(QJsonValue::Undefined);
}

QByteArray LocalPlatform::bytes(QNetworkReply *reply, bool *isGood)
{
    const QScopedPointer<QNetworkReply> owned(reply);
    const bool answered = eventually([&] { return reply->isFinished(); });
    *isGood = answered && reply->error() == QNetworkReply::NoError;
    if (*isGood)
        return reply->readAll();
    qWarning("control route: %s %s", qPrintable(reply->errorString()), reply->readAll().constData());
    return {};
}

int LocalPlatform::addFault(const QJsonObject &fault)
{
    return post(QStringLiteral("faults"), fault)[QLatin1String("ids")][0].toInt();
}

int LocalPlatform::addFault(const QString &kind, const QString &route, int count)
{
    return addFault({ { QStringLiteral("kind"), kind }, { QStringLiteral("route"), route },
                      { QStringLiteral("count"), count } });
}

void LocalPlatform::clearFaults()
{
    post(QStringLiteral("faults"), QJsonObject { { QStringLiteral("clear"), true } });
}

int LocalPlatform::hits(int fault)
{
    return countOf(fault, QLatin1String("hits"));
}

int LocalPlatform::arrived(int fault)
{
    return countOf(fault, QLatin1String("arrived"));
}

int LocalPlatform::seen(int fault)
{
    return countOf(fault, QLatin1String("seen"));
}

int LocalPlatform::countOf(int fault, QLatin1String member)
{
    const QJsonArray faults = get(QStringLiteral("faults")).toArray();
    for (const QJsonValue &entry : faults) {
        if (entry[QLatin1String("id")].toInt() == fault)
            return entry[member].toInt();
    }
    return 0;
}

bool LocalPlatform::waitForHit(int fault, int number)
{
    const QDeadlineTimer deadline(START_LIMIT);
    while (hits(fault) < number) {
        if (deadline.hasExpired())
            return false;
    }
    return true;
}

void LocalPlatform::setClockSkew(int seconds)
{
    post(QStringLiteral("clock"), QJsonObject { { QStringLiteral("skewSeconds"), seconds } });
}

void LocalPlatform::addAccount(const QJsonObject &account)
{
    post(QStringLiteral("accounts"), account);
}

QString LocalPlatform::addProject(const QString &id, const QString &name, const QJsonArray &objects)
{
    const QJsonObject project { { QStringLiteral("projectId"), id }, { QStringLiteral("name"), name },
                                { QStringLiteral("objects"), objects } };
    return post(QStringLiteral("projects"), project)[QLatin1String("bucket")].toString();
}

QJsonObject LocalPlatform::project(const QString &id)
{
    const QJsonArray projects = get(QStringLiteral("state"))[QLatin1String("projects")].toArray();
    for (const QJsonValue &entry : projects) {
        if (entry[QLatin1String("projectId")].toString() == id)
            return entry.toObject();
    }
    return {};
}

QMap<QString, QString> LocalPlatform::hashes(const QString &bucket)
{
    QMap<QString, QString> found;
    const QJsonArray buckets = state().value(QLatin1String("buckets")).toArray();
    for (const QJsonValue &entry : buckets) {
        if (entry[QLatin1String("name")].toString() != bucket)
            continue;
        const QJsonArray objects = entry[QLatin1String("objects")].toArray();
        for (const QJsonValue &object : objects)
            found.insert(object[QLatin1String("key")].toString(), object[QLatin1String("sha256")].toString());
    }
    return found;
}

QByteArray LocalPlatform::object(const QString &bucket, const QString &key)
{
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("bucket"), bucket);
    query.addQueryItem(QStringLiteral("key"), key);
    QUrl url(control + QStringLiteral("/object"));
    url.setQuery(query);
    bool isGood = false;
    return bytes(manager.get(QNetworkRequest(url)), &isGood);
}

QMap<QString, QString> LocalPlatform::multipartStates(const QString &bucket)
{
    QMap<QString, QString> found;
    const QJsonArray uploads = get(QStringLiteral("state"))[QLatin1String("uploads")].toArray();
    for (const QJsonValue &upload : uploads) {
        if (upload[QLatin1String("bucket")].toString() == bucket)
            found.insert(upload[QLatin1String("key")].toString(), upload[QLatin1String("state")].toString());
    }
    return found;
}

void LocalPlatform::startJournal()
{
    const QJsonArray entries = get(QStringLiteral("journal?since=%1").arg(journalStart)).toArray();
    if (!entries.isEmpty())
        journalStart = entries.last()[QLatin1String("number")].toInt();
}

QJsonArray LocalPlatform::journalEntries()
{
    return get(QStringLiteral("journal?since=%1").arg(journalStart)).toArray();
}

QStringList LocalPlatform::journal()
{
    QStringList lines;
    const QJsonArray entries = journalEntries();
    for (const QJsonValue &entry : entries)
        lines.append(entry[QLatin1String("method")].toString() + QLatin1Char(' ')
                     + entry[QLatin1String("route")].toString());
    return lines;
}

QByteArray LocalPlatform::journalFile() const
{
    QFile file(data.filePath(QStringLiteral("journal.jsonl")));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace Korvo::Web::TestSupport
