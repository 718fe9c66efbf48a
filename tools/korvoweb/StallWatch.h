#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <chrono>

namespace Korvo::Cli {

/// Notices when nothing moves any more. The library itself waits as long as the connection stands.
class StallWatch : public QObject
{
    Q_OBJECT
public:
    /// @param newLimit  0: never
    explicit StallWatch(std::chrono::seconds newLimit);

    void start();
    /// Nothing is expected to move: pause, or the end.
    void stop();
    void signOfLife();

Q_SIGNALS:
    /// Nothing has moved for a while; once in each standstill.
    void waiting(int seconds);
    void stalled();

private:
    void look();

    const std::chrono::seconds limit;
    QTimer timer;
    QElapsedTimer sinceLife;
    bool announced = false;
};

} // namespace Korvo::Cli
