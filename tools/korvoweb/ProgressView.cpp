#include "ProgressView.h"

#include "Console.h"
#include "Interrupts.h"
#include "Output.h"
#include "Text.h"
#include "TransferState.h"

#include <algorithm>
#include <chrono>

namespace Korvo::Cli {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds RENEWAL = 150ms;

// Columns of each part of a line. What does not fit is left out, the least needed first.
constexpr int PERCENT_COLUMNS = 6;
constexpr int SIZE_COLUMNS = 11;
constexpr int RATE_COLUMNS = 12;
constexpr int LEFT_COLUMNS = 14;
constexpr int NAME_COLUMNS = 16;
constexpr int BAR_COLUMNS = 12;
constexpr int WIDEST_BAR = 32;
constexpr int WIDEST_NAME = 40;

QString repeated(QChar letter, int count)
{
    return QString(std::max(0, count), letter);
}

QString bar(int percent, int columns)
{
    const bool unicode = Console::showsUnicode();
    const QChar full = unicode ? QChar(0x2588) : QChar(u'#');
    const QChar empty = unicode ? QChar(0x2591) : QChar(u'.');
    const int filled = std::clamp(percent, 0, 100) * columns / 100;
    return repeated(full, filled) + repeated(empty, columns - filled);
}

QString timeLeft(const Portion &portion)
{
    const qint64 left = portion.millisecondsLeft();
    return left < 0 ? QString() : durationText(left) + QStringLiteral(" left");
}

} // namespace

ProgressView::ProgressView(Output &usedOutput, const TransferState &shownState, const Interrupts &interrupts)
    : output(usedOutput)
    , state(shownState)
{
    output.setOverlay([this] { hide(); }, [this] { redraw(); });
    connect(&timer, &QTimer::timeout, this, &ProgressView::redraw);
    connect(&interrupts, &Interrupts::windowResized, this, &ProgressView::redraw);
    // Below what was drawn the shell has written meanwhile.
    connect(&interrupts, &Interrupts::continued, this, [this] { drawnWidths.clear(); });
    timer.start(RENEWAL);
}

ProgressView::~ProgressView()
{
    output.removeOverlay();
    hide();
}

void ProgressView::hide()
{
    output.draw(eraseSequence());
    drawnWidths.clear();
}

// A window that has become narrower has broken the lines that stood there.
QString ProgressView::eraseSequence() const
{
    const int columns = Console::columns();
    int rows = 0;
    for (const int width : drawnWidths)
        rows += std::max(1, (width + columns - 1) / columns);
    if (rows == 0)
        return {};
    return QStringLiteral("\r\033[%1A\033[J").arg(rows);
}

void ProgressView::redraw()
{
    const QStringList newLines = lines(Console::columns(), Console::rows());
    QString text = eraseSequence();
    drawnWidths.clear();
    for (const QString &newLine : newLines) {
        text += newLine + QLatin1Char('\n');
        drawnWidths.append(displayWidth(newLine));
    }
    output.draw(text);
}

QStringList ProgressView::lines(int columns, int rows) const
{
    QStringList result;
    const int shownFiles = std::min(state.files.size(), std::max(0, rows - 2));
    for (int i = 0; i < shownFiles; ++i)
        result.append(line(state.files.at(i), state.files.at(i).name, columns - 1));
    result.append(line(state.total, totalName(), columns - 1));
    return result;
}

QString ProgressView::totalName() const
{
    const QString pause = state.paused ? QStringLiteral("PAUSED (p) ") : QString();
    if (!state.total.name.isEmpty())
        return pause + state.total.name;
    if (!state.counted)
        return pause + QStringLiteral("Total");
    return pause + QStringLiteral("%1 of ").arg(state.filesCompleted) + fileCount(state.filesTotal);
}

QString ProgressView::line(const Portion &portion, const QString &name, int columns) const
{
    const bool isKnown = portion.percent != UNKNOWN_PERCENT;
    QString tail(isKnown ? QString::number(portion.percent).rightJustified(PERCENT_COLUMNS - 2) + QStringLiteral(" %") : QString());
    const auto addIfRoom = [&tail, columns](const QString &text, int width) {
        if (tail.size() + width + NAME_COLUMNS + BAR_COLUMNS <= columns)
            tail += text.rightJustified(width);
    };
    addIfRoom(sizeText(portion.doneBytes), SIZE_COLUMNS);
    addIfRoom(rateText(portion.rate.bytesPerSecond()), RATE_COLUMNS);
    addIfRoom(timeLeft(portion), LEFT_COLUMNS);
    const int room = columns - tail.size();
    if (room < 2)
        return tail.trimmed().left(std::max(0, columns));
    const int barColumns = !isKnown || room < NAME_COLUMNS + BAR_COLUMNS ? 0 : std::min(WIDEST_BAR, room / 2);
    const int nameColumns = std::min(WIDEST_NAME, room - barColumns - 1);
    return fitted(name, nameColumns) + QLatin1Char(' ') + bar(portion.percent, barColumns) + tail;
}

} // namespace Korvo::Cli
