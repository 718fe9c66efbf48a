#include "handles/BucketResponses.h"
#include "handles/XmlReply.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QRandomGenerator>
#include <QtTest/QTest>

using namespace Korvo::Web;

namespace {

constexpr qint64 LIMIT_MS = 20000;

template <typename Answer>
Answer parsed(const QString &text)
{
    Answer answer;
    answer.parse(text);
    return answer;
}

QString element(const char *name, const QString &text)
{
    const QLatin1String latinName(name);
    return QLatin1Char('<') + latinName + QLatin1Char('>') + text + QLatin1String("</") + latinName + QLatin1Char('>');
}

void addTruthRows()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("expected");
    QTest::newRow("true") << QStringLiteral("true") << true;
    QTest::newRow("capital") << QStringLiteral("True") << false;
    QTest::newRow("upper case") << QStringLiteral("TRUE") << false;
    QTest::newRow("blank before") << QStringLiteral(" true") << false;
    QTest::newRow("line break behind") << QStringLiteral("true\n") << false;
    QTest::newRow("one") << QStringLiteral("1") << false;
    QTest::newRow("false") << QStringLiteral("false") << false;
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("child element") << QStringLiteral("<b>true</b>") << false;
}

void addSizeRows()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("expected");
    QTest::newRow("zero") << QStringLiteral("0") << qint64(0);
    QTest::newRow("number") << QStringLiteral("123456789012") << qint64(123456789012);
    QTest::newRow("negative") << QStringLiteral("-5") << qint64(-5);
    QTest::newRow("largest") << QStringLiteral("9223372036854775807") << qint64(9223372036854775807);
    QTest::newRow("too large") << QStringLiteral("9223372036854775808") << qint64(0);
    QTest::newRow("fraction") << QStringLiteral("1.0") << qint64(0);
    QTest::newRow("unit") << QStringLiteral("5 KB") << qint64(0);
    QTest::newRow("hexadecimal") << QStringLiteral("0x1f") << qint64(0);
    QTest::newRow("empty") << QString() << qint64(0);
    QTest::newRow("text") << QStringLiteral("many") << qint64(0);
}

const QByteArray SAMPLE_LISTING
    = "<R><Count>9</Count><ObjectModel><Directory>Video/Sec</Directory><FileName>a \xc3\xa4.mp4</FileName>"
      "<Key>P/Video/Sec/a \xc3\xa4.mp4</Key><ModifiedDate>2025-03-04T10:11:12.5Z</ModifiedDate><Size>5000000000</Size>"
      "<Type>File</Type></ObjectModel><ObjectModel><Type>File</Type><Key>P/b&amp;c</Key><Size>7</Size></ObjectModel></R>";

// Everything that a listing carries, one entry a line.
QStringList valuesOf(const ListOfFilesFromLocationResponse &listing)
{
    QStringList values{QString::number(listing.count())};
    const auto entries = listing.entries();
    for (const RemoteFileEntry &entry : entries)
        values.append(QStringList{entry.fileName, entry.key, entry.modifiedDate.toString(Qt::ISODateWithMs),
                                  QString::number(entry.size), entry.type, entry.directory}
                          .join(QLatin1Char('|')));
    return values;
}

QStringList valuesFromText(const QByteArray &reply)
{
    return valuesOf(parsed<ListOfFilesFromLocationResponse>(QString::fromUtf8(reply.constData())));
}

QStringList valuesFromBytes(const QByteArray &reply)
{
    ListOfFilesFromLocationResponse listing;
    listing.parse(reply);
    return valuesOf(listing);
}

} // namespace

class tst_BucketResponses : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nameIsRead_data();
    void nameIsRead();
    void emptyReplyLeavesNameAndOutcome();
    void bucketExists_data();
    void bucketExists();

    void cleanupSucceeds_data() { addTruthRows(); }
    void cleanupSucceeds();
    void objectExists_data() { addTruthRows(); }
    void objectExists();
    void plausibleNamesAreNotTheElement();
    void lastTruthWins();

    void deletedSize_data() { addSizeRows(); }
    void deletedSize();
    void usedSpace_data() { addSizeRows(); }
    void usedSpace();
    void sizeOfAnEntry_data() { addSizeRows(); }
    void sizeOfAnEntry();
    void lastSizeWins();

    void listingCarriesEveryValueInDocumentOrder();
    void entryKeepsTheDefaultsOfWhatIsMissing();
    void countStandsForItself_data();
    void countStandsForItself();
    void modifiedDate_data();
    void modifiedDate();
    void fieldsBeforeTheFirstEntryAreIgnored();
    void fieldsFillTheNewestEntry();
    void entriesBeforeAnErrorStay();
    void hostileListing_data();
    void hostileListing();
    void oneHundredThousandEntriesAreRead();
    void bytesComeToTheSameAsTheirText_data();
    void bytesComeToTheSameAsTheirText();
    void spoiltBytesComeToTheSameAsTheirText();
    void longListingIsReadFromItsBytes();
};

void tst_BucketResponses::nameIsRead_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << QStringLiteral("<R xmlns=\"u\"><Name>a-b</Name></R>") << QStringLiteral("a-b");
    QTest::newRow("deep, with prefix") << QStringLiteral("<R xmlns:x=\"u\"><a><x:Name>a</x:Name></a></R>") << QStringLiteral("a");
    QTest::newRow("last one wins") << QStringLiteral("<R><Name>a</Name><Name>b</Name></R>") << QStringLiteral("b");
    QTest::newRow("other names") << QStringLiteral("<R><name>a</name><BucketName>b</BucketName></R>") << QString();
    QTest::newRow("cut off behind it") << QStringLiteral("<R><Name>a</Name><") << QStringLiteral("a");
    QTest::newRow("cut off inside it") << QStringLiteral("<R><Name>a") << QString();
    QTest::newRow("text before a child") << QStringLiteral("<R><Name>a<b/>c</Name></R>") << QStringLiteral("a");
    QTest::newRow("empty element") << QStringLiteral("<R><Name/></R>") << QString();
    QTest::newRow("web page") << QStringLiteral("<!DOCTYPE html><html><body><br>Name</body></html>") << QString();
}

void tst_BucketResponses::nameIsRead()
{
    QFETCH(QString, text);
    QTEST(parsed<BucketCreateResponse>(text).name(), "name");
    QTEST(parsed<BucketGetResponse>(text).name(), "name");
}

void tst_BucketResponses::emptyReplyLeavesNameAndOutcome()
{
    BucketGetResponse get;
    get.parse(QString());
    QVERIFY(get.name().isEmpty());
    QVERIFY(!get.exists());
    QVERIFY(get.isSuccess());

    BucketCreateResponse create;
    create.setOutcome(QNetworkReply::TimeoutError);
    create.parse(QString());
    QVERIFY(create.name().isEmpty());
    QCOMPARE(create.error(), Error::TimeOut);
}

void tst_BucketResponses::bucketExists_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("exists");
    QTest::newRow("said so") << QStringLiteral("<R><Exist>true</Exist></R>") << true;
    QTest::newRow("denied") << QStringLiteral("<R><Exist>false</Exist></R>") << false;
    QTest::newRow("said so with a capital") << QStringLiteral("<R><Exist>True</Exist></R>") << false;
    QTest::newRow("named") << QStringLiteral("<R><Name>a</Name></R>") << true;
    QTest::newRow("denied, but named") << QStringLiteral("<R><Exist>false</Exist><Name>a</Name></R>") << true;
    QTest::newRow("name without text") << QStringLiteral("<R><Name/></R>") << false;
    QTest::newRow("last word counts") << QStringLiteral("<R><Exist>true</Exist><Exist>false</Exist></R>") << false;
    QTest::newRow("nothing") << QStringLiteral("<R/>") << false;
}

void tst_BucketResponses::bucketExists()
{
    QFETCH(QString, text);
    QTEST(parsed<BucketGetResponse>(text).exists(), "exists");
}

void tst_BucketResponses::cleanupSucceeds()
{
    QFETCH(QString, text);
    QTEST(parsed<ObjectCleanupResponse>(element("Success", text)).succeeded(), "expected");
}

void tst_BucketResponses::objectExists()
{
    QFETCH(QString, text);
    QTEST(parsed<ObjectExistsResponse>(element("Exist", text)).exists(), "expected");
}

void tst_BucketResponses::plausibleNamesAreNotTheElement()
{
    QVERIFY(!parsed<ObjectExistsResponse>(element("Exists", QStringLiteral("true"))).exists());
    QVERIFY(!parsed<ObjectCleanupResponse>(element("Succeeded", QStringLiteral("true"))).succeeded());
    QCOMPARE(parsed<ObjectDeleteResponse>(element("DeletedFileSize", QStringLiteral("7"))).deletedFilesSize(), qint64(0));
    QCOMPARE(parsed<ObjectSpaceResponse>(element("usedSpace", QStringLiteral("7"))).usedSpace(), qint64(0));
}

void tst_BucketResponses::lastTruthWins()
{
    const QString trueThenFalse = QStringLiteral("<R><Success>true</Success><Exist>true</Exist><Success>false</Success><Exist/></R>");
    QVERIFY(!parsed<ObjectCleanupResponse>(trueThenFalse).succeeded());
    QVERIFY(!parsed<ObjectExistsResponse>(trueThenFalse).exists());
}

void tst_BucketResponses::deletedSize()
{
    QFETCH(QString, text);
    QTEST(parsed<ObjectDeleteResponse>(element("DeletedFilesSize", text)).deletedFilesSize(), "expected");
}

void tst_BucketResponses::usedSpace()
{
    QFETCH(QString, text);
    QTEST(parsed<ObjectSpaceResponse>(element("UsedSpace", text)).usedSpace(), "expected");
}

void tst_BucketResponses::sizeOfAnEntry()
{
    QFETCH(QString, text);
    const auto listing = parsed<ListOfFilesFromLocationResponse>(element("ObjectModel", element("Size", text)));
    QCOMPARE(listing.entries().size(), 1);
    QTEST(listing.entries().first().size, "expected");
}

void tst_BucketResponses::lastSizeWins()
{
    QCOMPARE(parsed<ObjectSpaceResponse>(QStringLiteral("<R><UsedSpace>1</UsedSpace><UsedSpace>2</UsedSpace></R>")).usedSpace(), qint64(2));
    QCOMPARE(parsed<ObjectSpaceResponse>(QStringLiteral("<R><UsedSpace>1</UsedSpace><UsedSpace>x</UsedSpace></R>")).usedSpace(), qint64(0));
}

void tst_BucketResponses::listingCarriesEveryValueInDocumentOrder()
{
    const auto listing = parsed<ListOfFilesFromLocationResponse>(QStringLiteral(
        "<?xml version=\"1.0\" encoding=\"utf-8\"?><ListObjectsResponse xmlns=\"u\" xmlns:i=\"v\"><Count>9</Count><Objects>"
        "<ObjectModel><Directory>Video/Sec</Directory><FileName>a \u00e4.mp4</FileName><Key>P/Video/Sec/a \u00e4.mp4</Key>"
        "<ModifiedDate>2025-03-04T10:11:12Z</ModifiedDate><Size>5000000000</Size><Type>File</Type></ObjectModel>"
        "<ObjectModel><Key>P/b&amp;c</Key><Size>7</Size></ObjectModel></Objects></ListObjectsResponse>"));
    QVERIFY(listing.isSuccess());
    QCOMPARE(listing.count(), 9);
    QCOMPARE(listing.entries().size(), 2);
    const RemoteFileEntry first = listing.entries().at(0);
    QCOMPARE(first.fileName, QStringLiteral("a \u00e4.mp4"));
    QCOMPARE(first.key, QStringLiteral("P/Video/Sec/a \u00e4.mp4"));
    QCOMPARE(first.modifiedDate, QDateTime(QDate(2025, 3, 4), QTime(10, 11, 12), Qt::UTC));
    QCOMPARE(first.size, qint64(5000000000));
    QCOMPARE(first.type, QStringLiteral("File"));
    QCOMPARE(first.directory, QStringLiteral("Video/Sec"));
    QCOMPARE(listing.entries().at(1).key, QStringLiteral("P/b&c"));
    QCOMPARE(listing.entries().at(1).size, qint64(7));
}

void tst_BucketResponses::entryKeepsTheDefaultsOfWhatIsMissing()
{
    const auto entries = parsed<ListOfFilesFromLocationResponse>(QStringLiteral("<R><ObjectModel/></R>")).entries();
    QCOMPARE(entries.size(), 1);
    QVERIFY(entries.first().fileName.isEmpty());
    QVERIFY(entries.first().key.isEmpty());
    QVERIFY(!entries.first().modifiedDate.isValid());
    QCOMPARE(entries.first().size, qint64(0));
    QVERIFY(entries.first().type.isEmpty());
    QVERIFY(entries.first().directory.isEmpty());
}

void tst_BucketResponses::countStandsForItself_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("count");
    QTest::newRow("before the entries") << QStringLiteral("<R><Count>5</Count><ObjectModel/></R>") << 5;
    QTest::newRow("behind the entries") << QStringLiteral("<R><ObjectModel/><Count>5</Count></R>") << 5;
    QTest::newRow("last one wins") << QStringLiteral("<R><Count>5</Count><ObjectModel/><Count>6</Count></R>") << 6;
    QTest::newRow("negative") << QStringLiteral("<R><ObjectModel/><Count>-1</Count></R>") << -1;
    QTest::newRow("too large") << QStringLiteral("<R><ObjectModel/><Count>2147483648</Count></R>") << 0;
    QTest::newRow("no number") << QStringLiteral("<R><ObjectModel/><Count>all</Count></R>") << 0;
    QTest::newRow("absent") << QStringLiteral("<R><ObjectModel/></R>") << 0;
}

void tst_BucketResponses::countStandsForItself()
{
    QFETCH(QString, text);
    const auto listing = parsed<ListOfFilesFromLocationResponse>(text);
    QTEST(listing.count(), "count");
    QCOMPARE(listing.entries().size(), 1);
}

void tst_BucketResponses::modifiedDate_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QDateTime>("date");
    const QDateTime utc(QDate(2025, 3, 4), QTime(10, 11, 12), Qt::UTC);
    QTest::newRow("UTC") << QStringLiteral("2025-03-04T10:11:12Z") << utc;
    QTest::newRow("offset") << QStringLiteral("2025-03-04T11:11:12+01:00") << utc;
    QTest::newRow("milliseconds") << QStringLiteral("2025-03-04T10:11:12.345Z") << utc.addMSecs(345);
    QTest::newRow("local") << QStringLiteral("2025-03-04T10:11:12") << QDateTime(QDate(2025, 3, 4), QTime(10, 11, 12));
    QTest::newRow("no such month") << QStringLiteral("2025-13-04T10:11:12Z") << QDateTime();
    QTest::newRow("other format") << QStringLiteral("Tue, 04 Mar 2025 10:11:12 GMT") << QDateTime();
    QTest::newRow("empty") << QString() << QDateTime();
}

void tst_BucketResponses::modifiedDate()
{
    QFETCH(QString, text);
    QFETCH(QDateTime, date);
    const auto entries = parsed<ListOfFilesFromLocationResponse>(element("ObjectModel", element("ModifiedDate", text))).entries();
    QCOMPARE(entries.size(), 1);
    QCOMPARE(entries.first().modifiedDate.isValid(), date.isValid());
    QCOMPARE(entries.first().modifiedDate, date);
}

void tst_BucketResponses::fieldsBeforeTheFirstEntryAreIgnored()
{
    const auto listing = parsed<ListOfFilesFromLocationResponse>(QStringLiteral(
        "<R><Key>stray</Key><Directory><x/></Directory><Size>5</Size><ObjectModel><FileName>a</FileName></ObjectModel></R>"));
    QCOMPARE(listing.entries().size(), 1);
    QCOMPARE(listing.entries().first().fileName, QStringLiteral("a"));
    QVERIFY(listing.entries().first().key.isEmpty());
    QCOMPARE(listing.entries().first().size, qint64(0));
    QVERIFY(parsed<ListOfFilesFromLocationResponse>(QStringLiteral("<R><Key>stray</Key></R>")).entries().isEmpty());
}

void tst_BucketResponses::fieldsFillTheNewestEntry()
{
    const auto entries = parsed<ListOfFilesFromLocationResponse>(QStringLiteral(
        "<R><ObjectModel><Key>1</Key><Key>2</Key></ObjectModel><Key>3</Key>"
        "<ObjectModel><x><Key>4</Key></x><key>5</key></ObjectModel></R>")).entries();
    QCOMPARE(entries.size(), 2);
    QCOMPARE(entries.at(0).key, QStringLiteral("3"));
    QCOMPARE(entries.at(1).key, QStringLiteral("4"));
}

void tst_BucketResponses::entriesBeforeAnErrorStay()
{
    const auto listing = parsed<ListOfFilesFromLocationResponse>(QStringLiteral(
        "<R><Count>3</Count><ObjectModel><Key>1</Key><Size>7</Size></ObjectModel><ObjectModel><Key>2</Key><Size>&bad;"));
    QCOMPARE(listing.count(), 3);
    QCOMPARE(listing.entries().size(), 2);
    QCOMPARE(listing.entries().at(0).size, qint64(7));
    QCOMPARE(listing.entries().at(1).key, QStringLiteral("2"));
    QCOMPARE(listing.entries().at(1).size, qint64(0));
}

void tst_BucketResponses::hostileListing_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("JSON") << QStringLiteral("{\"ObjectModel\":[]}");
    QTest::newRow("blanks") << QString(1000000, QLatin1Char(' '));
    QTest::newRow("zero characters") << QString(1000, QChar(0));
    QTest::newRow("wrong end tag") << QStringLiteral("</R>");
    QTest::newRow("undeclared entity") << QStringLiteral("<R>&x;<ObjectModel/></R>");
    QTest::newRow("external document type") << QStringLiteral("<!DOCTYPE R [<!ENTITY x SYSTEM 'file:///etc/passwd'>]><R>&y;<ObjectModel/></R>");
    QTest::newRow("entity with many references")
        << QStringLiteral("<!DOCTYPE R [<!ENTITY x '") + QString(3900, QLatin1Char('y')) + QStringLiteral("'>]><R><ObjectModel/><Count>1</Count><Key>")
               + QStringLiteral("&x;").repeated(400000) + QStringLiteral("</Key></R>");
    QTest::newRow("open elements") << QStringLiteral("<R>").repeated(700000);
}

void tst_BucketResponses::hostileListing()
{
    QFETCH(QString, text);
    QElapsedTimer clock;
    clock.start();
    const auto listing = parsed<ListOfFilesFromLocationResponse>(text);
    QVERIFY(listing.isSuccess());
    QVERIFY(listing.entries().isEmpty());
    QCOMPARE(listing.count(), 0);
    QVERIFY(clock.elapsed() < LIMIT_MS);
}

void tst_BucketResponses::oneHundredThousandEntriesAreRead()
{
    constexpr int ENTRIES = 100000;
    QString text = QStringLiteral("<R><Count>100000</Count>");
    for (int i = 0; i < ENTRIES; ++i) {
        const QString number = QString::number(i);
        text += QLatin1String("<ObjectModel><FileName>file-") + number + QLatin1String(".jpg</FileName><Key>Project folder/Picture/Sec/file-")
            + number + QLatin1String(".jpg</Key><ModifiedDate>2025-03-04T10:11:12.3456789Z</ModifiedDate><Size>") + number
            + QLatin1String("</Size><Type>File</Type><Directory>Project folder/Picture/Sec</Directory>"
                            "<Checksum>0123456789abcdef0123456789abcdef0123456789abcdef</Checksum></ObjectModel>");
    }
    text += QLatin1String("</R>");
    QElapsedTimer clock;
    clock.start();
    const auto listing = parsed<ListOfFilesFromLocationResponse>(text);
    qInfo("%d characters in %lld ms", text.size(), static_cast<long long>(clock.elapsed()));
    QVERIFY(clock.elapsed() < LIMIT_MS);
    QCOMPARE(listing.entries().size(), ENTRIES);
    QCOMPARE(listing.entries().last().size, qint64(ENTRIES - 1));
    QCOMPARE(listing.entries().last().fileName, QStringLiteral("file-99999.jpg"));
}

void tst_BucketResponses::bytesComeToTheSameAsTheirText_data()
{
    QTest::addColumn<QByteArray>("reply");
    const QByteArray utf8 = "<?xml version=\"1.0\" encoding=\"utf-8\"?>";
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("plain") << SAMPLE_LISTING;
    QTest::newRow("declared") << utf8 + SAMPLE_LISTING;
    QTest::newRow("declared in capitals") << "<?xml version='1.0' encoding='UTF-8'?>" + SAMPLE_LISTING;
    QTest::newRow("declared as something else") << "<?xml version=\"1.0\" encoding=\"iso-8859-1\"?>" + SAMPLE_LISTING;
    QTest::newRow("declared as nothing known") << "<?xml version=\"1.0\" encoding=\"none\"?>" + SAMPLE_LISTING;
    QTest::newRow("declared without encoding") << "<?xml version=\"1.0\"?>" + SAMPLE_LISTING;
    QTest::newRow("declaration of great length")
        << "<?xml version=\"1.0\"" + QByteArray(300, ' ') + "encoding=\"utf-16\"?>" + SAMPLE_LISTING;
    QTest::newRow("byte order mark") << "\xef\xbb\xbf" + utf8 + SAMPLE_LISTING;
    QTest::newRow("UTF-16") << QByteArray("\xff\xfe<\0R\0/\0>\0", 10);
    QTest::newRow("blank before it") << ' ' + SAMPLE_LISTING;
    QTest::newRow("blank before the declaration") << ' ' + utf8 + SAMPLE_LISTING;
    QTest::newRow("zero byte inside") << SAMPLE_LISTING.left(200) + '\0' + SAMPLE_LISTING.mid(200);
    QTest::newRow("zero byte behind it") << SAMPLE_LISTING + '\0' + "<more/>";
    QTest::newRow("cut off") << SAMPLE_LISTING.left(300);
    QTest::newRow("cut off inside a character") << SAMPLE_LISTING.left(SAMPLE_LISTING.indexOf("\xc3") + 1);
    QTest::newRow("broken character") << QByteArray(SAMPLE_LISTING).replace("\xc3\xa4", "\xc3(");
    QTest::newRow("surrogate") << QByteArray(SAMPLE_LISTING).replace("\xc3\xa4", "\xed\xa0\x80");
    QTest::newRow("no character") << QByteArray(SAMPLE_LISTING).replace("\xc3\xa4", "\xef\xbf\xbf");
    QTest::newRow("beyond the first plane") << QByteArray(SAMPLE_LISTING).replace("\xc3\xa4", "\xf0\x9f\x98\x80");
    QTest::newRow("broken character behind it") << SAMPLE_LISTING + "\xc3";
    QTest::newRow("document type") << "<!DOCTYPE R>" + SAMPLE_LISTING;
    QTest::newRow("entity") << "<!DOCTYPE R [<!ENTITY x 'y'>]>" + SAMPLE_LISTING;
    QTest::newRow("undeclared entity") << QByteArray(SAMPLE_LISTING).replace("&amp;", "&x;");
    QTest::newRow("child in a text") << QByteArray(SAMPLE_LISTING).replace("&amp;", "<x/>");
    QTest::newRow("section and comment") << QByteArray(SAMPLE_LISTING).replace("&amp;", "<![CDATA[<&]]><!-- -- -->");
    QTest::newRow("line ends") << QByteArray(SAMPLE_LISTING).replace("&amp;", "\r\n\r&#13;\n");
    QTest::newRow("too many attributes") << QByteArray(SAMPLE_LISTING).replace("<Count>", "<x" + QByteArray(" a='='").repeated(1001) + "/><Count>");
    QTest::newRow("longer than what is read at once")
        << "<R>" + SAMPLE_LISTING.mid(3, SAMPLE_LISTING.size() - 7).repeated(1000) + "</R>";
}

void tst_BucketResponses::bytesComeToTheSameAsTheirText()
{
    QFETCH(QByteArray, reply);
    QCOMPARE(valuesFromBytes(reply), valuesFromText(reply));
}

// One byte, three or seven of a good reply are changed, doubled or taken away.
void tst_BucketResponses::spoiltBytesComeToTheSameAsTheirText()
{
    QRandomGenerator generator(7);
    constexpr char CHARACTERS[] = "<>/&;'\"=!-[]? \0\xc3\xa4\xff" "aR1";
    const QByteArray characters(CHARACTERS, int(sizeof CHARACTERS) - 1); // with the zero among them
    for (int round = 0; round < 20000; ++round) {
        QByteArray reply = SAMPLE_LISTING;
        for (int changes = 1 + 2 * generator.bounded(4); changes > 0; --changes) {
            const int at = generator.bounded(reply.size());
            if (generator.bounded(3) == 0)
                reply.remove(at, 1 + generator.bounded(20));
            else
                reply.replace(at, generator.bounded(2), characters.mid(generator.bounded(characters.size()), 1));
        }
        QCOMPARE(valuesFromBytes(reply), valuesFromText(reply));
    }
}

// Else its text would be made for nothing: the shape that servers send must not need the way round.
void tst_BucketResponses::longListingIsReadFromItsBytes()
{
    for (const char *declaration : {"", "<?xml version=\"1.0\" encoding=\"utf-8\"?>"}) {
        int elements = 0;
        QVERIFY(forEachElement(declaration + SAMPLE_LISTING, [&](const QStringRef &, QXmlStreamReader &) { ++elements; }));
        QCOMPARE(elements, 13);
    }
}

QTEST_GUILESS_MAIN(tst_BucketResponses)

#include "tst_BucketResponses.moc"
