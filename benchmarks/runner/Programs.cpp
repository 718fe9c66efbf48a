#include "runner/Programs.h"

#include <QtCore/QDir>
#include <QtCore/QJsonDocument>

#include <stdexcept>

namespace Korvo::Bench {
namespace {

constexpr int START_MILLISECONDS = 30000;
constexpr int STOP_MILLISECONDS = 30000;
constexpr int LONGEST_RUN_MILLISECONDS = 30 * 60 * 1000;

QStringList pinned(int processor, const QString &program, const QStringList &arguments)
{
    return QStringList{QStringLiteral("-c"), QString::number(processor), program} + arguments;
}

[[noreturn]] void fail(const QString &program, const QStringList &arguments, const QString &reason)
{
    throw std::runtime_error(
        (program + QLatin1Char(' ') + arguments.join(QLatin1Char(' ')) + QStringLiteral(": ") + reason).toStdString());
}

} // namespace

QJsonObject figuresOf(const Place &place, const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral("taskset"),
                  pinned(place.clientProcessor, place.programs + QLatin1Char('/') + program, arguments));
    if (!process.waitForFinished(LONGEST_RUN_MILLISECONDS) || process.exitStatus() != QProcess::NormalExit)
        fail(program, arguments, process.errorString());
    if (process.exitCode() != 0)
        fail(program, arguments, QStringLiteral("exit code %1").arg(process.exitCode()));
    const QJsonObject figures = QJsonDocument::fromJson(process.readAllStandardOutput()).object();
    if (figures.isEmpty())
        fail(program, arguments, QStringLiteral("no figures"));
    return figures;
}

QStringList wayToServer(const Place &place)
{
    QStringList way{QStringLiteral("--authority"), place.authority()};
    if (place.throughProxy)
        way << QStringLiteral("--proxy") << QString::number(place.port);
    return way;
}

QJsonObject transferFigures(const Place &place, const QString &program, const QStringList &arguments)
{
    return figuresOf(place, program, arguments + wayToServer(place));
}

Server::Server(const Place &place, const QString &record)
{
    const QString data = place.work + QStringLiteral("/server");
    QDir().mkpath(data);
    QStringList arguments{QStringLiteral("--data"), data, QStringLiteral("--port"), QString::number(place.port)};
    if (!record.isEmpty())
        arguments << QStringLiteral("--record") << record;
    const QString program = place.programs + QStringLiteral("/korvo-bench-server");
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral("taskset"), pinned(place.serverProcessor, program, arguments));
    if (!process.waitForReadyRead(START_MILLISECONDS))
        fail(program, arguments, QStringLiteral("did not get ready"));
}

Server::~Server()
{
    process.closeWriteChannel();
    if (!process.waitForFinished(STOP_MILLISECONDS))
        process.kill();
    process.waitForFinished(STOP_MILLISECONDS);
}

} // namespace Korvo::Bench
