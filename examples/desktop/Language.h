#pragma once

#include <QtCore/QLocale>

class QCoreApplication;

namespace Korvo::Desktop {

/// Loads the program's texts and Qt's own in the language of @p locale, and English where there is no other.
/// @return whether there is a translation of the program's texts for the language
bool installLanguage(QCoreApplication &application, const QLocale &locale);

} // namespace Korvo::Desktop
