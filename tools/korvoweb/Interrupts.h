#pragma once

#include <QtCore/QObject>

#include <atomic>

namespace Korvo::Cli {

/// Ctrl-C, Ctrl-Break and requests to end: the first is a signal, the second ends the program on the spot.
class Interrupts : public QObject
{
    Q_OBJECT
public:
    /// To be made once; it stays to the end of the program.
    Interrupts();

    bool hasCome() const { return count.load() > 0; }

Q_SIGNALS:
    void interrupted();
    void windowResized();
    /// The program goes on after it was stopped, Ctrl-Z for one.
    void continued();

private:
    void takeInterrupt();

    std::atomic<int> count{0};
};

} // namespace Korvo::Cli
