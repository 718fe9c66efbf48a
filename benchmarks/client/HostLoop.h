#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QTimer>

namespace Korvo::Bench {

/// Watches how long the event loop of the host's thread keeps a due timer waiting.
class HostLoop
{
public:
    HostLoop();

    void start();
    double worstGapMilliseconds() const { return worst; }

private:
    void tick();

    QTimer timer;
    QElapsedTimer sinceTick;
    double worst = 0;
};

} // namespace Korvo::Bench
