#pragma once

#include <QtCore/QByteArray>

namespace Korvo::Web::Fuzz {

/// Gives @p input to the code under test and checks what has to hold whatever the input is. Each target defines its own.
void runTarget(const QByteArray &input);

/// Ends the program when the claim does not hold; the driver keeps the input.
void require(bool holds, const char *claim);

} // namespace Korvo::Web::Fuzz
