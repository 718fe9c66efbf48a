#pragma once

#include <QtCore/QString>

namespace Korvo::Demo {

/// Whether somebody watches the standard output; a file or a pipe gets plain lines only.
bool isTerminal();

/// Characters that fit into a line of the terminal.
int terminalWidth();

/// "12.6 MB", "8.3 kB" or "52 B"; a megabyte is a million bytes.
QString sizeText(qint64 bytes);

/// "0.8 s"
QString seconds(qint64 milliseconds);

} // namespace Korvo::Demo
