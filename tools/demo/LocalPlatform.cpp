#include "LocalPlatform.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <chrono>

namespace Korvo::Demo {

namespace {

using namespace std::chrono_literals;

constexpr auto START_LIMIT = 15s;
constexpr auto STOP_LIMIT = 10s;

int milliseconds(std::chrono::milliseconds duration)
{
    return static_cast<int>(duration.count());
}

} // namespace

LocalPlatform::LocalPlatform(const QString &programPath)
    : program(programPath)
{
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    connect(&process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this, &LocalPlatform::handleFinished);
}

LocalPlatform::~LocalPlatform()
{
    stop();
}

bool LocalPlatform::start()
{
    if (!data.isValid())
        return fail(QStringLiteral("no temporary folder: ") + data.errorString());
    // It ends with its standard input, so it cannot outlive this program, however that may end.
    process.start(program, {QStringLiteral("--data"), data.path(), QStringLiteral("--port"), QStringLiteral("0"),
                            QStringLiteral("--proxy-port"), QStringLiteral("0"), QStringLiteral("--exit-with-stdin"),
                            QStringLiteral("--web-copies"), QStringLiteral("lower")});
    if (!process.waitForStarted(milliseconds(START_LIMIT)))
        return fail(program + QStringLiteral(": ") + process.errorString());
    return readReadyLine();
}

bool LocalPlatform::readReadyLine()
{
    const QDeadlineTimer deadline(START_LIMIT);
    while (!process.canReadLine()) {
        if (!process.waitForReadyRead(static_cast<int>(deadline.remainingTime())))
            return fail(QStringLiteral("the local platform did not get ready"));
    }
    return takeReadyLine(process.readLine());
}

bool LocalPlatform::takeReadyLine(const QByteArray &line)
{
    const QJsonObject ready = QJsonDocument::fromJson(line).object();
    proxy = static_cast<quint16>(ready.value(QLatin1String("proxyPort")).toInt());
    authority = ready.value(QLatin1String("authority")).toString();
    if (!ready.value(QLatin1String("ready")).toBool() || proxy == 0 || authority.isEmpty())
        return fail(QStringLiteral("the local platform's ready line cannot be read: ") + QString::fromUtf8(line.trimmed()));
    return true;
}

bool LocalPlatform::stop()
{
    stopping = true;
    if (process.state() == QProcess::NotRunning)
        return true;
    process.closeWriteChannel();
    if (process.waitForFinished(milliseconds(STOP_LIMIT)))
        return true;
    process.kill();
    process.waitForFinished(milliseconds(STOP_LIMIT));
    return fail(QStringLiteral("the local platform did not end by itself"));
}

void LocalPlatform::handleFinished()
{
    if (!stopping)
        Q_EMIT died(QStringLiteral("the local platform ended with code %1").arg(process.exitCode()));
}

bool LocalPlatform::fail(const QString &reason)
{
    reasonOfFailure = reason;
    return false;
}

} // namespace Korvo::Demo
