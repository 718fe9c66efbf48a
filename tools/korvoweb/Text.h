#pragma once

#include <QtCore/QString>

namespace Korvo::Cli {

/// A text from elsewhere, fit to be shown: nothing in it can move the cursor or turn the line round, and on a terminal
/// that knows ASCII only, other letters become "?".
QString shownName(const QString &name);

/// Columns that @p text takes on a terminal.
int displayWidth(const QString &text);
/// Cut off in front, where paths differ least, and filled up to exactly @p width columns.
QString fitted(const QString &text, int width);

QString sizeText(qint64 bytes);                ///< "12.3 MB"
QString rateText(double bytesPerSecond);       ///< "1.2 MB/s"
QString durationText(qint64 milliseconds);     ///< "0:07", "1:02:03"
QString secondsText(qint64 milliseconds);      ///< "3.2 s"
QString fileCount(int count);                  ///< "1 file", "2 files"

} // namespace Korvo::Cli
