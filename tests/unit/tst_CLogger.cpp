#include <NQLogging/CLogger.h>

#include <QtCore/QLoggingCategory>
#include <QtCore/QStringList>
#include <QtTest/QTest>

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

using Korvo::Logging::CLogger;
using Korvo::Logging::LogLevel;

namespace {

struct Line
{
    QtMsgType type;
    QString category;
    QString text;
};

std::mutex linesMutex; // guards lines
QList<Line> lines;

void keepLine(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    const std::lock_guard locker(linesMutex);
    lines.append({type, QString::fromUtf8(context.category), text});
}

const QString CATEGORY = QStringLiteral("KorvoWeb");

} // namespace

class tst_CLogger : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void levelDecidesHowQtLogsIt_data();
    void levelDecidesHowQtLogsIt();
    void argumentsStandBehindTheMessage_data();
    void argumentsStandBehindTheMessage();
    void textArrivesAsItIs();
    void categoryOutlivesItsText();
    void rulesOfTheHostApply();
    void sinkTakesTheMessageInsteadOfQt();
    void withoutSinkQtLogsAgain();
    void emptySinkIsNone();
    void sinkMayLogItself();
    void sinkIsReleasedWhenUnset();
    void manyThreadsMayLogWhileTheSinkChanges();

private:
    QtMessageHandler formerHandler = nullptr;
};

void tst_CLogger::init()
{
    formerHandler = qInstallMessageHandler(keepLine);
    lines.clear();
}

void tst_CLogger::cleanup()
{
    CLogger::unsetSink();
    QLoggingCategory::setFilterRules(QString());
    qInstallMessageHandler(formerHandler);
}

void tst_CLogger::levelDecidesHowQtLogsIt_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<int>("type");
    QTest::newRow("fatal does not end the application") << 0 << int(QtCriticalMsg);
    QTest::newRow("failure") << 1 << int(QtCriticalMsg);
    QTest::newRow("warning") << 2 << int(QtWarningMsg);
    QTest::newRow("info") << 3 << int(QtInfoMsg);
    QTest::newRow("debug") << 4 << int(QtDebugMsg);
    QTest::newRow("unknown") << 99 << int(QtInfoMsg);
}

void tst_CLogger::levelDecidesHowQtLogsIt()
{
    QFETCH(int, level);
    QFETCH(int, type);
    CLogger::logMessage(static_cast<LogLevel>(level), CATEGORY, QStringLiteral("It failed."), {});
    QCOMPARE(lines.size(), 1);
    QCOMPARE(int(lines.first().type), type);
    QCOMPARE(lines.first().category, CATEGORY);
    QCOMPARE(lines.first().text, QStringLiteral("It failed."));
}

void tst_CLogger::argumentsStandBehindTheMessage_data()
{
    QTest::addColumn<QVariantList>("arguments");
    QTest::addColumn<QString>("text");
    QTest::newRow("none") << QVariantList() << QStringLiteral("Aborted.");
    QTest::newRow("id") << QVariantList{7u} << QStringLiteral("Aborted. [7]");
    QTest::newRow("several") << QVariantList{7, QStringLiteral("a b"), true} << QStringLiteral("Aborted. [7, a b, true]");
    QTest::newRow("place marker") << QVariantList{QStringLiteral("%1")} << QStringLiteral("Aborted. [%1]");
    QTest::newRow("list") << QVariantList{QVariantList{1, 2}}
                          << QStringLiteral("Aborted. [QVariant(QVariantList, (QVariant(int, 1), QVariant(int, 2)))]");
}

void tst_CLogger::argumentsStandBehindTheMessage()
{
    QFETCH(QVariantList, arguments);
    CLogger::logMessage(LogLevel::Failure, CATEGORY, QStringLiteral("Aborted."), arguments);
    QCOMPARE(lines.size(), 1);
    QTEST(lines.first().text, "text");
}

void tst_CLogger::textArrivesAsItIs()
{
    const QString text = QStringLiteral("100 % of \"Stra\u00dfe\"\n%s %1 \\ end ");
    CLogger::logMessage(LogLevel::Failure, CATEGORY, text, {});
    QCOMPARE(lines.first().text, text);
}

void tst_CLogger::categoryOutlivesItsText()
{
    for (int i = 0; i < 200; ++i) {
        const QString category = QStringLiteral("Korvo::Web::Category") + QString::number(i);
        CLogger::logMessage(LogLevel::Failure, category, category, {});
    }
    for (const Line &line : qAsConst(lines)) {
        QCOMPARE(line.category, line.text);
    }
    QCOMPARE(lines.size(), 200);
    // Every known category is asked for its name now.
    QLoggingCategory::setFilterRules(QStringLiteral("Korvo::Web::Category7.critical=false"));
    CLogger::logMessage(LogLevel::Failure, QStringLiteral("Korvo::Web::Category7"), QStringLiteral("off"), {});
    QCOMPARE(lines.size(), 200);
}

void tst_CLogger::rulesOfTheHostApply()
{
    QLoggingCategory::setFilterRules(QStringLiteral("KorvoWeb.warning=false"));
    CLogger::logMessage(LogLevel::Warning, CATEGORY, QStringLiteral("quiet"), {});
    CLogger::logMessage(LogLevel::Failure, CATEGORY, QStringLiteral("loud"), {});
    QCOMPARE(lines.size(), 1);
    QCOMPARE(lines.first().text, QStringLiteral("loud"));
}

void tst_CLogger::sinkTakesTheMessageInsteadOfQt()
{
    int calls = 0;
    CLogger::setSink([&](LogLevel level, const QString &category, const QString &message, const QVariantList &arguments) {
        ++calls;
        QCOMPARE(level, LogLevel::Warning);
        QCOMPARE(category, CATEGORY);
        QCOMPARE(message, QStringLiteral("Refused."));
        QCOMPARE(arguments, QVariantList{7});
    });
    CLogger::logMessage(LogLevel::Warning, CATEGORY, QStringLiteral("Refused."), {7});
    QCOMPARE(calls, 1);
    QVERIFY(lines.isEmpty());
}

void tst_CLogger::withoutSinkQtLogsAgain()
{
    CLogger::setSink([](LogLevel, const QString &, const QString &, const QVariantList &) {});
    CLogger::unsetSink();
    CLogger::logMessage(LogLevel::Failure, CATEGORY, QStringLiteral("back"), {});
    QCOMPARE(lines.size(), 1);
}

void tst_CLogger::emptySinkIsNone()
{
    CLogger::setSink({});
    CLogger::logMessage(LogLevel::Failure, CATEGORY, QStringLiteral("kept"), {});
    QCOMPARE(lines.size(), 1);
}

void tst_CLogger::sinkMayLogItself()
{
    QStringList seen;
    CLogger::setSink([&](LogLevel, const QString &, const QString &message, const QVariantList &) {
        seen.append(message);
        CLogger::unsetSink();
        CLogger::logMessage(LogLevel::Failure, CATEGORY, QStringLiteral("second"), {});
    });
    CLogger::logMessage(LogLevel::Failure, CATEGORY, QStringLiteral("first"), {});
    QCOMPARE(seen, QStringList{QStringLiteral("first")});
    QCOMPARE(lines.size(), 1);
    QCOMPARE(lines.first().text, QStringLiteral("second"));
}

void tst_CLogger::sinkIsReleasedWhenUnset()
{
    const auto held = std::make_shared<int>(0);
    CLogger::setSink([held](LogLevel, const QString &, const QString &, const QVariantList &) {});
    QVERIFY(held.use_count() > 1);
    CLogger::unsetSink();
    QCOMPARE(held.use_count(), 1L);
}

void tst_CLogger::manyThreadsMayLogWhileTheSinkChanges()
{
    constexpr int THREADS = 4;
    constexpr int MESSAGES = 2000;
    std::atomic<int> taken{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i) {
        threads.emplace_back([i] {
            for (int k = 0; k < MESSAGES; ++k) {
                CLogger::logMessage(LogLevel::Failure, QStringLiteral("Thread") + QString::number(i + k % 7),
                                    QStringLiteral("message"), {k});
            }
        });
    }
    for (int k = 0; k < MESSAGES; ++k) {
        CLogger::setSink([&taken](LogLevel, const QString &, const QString &, const QVariantList &) { ++taken; });
        CLogger::unsetSink();
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    QCOMPARE(taken + lines.size(), THREADS * MESSAGES);
}

QTEST_GUILESS_MAIN(tst_CLogger)

#include "tst_CLogger.moc"
