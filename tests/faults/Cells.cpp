#include "faults/Cells.h"

namespace Korvo::Web::Faults {

namespace {

// One send and five re-sends by the library, for the requests that it sends again.
constexpr int MOST_ATTEMPTS = 6;

// Below the library Qt's HTTP layer opens a new connection and sends again when the line broke before anything of the
// answer could be used: at most three times, and now and then twice for one break, because it hears of the end of a TLS
// connection from two layers. It starts to count anew only when an answer has come whole.
constexpr int LEAST_QT_RESENDS = 1;
constexpr int MOST_QT_RESENDS = 3;

// A TLS connection that is closed in good order ends twice for Qt: in the TLS layer and in the one below. The second time
// costs one of the attempts at sending again. When none is left, all that waits for a connection to that server fails with
// it, though it was never sent: the library's next attempt, or the request behind the last one. To the library that is a
// failed attempt like any other; the platform never sees it.
constexpr int UNHARMED_CLOSES = MOST_QT_RESENDS;

constexpr int SILENCE_LIMIT_MILLISECONDS = 30000;
constexpr int SHORT_WAIT_MILLISECONDS = 500;

const QString SEPARATOR = QStringLiteral(" | ");

bool isSentAgainAfter(const QString &error)
{
    return error != UNAUTHORISED && error != NOT_FOUND;
}

/// Whether the struck request has come to the platform at all.
bool arrives(const Cell &cell)
{
    return cell.fault.place == Place::Request
           || (cell.fault.place == Place::Tunnel && cell.strike().meets != Meets::Failure);
}

/// How many of the attempts may fail unsent, each taken along by the close that ended the one before.
int mostTakenAlong(const Cell &cell, int attempts)
{
    if (!mayTakeAlong(cell))
        return 0;
    // What breaks before its answer has cost all of Qt's attempts by the time that the library hears of it.
    const int harmless = cell.strike().meets == Meets::BrokenLine ? 0 : UNHARMED_CLOSES;
    return (attempts - harmless) / 2;
}

Course good(int sends, int worked, int failures, const QString &error)
{
    return {Course::End::Good, error, failures, sends, worked, sends};
}

Course failed(const QString &error, int attempts, int sends, bool isWorked)
{
    return {Course::End::Failed, error, attempts, sends, isWorked ? sends : 0, sends};
}

Course afterFailure(const Cell &cell, const Strike &strike)
{
    const int arrived = arrives(cell) ? 1 : 0;
    if (!cell.request.isSentAgain || !isSentAgainAfter(strike.error))
        return failed(strike.error, 1, arrived, strike.isWorked);
    if (cell.isLasting) {
        const int takenAlong = mostTakenAlong(cell, MOST_ATTEMPTS);
        Course course = failed(strike.error, MOST_ATTEMPTS, arrived * (MOST_ATTEMPTS - takenAlong), strike.isWorked);
        course.sendsAtMost += takenAlong;
        return course;
    }
    return good(arrived + 1, (strike.isWorked ? 1 : 0) + 1, 1, strike.error);
}

Course afterBrokenLine(const Cell &cell, const Strike &strike)
{
    if (!cell.isLasting) {
        Course course = good(1 + LEAST_QT_RESENDS, (strike.isWorked ? 1 : 0) + LEAST_QT_RESENDS, 0, {});
        course.sendsAtMost = 1 + MOST_QT_RESENDS;
        return course;
    }
    const int attempts = cell.request.isSentAgain ? MOST_ATTEMPTS : 1;
    const int sends = LEAST_QT_RESENDS + attempts - mostTakenAlong(cell, attempts);
    Course course = failed(strike.error, attempts, sends, strike.isWorked);
    course.sendsAtMost = MOST_QT_RESENDS + attempts;
    return course;
}

Course afterSilence(const Cell &cell, const Strike &strike)
{
    const int arrived = arrives(cell) ? 1 : 0;
    const int worked = strike.isWorked ? 1 : 0;
    if (cell.request.waitSeconds > 0)
        return {Course::End::TimedOut, TIME_OUT, 0, arrived, worked, arrived};
    // Who writes the answer to a file watches whether it goes on coming, once it has begun.
    if (!cell.request.traits.streamed || !strike.bodyBegins)
        return {Course::End::Pending, {}, 0, arrived, worked, arrived};
    return cell.request.isSentAgain ? good(2, 2, 1, TIME_OUT) : failed(TIME_OUT, 1, 1, true);
}

// Nobody waits for a transcoding, so later ones find several tunnels, and which of them a fault takes hold of is luck.
int lastOccurrence(const RequestKind &request, const FaultKind &fault)
{
    const bool isOneOfManyTunnels = request.scenario == Scenario::UploadVideos && strikesRunningTunnel(fault);
    return isOneOfManyTunnels ? 1 : request.occurrences;
}

QVector<Cell> cellsOf(const RequestKind &request, const FaultKind &fault)
{
    QVector<Cell> cells;
    for (int occurrence = 1; occurrence <= lastOccurrence(request, fault); ++occurrence) {
        const Cell once{request, fault, occurrence, false};
        cells.append(once);
        const Strike strike = once.strike();
        // To cut every further tunnel too would say no more than to refuse them does.
        const bool isBroken = strike.meets == Meets::BrokenLine && fault.place == Place::Request;
        const bool isSentAgain
            = isBroken || (strike.meets == Meets::Failure && request.isSentAgain && isSentAgainAfter(strike.error));
        if (isSentAgain)
            cells.append({request, fault, occurrence, true});
    }
    return cells;
}

} // namespace

QString Cell::id() const
{
    return QStringList{request.title, fault.title, QString::number(occurrence),
                       isLasting ? QStringLiteral("lasting") : QStringLiteral("once")}
        .join(SEPARATOR);
}

QString Cell::occurrenceName() const
{
    if (request.occurrences == 1)
        return QStringLiteral("the only one");
    if (occurrence == 1)
        return QStringLiteral("the first");
    return occurrence == request.occurrences ? QStringLiteral("the last") : QStringLiteral("the middle one");
}

QVector<Cell> allCells()
{
    QVector<Cell> cells;
    for (const RequestKind &request : requestKinds()) {
        for (const FaultKind &fault : faultKinds())
            cells += cellsOf(request, fault);
    }
    return cells;
}

QVector<Cell> sliceOfCells()
{
    QVector<Cell> slice;
    int turn = 0;
    for (const RequestKind &request : requestKinds()) {
        for (const FaultKind &fault : faultKinds()) {
            const int chosen = 1 + turn++ % lastOccurrence(request, fault);
            const QVector<Cell> cells = cellsOf(request, fault);
            for (const Cell &cell : cells) {
                if (cell.occurrence == chosen)
                    slice.append(cell);
            }
        }
    }
    return slice;
}

Cell cellOf(const QString &id)
{
    const QStringList parts = id.split(SEPARATOR);
    return {requestKind(parts.value(0)), faultKind(parts.value(1)), parts.value(2).toInt(),
            parts.value(3) == QLatin1String("lasting")};
}

Course courseOf(const Cell &cell)
{
    const Strike strike = cell.strike();
    switch (strike.meets) {
    case Meets::GoodAnswer:
        return {};
    case Meets::UnreadableAnswer:
        return {Course::End::Unreadable, {}, 0, 1, 1, 1};
    case Meets::ShortenedAnswer:
        return {Course::End::Shortened, {}, 0, 1, 1, 1};
    case Meets::Failure:
        return afterFailure(cell, strike);
    case Meets::BrokenLine:
        return afterBrokenLine(cell, strike);
    case Meets::Silence:
        return afterSilence(cell, strike);
    }
    Q_UNREACHABLE();
}

bool mayTakeAlong(const Cell &cell)
{
    return cell.isLasting && closesInOrder(cell.fault) && cell.request.isSentAgain;
}

int standstill(const Cell &cell)
{
    const Course course = courseOf(cell);
    if (course.end == Course::End::TimedOut)
        return cell.request.waitSeconds * 1000;
    if (course.error == TIME_OUT)
        return SILENCE_LIMIT_MILLISECONDS;
    const bool isSlow = cell.fault.kind == QLatin1String("trickle") || cell.fault.kind == QLatin1String("delay");
    return isSlow || cell.fault.place == Place::Tunnel ? SHORT_WAIT_MILLISECONDS : 0;
}

} // namespace Korvo::Web::Faults
