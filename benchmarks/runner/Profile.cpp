#include "runner/Profile.h"

#include "support/Workload.h"

#include <stdexcept>

namespace Korvo::Bench {
namespace {

const QString SAMPLES_A_SECOND = QStringLiteral("1999");
constexpr int LINES_SHOWN = 40;

QByteArray outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(-1) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        throw std::runtime_error(program.toStdString() + ": "
                                 + process.readAllStandardError().right(2000).toStdString());
    return process.readAllStandardOutput();
}

/// The report's lines of figures, without its comments.
QString report(const QString &samples, const QString &sorting)
{
    const QList<QByteArray> lines
        = outputOf(QStringLiteral("perf"), {QStringLiteral("report"), QStringLiteral("--stdio"), QStringLiteral("-i"),
                                            samples, QStringLiteral("--percent-limit"), QStringLiteral("0.7"),
                                            QStringLiteral("-F"), QStringLiteral("overhead,") + sorting})
              .split('\n');
    QString text = QStringLiteral("```\n");
    int shown = 0;
    for (const QByteArray &line : lines) {
        if (line.trimmed().isEmpty() || line.startsWith('#') || shown++ >= LINES_SHOWN)
            continue;
        text += QString::fromUtf8(line).trimmed() + QLatin1Char('\n');
    }
    return text + QStringLiteral("```\n");
}

} // namespace

QString uploadProfile(const Place &place, const Sizes &sizes)
{
    const QString folder = place.work + QStringLiteral("/profiled");
    const QString samples = place.work + QStringLiteral("/perf.data");
    writeFolder(Workload::atEndOf(sizes.largeFiles.toStdString()), folder.toStdString());
    const Server server(place);
    // The clock of the processor, because virtual machines often have no counters.
    outputOf(QStringLiteral("taskset"),
             QStringList{QStringLiteral("-c"), QString::number(place.clientProcessor), QStringLiteral("perf"),
                         QStringLiteral("record"), QStringLiteral("-e"), QStringLiteral("cpu-clock"),
                         QStringLiteral("-F"), SAMPLES_A_SECOND, QStringLiteral("-o"), samples, QStringLiteral("--"),
                         place.programs + QStringLiteral("/korvo-bench-client"), QStringLiteral("upload"),
                         QStringLiteral("--folder"), folder, QStringLiteral("--in-flight"), QStringLiteral("4")}
                 + wayToServer(place));
    return QStringLiteral("By thread and library:\n\n") + report(samples, QStringLiteral("comm,dso"))
           + QStringLiteral("\nBy function:\n\n") + report(samples, QStringLiteral("comm,dso,sym"));
}

} // namespace Korvo::Bench
