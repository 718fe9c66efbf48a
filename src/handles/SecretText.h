#pragma once

#include <QtCore/QString>

namespace Korvo::Web {

/// The text without the values of its tokens, passwords and second-factor codes; everything else stays as it is.
///
/// Made for what no parser could read: a reply that was cut off, a web page, an echo of what was sent. Where it is not
/// clear how far a value reaches, more is left out rather than less. Takes time in proportion to the length of the text.
QString withoutSecrets(const QString &text);

} // namespace Korvo::Web
