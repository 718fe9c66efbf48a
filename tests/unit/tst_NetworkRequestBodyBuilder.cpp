#include <NQKorvoWeb/NetworkRequestBodyBuilder.h>

#include <QtCore/QRandomGenerator>
#include <QtTest/QtTest>

#include <utility>

#include <algorithm>

using Korvo::Web::NetworkRequestBodyBuilder;

namespace {

QByteArray randomBytes(int size)
{
    static QRandomGenerator generator(42);
    QByteArray bytes(size, Qt::Uninitialized);
    std::generate(bytes.begin(), bytes.end(), [] { return char(generator.bounded(256)); });
    return bytes;
}

QByteArray base64Of(const QByteArray &bytes)
{
    return NetworkRequestBodyBuilder().addBase64(bytes).generate();
}

} // namespace

class tst_NetworkRequestBodyBuilder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingWrittenGivesAnEmptyBody();
    void startWithoutAttributesHasNoBlank();
    void attributesFollowOneBlankAsGiven();
    void startWithEmptyNameWritesAndOpensNothing();
    void elementWithValue();
    void emptyValueStillGivesStartAndEndTag();
    void elementWithEmptyNameWritesNothing();
    void valuesAreNotEscaped();
    void valueIsWrittenAsItIs();
    void zeroBytesAreKept();
    void closeTakesTheInnermost();
    void closeWithoutOpenElementDoesNothing();
    void generateClosesInnermostFirst();
    void generateTwiceGivesTheSameBody();
    void bodyIsNotChangedByLaterWrites();
    void wholeBodyInOneChain();
    void copiesAreIndependent();
    void largeValueIsKeptWholeAndHardlyTakesMoreThanItself();
    void base64OfEveryLength();
    void base64OfEveryByte();
    void base64StandsInTheOpenElement();
    void largeContentHardlyTakesMoreThanItself();
    void spentBodyIsWrittenOver();
    void spentBodyThatIsStillHeldStaysAsItIs();
};

void tst_NetworkRequestBodyBuilder::nothingWrittenGivesAnEmptyBody()
{
    QCOMPARE(NetworkRequestBodyBuilder().generate(), QByteArray());
}

void tst_NetworkRequestBodyBuilder::startWithoutAttributesHasNoBlank()
{
    QCOMPARE(NetworkRequestBodyBuilder().startElement("Root", QByteArray()).generate(), QByteArray("<Root></Root>"));
    QCOMPARE(NetworkRequestBodyBuilder().startElement("Root", QByteArray("")).generate(), QByteArray("<Root></Root>"));
    QCOMPARE(NetworkRequestBodyBuilder().startElement("Root").generate(), QByteArray("<Root></Root>"));
}

void tst_NetworkRequestBodyBuilder::attributesFollowOneBlankAsGiven()
{
    QCOMPARE(NetworkRequestBodyBuilder().startElement("Root", "a=\"1\"  b='&'").generate(),
             QByteArray("<Root a=\"1\"  b='&'></Root>"));
}

void tst_NetworkRequestBodyBuilder::startWithEmptyNameWritesAndOpensNothing()
{
    QCOMPARE(NetworkRequestBodyBuilder().startElement(QByteArray(), "a=\"1\"").generate(), QByteArray());
    // The element that is closed here must be the outer one.
    QCOMPARE(NetworkRequestBodyBuilder().startElement("Root").startElement("").closeElement().addValue("x").generate(),
             QByteArray("<Root></Root>x"));
}

void tst_NetworkRequestBodyBuilder::elementWithValue()
{
    QCOMPARE(NetworkRequestBodyBuilder().addElement("Name", "value").generate(), QByteArray("<Name>value</Name>"));
}

void tst_NetworkRequestBodyBuilder::emptyValueStillGivesStartAndEndTag()
{
    QCOMPARE(NetworkRequestBodyBuilder().addElement("X", QByteArray()).generate(), QByteArray("<X></X>"));
    QCOMPARE(NetworkRequestBodyBuilder().addElement("X", "").generate(), QByteArray("<X></X>"));
}

void tst_NetworkRequestBodyBuilder::elementWithEmptyNameWritesNothing()
{
    QCOMPARE(NetworkRequestBodyBuilder().addElement(QByteArray(), "value").generate(), QByteArray());
    QCOMPARE(NetworkRequestBodyBuilder().addElement("", "value").generate(), QByteArray());
    QCOMPARE(NetworkRequestBodyBuilder().addElement(QByteArray(), QByteArray()).generate(), QByteArray());
}

void tst_NetworkRequestBodyBuilder::valuesAreNotEscaped()
{
    QCOMPARE(NetworkRequestBodyBuilder().addElement("X", "a&b<c>\"'").addValue("&").generate(),
             QByteArray("<X>a&b<c>\"'</X>&"));
}

void tst_NetworkRequestBodyBuilder::valueIsWrittenAsItIs()
{
    NetworkRequestBodyBuilder builder;
    QCOMPARE(builder.startElement("X").addValue(" a ").addValue(QByteArray()).addValue("b").generate(),
             QByteArray("<X> a b</X>"));
}

void tst_NetworkRequestBodyBuilder::zeroBytesAreKept()
{
    const QByteArray value("a\0b", 3);
    QCOMPARE(NetworkRequestBodyBuilder().addElement("X", value).generate(), QByteArray("<X>a\0b</X>", 10));
}

void tst_NetworkRequestBodyBuilder::closeTakesTheInnermost()
{
    NetworkRequestBodyBuilder builder;
    QCOMPARE(builder.startElement("A").startElement("B").closeElement().addElement("C", "1").generate(),
             QByteArray("<A><B></B><C>1</C></A>"));
}

void tst_NetworkRequestBodyBuilder::closeWithoutOpenElementDoesNothing()
{
    QCOMPARE(NetworkRequestBodyBuilder().closeElement().generate(), QByteArray());
    QCOMPARE(NetworkRequestBodyBuilder().startElement("A").closeElement().closeElement().generate(),
             QByteArray("<A></A>"));
}

void tst_NetworkRequestBodyBuilder::generateClosesInnermostFirst()
{
    QCOMPARE(NetworkRequestBodyBuilder().startElement("A", "x=\"1\"").startElement("B").generate(),
             QByteArray("<A x=\"1\"><B></B></A>"));
}

void tst_NetworkRequestBodyBuilder::generateTwiceGivesTheSameBody()
{
    NetworkRequestBodyBuilder builder;
    builder.startElement("A");
    QCOMPARE(builder.generate(), QByteArray("<A></A>"));
    QCOMPARE(builder.generate(), QByteArray("<A></A>"));
}

void tst_NetworkRequestBodyBuilder::bodyIsNotChangedByLaterWrites()
{
    NetworkRequestBodyBuilder builder;
    const QByteArray body = builder.addElement("A", "1").generate();
    builder.addElement("B", "2");
    QCOMPARE(body, QByteArray("<A>1</A>"));
    QCOMPARE(builder.generate(), QByteArray("<A>1</A><B>2</B>"));
}

void tst_NetworkRequestBodyBuilder::wholeBodyInOneChain()
{
    const QByteArray body = NetworkRequestBodyBuilder()
        .startElement("FileListFromLocationsRequest", "xmlns=\"urn:x\"")
        .addElement("BucketName", "b\xC3\xBC" "cket")
        .addElement(QByteArray(), "left out")
        .addElement("Delimiter", "")
        .startElement("Prefixes", "xmlns:d2p1=\"urn:y\"")
        .addElement("d2p1:string", "Video/Sec")
        .addElement("d2p1:string", "Misc")
        .generate();
    QCOMPARE(body, QByteArray("<FileListFromLocationsRequest xmlns=\"urn:x\"><BucketName>b\xC3\xBC" "cket</BucketName>"
                              "<Delimiter></Delimiter><Prefixes xmlns:d2p1=\"urn:y\">"
                              "<d2p1:string>Video/Sec</d2p1:string><d2p1:string>Misc</d2p1:string></Prefixes>"
                              "</FileListFromLocationsRequest>"));
}

void tst_NetworkRequestBodyBuilder::copiesAreIndependent()
{
    NetworkRequestBodyBuilder original;
    original.startElement("A").addValue("1");
    NetworkRequestBodyBuilder copy(original);
    copy.startElement("B").addValue("2");
    QCOMPARE(original.generate(), QByteArray("<A>1</A>"));
    QCOMPARE(copy.generate(), QByteArray("<A>1<B>2</B></A>"));
}

void tst_NetworkRequestBodyBuilder::largeValueIsKeptWholeAndHardlyTakesMoreThanItself()
{
    const QByteArray content = QByteArray(4 * 1024 * 1024, 'x').toBase64();
    const QByteArray body = NetworkRequestBodyBuilder()
        .startElement("PutFileRequest")
        .addElement("InputFileArray", content)
        .addElement("OutputFilePath", "Misc/plan.pdf")
        .generate();
    const QByteArray expected = "<PutFileRequest><InputFileArray>" + content
        + "</InputFileArray><OutputFilePath>Misc/plan.pdf</OutputFilePath></PutFileRequest>";
    QVERIFY(body == expected);
    QVERIFY2(body.capacity() < body.size() + 4096, qPrintable(QString::number(body.capacity() - body.size())));
}

void tst_NetworkRequestBodyBuilder::base64OfEveryLength()
{
    for (int size = 0; size <= 1000; ++size) {
        const QByteArray bytes = randomBytes(size);
        QCOMPARE(base64Of(bytes), bytes.toBase64());
    }
    for (int size : {65534, 65535, 65536, 65537, 4 * 1024 * 1024 - 1, 4 * 1024 * 1024}) {
        const QByteArray bytes = randomBytes(size);
        QVERIFY2(base64Of(bytes) == bytes.toBase64(), qPrintable(QString::number(size)));
    }
}

void tst_NetworkRequestBodyBuilder::base64OfEveryByte()
{
    QByteArray bytes;
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second)
            bytes.append(char(first)).append(char(second)).append(char(first ^ second));
    }
    QVERIFY(base64Of(bytes) == bytes.toBase64());
    for (int byte = 0; byte < 256; ++byte)
        QCOMPARE(base64Of(QByteArray(1, char(byte))), QByteArray(1, char(byte)).toBase64());
}

void tst_NetworkRequestBodyBuilder::base64StandsInTheOpenElement()
{
    NetworkRequestBodyBuilder builder;
    builder.startElement("Root").addElement("Before", "b").startElement("Content");
    const NetworkRequestBodyBuilder copy(builder);
    QCOMPARE(builder.addBase64("any").closeElement().addElement("After", "a").generate(),
             QByteArray("<Root><Before>b</Before><Content>YW55</Content><After>a</After></Root>"));
    QCOMPARE(NetworkRequestBodyBuilder(copy).addBase64(QByteArray()).generate(),
             QByteArray("<Root><Before>b</Before><Content></Content></Root>"));
}

void tst_NetworkRequestBodyBuilder::largeContentHardlyTakesMoreThanItself()
{
    const QByteArray body = NetworkRequestBodyBuilder()
        .startElement("PutFileRequest")
        .startElement("InputFileArray").addBase64(QByteArray(4 * 1024 * 1024, 'x')).closeElement()
        .addElement("OutputFilePath", "Misc/plan.pdf")
        .generate();
    QVERIFY2(body.capacity() < body.size() + 4096, qPrintable(QString::number(body.capacity() - body.size())));
}

void tst_NetworkRequestBodyBuilder::spentBodyIsWrittenOver()
{
    const QByteArray content(1024 * 1024, 'x');
    QByteArray spent = NetworkRequestBodyBuilder().startElement("Part").addBase64(content).generate();
    const char *const memory = spent.constData();
    NetworkRequestBodyBuilder builder;
    builder.startElement("Forgotten");
    const QByteArray next
        = builder.intoMemoryOf(std::move(spent)).startElement("Part").addBase64(content).addValue("2").generate();
    QCOMPARE(next, "<Part>" + content.toBase64() + "2</Part>");
    QCOMPARE(static_cast<const void *>(next.constData()), static_cast<const void *>(memory));
    const QByteArray small = NetworkRequestBodyBuilder().intoMemoryOf(QByteArray("abc")).addElement("a", "b").generate();
    QCOMPARE(small, QByteArray("<a>b</a>"));
    QCOMPARE(NetworkRequestBodyBuilder().intoMemoryOf(QByteArray()).generate(), QByteArray());
}

void tst_NetworkRequestBodyBuilder::spentBodyThatIsStillHeldStaysAsItIs()
{
    const QByteArray held = NetworkRequestBodyBuilder().addElement("Part", "1").generate();
    QCOMPARE(NetworkRequestBodyBuilder().intoMemoryOf(held).addElement("Part", "2").generate(),
             QByteArray("<Part>2</Part>"));
    QCOMPARE(held, QByteArray("<Part>1</Part>"));
}

QTEST_APPLESS_MAIN(tst_NetworkRequestBodyBuilder)

#include "tst_NetworkRequestBodyBuilder.moc"
