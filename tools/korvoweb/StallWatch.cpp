#include "StallWatch.h"

namespace Korvo::Cli {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds LOOK_INTERVAL = 250ms;
constexpr std::chrono::milliseconds ANNOUNCED_AFTER = 10s;

} // namespace

StallWatch::StallWatch(std::chrono::seconds newLimit)
    : limit(newLimit)
{
    timer.setInterval(LOOK_INTERVAL);
    connect(&timer, &QTimer::timeout, this, &StallWatch::look);
}

void StallWatch::start()
{
    signOfLife();
    timer.start();
}

void StallWatch::stop()
{
    timer.stop();
}

void StallWatch::signOfLife()
{
    sinceLife.start();
    announced = false;
}

void StallWatch::look()
{
    const std::chrono::milliseconds idle(sinceLife.elapsed());
    if (limit > 0s && idle >= limit) {
        timer.stop();
        Q_EMIT stalled();
        return;
    }
    if (idle >= ANNOUNCED_AFTER && !announced) {
        announced = true;
        Q_EMIT waiting(static_cast<int>(std::chrono::duration_cast<std::chrono::seconds>(idle).count()));
    }
}

} // namespace Korvo::Cli
