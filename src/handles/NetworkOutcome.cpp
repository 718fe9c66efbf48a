#include "handles/NetworkOutcome.h"

namespace Korvo::Web {

Error errorFor(QNetworkReply::NetworkError error)
{
    // clang-format off
    switch (error) {
    case QNetworkReply::NoError:                     return Error::None;
    case QNetworkReply::TimeoutError:
    case QNetworkReply::UnknownNetworkError:         return Error::TimeOut;
    case QNetworkReply::OperationCanceledError:      return Error::Cancelled;
    case QNetworkReply::AuthenticationRequiredError: return Error::AuthenticationRequired;
    case QNetworkReply::InternalServerError:         return Error::Server;
    default:                                         return Error::Network; // every other transport failure
    }
    // clang-format on
}

} // namespace Korvo::Web
