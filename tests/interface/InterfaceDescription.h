#pragma once

#include <QtCore/QString>

#include <optional>

/// The public classes as Qt's meta-object system knows them, and the names that types are registered under.
QString metaObjectDescription();

/// What the library file exports: virtual slots and symbols. Empty where the platform has no way to look, nothing when
/// looking failed.
std::optional<QString> binaryDescription(const QString &libraryFile);
