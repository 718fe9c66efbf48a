#include "handles/TransferResponses.h"

#include <QtTest/QTest>

using namespace Korvo::Web;

class tst_TransferResponses : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fileResponsesHaveAnOutcomeOnly();
    void uploadIdIsRead_data();
    void uploadIdIsRead();
    void uploadIdLeavesTheOutcome();
    void freshFinishedResponseIsAnAbortThatSucceeded();
    void completionCanBeSetAndTakenBack();
    void parsingLeavesTheCompletion();
};

void tst_TransferResponses::fileResponsesHaveAnOutcomeOnly()
{
    UploadFileResponse upload;
    QVERIFY(upload.isSuccess());
    QCOMPARE(upload.applyOutcome(QNetworkReply::ContentNotFoundError), Error::Network);
    upload.parse(QStringLiteral("<a><Success>true</Success></a>"));
    QVERIFY(!upload.isSuccess());
    QCOMPARE(upload.error(), Error::Network);

    DownloadFileResponse download;
    QVERIFY(download.isSuccess());
    QCOMPARE(download.applyOutcome(QNetworkReply::OperationCanceledError), Error::Cancelled);
    download.parse(QString());
    QVERIFY(download.isCancelled());
}

void tst_TransferResponses::uploadIdIsRead_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("uploadId");
    QTest::newRow("plain") << QStringLiteral("<InitMultipartUploadResponse xmlns=\"u\"><Key>k</Key>"
                                             "<MultipartUploadId>2~a-b_c.d</MultipartUploadId></InitMultipartUploadResponse>")
                           << QStringLiteral("2~a-b_c.d");
    QTest::newRow("deep, with prefix") << QStringLiteral("<a xmlns:x=\"u\"><b><x:MultipartUploadId>1</x:MultipartUploadId></b></a>")
                                       << QStringLiteral("1");
    QTest::newRow("last one wins") << QStringLiteral("<a><MultipartUploadId>1</MultipartUploadId>"
                                                     "<MultipartUploadId>2</MultipartUploadId></a>")
                                   << QStringLiteral("2");
    QTest::newRow("other case") << QStringLiteral("<a><multipartUploadId>1</multipartUploadId></a>") << QString();
    QTest::newRow("similar name") << QStringLiteral("<a><MultipartUploadIds>1</MultipartUploadIds></a>") << QString();
    QTest::newRow("blanks kept") << QStringLiteral("<MultipartUploadId> 1 </MultipartUploadId>") << QStringLiteral(" 1 ");
    QTest::newRow("CDATA") << QStringLiteral("<MultipartUploadId><![CDATA[<1>]]></MultipartUploadId>") << QStringLiteral("<1>");
    QTest::newRow("comment inside") << QStringLiteral("<MultipartUploadId>1<!-- 2 -->3</MultipartUploadId>") << QStringLiteral("13");
    QTest::newRow("cut off behind it") << QStringLiteral("<a><MultipartUploadId>1</MultipartUploadId><b") << QStringLiteral("1");
    QTest::newRow("absent") << QStringLiteral("<a/>") << QString();
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("no XML") << QStringLiteral("MultipartUploadId=1") << QString();
}

void tst_TransferResponses::uploadIdIsRead()
{
    QFETCH(QString, text);
    UploadFileMultiPartInitResponse response;
    response.parse(text);
    QTEST(response.multipartUploadId(), "uploadId");
    QVERIFY(response.isSuccess());
}

void tst_TransferResponses::uploadIdLeavesTheOutcome()
{
    UploadFileMultiPartInitResponse response;
    response.setOutcome(QNetworkReply::ServiceUnavailableError);
    response.parse(QStringLiteral("<MultipartUploadId>1</MultipartUploadId>"));
    QCOMPARE(response.multipartUploadId(), QStringLiteral("1"));
    QVERIFY(!response.isSuccess());
    QCOMPARE(response.error(), Error::Network);
}

void tst_TransferResponses::freshFinishedResponseIsAnAbortThatSucceeded()
{
    const UploadFileMultiPartFinishedResponse response;
    QVERIFY(!response.completed());
    QVERIFY(response.isSuccess());
    QCOMPARE(response.error(), Error::None);
}

void tst_TransferResponses::completionCanBeSetAndTakenBack()
{
    UploadFileMultiPartFinishedResponse response;
    response.setCompleted(true);
    QVERIFY(response.completed());
    QVERIFY(response.isSuccess());
    QCOMPARE(response.error(), Error::None);
    response.setCompleted(false);
    QVERIFY(!response.completed());
}

void tst_TransferResponses::parsingLeavesTheCompletion()
{
    UploadFileMultiPartFinishedResponse response;
    response.setCompleted(true);
    response.parse(QStringLiteral("<AbortMultipartUploadResponse/>"));
    QVERIFY(response.completed());
}

QTEST_GUILESS_MAIN(tst_TransferResponses)

#include "tst_TransferResponses.moc"
