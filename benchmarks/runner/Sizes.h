#pragma once

#include <QtCore/QString>

namespace Korvo::Bench {

/// How much is moved, parsed and scanned.
struct Sizes
{
    int rounds = 7;
    int tunnelRounds = 3;
    QString largeFiles = QStringLiteral("8x67108864");
    QString hugeFile = QStringLiteral("1x1073741824");
    QString smallFiles = QStringLiteral("5000x20480");
    QString filesAtFullRate = QStringLiteral("6x67108864");
    int fewFiles = 1000;
    int manyFiles = 100000;
    int projects = 10000;

    /// Enough to see that everything works, too little to measure anything.
    static Sizes smoke()
    {
        return {1,
                1,
                QStringLiteral("4x9000000"),
                QStringLiteral("1x9000000"),
                QStringLiteral("20x20480"),
                QStringLiteral("6x9000000"),
                10,
                100,
                100};
    }
};

} // namespace Korvo::Bench
