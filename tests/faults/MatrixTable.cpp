#include "faults/MatrixTable.h"

#include "faults/Rules.h"

#include <algorithm>

namespace Korvo::Web::Faults {

namespace {

const QString NOT_HELD = QStringLiteral(" ✗");
const QString NOT_TOLD = QStringLiteral("≠");

struct Section
{
    const char *title;
    const char *firstFault; // the sections stand in the order of the kinds
};

const Section SECTIONS[] = {
    {"Refusals", "status 503"},
    {"Odd answers", "garbage"},
    {"Broken lines", "closeWithoutAnswer"},
    {"Silence", "noAnswer"},
    {"Connections and tunnels", "certificateWrongHost"},
};

QVector<QVector<FaultKind>> columnsBySection()
{
    QVector<QVector<FaultKind>> sections;
    for (const FaultKind &fault : faultKinds()) {
        const int next = sections.size();
        if (next < int(std::size(SECTIONS)) && fault.title == QLatin1String(SECTIONS[next].firstFault))
            sections.append(QVector<FaultKind>());
        sections.last().append(fault);
    }
    return sections;
}

/// "14" when all occurrences come to the same, else "14 / ✓ / ✓".
QString merged(const QStringList &codes)
{
    for (const QString &code : codes) {
        if (code != codes.first())
            return codes.join(QStringLiteral(" / "));
    }
    return codes.value(0);
}

QString codeIn(const Cell &cell, const Differences &differences)
{
    return codeOf(cell) + (differences.contains(cell.id()) ? NOT_HELD : QString());
}

QString textOf(const RequestKind &request, const FaultKind &fault, const QVector<Cell> &cells,
               const Differences &differences)
{
    QStringList once;
    QStringList lasting;
    for (const Cell &cell : cells) {
        if (cell.request.title != request.title || !(cell.fault == fault))
            continue;
        (cell.isLasting ? lasting : once).append(codeIn(cell, differences));
    }
    return lasting.isEmpty() ? merged(once) : merged(once) + QStringLiteral(" · ") + merged(lasting);
}

QString row(const QStringList &cells)
{
    return QStringLiteral("| ") + cells.join(QStringLiteral(" | ")) + QStringLiteral(" |\n");
}

QString table(const QVector<FaultKind> &columns, const QVector<Cell> &cells, const Differences &differences)
{
    QStringList heads{QString()};
    QStringList rulers{QStringLiteral("---")};
    for (const FaultKind &fault : columns) {
        heads.append(QLatin1Char('`') + fault.title + QLatin1Char('`'));
        rulers.append(QStringLiteral(":-:"));
    }
    QString text = row(heads) + row(rulers);
    for (const RequestKind &request : requestKinds()) {
        QStringList line{request.title};
        for (const FaultKind &fault : columns)
            line.append(textOf(request, fault, cells, differences));
        text += row(line);
    }
    return text;
}

/// The harmless codes first, then those that tell an error, by their numbers, then what nobody is told of.
std::pair<int, int> rankOf(const QString &code)
{
    static const QStringList HARMLESS{QStringLiteral("✓"),   QStringLiteral("↻"),    QStringLiteral("log"),
                                      QStringLiteral("3 s"), QStringLiteral("10 s"), QStringLiteral("…")};
    const int place = HARMLESS.indexOf(code);
    if (place >= 0)
        return {place, 0};
    const int error = code.section(QLatin1Char('+'), 0, 0).toInt();
    return {HARMLESS.size() + (code == NOT_TOLD ? 1 : 0), error};
}

/// What several cells come to, each code once.
QString summed(QStringList codes)
{
    codes.removeDuplicates();
    std::sort(codes.begin(), codes.end(),
              [](const QString &one, const QString &other) { return rankOf(one) < rankOf(other); });
    return codes.join(QStringLiteral(", "));
}

QString glance(const QVector<QVector<FaultKind>> &sections, const QVector<Cell> &cells, const Differences &differences)
{
    QStringList heads{QString()};
    QStringList rulers{QStringLiteral("---")};
    for (const Section &section : SECTIONS) {
        heads.append(QLatin1String(section.title));
        rulers.append(QStringLiteral("---"));
    }
    QString text = row(heads) + row(rulers);
    for (const RequestKind &request : requestKinds()) {
        QStringList line{request.title};
        for (const QVector<FaultKind> &faults : sections) {
            QStringList codes;
            for (const Cell &cell : cells) {
                if (cell.request.title == request.title && faults.contains(cell.fault))
                    codes.append(codeIn(cell, differences));
            }
            line.append(summed(codes));
        }
        text += row(line);
    }
    return text;
}

QString introduction(int cells, int notHeld, const QString &run)
{
    return QStringLiteral(
               "# What each fault comes to\n"
               "\n"
               "Every kind of request that the library sends, struck by every kind of fault of the\n"
               "[local platform](platform-faults.md), at the first, the middle and the last request of its kind in its "
               "scenario.\n"
               "`scripts/fault-matrix` plays all of it and writes this table. In each cell the signals, the log, the "
               "requests that\n"
               "reach the platform, the files on disk and what the platform holds are compared with what the rules in\n"
               "`tests/faults/Rules.cpp` demand.\n"
               "\n"
               "%1 cells, %2 held, %3 not held.\n"
               "%4\n"
               "\n"
               "| in a cell | means |\n"
               "|---|---|\n"
               "| ✓ | all ends as if nothing had happened; where the line broke before an answer, Qt has sent again by "
               "itself |\n"
               "| ↻ | the library has logged it and sent again, and all ends well |\n"
               "| log | all ends well but for a line in the log |\n"
               "| a number | `errorOccurred()` or `queryRemoteProjectsError()` with this [code](errors-and-logs.md) |\n"
               "| 3 s, 10 s | the library waits no longer than this, and goes on without the answer |\n"
               "| … | the request stays open until the host cancels, aborts or destroys; that ends it at once |\n"
               "| ≠ | something else comes of it, and no code tells: a list is empty, a file is another, a notice is lost, "
               "an order is carried out twice |\n"
               "| a / b / c | it depends on whether the first, the middle or the last request is struck |\n"
               "| a · b | a: the fault strikes once; b: it strikes whatever is sent again, too |\n"
               "| ✗ | did not hold when the table was written |\n"
               "\n"
               "A handshake that stands still (`handshakeStall`) holds up the next request to the same server, too, "
               "even when the\n"
               "one that it was begun for has been given up: Qt counts on the connection that it has begun. A further "
               "request, or the\n"
               "end of that connection, frees both.\n"
               "\n"
               "A server that closes one connection after the other in good order (`closeWithoutAnswer`, `cutBody`, "
               "lasting) may take\n"
               "along a request that waits meanwhile: Qt ends it unsent. The library logs that and counts it as an attempt. "
               "Where it\n"
               "was the abort of a file in parts, whose attempts are used up by then, the platform keeps the parts that it "
               "has.\n")
        .arg(cells)
        .arg(cells - notHeld)
        .arg(notHeld)
        .arg(run);
}

} // namespace

QString matrixDocument(const Differences &differences, const QString &run)
{
    const QVector<Cell> cells = allCells();
    const QVector<QVector<FaultKind>> sections = columnsBySection();
    QString text = introduction(cells.size(), differences.size(), run);
    text += QStringLiteral("\n## At a glance\n\n"
                           "All that can come of a request, whichever fault of a group strikes it, and for how long.\n\n")
            + glance(sections, cells, differences);
    for (int i = 0; i < sections.size(); ++i)
        text += QStringLiteral("\n## ") + QLatin1String(SECTIONS[i].title) + QStringLiteral("\n\n")
                + table(sections.at(i), cells, differences);
    return text;
}

} // namespace Korvo::Web::Faults
