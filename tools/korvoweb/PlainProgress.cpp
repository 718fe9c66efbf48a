#include "PlainProgress.h"

#include "Output.h"
#include "Text.h"
#include "TransferState.h"

#include <chrono>

namespace Korvo::Cli {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::seconds INTERVAL = 10s;

} // namespace

PlainProgress::PlainProgress(Output &usedOutput, const TransferState &shownState)
    : output(usedOutput)
    , state(shownState)
{
    connect(&timer, &QTimer::timeout, this, &PlainProgress::printLine);
    timer.start(INTERVAL);
}

void PlainProgress::printLine()
{
    if (state.paused)
        return;
    QString line;
    if (state.counted) {
        line = QString::number(state.total.percent).rightJustified(3) + QStringLiteral(" %, ")
            + QString::number(state.filesCompleted) + QStringLiteral(" of ") + fileCount(state.filesTotal) + QStringLiteral(", ");
    }
    line += sizeText(state.total.doneBytes) + QStringLiteral(", ") + rateText(state.total.rate.bytesPerSecond());
    const qint64 left = state.total.millisecondsLeft();
    if (left >= 0)
        line += QStringLiteral(", ") + durationText(left) + QStringLiteral(" left");
    output.say(line);
}

} // namespace Korvo::Cli
