#include "ErrorText.h"

namespace Korvo::Demo {

namespace {

QString meaningOf(Web::Error error)
{
    switch (error) {
    case Web::Error::None:                   return QStringLiteral("no error");
    case Web::Error::TimeOut:                return QStringLiteral("the request timed out");
    case Web::Error::Server:                 return QStringLiteral("the server failed");
    case Web::Error::AuthenticationRequired: return QStringLiteral("the credentials were refused");
    case Web::Error::Cancelled:              return QStringLiteral("cancelled");
    case Web::Error::UnreadableLogin:        return QStringLiteral("the login answer cannot be read");
    case Web::Error::FileOpen:               return QStringLiteral("a local file cannot be read");
    case Web::Error::CreationDate:           return QStringLiteral("the creation date is missing");
    case Web::Error::DownloadFolder:         return QStringLiteral("a folder cannot be created, or a name leads out of it");
    case Web::Error::FileWrite:              return QStringLiteral("a downloaded file cannot be written");
    case Web::Error::InvalidParameter:       return QStringLiteral("an argument was rejected");
    case Web::Error::Network:                return QStringLiteral("the connection failed, or the server refused the request");
    }
    return QStringLiteral("unknown");
}

} // namespace

QString errorText(Web::Error error)
{
    return meaningOf(error) + QStringLiteral(" (code %1)").arg(static_cast<int>(error));
}

} // namespace Korvo::Demo
