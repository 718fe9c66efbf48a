#include "runner/Inner.h"

#include "runner/Pairs.h"
#include "support/Workload.h"

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>

#include <stdexcept>

namespace Korvo::Bench {
namespace {

const QString PROGRAM = QStringLiteral("korvo-bench-inner");
const QString SECONDS = QStringLiteral("seconds");
constexpr double NANOSECONDS = 1e9;

QJsonObject findFigures(const Place &place, const QString &folder)
{
    QProcess find;
    find.setStandardOutputFile(QProcess::nullDevice());
    QElapsedTimer timer;
    timer.start();
    find.start(QStringLiteral("taskset"), {QStringLiteral("-c"), QString::number(place.clientProcessor),
                                           QStringLiteral("find"), folder, QStringLiteral("-type"), QStringLiteral("f"),
                                           QStringLiteral("-printf"), QStringLiteral("%s %T@ %p\\n")});
    if (!find.waitForFinished(-1) || find.exitCode() != 0)
        throw std::runtime_error("find failed");
    return {{SECONDS, double(timer.nsecsElapsed()) / NANOSECONDS}};
}

QVector<Row> scanRows(const Place &place, const Sizes &sizes)
{
    const QString folder = place.work + QStringLiteral("/scanned");
    writeFolder({sizes.manyFiles, 1}, folder.toStdString());
    findFigures(place, folder); // warm
    const Pairs pairs = Pairs::run(
        sizes.rounds,
        [&](int) {
            return figuresOf(place, PROGRAM, {QStringLiteral("scan"), QStringLiteral("--folder"), folder});
        },
        [&](int) { return findFigures(place, folder); });
    QDir(folder).removeRecursively();
    return {{QStringLiteral("Folder scan, 100,000 files, warm, against find"), pairs.medianRatio(SECONDS), 1.5, 1.2,
             QStringLiteral("x"), 2}};
}

QVector<Row> listingRows(const Place &place, const Sizes &sizes)
{
    const QStringList entries{QStringLiteral("--entries"), QString::number(sizes.manyFiles)};
    const Pairs pairs = Pairs::run(
        sizes.rounds, [&](int) { return figuresOf(place, PROGRAM, QStringList{QStringLiteral("listing")} + entries); },
        [&](int) { return figuresOf(place, PROGRAM, QStringList{QStringLiteral("listing-expat")} + entries); });
    return {{QStringLiteral("Listing of 100,000 entries (37 MB): parse, against expat"), pairs.medianRatio(SECONDS),
             2.7, 2.3, QStringLiteral("x"), 2},
            {QStringLiteral("Listing of 100,000 entries: peak memory over the reply's size"),
             pairs.library.medianOf(QStringLiteral("peakBytes")) / pairs.library.medianOf(QStringLiteral("replyBytes")),
             6, 4, QStringLiteral("x"), 1}};
}

QVector<Row> projectRows(const Place &place, const Sizes &sizes)
{
    Rounds rounds;
    for (int round = 0; round < sizes.rounds; ++round)
        rounds.add(
            figuresOf(place, PROGRAM,
                      {QStringLiteral("projects"), QStringLiteral("--entries"), QString::number(sizes.projects)}));
    return {{QStringLiteral("Project list of 10,000, no TZ set"), rounds.medianOf(SECONDS), 0.08, 0.05,
             QStringLiteral("s"), 3}};
}

} // namespace

QVector<Row> innerRows(const Place &place, const Sizes &sizes)
{
    return scanRows(place, sizes) + listingRows(place, sizes) + projectRows(place, sizes);
}

} // namespace Korvo::Bench
