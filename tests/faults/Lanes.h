#pragma once

#include "faults/Cells.h"

#include <QtCore/QMap>
#include <QtCore/QStringList>

#include <functional>

namespace Korvo::Web::Faults {

/// The argument that makes this program a lane: it plays the cells named on its standard input, a line each.
extern const QString LANE_ARGUMENT;
int runLane();

/// What was different in the cells that did not hold, by their ids.
using Differences = QMap<QString, QStringList>;
using Teller = std::function<void(const QString &id, const QStringList &words)>;

/// How many processes play at the same time.
struct LaneNumbers
{
    int busy = 1;    ///< for cells that keep a processor busy
    int waiting = 6; ///< for cells that stand still for seconds
};

/// Plays the cells in processes of their own, each with a platform of its own. @p tell is called with each cell that
/// does not hold as soon as it has been played.
Differences playInLanes(const QVector<Cell> &cells, LaneNumbers numbers, const Teller &tell);

} // namespace Korvo::Web::Faults
