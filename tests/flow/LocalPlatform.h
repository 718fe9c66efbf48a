#pragma once

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QJsonValue>
#include <QtCore/QMap>
#include <QtCore/QProcess>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>
#include <QtNetwork/QNetworkAccessManager>

class QNetworkReply;

namespace Korvo::Web::TestSupport {

/// The company of the accounts that the local platform has from the start.
extern const QString COMPANY;

/// The local platform as a process of its own, and this process led to it: as long as it runs, every facade reaches it
/// through the application's proxy and trusts its authority.
class LocalPlatform
{
public:
    /// Starts it and waits until it is ready; the reason when that fails, else an empty text.
    ///
    /// From here on no secret may be told: not in a message, and when the platform ends, not in its output, its journal or
    /// the command lines of the processes of the test.
    QString start(const QStringList &options = {});
    ~LocalPlatform();

    /// The file to trust whoever wants to come here by settings of its own.
    QString authorityFile() const { return data.filePath(QStringLiteral("ca.pem")); }
    qint64 processId() const { return process.processId(); }
    /// "https://localhost:PORT": the platform without the proxy.
    QString directRoot() const { return control.left(control.lastIndexOf(QLatin1Char('/'))); }

    /// Asks a control route; an undefined value when it refuses.
    QJsonValue get(const QString &route);
    QJsonValue post(const QString &route, const QJsonValue &body);

    /// Puts a fault in force and tells its number.
    int addFault(const QJsonObject &fault);
    /// The same for the kind @p kind on one route, @p count times, 0 for ever.
    int addFault(const QString &kind, const QString &route, int count = 1);
    void clearFaults();
    /// How many requests the fault has struck so far.
    int hits(int fault);
    /// How many of the requests that were hit have come whole.
    int arrived(int fault);
    /// How many requests on the route of the fault have come so far, struck or not.
    int seen(int fault);
    /// Runs the event loop until the fault has struck.
    bool waitForHit(int fault, int number = 1);

    void setClockSkew(int seconds);
    void addAccount(const QJsonObject &account);
    /// Makes a project with objects as if a client had uploaded it; the bucket's name.
    QString addProject(const QString &id, const QString &name, const QJsonArray &objects = {});

    QJsonObject state() { return get(QStringLiteral("state?sha256")).toObject(); }
    QJsonObject project(const QString &id);
    /// Keys of a bucket with the hexadecimal SHA-256 of their bytes.
    QMap<QString, QString> hashes(const QString &bucket);
    /// The bytes of one object.
    QByteArray object(const QString &bucket, const QString &key);
    /// States of the multipart uploads of a bucket, by key.
    QMap<QString, QString> multipartStates(const QString &bucket);

    /// From here on journal() counts.
    void startJournal();
    /// "METHOD route" of each request since startJournal(), in the order of their answers.
    QStringList journal();
    QJsonArray journalEntries();
    /// How many requests the platform has refused so far.
    int refusals() { return get(QStringLiteral("refusals")).toObject().value(QLatin1String("count")).toInt(); }

    /// The bytes below its data folder that were written about requests: the journal.
    QByteArray journalFile() const;

private:
    void stop();
    int countOf(int fault, QLatin1String member);
    QString readReadyLine();
    void leadHere(quint16 proxyPort, const QString &authority);
    QJsonValue answer(QNetworkReply *reply);
    QByteArray bytes(QNetworkReply *reply, bool *isGood);

    QTemporaryDir data;
    QProcess process;
    QString control;
    QNetworkAccessManager manager;
    int journalStart = 0;
};

} // namespace Korvo::Web::TestSupport
