#include "request/PartRequestBody.h"

#include "support/PartBodies.h"

#include <QtTest/QtTest>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

const QString ID = QStringLiteral("upload-7");

QByteArray inSlices(const QByteArray &content, int sliceBytes)
{
    PartRequestBody body;
    body.begin(content.size(), QByteArray());
    for (int start = 0; start < content.size(); start += sliceBytes)
        body.add(content.mid(start, sliceBytes));
    return body.finish(ID, 3);
}

} // namespace

class tst_PartRequestBody : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void slicesMakeTheSameBody_data();
    void slicesMakeTheSameBody();
    void partThatIsShorterThanExpected();
    void droppedPartLeavesNothingBehind();
    void memoryOfTheSpentBodyIsUsedAgain();
    void spentBodyThatIsStillHeldStaysAsItIs();
    void bodyStaysAsItIsWhenTheNextBegins();
};

void tst_PartRequestBody::slicesMakeTheSameBody_data()
{
    QTest::addColumn<int>("bytes");
    for (const int bytes : {1, 2, 3, 299, 300, 301, 302, 6000})
        QTest::addRow("%d", bytes) << bytes;
}

void tst_PartRequestBody::slicesMakeTheSameBody()
{
    QFETCH(int, bytes);
    QByteArray content;
    for (int i = 0; i < bytes; ++i)
        content += char(i * 7);
    const QByteArray body = inSlices(content, 300);
    QVERIFY(body.contains("<InputFilePartArray>" + content.toBase64() + "</InputFilePartArray>"));
    QCOMPARE(body, partBody(content, ID, 3));
}

void tst_PartRequestBody::partThatIsShorterThanExpected()
{
    PartRequestBody body;
    body.begin(4 * 1024 * 1024, QByteArray());
    body.add("part");
    QCOMPARE(body.finish(ID, 3), partBody("part", ID, 3));
}

void tst_PartRequestBody::droppedPartLeavesNothingBehind()
{
    PartRequestBody body;
    body.begin(300, QByteArray());
    body.add(QByteArray(300, 'x'));
    body.drop();
    body.begin(4, QByteArray());
    body.add("part");
    QCOMPARE(body.finish(ID, 3), partBody("part", ID, 3));
}

// Megabytes each time, and new memory costs more than filling it.
void tst_PartRequestBody::memoryOfTheSpentBodyIsUsedAgain()
{
    PartRequestBody body;
    body.begin(100000, QByteArray());
    body.add(QByteArray(99999, 'x'));
    QByteArray first = body.finish(ID, 1);
    const char *const memory = first.constData();
    body.begin(100000, std::move(first));
    body.add(QByteArray(99999, 'y'));
    const QByteArray second = body.finish(ID, 2);
    QCOMPARE(static_cast<const void *>(second.constData()), static_cast<const void *>(memory));
    QCOMPARE(second, partBody(QByteArray(99999, 'y'), ID, 2));
}

void tst_PartRequestBody::spentBodyThatIsStillHeldStaysAsItIs()
{
    const QByteArray held = partBody(QByteArray(1000, 'x'), ID, 1);
    const QByteArray before(held.constData(), held.size());
    PartRequestBody body;
    body.begin(4, held);
    body.add("part");
    QCOMPARE(body.finish(ID, 2), partBody("part", ID, 2));
    QCOMPARE(held, before);
}

// It may have to be sent again.
void tst_PartRequestBody::bodyStaysAsItIsWhenTheNextBegins()
{
    PartRequestBody body;
    body.begin(300, QByteArray());
    body.add(QByteArray(300, 'x'));
    const QByteArray first = body.finish(ID, 1);
    QVERIFY(first.isDetached()); // nobody else holds on to its memory
    body.begin(300, QByteArray());
    body.add(QByteArray(300, 'y'));
    QCOMPARE(first, partBody(QByteArray(300, 'x'), ID, 1));
}

QTEST_GUILESS_MAIN(tst_PartRequestBody)
#include "tst_PartRequestBody.moc"
