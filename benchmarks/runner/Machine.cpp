#include "runner/Machine.h"

#include <QtCore/QDateTime>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QSysInfo>
#include <QtCore/QThread>

#include <sys/resource.h>
#include <unistd.h>

namespace Korvo::Bench {
namespace {

constexpr double PERCENT = 100;
constexpr double MICROSECONDS = 1e6;
constexpr double MUCH_FOR_OTHERS = 4; // percent

QByteArray content(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// The value of the first line "name : value".
QString valueIn(const QString &path, const QByteArray &name)
{
    const QList<QByteArray> lines = content(path).split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith(name))
            return QString::fromUtf8(line.mid(line.indexOf(':') + 1)).simplified();
    }
    return QStringLiteral("unknown");
}

QString versionOf(const QString &package)
{
    QProcess query;
    query.start(QStringLiteral("dpkg-query"),
                {QStringLiteral("-W"), QStringLiteral("-f"), QStringLiteral("${Version}"), package});
    query.waitForFinished();
    return QString::fromUtf8(query.readAllStandardOutput());
}

double secondsOf(const timeval &time)
{
    return double(time.tv_sec) + double(time.tv_usec) / MICROSECONDS;
}

double ownSeconds(int who)
{
    rusage usage{};
    getrusage(who, &usage);
    return secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
}

} // namespace

QString machineText(bool throughProxy)
{
    const QString way = throughProxy ? QStringLiteral("through the server's own CONNECT tunnel")
                                     : QStringLiteral("direct, under the real host names in a network of its own");
    return QStringLiteral("- %1, %2 processors, %3 of memory, Linux %4\n"
                          "- Qt %5, OpenSSL %6, libcurl %7, expat %8\n"
                          "- Connections: %9\n"
                          "- %10\n")
        .arg(valueIn(QStringLiteral("/proc/cpuinfo"), "model name"), QString::number(QThread::idealThreadCount()),
             valueIn(QStringLiteral("/proc/meminfo"), "MemTotal"), QSysInfo::kernelVersion(),
             QString::fromLatin1(qVersion()), versionOf(QStringLiteral("libssl3")),
             versionOf(QStringLiteral("libcurl4")), versionOf(QStringLiteral("libexpat1")), way)
        .arg(QDateTime::currentDateTimeUtc().toString(QStringLiteral("d MMMM yyyy, HH:mm")) + QStringLiteral(" UTC"));
}

Quietness::Quietness()
    : before(now())
{
}

Quietness::Shares Quietness::now()
{
    // user, nice, system, idle, iowait, irq, softirq, steal
    const QList<QByteArray> words
        = content(QStringLiteral("/proc/stat")).split('\n').constFirst().simplified().split(' ');
    const double ticks = double(sysconf(_SC_CLK_TCK));
    Shares shares;
    for (int at = 1; at <= 8 && at < words.size(); ++at)
        shares.total += words.at(at).toDouble() / ticks;
    shares.idle = (words.value(4).toDouble() + words.value(5).toDouble()) / ticks;
    shares.interrupts = (words.value(6).toDouble() + words.value(7).toDouble()) / ticks;
    shares.stolen = words.value(8).toDouble() / ticks;
    shares.own = ownSeconds(RUSAGE_SELF) + ownSeconds(RUSAGE_CHILDREN);
    return shares;
}

QString Quietness::text() const
{
    const Shares after = now();
    const double total = after.total - before.total;
    const double stolen = after.stolen - before.stolen;
    // Interrupts are nobody's in the kernel's books; most of them are the transfers' own.
    const double busy = total - (after.idle - before.idle) - (after.interrupts - before.interrupts) - stolen;
    const double others = qMax(0.0, busy - (after.own - before.own));
    const double share = (others + stolen) / total * PERCENT;
    const QString figures = QStringLiteral("Other programs took %1 % of the processors meanwhile, "
                                           "the hypervisor %2 %.")
                                .arg(others / total * PERCENT, 0, 'f', 1)
                                .arg(stolen / total * PERCENT, 0, 'f', 1);
    return share < MUCH_FOR_OTHERS ? figures : QStringLiteral("**Provisional: the machine was not quiet.** ") + figures;
}

} // namespace Korvo::Bench
