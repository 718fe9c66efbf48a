#pragma once

#include <NQKorvoWeb/KorvoWebApi.h>

#include <QtCore/QString>

namespace Korvo::Desktop {

/// A failure in words that a user can act on.
struct Explanation
{
    QString title;  ///< what happened
    QString cause;  ///< why, as far as the code tells
    QString remedy; ///< what to do now
};

Explanation explain(Web::Error error);

/// @p error is what errorOccurred() told before the login ended, Error::None when it told nothing.
Explanation explain(Web::KorvoWebApi::LoginResult result, Web::Error error);

} // namespace Korvo::Desktop
