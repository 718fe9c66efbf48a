#include "transfer/TransferProgress.h"

#include <QtTest/QTest>

#include <limits>

using namespace Korvo::Web;

class tst_TransferProgress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void truncatesTowardZero_data();
    void truncatesTowardZero();
    void wholePercentsAreHitExactly();
};

void tst_TransferProgress::truncatesTowardZero_data()
{
    QTest::addColumn<double>("done");
    QTest::addColumn<double>("total");
    QTest::addColumn<int>("expected");
    constexpr double HUGE_BYTES = 9.2e18;
    QTest::newRow("nothing to do counts as done") << 0.0 << 0.0 << 100;
    QTest::newRow("something done of nothing") << 5.0 << 0.0 << 100;
    QTest::newRow("less than nothing done of nothing") << -5.0 << 0.0 << 100;
    QTest::newRow("nothing done") << 0.0 << 2000.0 << 0;
    QTest::newRow("first byte of many") << 1.0 << 4194304.0 << 0;
    QTest::newRow("just below one percent") << 19.0 << 2000.0 << 0;
    QTest::newRow("one percent") << 20.0 << 2000.0 << 1;
    QTest::newRow("one of three") << 1.0 << 3.0 << 33;
    QTest::newRow("two of three") << 2.0 << 3.0 << 66;
    QTest::newRow("just below the end") << 1999.0 << 2000.0 << 99;
    QTest::newRow("the end") << 2000.0 << 2000.0 << 100;
    QTest::newRow("beyond the end") << 3000.0 << 2000.0 << 150;
    QTest::newRow("taken back below zero") << -30.0 << 2000.0 << -1;
    QTest::newRow("a little below zero") << -1.0 << 2000.0 << 0;
    QTest::newRow("a total below zero") << 10.0 << -20.0 << -50;
    QTest::newRow("half of a huge file") << HUGE_BYTES / 2 << HUGE_BYTES << 50;
    QTest::newRow("far too much for an int") << HUGE_BYTES << 1.0 << std::numeric_limits<int>::max();
    QTest::newRow("far too little for an int") << -HUGE_BYTES << 1.0 << std::numeric_limits<int>::min();
}

void tst_TransferProgress::truncatesTowardZero()
{
    QFETCH(double, done);
    QFETCH(double, total);
    QFETCH(int, expected);
    QCOMPARE(percentOf(done, total), expected);
}

void tst_TransferProgress::wholePercentsAreHitExactly()
{
    for (int percent = 0; percent <= 100; ++percent)
        QCOMPARE(percentOf(percent * 4194304.0, 419430400.0), percent);
}

QTEST_APPLESS_MAIN(tst_TransferProgress)

#include "tst_TransferProgress.moc"
