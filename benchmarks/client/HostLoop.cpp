#include "client/HostLoop.h"

#include <chrono>

using namespace std::chrono_literals;

namespace Korvo::Bench {
namespace {

constexpr std::chrono::milliseconds TICK = 1ms;
constexpr double NANOSECONDS_A_MILLISECOND = 1e6;

} // namespace

HostLoop::HostLoop()
{
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, &timer, [this] { tick(); });
}

void HostLoop::start()
{
    worst = 0;
    sinceTick.start();
    timer.start(TICK);
}

void HostLoop::tick()
{
    const double waited = double(sinceTick.nsecsElapsed()) / NANOSECONDS_A_MILLISECOND - double(TICK.count());
    worst = qMax(worst, waited);
    sinceTick.restart();
}

} // namespace Korvo::Bench
