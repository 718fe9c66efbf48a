#include "handles/ReplyDate.h"

#include <QtCore/QRandomGenerator>
#include <QtTest/QtTest>

#include <ctime>

using namespace Korvo::Web;

namespace {

constexpr int TEXTS = 250000; // read twice in two zones each

const QString PROJECT_PATTERN = QStringLiteral("yyyy-MM-ddThh:mm:ss");

QDateTime projectDateOfQt(const QString &text)
{
    return QDateTime::fromString(text, PROJECT_PATTERN);
}

QDateTime isoDateOfQt(const QString &text)
{
    return QDateTime::fromString(text, Qt::ISODate);
}

void setTimeZone(const QByteArray &name)
{
    qputenv("TZ", name);
#ifdef Q_OS_WIN
    _tzset();
#else
    tzset();
#endif
}

// In the hour that a clock shows twice, which of the two is meant depends on what the C library was asked before.
bool isSame(const QDateTime &left, const QDateTime &right)
{
    return left.isNull() == right.isNull() && left.isValid() == right.isValid() && left.timeSpec() == right.timeSpec()
        && left.date() == right.date() && left.time() == right.time()
        && (left.timeSpec() == Qt::LocalTime || left.toMSecsSinceEpoch() == right.toMSecsSinceEpoch());
}

/// Makes texts that are dates or very nearly so.
class DateTexts
{
public:
    QString next()
    {
        QString text = reading() + ending();
        for (int i = pick(4) - 1; i > 0; --i)
            spoil(text);
        return text;
    }

private:
    int pick(int choices) { return generator.bounded(choices); }

    QString reading()
    {
        if (pick(4) == 0) // figures that no calendar or clock has, years of all ages
            return read(pick(10000), pick(14), pick(34), pick(26), pick(62), pick(62));
        if (pick(4) == 0) // nights in which the clock is put forward or back
            return read(1970 + pick(130), pick(2) ? 3 : 10, 20 + pick(12), 1 + pick(3), pick(60), pick(60));
        return read(1990 + pick(50), 1 + pick(12), 1 + pick(28), pick(24), pick(60), pick(60));
    }

    static QString read(int year, int month, int day, int hour, int minute, int second)
    {
        return QString::asprintf("%04d-%02d-%02dT%02d:%02d:%02d", year, month, day, hour, minute, second);
    }

    QString ending()
    {
        switch (pick(8)) {
        case 0:
            return QStringLiteral("Z");
        case 1:
            return QLatin1Char('.') + digits(1 + pick(8));
        case 2:
            return QLatin1Char('.') + digits(1 + pick(8)) + QLatin1Char('Z');
        case 3:
            return QLatin1Char('.') + digits(1 + pick(3)) + QLatin1Char('Z');
        case 4:
            return QStringLiteral("+0%1:00").arg(pick(10));
        case 5:
            return QString(1, QLatin1Char(" T\t:-.,0"[pick(8)]));
        default:
            return {};
        }
    }

    QString digits(int count)
    {
        QString text;
        while (text.size() < count)
            text += QLatin1Char(char('0' + pick(10)));
        return text;
    }

    void spoil(QString &text)
    {
        static const QString characters = QStringLiteral("0123456789-:TtZz. +,/") + QChar(0x0661) + QChar(0x2028);
        const int at = pick(text.size() + 1);
        switch (pick(4)) {
        case 0:
            text.insert(at, characters.at(pick(characters.size())));
            return;
        case 1:
            text.remove(at, 1);
            return;
        case 2:
            text.truncate(at);
            return;
        default:
            text.replace(at, 1, characters.at(pick(characters.size())));
            return;
        }
    }

    QRandomGenerator generator{20240229};
};

} // namespace

class tst_ReplyDate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { ownZone = qgetenv("TZ"); }
    void cleanup() { setTimeZone(ownZone); }

    void readsWhatQtReads_data();
    void readsWhatQtReads();
    void randomTextsAreReadAsQtReadsThem_data();
    void randomTextsAreReadAsQtReadsThem();

private:
    QByteArray ownZone;
};

void tst_ReplyDate::readsWhatQtReads_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"2025-03-04T10:11:12",
                             "2024-02-29T00:00:00",
                             "2025-02-29T10:11:12",
                             "2025-03-04T24:00:00",
                             "2025-03-04T23:59:60",
                             "0000-01-01T00:00:00",
                             "0001-01-01T00:00:00",
                             "0099-12-31T00:00:00",
                             "9999-12-31T23:59:59",
                             "2025-03-30T02:30:00",
                             "2025-10-26T02:30:00",
                             "2025-03-04T10:11:12Z",
                             "2025-03-04T10:11:12z",
                             "2025-03-04T10:11:12.3Z",
                             "2025-03-04T10:11:12.34Z",
                             "2025-03-04T10:11:12.345Z",
                             "2025-03-04T10:11:12.3456789Z",
                             "2025-03-04T10:11:12.Z",
                             "2025-03-04T10:11:12,345Z",
                             "2025-03-04T10:11:12.345",
                             "2025-03-04T10:11:12+01:00",
                             "2025-03-04T10:11:12 ",
                             " 2025-03-04T10:11:12",
                             "2025-03-04t10:11:12",
                             "2025-03-04 10:11:12",
                             "2025-3-4T1:1:2",
                             "2025-03-04",
                             "2025-03-04T24:00:00Z",
                             "T",
                             "",
                             "yesterday"})
        QTest::newRow(text) << QString::fromLatin1(text);
    QTest::newRow("digits of another script") << QStringLiteral("2025-03-04T10:11:1") + QChar(0x0662);
    QTest::newRow("a zero behind it") << QStringLiteral("2025-03-04T10:11:12") + QChar(QChar::Null);
}

void tst_ReplyDate::readsWhatQtReads()
{
    QFETCH(QString, text);
    for (const char *zone : {"UTC", "Europe/Berlin", "America/New_York"}) {
        setTimeZone(zone);
        QVERIFY2(isSame(projectDateFrom(text), projectDateOfQt(text)), zone);
        QVERIFY2(isSame(isoDateFrom(text), isoDateOfQt(text)), zone);
    }
}

void tst_ReplyDate::randomTextsAreReadAsQtReadsThem_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::newRow("with summer time") << QByteArray("Europe/Berlin");
    QTest::newRow("without") << QByteArray("UTC");
}

void tst_ReplyDate::randomTextsAreReadAsQtReadsThem()
{
    QFETCH(QByteArray, zone);
    setTimeZone(zone);
    DateTexts texts;
    int dates = 0;
    for (int i = 0; i < TEXTS; ++i) {
        const QString text = texts.next();
        const QDateTime date = projectDateFrom(text);
        QVERIFY2(isSame(date, projectDateOfQt(text)), qPrintable(text));
        QVERIFY2(isSame(isoDateFrom(text), isoDateOfQt(text)), qPrintable(text));
        dates += date.isValid() ? 1 : 0;
    }
    QVERIFY2(dates > TEXTS / 20 && dates < TEXTS / 2,
             qPrintable(QString::number(dates))); // both kinds, or it shows little
}

QTEST_APPLESS_MAIN(tst_ReplyDate)

#include "tst_ReplyDate.moc"
