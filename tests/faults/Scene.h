#pragma once

#include "faults/Cells.h"
#include "faults/Outcome.h"
#include "flow/Session.h"
#include "support/LogCapture.h"

#include <QtCore/QScopedPointer>
#include <QtCore/QTemporaryDir>

namespace Korvo::Web::Faults {

/// A platform with what the scenarios need, and one host at a time that plays them.
class Scene
{
public:
    /// Starts the platform; the reason when that fails.
    QString start();

    /// Plays the cell and compares; what was different, in words.
    QStringList play(const Cell &cell);

private:
    class Play;

    QString fetchReferences();

    TestSupport::LocalPlatform platform;
    QMap<QString, QByteArray> dataByTitle; ///< of the requests that fetch data, as they come undisturbed
    QString mediaLink;
    QString threeBucket;
    int projects = 0;
};

} // namespace Korvo::Web::Faults
