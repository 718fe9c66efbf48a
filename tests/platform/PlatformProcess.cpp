#include "PlatformProcess.h"

#include "WireClient.h"

#include <QtCore/QElapsedTimer>

namespace PlatformTest {
namespace {

constexpr int LIMIT_MILLISECONDS = 20000;

} // namespace

PlatformProcess::PlatformProcess() = default;

PlatformProcess::~PlatformProcess()
{
    killNow();
}

QString PlatformProcess::program()
{
    return QString::fromUtf8(LOCAL_PLATFORM);
}

bool PlatformProcess::start(const QStringList &options)
{
    QElapsedTimer timer;
    timer.start();
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(program(), QStringList{QStringLiteral("--data"), dataFolder(), QStringLiteral("--exit-with-stdin")} + options);
    while (!process.canReadLine())
        if (!process.waitForReadyRead(LIMIT_MILLISECONDS))
            return false;
    startTime = timer.elapsed();
    ready = nlohmann::json::parse(process.readLine().toStdString(), nullptr, false);
    return ready.is_object() && ready.value("ready", false);
}

void PlatformProcess::killNow()
{
    if (!isRunning())
        return;
    process.kill();
    process.waitForFinished(LIMIT_MILLISECONDS);
}

int PlatformProcess::terminate()
{
    process.terminate();
    if (!process.waitForFinished(LIMIT_MILLISECONDS) || process.exitStatus() != QProcess::NormalExit)
        return -1;
    return process.exitCode();
}

nlohmann::json PlatformProcess::control(const std::string &method, const std::string &path, const nlohmann::json &body) const
{
    WireRequest request{method, "/control/" + path, {{"Content-Type", "application/json"}}, body.is_null() ? std::string() : body.dump()};
    const auto client = WireClient::direct(port(), authority());
    const WireAnswer answer = client->exchange(request);
    return nlohmann::json::parse(answer.body, nullptr, false);
}

void PlatformProcess::setFault(const nlohmann::json &fault) const
{
    control("POST", "faults", {{"set", nlohmann::json::array({fault})}});
}

void PlatformProcess::clearFaults() const
{
    control("POST", "faults", {{"clear", true}});
}

} // namespace PlatformTest
