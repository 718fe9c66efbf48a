#include "faults/Lanes.h"

#include "faults/Scene.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QEventLoop>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QProcess>
#include <QtCore/QQueue>
#include <QtCore/QTextStream>
#include <QtCore/QTimer>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <vector>

using namespace std::chrono_literals;

namespace Korvo::Web::Faults {

const QString LANE_ARGUMENT = QStringLiteral("--lane");

namespace {

// What a platform has been sent stays on its disk, and its overview grows.
constexpr int CELLS_OF_ONE_LANE = 60;
constexpr auto CELL_LIMIT = 300s;

const QByteArray READY = "ready";

QByteArray resultLine(const QStringList &words)
{
    return QJsonDocument(QJsonArray::fromStringList(words)).toJson(QJsonDocument::Compact);
}

QStringList wordsOf(const QByteArray &line)
{
    QStringList words;
    const QJsonArray array = QJsonDocument::fromJson(line).array();
    for (const QJsonValue &word : array)
        words.append(word.toString());
    return words;
}

/// One process, fed with one cell after the other.
class Lane : public QObject
{
public:
    Lane(QQueue<Cell> &cellsToPlay, const Teller &whenDifferent, const std::function<void()> &whenIdle)
        : cells(cellsToPlay)
        , onDifference(whenDifferent)
        , onIdle(whenIdle)
    {
        limit.setSingleShot(true);
        limit.setInterval(CELL_LIMIT);
        connect(&limit, &QTimer::timeout, &process, &QProcess::kill);
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        connect(&process, &QProcess::readyReadStandardOutput, this, [this] { readLines(); });
        connect(&process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this, [this] { goOn(); });
        start();
    }

    ~Lane() override
    {
        process.disconnect(this);
        process.closeWriteChannel();
        if (!process.waitForFinished(10000))
            process.kill();
        process.waitForFinished();
    }

private:
    void start()
    {
        played = 0;
        limit.start();
        process.start(QCoreApplication::applicationFilePath(), {LANE_ARGUMENT});
    }

    void readLines()
    {
        while (process.canReadLine()) {
            const QByteArray line = process.readLine().trimmed();
            if (line != READY)
                note(wordsOf(line));
            sendNext();
        }
    }

    void note(const QStringList &words)
    {
        if (!words.isEmpty())
            onDifference(current, words);
        current.clear();
    }

    void sendNext()
    {
        limit.start();
        if (cells.isEmpty() || played == CELLS_OF_ONE_LANE) {
            process.closeWriteChannel();
            return;
        }
        ++played;
        current = cells.dequeue().id();
        process.write(current.toUtf8() + '\n');
    }

    /// The process has ended: as it was told to, or with a cell that it has not survived.
    void goOn()
    {
        limit.stop();
        if (!current.isEmpty())
            note({QStringLiteral("the process ended in this cell, or the cell never did")});
        if (cells.isEmpty())
            onIdle();
        else
            start();
    }

    QQueue<Cell> &cells;
    Teller onDifference;
    std::function<void()> onIdle;
    QProcess process;
    QTimer limit;
    QString current;
    int played = 0;
};

} // namespace

int runLane()
{
    Scene scene;
    const QString reason = scene.start();
    if (!reason.isEmpty())
        qFatal("%s", qPrintable(reason));
    QTextStream input(stdin);
    input.setCodec("UTF-8");
    QTextStream output(stdout);
    output.setCodec("UTF-8");
    output << READY << '\n' << Qt::flush;
    for (QString id = input.readLine(); !id.isNull(); id = input.readLine())
        output << QString::fromUtf8(resultLine(scene.play(cellOf(id)))) << '\n' << Qt::flush;
    return 0;
}

Differences playInLanes(const QVector<Cell> &cells, LaneNumbers numbers, const Teller &tell)
{
    QQueue<Cell> busy;
    QQueue<Cell> waiting;
    for (const Cell &cell : cells)
        (standstill(cell) > 0 ? waiting : busy).enqueue(cell);
    std::stable_sort(waiting.begin(), waiting.end(),
                     [](const Cell &one, const Cell &other) { return standstill(one) > standstill(other); });
    Differences differences;
    QEventLoop loop;
    std::vector<std::unique_ptr<Lane>> lanes;
    std::size_t idle = 0;
    const auto onIdle = [&] {
        if (++idle == lanes.size())
            loop.quit();
    };
    const auto onDifference = [&](const QString &id, const QStringList &words) {
        differences.insert(id, words);
        tell(id, words);
    };
    const auto open = [&](QQueue<Cell> &queue, int number) {
        for (int i = 0; i < qMin(number, queue.size()); ++i)
            lanes.push_back(std::make_unique<Lane>(queue, onDifference, onIdle));
    };
    open(busy, numbers.busy);
    open(waiting, numbers.waiting);
    if (!lanes.empty())
        loop.exec();
    return differences;
}

} // namespace Korvo::Web::Faults
