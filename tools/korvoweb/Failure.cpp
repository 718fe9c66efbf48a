#include "Failure.h"

#include "LibraryLog.h"
#include "Text.h"

namespace Korvo::Cli {

namespace {

using Web::Error;

struct Failure
{
    QString name;
    ExitCode code;
    QString text;
};

Failure describe(Error error)
{
    switch (error) {
    case Error::None:
        return {QStringLiteral("None"), ExitCode::NotFound, QStringLiteral("the platform has nothing by that name")};
    case Error::TimeOut:
        return {QStringLiteral("TimeOut"), ExitCode::Network,
                QStringLiteral("the server did not answer in time; check the network, try again later")};
    case Error::Server:
        return {QStringLiteral("Server"), ExitCode::Server,
                QStringLiteral("the server reports a failure of its own; try again later, tell the operator if it stays")};
    case Error::AuthenticationRequired:
        return {QStringLiteral("AuthenticationRequired"), ExitCode::Credentials,
                QStringLiteral("the server does not accept the login (any more); try again")};
    case Error::Cancelled:
        return {QStringLiteral("Cancelled"), ExitCode::Cancelled, QStringLiteral("cancelled")};
    case Error::UnreadableLogin:
        return {QStringLiteral("UnreadableLogin"), ExitCode::Network,
                QStringLiteral("no readable answer to the login; check the network, --proxy and --ca")};
    case Error::FileOpen:
        return {QStringLiteral("FileOpen"), ExitCode::LocalFile,
                QStringLiteral("a local file cannot be opened or read whole; check it and its rights")};
    case Error::CreationDate:
        return {QStringLiteral("CreationDate"), ExitCode::Usage, QStringLiteral("the creation date is not valid")};
    case Error::DownloadFolder:
        return {QStringLiteral("DownloadFolder"), ExitCode::LocalFile,
                QStringLiteral("a folder cannot be made, or a file's name would lead out of it; check the rights")};
    case Error::FileWrite:
        return {QStringLiteral("FileWrite"), ExitCode::LocalFile,
                QStringLiteral("a local file cannot be written; make room on the disk")};
    case Error::InvalidParameter:
        return {QStringLiteral("InvalidParameter"), ExitCode::Usage, QStringLiteral("the library refuses an argument")};
    case Error::Network:
        return {QStringLiteral("Network"), ExitCode::Network,
                QStringLiteral("the connection failed, or the server refused; check the network, --proxy and --ca")};
    }
    // A number that a newer library knows.
    return {QStringLiteral("Unknown"), ExitCode::Network, QStringLiteral("a failure that this version does not know")};
}

} // namespace

QString errorName(Error error)
{
    return describe(error).name;
}

// The code alone says less than the library's log; where that knows better, it counts.
ExitCode exitCodeFor(Error error, const LibraryLog &log)
{
    const QString cause = log.lastNetworkError();
    if (error == Error::Network && cause == QLatin1String("ContentNotFoundError"))
        return ExitCode::NotFound;
    if (error == Error::UnreadableLogin && cause == QLatin1String("InternalServerError"))
        return ExitCode::Server;
    return describe(error).code;
}

QString errorText(Error error, const LibraryLog &log)
{
    if (exitCodeFor(error, log) == ExitCode::NotFound)
        return describe(Error::None).text;
    if (log.lastNetworkError() == QLatin1String("SslHandshakeFailedError"))
        return QStringLiteral("no secure connection: the certificate is not trusted, or something stands between; "
                              "check --ca, --proxy and the clock");
    const QString text = exitCodeFor(error, log) == ExitCode::Server ? describe(Error::Server).text : describe(error).text;
    const QString cause = log.lastCause();
    return cause.isEmpty() ? text : text + QLatin1String(" (") + shownName(cause) + QLatin1Char(')');
}

Outcome failureOf(Error error, const LibraryLog &log)
{
    return {exitCodeFor(error, log), errorText(error, log), {{QStringLiteral("error"), errorName(error)}}};
}

} // namespace Korvo::Cli
