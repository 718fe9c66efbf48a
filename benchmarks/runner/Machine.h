#pragma once

#include <QtCore/QString>

namespace Korvo::Bench {

/// What it was measured on: processor, memory, kernel, libraries.
QString machineText(bool throughProxy);

/// Tells how much of the machine went to others while something was measured.
class Quietness
{
public:
    Quietness();
    /// One sentence; a warning when others took so much that the figures are not to be trusted.
    QString text() const;

private:
    struct Shares
    {
        double total = 0;
        double idle = 0;
        double interrupts = 0;
        double stolen = 0;
        double own = 0;
    };

    static Shares now();

    Shares before;
};

} // namespace Korvo::Bench
