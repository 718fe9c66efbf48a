#include "faults/MatrixTable.h"
#include "faults/Rules.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QSet>
#include <QtTest/QtTest>

#include <cstdio>
#include <functional>
#include <limits>

using namespace Korvo::Web::Faults;

namespace {

QVector<Cell> cellsWhere(const QVector<Cell> &all, const std::function<bool(const Cell &)> &isWanted)
{
    QVector<Cell> cells;
    for (const Cell &cell : all) {
        if (isWanted(cell))
            cells.append(cell);
    }
    return cells;
}

const QString RUN_BEGINS = QStringLiteral("The run that wrote this took ");

QString inWords(const QString &id, const QStringList &words)
{
    const Cell cell = cellOf(id);
    return QStringLiteral("%1, struck by %2 (%3, %4):\n    %5\n")
        .arg(cell.request.title, cell.fault.title, cell.occurrenceName(),
             cell.isLasting ? QStringLiteral("lasting") : QStringLiteral("once"), words.join(QStringLiteral("\n    ")));
}

} // namespace

/// Every kind of request under every kind of fault, in parts that can be run side by side. Of the occurrences of a request
/// one takes its turn here; scripts/fault-matrix plays all of them.
class tst_FaultMatrix : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyKindOfFaultHasAColumn();
    void tableIsWhatTheRulesSay();

    // For the usual run: a refusal, an answer that cannot be read, a broken line, silence.
    void mostTellingFaults()
    {
        play([](const Cell &cell) {
            return QStringList{QStringLiteral("status 503"), QStringLiteral("garbage"), QStringLiteral("resetInBody"),
                               QStringLiteral("noAnswer")}
                .contains(cell.fault.title);
        });
    }

    void logins()
    {
        play([](const Cell &cell) { return cell.request.isLogin(); });
    }
    void questions()
    {
        play([](const Cell &cell) { return cell.request.scenario == Scenario::Ask; });
    }
    void data()
    {
        play([](const Cell &cell) { return cell.request.scenario == Scenario::FetchData; });
    }
    void uploads()
    {
        play([](const Cell &cell) { return isPlainUpload(cell.request); });
    }
    void transcodings()
    {
        play([](const Cell &cell) { return cell.request.scenario == Scenario::UploadVideos; });
    }
    void parts()
    {
        play([](const Cell &cell) { return isInParts(cell.request); });
    }
    void downloads()
    {
        play([](const Cell &cell) { return cell.request.scenario == Scenario::Download; });
    }

private:
    static bool isInParts(const RequestKind &request)
    {
        return request.scenario == Scenario::UploadParts || request.scenario == Scenario::AbortParts;
    }
    static bool isPlainUpload(const RequestKind &request)
    {
        return request.scenario == Scenario::Upload || request.scenario == Scenario::AbortFile;
    }

    void play(const std::function<bool(const Cell &)> &isWanted)
    {
        // Told at once: a run with many differences may be ended before its own end.
        const Differences differences = playInLanes(
            cellsWhere(sliceOfCells(), isWanted), {},
            [](const QString &id, const QStringList &words) { qWarning("%s", qPrintable(inWords(id, words))); });
        QCOMPARE(differences.keys(), QStringList());
    }
};

void tst_FaultMatrix::everyKindOfFaultHasAColumn()
{
    QFile document(QStringLiteral(DOCUMENTS "/platform-faults.md"));
    QVERIFY(document.open(QIODevice::ReadOnly));
    QSet<QString> listed;
    const QStringList lines = QString::fromUtf8(document.readAll()).split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        if (line.startsWith(QLatin1String("| `")))
            listed.insert(line.section(QLatin1Char('`'), 1, 1));
    }
    QSet<QString> columns;
    for (const FaultKind &fault : faultKinds())
        columns.insert(fault.kind);
    QCOMPARE(columns, listed);
}

void tst_FaultMatrix::tableIsWhatTheRulesSay()
{
    QFile document(QStringLiteral(DOCUMENTS "/fault-matrix.md"));
    QVERIFY(document.open(QIODevice::ReadOnly));
    const QStringList written = QString::fromUtf8(document.readAll()).split(QLatin1Char('\n'));
    const QString run = written.filter(RUN_BEGINS).value(0); // how long it takes is no matter of the rules
    const QStringList ruled = matrixDocument({}, run).split(QLatin1Char('\n'));
    for (int i = 0; i < qMin(written.size(), ruled.size()); ++i)
        QCOMPARE(written.at(i), ruled.at(i));
    QCOMPARE(written.size(), ruled.size());
}

namespace {

constexpr int WAITING_LANES = 12;

int writeTable(const QStringList &arguments)
{
    const int busyLanes = qMax(1, qEnvironmentVariableIntValue("KORVOWEB_BUSY_LANES"));
    const QString wanted = arguments.value(1); // part of the ids, for a look at a few cells
    QElapsedTimer timer;
    timer.start();
    const QVector<Cell> cells = cellsWhere(allCells(), [&](const Cell &cell) { return cell.id().contains(wanted); });
    const Differences differences
        = playInLanes(cells, {busyLanes, WAITING_LANES}, [](const QString &id, const QStringList &words) {
              std::fputs(qPrintable(inWords(id, words)), stdout);
              std::fflush(stdout);
          });
    const QString run
        = RUN_BEGINS
          + QStringLiteral("%1 minutes with %2 busy processes.").arg((timer.elapsed() + 30000) / 60000).arg(busyLanes);
    std::printf("%d of %d cells did not hold; %lld s\n", differences.size(), cells.size(), timer.elapsed() / 1000);
    if (wanted.isEmpty()) {
        QFile document(arguments.value(0));
        if (!document.open(QIODevice::WriteOnly) || document.write(matrixDocument(differences, run).toUtf8()) < 0
            || !document.flush())
            return 2;
    }
    return differences.isEmpty() ? 0 : 1;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == LANE_ARGUMENT)
        return runLane();
    if (arguments.value(1) == QLatin1String("--table"))
        return writeTable(arguments.mid(2));
    // Each function plays hundreds of cells; the limit is that of CTest.
    qputenv("QTEST_FUNCTION_TIMEOUT", QByteArray::number(std::numeric_limits<int>::max()));
    tst_FaultMatrix test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_FaultMatrix.moc"
