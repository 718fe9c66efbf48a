#pragma once

#include "ProgressDisplay.h"

#include <QtCore/QTimer>

namespace Korvo::Cli {

/// A plain line now and then, for logs.
class PlainProgress : public ProgressDisplay
{
    Q_OBJECT
public:
    PlainProgress(Output &usedOutput, const TransferState &shownState);

private:
    void printLine();

    Output &output;
    const TransferState &state;
    QTimer timer;
};

} // namespace Korvo::Cli
