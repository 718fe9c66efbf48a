#include "runner/Transfers.h"

#include "support/Workload.h"

#include <QtCore/QDir>
#include <QtCore/QTextStream>

namespace Korvo::Bench {
namespace {

constexpr double MEBIBYTE = 1024 * 1024;
constexpr double GIBIBYTE = 1024 * MEBIBYTE;
constexpr double MILLISECONDS = 1e3;
constexpr double MICROSECONDS = 1e6;
constexpr double FILES_A_UNIT = 1000;
// Run to run, the same work differs by this much; less is flat.
constexpr double FLAT = 1.15;

const QString LIBRARY = QStringLiteral("korvo-bench-client");
const QString PEER = QStringLiteral("korvo-bench-peer");
const QString BARE = QStringLiteral("korvo-bench-bare");
const QString WALL = QStringLiteral("wallSeconds");
const QString CPU = QStringLiteral("cpuSeconds");
const QString OVER_IDLE = QStringLiteral("overIdleBytes");

double bytesOf(const QString &workload)
{
    return double(Workload::atEndOf(workload.toStdString()).totalBytes());
}

double filesOf(const QString &workload)
{
    return double(Workload::atEndOf(workload.toStdString()).files);
}

QString number(double value, int digits)
{
    return QString::number(value, 'f', digits);
}

void announce(const QString &text)
{
    QTextStream(stderr) << text << '\n';
}

} // namespace

QString Transfers::folderOf(const QString &workload) const
{
    return place.work + QLatin1Char('/') + workload;
}

void Transfers::prepare(const QString &workload)
{
    if (prepared.contains(workload))
        return;
    writeFolder(Workload::atEndOf(workload.toStdString()), folderOf(workload).toStdString());
    prepared.insert(workload);
}

QJsonObject Transfers::run(const QString &program, const Work &work, const QStringList &options) const
{
    const QString target = place.work + QStringLiteral("/downloaded");
    QDir(target).removeRecursively();
    const QString verb = work.upload ? QStringLiteral("upload") : QStringLiteral("download");
    const QString folder = work.upload ? folderOf(work.workload) : target;
    QJsonObject figures
        = transferFigures(place, program,
                          QStringList{verb, QStringLiteral("--folder"), folder, QStringLiteral("--workload"),
                                      work.workload, QStringLiteral("--in-flight"), QString::number(work.inFlight)}
                              + options);
    QDir(target).removeRecursively();
    figures.insert(OVER_IDLE, figures.value(QLatin1String("peakBytes")).toDouble()
                                  - figures.value(QLatin1String("idleBytes")).toDouble());
    return figures;
}

Pairs Transfers::compare(const Work &work)
{
    announce(work.name);
    if (work.upload)
        prepare(work.workload);
    Pairs pairs;
    Pairs bare;
    for (int round = 0; round < sizes.rounds; ++round) {
        pairs.library.add(run(LIBRARY, work));
        bare.library.add(run(BARE, work));
        pairs.peer.add(run(PEER, work));
    }
    bare.peer = pairs.peer;
    addDetail(work, pairs, bare);
    return pairs;
}

Rounds Transfers::probe(const Work &work)
{
    announce(work.name);
    if (work.upload)
        prepare(work.workload);
    Rounds rounds;
    for (int round = 0; round < sizes.rounds; ++round)
        rounds.add(run(LIBRARY, work, {QStringLiteral("--probe"), QStringLiteral("1")}));
    return rounds;
}

void Transfers::addRatio(const Work &work, const Pairs &pairs, double atMost, double reachFor)
{
    add({work.name + QStringLiteral(": time"), pairs.medianRatio(WALL), atMost, reachFor, QStringLiteral("x"), 2});
}

void Transfers::addMemory(const QString &name, const Pairs &pairs, double atMost, double reachFor)
{
    add({name + QStringLiteral(": peak memory over the idle process"), pairs.library.medianOf(OVER_IDLE) / MEBIBYTE,
         atMost, reachFor, QStringLiteral("MiB"), 1});
}

void Transfers::addDetail(const Work &work, const Pairs &pairs, const Pairs &bare)
{
    const auto side = [&](const QString &name, const Rounds &rounds) {
        const double wall = rounds.medianOf(WALL);
        const double cpu = rounds.medianOf(CPU);
        detailLines.append({work.name, name, number(wall, 3), number(bytesOf(work.workload) / MEBIBYTE / wall, 0),
                            number(cpu / bytesOf(work.workload) * GIBIBYTE, 2),
                            number(cpu / filesOf(work.workload) * MILLISECONDS, 3),
                            number(rounds.medianOf(OVER_IDLE) / MEBIBYTE, 1)});
    };
    side(QStringLiteral("library"), pairs.library);
    side(QStringLiteral("Qt alone"), bare.library);
    side(QStringLiteral("libcurl"), pairs.peer);
    const auto ratios = [&](const QString &name, const Pairs &compared) {
        const auto text = [&](const QString &figure) {
            return number(compared.medianRatio(figure), 2) + QStringLiteral(" x (") + compared.spread(figure)
                   + QLatin1Char(')');
        };
        detailLines.append({QString(), name, text(WALL), QString(), text(CPU), QString(), QString()});
    };
    ratios(QStringLiteral("library to libcurl"), pairs);
    ratios(QStringLiteral("Qt alone to libcurl"), bare);
}

QString Transfers::details() const
{
    QVector<QStringList> lines{{QStringLiteral("Work"), QString(), QStringLiteral("s"), QStringLiteral("MiB/s"),
                                QStringLiteral("CPU s per GiB"), QStringLiteral("CPU ms per file"),
                                QStringLiteral("MiB over idle")}};
    return textTable(lines + detailLines);
}

void Transfers::measureLargeUpload()
{
    const Work work{QStringLiteral("Upload, 8 x 64 MiB, 4 in flight"), sizes.largeFiles, 4, true};
    const Pairs pairs = compare(work);
    addRatio(work, pairs, 1.9, 1.6);
    add({work.name + QStringLiteral(": CPU per GiB"), pairs.medianRatio(CPU), 1.9, 1.6, QStringLiteral("x"), 2});
    addMemory(work.name, pairs, 6 * work.inFlight + 10, 5.7 * work.inFlight + 5);
}

void Transfers::measureHugeUpload()
{
    const Work work{QStringLiteral("Upload, 1 x 1 GiB"), sizes.hugeFile, 1, true};
    const Pairs pairs = compare(work);
    addRatio(work, pairs, 2.4, 2.2);
    addMemory(work.name, pairs, 6 + 10, 5.7 + 5);
}

void Transfers::measureSmallUpload()
{
    const Work work{QStringLiteral("Upload, 5,000 x 20 KiB, 6 in flight"), sizes.smallFiles, 6, true};
    const Pairs pairs = compare(work);
    addRatio(work, pairs, 2.0, 1.6);
    add({work.name + QStringLiteral(": CPU per file"),
         pairs.library.medianOf(CPU) / filesOf(work.workload) * MILLISECONDS, 0.20, 0, QStringLiteral("ms"), 3});
}

void Transfers::measureLargeDownload()
{
    const Work work{QStringLiteral("Download, 8 x 64 MiB, 4 in flight"), sizes.largeFiles, 4, false};
    const Pairs pairs = compare(work);
    addRatio(work, pairs, 1.25, 1.1);
    add({work.name + QStringLiteral(": CPU per GiB"), pairs.medianRatio(CPU), 1.25, 1.1, QStringLiteral("x"), 2});
    addMemory(work.name, pairs, work.inFlight + 5, 0.5 * work.inFlight + 5);
}

void Transfers::measureHugeDownload()
{
    const Work work{QStringLiteral("Download, 1 x 1 GiB"), sizes.hugeFile, 1, false};
    addMemory(work.name, compare(work), 1 + 5, 0.5 + 5);
}

void Transfers::measureSmallDownload()
{
    const Work work{QStringLiteral("Download, 5,000 x 20 KiB, 6 in flight"), sizes.smallFiles, 6, false};
    addRatio(work, compare(work), 1.85, 1.6);
}

void Transfers::measureHost()
{
    const Work large{QStringLiteral("Watched upload, 4 in flight"), sizes.largeFiles, 4, true};
    add({QStringLiteral("Longest time the worker is blocked by preparing one part"),
         probe(large).medianOf(QStringLiteral("longestWorkerEventMilliseconds")), 2, 1.2, QStringLiteral("ms"), 2});

    Rounds steps;
    for (int round = 0; round < sizes.rounds; ++round)
        steps.add(transferFigures(place, LIBRARY,
                                  {QStringLiteral("steps"), QStringLiteral("--folder"), folderOf(sizes.largeFiles),
                                   QStringLiteral("--in-flight"), QStringLiteral("4")}));
    add({QStringLiteral("Worker's CPU per step of progress, 4 in flight"),
         steps.medianOf(QStringLiteral("stepSeconds")) * MICROSECONDS, 3, 1.5, QStringLiteral("us"), 2});

    const QString gap = QStringLiteral("worstGapMilliseconds");
    const Rounds up = probe({QStringLiteral("Watched upload, 6 in flight"), sizes.filesAtFullRate, 6, true});
    const Rounds down = probe({QStringLiteral("Watched download, 6 in flight"), sizes.filesAtFullRate, 6, false});
    add({QStringLiteral("Worst gap of the host's event loop, 6 files up at full rate"), up.medianOf(gap), 16, 4,
         QStringLiteral("ms"), 1});
    add({QStringLiteral("Worst gap of the host's event loop, 6 files down at full rate"), down.medianOf(gap), 16, 4,
         QStringLiteral("ms"), 1});
}

void Transfers::measureManyFiles()
{
    const auto tiny = [](int files) { return QString::number(files) + QStringLiteral("x1024"); };
    const auto uploaded = [&](int files, int rounds) {
        const Work work{QStringLiteral("Upload, %1 tiny files").arg(files), tiny(files), 6, true};
        announce(work.name);
        prepare(work.workload);
        Rounds measured;
        for (int round = 0; round < rounds; ++round)
            measured.add(run(LIBRARY, work));
        return measured;
    };
    const Rounds few = uploaded(sizes.fewFiles, sizes.rounds);
    const Rounds many = uploaded(sizes.manyFiles, 1);
    const double costOfFew = few.medianOf(CPU) / sizes.fewFiles;
    const double costOfMany = many.medianOf(CPU) / sizes.manyFiles;
    add({QStringLiteral("CPU per file in a project of 100,000 files against one of 1,000"), costOfMany / costOfFew,
         FLAT, 0, QStringLiteral("x"), 2});
    const double queued = (sizes.manyFiles - sizes.fewFiles) / FILES_A_UNIT;
    add({QStringLiteral("Memory per 1,000 queued files"),
         (many.medianOf(OVER_IDLE) - few.medianOf(OVER_IDLE)) / queued / 1e6, 0.6, 0, QStringLiteral("MB"), 2});
    QDir(folderOf(tiny(sizes.manyFiles))).removeRecursively();
    prepared.remove(tiny(sizes.manyFiles));
}

void Transfers::measureTunnel()
{
    if (place.throughProxy) // no other way to compare with
        return;
    Place tunnelled = place;
    tunnelled.throughProxy = true;
    QVector<QStringList> lines{
        {QString(), QStringLiteral("library, tunnelled to direct"), QStringLiteral("libcurl, tunnelled to direct")}};
    for (const bool upload : {true, false}) {
        const Work work{upload ? QStringLiteral("Upload, 8 x 64 MiB") : QStringLiteral("Download, 8 x 64 MiB"),
                        sizes.largeFiles, 4, upload};
        announce(work.name + QStringLiteral(", through a tunnel"));
        const auto ratio = [&](const QString &program) {
            const Pairs pairs = Pairs::run(
                sizes.tunnelRounds, [&](int) { return Transfers(tunnelled, sizes).run(program, work); },
                [&](int) { return run(program, work); });
            return number(pairs.medianRatio(WALL), 2) + QStringLiteral(" x");
        };
        lines.append({work.name, ratio(LIBRARY), ratio(PEER)});
    }
    tunnel = textTable(lines);
}

void Transfers::measure()
{
    const Server server(place);
    measureLargeUpload();
    measureHugeUpload();
    measureSmallUpload();
    measureLargeDownload();
    measureHugeDownload();
    measureSmallDownload();
    measureHost();
    measureManyFiles();
    measureTunnel();
}

} // namespace Korvo::Bench
