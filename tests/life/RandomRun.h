#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QRandomGenerator>
#include <QtCore/QtGlobal>

#include <cstdio>

namespace Korvo::Web::TestSupport {

/// The number in an environment variable, else @p standard.
inline int numberFrom(const char *variable, int standard)
{
    bool isNumber = false;
    const int number = qEnvironmentVariableIntValue(variable, &isNumber);
    return isNumber ? number : standard;
}

/// What the random choices of this run follow from: KORVOWEB_SEED repeats an earlier run.
inline quint32 runSeed()
{
    static const quint32 seed = [] {
        const QByteArray given = qgetenv("KORVOWEB_SEED");
        const quint32 chosen = given.isEmpty() ? QRandomGenerator::global()->generate() : given.toUInt();
        std::fprintf(stderr, "KORVOWEB_SEED=%u\n", chosen);
        return chosen;
    }();
    return seed;
}

/// A seed of its own for each part of a run, the same one for the same run and part.
inline quint32 seedOf(const char *part, int round)
{
    return runSeed() ^ qChecksum(part, uint(qstrlen(part))) * 2654435761u ^ quint32(round) * 40503u;
}

} // namespace Korvo::Web::TestSupport
