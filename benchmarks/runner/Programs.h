#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QProcess>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Korvo::Bench {

/// Where everything is, and on which processors it runs.
struct Place
{
    QString programs; ///< folder of the benchmark programs
    QString work;     ///< folder in memory for files and keys
    int port = 443;
    bool throughProxy = false; ///< without a network of our own the hosts are reached through a tunnel
    int serverProcessor = 0;
    int clientProcessor = 1;

    QString authority() const { return work + QStringLiteral("/server/ca.pem"); }
};

/// Runs a program on the clients' processor to its end and reads the figures that it prints; throws std::runtime_error
/// when it fails.
QJsonObject figuresOf(const Place &place, const QString &program, const QStringList &arguments);

/// The same for a transfer with the server. @p program is korvo-bench-client or korvo-bench-peer.
QJsonObject transferFigures(const Place &place, const QString &program, const QStringList &arguments);

/// What a transfer is told about the way to the server.
QStringList wayToServer(const Place &place);

/// Sink and source on a processor of its own, as long as this object lives.
class Server
{
public:
    /// @p record names a file for a comparison of what two clients send; empty in measurements.
    explicit Server(const Place &place, const QString &record = {});
    ~Server();

private:
    QProcess process;
};

} // namespace Korvo::Bench
