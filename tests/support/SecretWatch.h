#pragma once

#include <QtCore/QString>

namespace Korvo::Web::TestSupport {

/// The first secret of the local platform that stands in @p text: a password or the code of one of its accounts, an access
/// token, a client secret, a signature. An empty text when there is none.
///
/// Tokens, secrets and signatures are told by their form, which nothing else in a log has.
QString secretIn(const QString &text);

/// Ends the test program at once when a secret stands in @p text, with a word about @p place, where it was found.
void expectNoSecretIn(const QString &text, const char *place);

/// The same for passwords alone, the forms left out: links and answers may carry tickets of their own.
void expectNoPasswordIn(const QString &text, const char *place);

/// From now on no message of Qt or of the library's own logging may tell a secret; they are passed on to who had them before.
void watchMessages();

/// The command lines of this process and of those that it has started may tell no password.
void expectNoPasswordInProcessList();

} // namespace Korvo::Web::TestSupport
