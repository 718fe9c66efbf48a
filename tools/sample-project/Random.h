#pragma once

#include <QtCore/QtGlobal>

namespace Korvo::Sample {

/// Pseudo-random numbers that are the same everywhere for the same seed, which the standard library's
/// distributions do not promise.
class Random
{
public:
    /// Every @p stream of one @p seed is a sequence of its own, so that one more picture does not change the videos.
    explicit Random(quint64 seed, quint64 stream = 0)
        : state(seed * 0x9E3779B97F4A7C15ULL + stream * 0xD1B54A32D192ED03ULL)
    {
    }

    quint64 next()
    {
        state += 0x9E3779B97F4A7C15ULL;
        quint64 mixed = state;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9ULL;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBULL;
        return mixed ^ (mixed >> 31);
    }

    /// Both ends are included.
    int between(int lowest, int highest)
    {
        return lowest + static_cast<int>(next() % static_cast<quint64>(highest - lowest + 1));
    }

    /// From 0 to just below 1.
    double unit() { return static_cast<double>(next() >> 11) / 9007199254740992.0; }

private:
    quint64 state;
};

} // namespace Korvo::Sample
