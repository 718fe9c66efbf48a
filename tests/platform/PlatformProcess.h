#pragma once

#include <nlohmann/json.hpp>

#include <QtCore/QProcess>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>

#include <string>

namespace PlatformTest {

/// A running local platform with a data folder of its own.
class PlatformProcess
{
public:
    PlatformProcess();
    ~PlatformProcess();

    /// False when the ready line does not come.
    bool start(const QStringList &options = {});
    void killNow();

    /// By SIGTERM; the exit code, -1 if it does not end.
    int terminate();
    bool isRunning() const { return process.state() == QProcess::Running; }

    int port() const { return ready["port"].get<int>(); }
    int proxyPort() const { return ready["proxyPort"].get<int>(); }
    std::string authority() const { return ready["authority"].get<std::string>(); }
    QString dataFolder() const { return folder.path() + QStringLiteral("/data"); }
    QString outerFolder() const { return folder.path(); }
    qint64 startMilliseconds() const { return startTime; }

    /// A control request; null on failure.
    nlohmann::json control(const std::string &method, const std::string &path, const nlohmann::json &body = nullptr) const;
    void setFault(const nlohmann::json &fault) const;
    void clearFaults() const;

    static QString program();

private:
    QTemporaryDir folder;
    QProcess process;
    nlohmann::json ready;
    qint64 startTime = 0;
};

} // namespace PlatformTest
