#include "TransferState.h"

namespace Korvo::Cli {

namespace {

constexpr qint64 WINDOW_MILLISECONDS = 8000;
constexpr qint64 SAMPLE_MILLISECONDS = 200;

} // namespace

void RateMeter::add(qint64 milliseconds, qint64 bytes)
{
    // A file that is sent again has moved back.
    if (!samples.isEmpty() && bytes < samples.last().bytes)
        samples.clear();
    if (samples.size() > 1 && milliseconds - samples.at(samples.size() - 2).milliseconds < SAMPLE_MILLISECONDS)
        samples.removeLast();
    samples.append({milliseconds, bytes});
    while (samples.size() > 2 && milliseconds - samples.first().milliseconds > WINDOW_MILLISECONDS)
        samples.removeFirst();
}

void RateMeter::restart()
{
    samples.clear();
}

double RateMeter::bytesPerSecond() const
{
    if (samples.size() < 2)
        return 0;
    const qint64 milliseconds = samples.last().milliseconds - samples.first().milliseconds;
    if (milliseconds <= 0)
        return 0;
    return static_cast<double>(samples.last().bytes - samples.first().bytes) * 1e3 / static_cast<double>(milliseconds);
}

qint64 Portion::millisecondsLeft() const
{
    constexpr qint64 NOBODY_KNOWS = -1;
    const double speed = rate.bytesPerSecond();
    if (totalBytes == UNKNOWN_SIZE || speed < 1)
        return NOBODY_KNOWS;
    return static_cast<qint64>(static_cast<double>(totalBytes - doneBytes) * 1e3 / speed);
}

} // namespace Korvo::Cli
