#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QString>
#include <QtCore/QVector>

namespace Korvo::Cli {

constexpr qint64 UNKNOWN_SIZE = -1;
constexpr int UNKNOWN_PERCENT = -1;

/// Bytes per second over the last few seconds.
class RateMeter
{
public:
    void add(qint64 milliseconds, qint64 bytes);
    /// Old samples say nothing after a pause.
    void restart();
    double bytesPerSecond() const;

private:
    struct Sample
    {
        qint64 milliseconds;
        qint64 bytes;
    };

    QVector<Sample> samples;
};

/// One thing that moves: a file, or all of them.
struct Portion
{
    QString name; ///< of the whole: empty when the counts of files say more
    int percent = 0;
    qint64 doneBytes = 0;
    qint64 totalBytes = UNKNOWN_SIZE; ///< an estimate while a download runs
    RateMeter rate;

    /// Milliseconds to the end as it looks now; negative when nobody can tell.
    qint64 millisecondsLeft() const;
};

/// How far a transfer is, for whoever shows it.
struct TransferState
{
    QVector<Portion> files; ///< in flight
    Portion total;
    int filesTotal = 0;
    int filesCompleted = 0;
    bool paused = false;
    bool counted = false; ///< whether the number of files is known
    QElapsedTimer clock;
};

} // namespace Korvo::Cli
