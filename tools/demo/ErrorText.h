#pragma once

#include <NQKorvoWeb/Error.h>

#include <QtCore/QString>

namespace Korvo::Demo {

/// What a failure code means, for people.
QString errorText(Web::Error error);

} // namespace Korvo::Demo
