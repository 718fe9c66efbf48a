#include "TransferView.h"

#include "Terminal.h"

#include <chrono>

namespace Korvo::Demo {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds RENEWAL_ON_TERMINAL = 100ms;
constexpr std::chrono::milliseconds RENEWAL_IN_FILE = 1s;

QString bar(int percent)
{
    constexpr int WIDTH = 24;
    const int filled = percent * WIDTH / 100;
    const QString done(filled, QLatin1Char('#'));
    return QLatin1Char('[') + done.leftJustified(WIDTH, QLatin1Char('.')) + QLatin1Char(']');
}

QString clipped(const QString &text, int width)
{
    return text.size() <= width ? text : text.left(width - 1) + QChar(0x2026);
}

} // namespace

TransferView::TransferView(QTextStream &stream, const QString &prefix, const QHash<QString, qint64> &sizes)
    : out(stream)
    , cutOff(prefix)
    , bytes(sizes)
    , inPlace(isTerminal())
{
    clock.start();
}

void TransferView::setFileProgress(const QString &name, int percent)
{
    const auto entry = running.find(name);
    if (entry != running.end())
        entry->percent = percent;
    renewLine();
}

void TransferView::setCurrentFiles(const QStringList &names)
{
    const QStringList before = order;
    order = names;
    for (const QString &name : before) {
        if (!names.contains(name))
            showDone(name);
    }
    for (const QString &name : names) {
        if (!running.contains(name))
            running.insert(name, Running{clock.elapsed(), 0});
    }
}

void TransferView::setTotalProgress(int percent)
{
    totalPercent = percent;
}

void TransferView::setFilesTotal(int count)
{
    filesTotal = count;
}

void TransferView::setFilesCompleted(int count)
{
    filesCompleted = count;
    countsKnown = true;
    renewLine();
}

void TransferView::finish(bool successful)
{
    clearLine();
    if (successful)
        setCurrentFiles({});
    out.flush();
}

void TransferView::showDone(const QString &name)
{
    const Running file = running.take(name);
    clearLine();
    out << "    " << sizeText(bytes.value(name)).rightJustified(10) << "  "
        << seconds(clock.elapsed() - file.since).rightJustified(7) << "  " << shownName(name) << '\n';
    out.flush();
}

void TransferView::renewLine()
{
    const auto interval = inPlace ? RENEWAL_ON_TERMINAL : RENEWAL_IN_FILE;
    if (clock.elapsed() - lastRenewal < interval.count())
        return;
    lastRenewal = clock.elapsed();
    if (inPlace)
        out << '\r' << clipped(statusLine(), terminalWidth() - 1) << "\033[K";
    else
        out << statusLine() << '\n';
    out.flush();
}

void TransferView::clearLine()
{
    if (inPlace)
        out << "\r\033[K";
}

QString TransferView::statusLine() const
{
    const QString counts = QStringLiteral(" %1 %, %2 of %3 files").arg(totalPercent, 3).arg(filesCompleted).arg(filesTotal);
    QString line = QStringLiteral("  ") + bar(totalPercent) + counts;
    for (const QString &name : order) {
        line += QStringLiteral(" | ") + name.section(QLatin1Char('/'), -1) + QLatin1Char(' ')
            + QString::number(running.value(name).percent) + QStringLiteral(" %");
    }
    return line;
}

QString TransferView::shownName(const QString &name) const
{
    return name.startsWith(cutOff) ? name.mid(cutOff.size()) : name;
}

} // namespace Korvo::Demo
