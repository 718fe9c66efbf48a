#include "runner/Growth.h"

#include "runner/Rows.h"
#include "support/Workload.h"

#include <QtCore/QDir>
#include <QtCore/QTextStream>

namespace Korvo::Bench {
namespace {

constexpr double MEBIBYTE = 1024 * 1024;
constexpr double MILLISECONDS = 1e3;

struct Work
{
    QString name;
    QString workload;
    int inFlight = 1;
    bool upload = true;
    bool sparse = false;
};

QJsonObject run(const Place &place, const Work &work)
{
    const QString folder = place.work + QStringLiteral("/growth");
    const Workload workload = Workload::atEndOf(work.workload.toStdString());
    QDir(folder).removeRecursively();
    if (work.upload && work.sparse)
        writeSparseFolder(workload, folder.toStdString());
    else if (work.upload)
        writeFolder(workload, folder.toStdString());
    const QJsonObject figures = transferFigures(
        place, QStringLiteral("korvo-bench-client"),
        {work.upload ? QStringLiteral("upload") : QStringLiteral("download"), QStringLiteral("--folder"), folder,
         QStringLiteral("--workload"), work.workload, QStringLiteral("--in-flight"), QString::number(work.inFlight)});
    QDir(folder).removeRecursively();
    return figures;
}

QStringList line(const Work &work, const QJsonObject &figures)
{
    const auto number = [&](const char *name) { return figures.value(QLatin1String(name)).toDouble(); };
    const double files = Workload::atEndOf(work.workload.toStdString()).files;
    return {work.name, QString::number(number("wallSeconds"), 'f', 1),
            QString::number((number("peakBytes") - number("idleBytes")) / MEBIBYTE, 'f', 1),
            QString::number(number("cpuSeconds") / files * MILLISECONDS, 'f', files > 1 ? 3 : 0)};
}

} // namespace

QString growthTable(const Place &place)
{
    const Server server(place);
    const QVector<Work> all{
        {QStringLiteral("Upload, one sparse file of 1 GiB"), QStringLiteral("1x1073741824"), 1, true, true},
        {QStringLiteral("Upload, one sparse file of 20 GiB"), QStringLiteral("1x21474836480"), 1, true, true},
        {QStringLiteral("Download, one file of 1 GiB"), QStringLiteral("1x1073741824"), 1, false},
        {QStringLiteral("Download, one file of 8 GiB"), QStringLiteral("1x8589934592"), 1, false},
        {QStringLiteral("Upload, 1,000 files of 1 KiB"), QStringLiteral("1000x1024"), 6, true},
        {QStringLiteral("Upload, 10,000 files of 1 KiB"), QStringLiteral("10000x1024"), 6, true},
        {QStringLiteral("Upload, 100,000 files of 1 KiB"), QStringLiteral("100000x1024"), 6, true},
        {QStringLiteral("Download, 1,000 files of 1 KiB"), QStringLiteral("1000x1024"), 6, false},
        {QStringLiteral("Download, 10,000 files of 1 KiB"), QStringLiteral("10000x1024"), 6, false},
        {QStringLiteral("Download, 100,000 files of 1 KiB"), QStringLiteral("100000x1024"), 6, false}};
    QVector<QStringList> lines{{QStringLiteral("Work"), QStringLiteral("s"), QStringLiteral("MiB over idle"),
                                QStringLiteral("CPU ms per file")}};
    for (const Work &work : all) {
        QTextStream(stderr) << work.name << '\n';
        lines.append(line(work, run(place, work)));
    }
    return textTable(lines);
}

} // namespace Korvo::Bench
