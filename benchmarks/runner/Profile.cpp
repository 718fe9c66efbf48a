#include "runner/Profile.h"

#include "support/Workload.h"

#include <QtCore/QRegularExpression>

#include <stdexcept>

namespace Korvo::Bench {
namespace {

const QString SAMPLES_A_SECOND = QStringLiteral("1999");
const QString SMALLEST_SHARE = QStringLiteral("0.7"); // percent
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

/// The lines of figures of a report, without its comments; those alone that match @p wanted.
QString report(const QString &samples, const QStringList &fields, const QString &wanted)
{
    const QStringList arguments{QStringLiteral("report"),
                                QStringLiteral("--stdio"),
                                QStringLiteral("-g"),
                                QStringLiteral("none"),
                                QStringLiteral("-i"),
                                samples,
                                QStringLiteral("--percent-limit"),
                                SMALLEST_SHARE};
    const QStringList lines
        = QString::fromUtf8(outputOf(QStringLiteral("perf"), arguments + fields)).split(QLatin1Char('\n'));
    const QRegularExpression filter(wanted);
    QStringList shown;
    for (const QString &line : lines) {
        if (!line.trimmed().isEmpty() && !line.startsWith(QLatin1Char('#')) && filter.match(line).hasMatch())
            shown.append(line.trimmed());
    }
    return QStringLiteral("```\n") + shown.mid(0, LINES_SHOWN).join(QLatin1Char('\n')) + QStringLiteral("\n```\n");
}

QString selfReport(const QString &samples, const QString &sorting)
{
    return report(samples,
                  {QStringLiteral("--no-children"), QStringLiteral("-F"), QStringLiteral("overhead,") + sorting},
                  QString());
}

/// What the kernel was asked for, each with everything below it.
QString kernelReport(const QString &samples)
{
    return report(
        samples, {QStringLiteral("--children"), QStringLiteral("-F"), QStringLiteral("overhead_children,comm,sym")},
        QStringLiteral("\\[k\\] (asm_exc_page_fault|ksys_read|ksys_write|sock_write_iter|sock_read_iter|eventfd_write|"
                       "shmem_file_read_iter|do_futex|__x64_sys_(poll|madvise|munmap|sendto|recvfrom))\\s*$"));
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
                         QStringLiteral("record"), QStringLiteral("--call-graph"), QStringLiteral("fp"),
                         QStringLiteral("-e"), QStringLiteral("cpu-clock"), QStringLiteral("-F"), SAMPLES_A_SECOND,
                         QStringLiteral("-o"), samples, QStringLiteral("--"),
                         place.programs + QStringLiteral("/korvo-bench-client"), QStringLiteral("upload"),
                         QStringLiteral("--folder"), folder, QStringLiteral("--in-flight"), QStringLiteral("4")}
                 + wayToServer(place));
    return QStringLiteral("By thread and library:\n\n") + selfReport(samples, QStringLiteral("comm,dso"))
           + QStringLiteral("\nBy function:\n\n") + selfReport(samples, QStringLiteral("comm,dso,sym"))
           + QStringLiteral("\nBy what the kernel was asked for, each with everything below it:\n\n")
           + kernelReport(samples);
}

} // namespace Korvo::Bench
