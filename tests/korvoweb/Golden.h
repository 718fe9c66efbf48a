#pragma once

#include <QtCore/QString>

namespace Korvo::Cli::Test {

/// @p text with everything that differs from run to run replaced: times, rates, and @p folder.
QString steady(QString text, const QString &folder = {});
/// The difference between @p text and the golden file; empty when there is none. With KORVOWEB_UPDATE_GOLDEN set the
/// file is written instead.
QString differenceToGolden(const QString &name, const QString &text);

} // namespace Korvo::Cli::Test
