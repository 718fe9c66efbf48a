#include "faults/Observation.h"

#include "flow/Folders.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QSet>

using namespace Korvo::Web::TestSupport;

namespace Korvo::Web::Faults {

namespace {

template <typename Entry>
QString someOrNone(const QVariant &list)
{
    return list.value<QList<Entry>>().isEmpty() ? QStringLiteral("none") : QStringLiteral("some");
}

/// What the rules say of a signal's arguments; a null text for signals that tell no end.
QString toldBy(const SignalEvent &event)
{
    const QVariant first = event.arguments.value(0);
    if (event.name == "loginResult")
        return QString::number(int(event.arguments.value(1).value<KorvoWebApi::LoginResult>()));
    if (event.name == "errorOccurred" || event.name == "queryRemoteProjectsError")
        return QString::number(int(first.value<Error>()));
    if (event.name == "projectInfoReceived")
        return someOrNone<ProjectInfo>(first);
    if (event.name == "uploadStatusInfoReceived")
        return someOrNone<UploadStatusInfo>(first);
    if (event.name == "allProjectsMediaDownloadLinkReceived")
        return someOrNone<SingleMediaFileLinkData>(first);
    static const QByteArrayList PLAIN{"uploadFinished",
                                      "downloadFinished",
                                      "tokenAuthenticationNeeded",
                                      "loginExpired",
                                      "singleFileDownloadLinkReceived",
                                      "uploadErrorOccurred",
                                      "downloadErrorOccurred",
                                      "anyDownloadActiveChanged"};
    return PLAIN.contains(event.name) ? QStringLiteral("") : QString();
}

QString failureIn(const QString &message)
{
    static const QString NETWORK = QStringLiteral("Network Error: \"");
    if (message.startsWith(NETWORK))
        return message.mid(NETWORK.size()).section(QLatin1Char('"'), 0, 0);
    return message.section(QLatin1Char('\n'), 0, 0).section(QLatin1Char('"'), 0, 0);
}

QString routeOf(const QString &route, const RequestKind &request)
{
    if (route.startsWith(QLatin1String("webdav/")))
        return Route::FILE;
    return request.route == QLatin1String("media/*") && route.startsWith(QLatin1String("media/")) ? request.route
                                                                                                  : route;
}

QJsonObject entryOf(const QJsonArray &entries, const char *member, const QString &value)
{
    for (const QJsonValue &entry : entries) {
        if (entry[QLatin1String(member)].toString() == value)
            return entry.toObject();
    }
    return {};
}

QString statusName(int status)
{
    static const QStringList NAMES{QStringLiteral("unknown"), QStringLiteral("begun"), QStringLiteral("uploaded"),
                                   QStringLiteral("cancelled")};
    return NAMES.value(status);
}

QStringList objectLines(LocalPlatform &platform, const QJsonObject &bucket, const QMap<QString, QByteArray> &files)
{
    QStringList lines;
    int whole = 0;
    const QJsonArray objects = bucket.value(QLatin1String("objects")).toArray();
    for (const QJsonValue &object : objects) {
        const QString key = object[QLatin1String("key")].toString();
        const bool isWhole = platform.object(bucket.value(QLatin1String("name")).toString(), key) == files.value(key);
        whole += isWhole ? 1 : 0;
        if (!isWhole)
            lines.append(key + QStringLiteral(" differs"));
    }
    lines.prepend(QStringLiteral("%1 files").arg(whole));
    return lines;
}

QStringList partsLines(const QJsonArray &uploads, const QString &bucket)
{
    QMap<QString, int> states;
    for (const QJsonValue &upload : uploads) {
        if (upload[QLatin1String("bucket")].toString() == bucket)
            ++states[upload[QLatin1String("state")].toString()];
    }
    QStringList lines;
    for (auto state = states.cbegin(); state != states.cend(); ++state)
        lines.append(partsLine(state.value(), state.key()));
    return lines;
}

int lastValue(const SignalRecorder &recorder, const char *name)
{
    const QList<QVariantList> all = recorder.all(name);
    return all.isEmpty() ? 0 : all.last().at(1).toInt();
}

} // namespace

QStringList heardOf(const SignalRecorder &recorder)
{
    QStringList heard;
    for (const SignalEvent &event : recorder.events()) {
        const QString told = toldBy(event);
        if (!told.isNull())
            heard.append(QLatin1String(event.name) + QLatin1Char('(') + told + QLatin1Char(')'));
    }
    return heard;
}

QStringList logLines(const QList<LogEntry> &entries)
{
    QStringList lines;
    for (const LogEntry &entry : entries) {
        if (entry.message.startsWith(QLatin1String("Cannot pause upload."))) // the scene's own
            continue;
        const QString level = entry.level == 1 ? QString() : QStringLiteral("level %1 ").arg(entry.level);
        lines.append(level + entry.category.section(QStringLiteral("::"), -1) + QStringLiteral(": ")
                     + failureIn(entry.message));
    }
    lines.sort();
    return lines;
}

QMap<QString, int> requestsIn(const QJsonArray &journal, const RequestKind &request)
{
    QMap<QString, int> seen;
    for (const QJsonValue &entry : journal) {
        if (!entry[QLatin1String("brokenOff")].toBool())
            ++seen[routeOf(entry[QLatin1String("route")].toString(), request)];
    }
    return seen;
}

QString leftOf(const QString &path, const QByteArray &whole)
{
    if (!QFile::exists(path))
        return QStringLiteral("gone");
    const QByteArray bytes = readFile(path);
    if (bytes.isEmpty())
        return QStringLiteral("empty");
    if (bytes == whole)
        return QStringLiteral("whole");
    return whole.startsWith(bytes) ? QStringLiteral("part") : QStringLiteral("other");
}

QString nameOf(KorvoWebApi::LoginStatus status)
{
    switch (status) {
    case KorvoWebApi::LoginStatus::LoginStatusLoggedIn:
        return QStringLiteral("logged in");
    case KorvoWebApi::LoginStatus::LoginStatusLoggingIn:
        return QStringLiteral("logging in");
    case KorvoWebApi::LoginStatus::LoginStatusLoggedOut:
        return QStringLiteral("logged out");
    }
    return {};
}

QString filesDone(const SignalRecorder &recorder, const char *completed, const char *total)
{
    return QStringLiteral("%1 of %2").arg(lastValue(recorder, completed)).arg(lastValue(recorder, total));
}

QStringList storedOf(LocalPlatform &platform, const QJsonObject &state, const QString &projectId,
                     const QMap<QString, QByteArray> &files)
{
    const QJsonObject project = entryOf(state.value(QLatin1String("projects")).toArray(), "projectId", projectId);
    const QString bucketName = project.value(QLatin1String("bucket")).toString();
    const QJsonObject bucket = entryOf(state.value(QLatin1String("buckets")).toArray(), "name", bucketName);
    return QStringList{bucket.isEmpty() ? QStringLiteral("no bucket") : QStringLiteral("bucket")}
           + objectLines(platform, bucket, files)
           + QStringList{QStringLiteral("project ") + statusName(project.value(QLatin1String("status")).toInt())}
           + partsLines(state.value(QLatin1String("uploads")).toArray(), bucketName);
}

QStringList transcodedOf(const QJsonObject &state, const QString &idsBegin)
{
    QSet<QString> buckets;
    const QJsonArray projects = state.value(QLatin1String("projects")).toArray();
    for (const QJsonValue &project : projects) {
        if (project[QLatin1String("projectId")].toString().startsWith(idsBegin + QLatin1Char('v')))
            buckets.insert(project[QLatin1String("bucket")].toString());
    }
    QSet<QString> transcoded;
    const QJsonArray jobs = state.value(QLatin1String("transcodings")).toArray();
    for (const QJsonValue &job : jobs) {
        if (buckets.contains(job[QLatin1String("bucket")].toString()))
            transcoded.insert(job[QLatin1String("bucket")].toString());
    }
    return {QStringLiteral("%1 transcoded").arg(transcoded.size())};
}

} // namespace Korvo::Web::Faults
