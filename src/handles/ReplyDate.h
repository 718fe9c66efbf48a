#pragma once

#include <QtCore/QDateTime>

class QString;

namespace Korvo::Web {

/// The date of a project: "yyyy-MM-ddThh:mm:ss" in local time, and nothing else; what QDateTime::fromString() makes of
/// that pattern, but without its price, as lists hold thousands of them.
QDateTime projectDateFrom(const QString &text);

/// A date in ISO 8601; what QDateTime::fromString() makes of Qt::ISODate, likewise without its price.
QDateTime isoDateFrom(const QString &text);

} // namespace Korvo::Web
