#pragma once

#include <NQKorvoWeb/Error.h>

#include <QtNetwork/QNetworkReply>

namespace Korvo::Web {

/// The library's code for the error that ended a reply; Error::None when there was none.
Error errorFor(QNetworkReply::NetworkError error);

} // namespace Korvo::Web
