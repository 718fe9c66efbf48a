#include "request/RequestBodies.h"

#include "handles/UploadFileDescriptor.h"
#include "request/WebCommunicator.h"
#include "support/PartBodies.h"

#include <QtCore/QTimeZone>
#include <QtTest/QtTest>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

const QByteArray INSTANCE = R"(xmlns:i="http://www.w3.org/2001/XMLSchema-instance")";
const QByteArray WEB
    = INSTANCE + R"( xmlns="http://schemas.datacontract.org/2004/07/Norbel.Korvo.Web.Business.Models")";
const QByteArray SERVICE
    = INSTANCE + R"( xmlns="http://schemas.datacontract.org/2004/07/Norbel.Korvo.Service.SDK.Models.Request")";
const QByteArray ACCOUNT
    = INSTANCE + R"( xmlns="http://schemas.datacontract.org/2004/07/Norbel.Korvo.Web.Client.Controllers.Api")";
const QByteArray ARRAYS = R"(xmlns:d2p1="http://schemas.microsoft.com/2003/10/Serialization/Arrays")";

UploadFileDescriptor sampleFile()
{
    return {QStringLiteral("folder"), QStringLiteral("/local/Schächte 1.mp4"), QStringLiteral("Video/Schächte 1.mp4"),
            QStringLiteral("bucket"), true};
}

} // namespace

class tst_RequestBodies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void login_data();
    void login();
    void loginWithCode();
    void resetPassword();

    void uploadStatuses_data();
    void uploadStatuses();
    void uploadBegin();
    void creationDateKeepsItsClockReading_data();
    void creationDateKeepsItsClockReading();
    void uploadFinished_data();
    void uploadFinished();
    void uploadCancelled();

    void bucketNameIsLowerCasedForItsCreation();
    void deleteObject();
    void usedSpace();
    void objectExists();
    void cleanUpVersions();
    void listFiles_data();
    void listFiles();

    void uploadFile();
    void contentIsBase64_data();
    void contentIsBase64();
    void beginMultiPart();
    void uploadPart();
    void completeMultiPart();
    void abortMultiPart();
    void startTranscoding();
    void outputKeyHasNoExtension_data();
    void outputKeyHasNoExtension();

    void valuesAreNotEscaped();
    void importTypeElement_data();
    void importTypeElement();
};

void tst_RequestBodies::login_data()
{
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("plain") << QStringLiteral("user") << QStringLiteral("secret")
                           << QByteArray("grant_type=password&keepInMind=true&username=user&password=secret");
    QTest::newRow("the user name is encoded, the password splits the form")
        << QStringLiteral("a+b&c@d e") << QStringLiteral("p&w+=%20 x")
        << QByteArray("grant_type=password&keepInMind=true&username=a%2Bb%26c%40d%20e&password=p&w+=%20 x");
    QTest::newRow("unreserved characters stay") << QStringLiteral("-._~09azAZ") << QStringLiteral("~")
        << QByteArray("grant_type=password&keepInMind=true&username=-._~09azAZ&password=~");
    QTest::newRow("UTF-8") << QStringLiteral("jörg") << QStringLiteral("grüße€")
        << QByteArray("grant_type=password&keepInMind=true&username=j%C3%B6rg&password=gr\xC3\xBC\xC3\x9F" "e\xE2\x82\xAC");
    QTest::newRow("place markers") << QStringLiteral("%1%2") << QStringLiteral("%1%2%3")
        << QByteArray("grant_type=password&keepInMind=true&username=%251%252&password=%1%2%3");
    QTest::newRow("empty") << QString() << QString()
                           << QByteArray("grant_type=password&keepInMind=true&username=&password=");
}

void tst_RequestBodies::login()
{
    QFETCH(QString, user);
    QFETCH(QString, password);
    QTEST(RequestBodies::login(user, password), "body");
}

void tst_RequestBodies::loginWithCode()
{
    QCOMPARE(RequestBodies::loginWithCode(QStringLiteral("a b"), QStringLiteral("p%1"), QStringLiteral("1&2+ü")),
             QByteArray("grant_type=password&keepInMind=true&username=a%20b&password=p%1"
                        "&twoFactorAuthenticationCode=1&2+\xC3\xBC"));
}

void tst_RequestBodies::resetPassword()
{
    QCOMPARE(RequestBodies::resetPassword(QStringLiteral("user@example.com")),
             "<AccountApiController.ResetPasswordBindingModel " + ACCOUNT + "><UserName>user@example.com</UserName>"
             "</AccountApiController.ResetPasswordBindingModel>");
}

void tst_RequestBodies::uploadStatuses_data()
{
    QTest::addColumn<QStringList>("ids");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("none") << QStringList() << QByteArray("{\n    \"Projects\": [\n    ]\n}\n");
    QTest::newRow("in the order given") << QStringList{QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("b")}
        << QByteArray("{\n    \"Projects\": [\n        \"b\",\n        \"a\",\n        \"b\"\n    ]\n}\n");
    QTest::newRow("quotes") << QStringList{QStringLiteral("a\"b")}
        << QByteArray("{\n    \"Projects\": [\n        \"a\\\"b\"\n    ]\n}\n");
}

void tst_RequestBodies::uploadStatuses()
{
    QFETCH(QStringList, ids);
    QTEST(RequestBodies::uploadStatuses(ids), "body");
}

void tst_RequestBodies::uploadBegin()
{
    const QDateTime created(QDate(2024, 3, 1), QTime(7, 8, 9));
    QCOMPARE(RequestBodies::uploadBegin({QStringLiteral("company"), QStringLiteral("mail@example.com"),
                                         QStringLiteral("id"), QStringLiteral("Größe"), created}),
             "<InitUploadProcesModel " + WEB + "><CompanyId>company</CompanyId>"
             "<CreationDate>2024-03-01T07:08:09Z</CreationDate><Email>mail@example.com</Email>"
             "<HasPermissionsToOverrideAllProject>true</HasPermissionsToOverrideAllProject>"
             "<ProjectId>id</ProjectId><ProjectName>Gr\xC3\xB6\xC3\x9F" "e</ProjectName></InitUploadProcesModel>");
}

void tst_RequestBodies::creationDateKeepsItsClockReading_data()
{
    QTest::addColumn<QDateTime>("created");
    const QDate date(2024, 7, 1);
    const QTime time(23, 30, 5, 678);
    QTest::newRow("local") << QDateTime(date, time);
    QTest::newRow("UTC") << QDateTime(date, time, Qt::UTC);
    QTest::newRow("offset") << QDateTime(date, time, Qt::OffsetFromUTC, 5 * 3600);
    QTest::newRow("zone") << QDateTime(date, time, QTimeZone("Asia/Tokyo"));
}

void tst_RequestBodies::creationDateKeepsItsClockReading()
{
    QFETCH(QDateTime, created);
    const QByteArray body = RequestBodies::uploadBegin({{}, {}, {}, {}, created});
    QVERIFY2(body.contains("<CreationDate>2024-07-01T23:30:05Z</CreationDate>"), body.constData());
}

void tst_RequestBodies::uploadFinished_data()
{
    QTest::addColumn<ImportType>("type");
    QTest::addColumn<QByteArray>("element");
    QTest::newRow("standard") << ImportType::Standard << QByteArray();
    QTest::newRow("QZ import") << ImportType::QZImport << QByteArray("<OrvandeImport>true</OrvandeImport>");
    QTest::newRow("Quickview") << ImportType::Quickview << QByteArray("<ImportType>Quickview</ImportType>");
    QTest::newRow("unknown") << static_cast<ImportType>(3) << QByteArray();
}

void tst_RequestBodies::uploadFinished()
{
    QFETCH(ImportType, type);
    QFETCH(QByteArray, element);
    QCOMPARE(RequestBodies::uploadFinished(QStringLiteral("id"), type),
             "<UploadProcesMessageModel " + WEB + ">" + element + "<ProjectId>id</ProjectId></UploadProcesMessageModel>");
}

void tst_RequestBodies::uploadCancelled()
{
    QCOMPARE(RequestBodies::uploadCancelled(QStringLiteral("id")),
             "<UploadProcesMessageModel " + WEB + "><ProjectId>id</ProjectId></UploadProcesMessageModel>");
}

void tst_RequestBodies::bucketNameIsLowerCasedForItsCreation()
{
    QCOMPARE(RequestBodies::createBucket(QStringLiteral("Bucket-ÄB")),
             "<BucketRequest " + SERVICE + "><BucketName>bucket-\xC3\xA4" "b</BucketName></BucketRequest>");
}

void tst_RequestBodies::deleteObject()
{
    QCOMPARE(RequestBodies::deleteObject(QStringLiteral("Bucket"), QStringLiteral("a/b.jpg")),
             "<DeleteObjectRequest " + SERVICE + "><BucketName>Bucket</BucketName>"
             "<RelativePath>a/b.jpg</RelativePath></DeleteObjectRequest>");
}

void tst_RequestBodies::usedSpace()
{
    QCOMPARE(RequestBodies::usedSpace(QStringLiteral("Bucket"), QStringLiteral("a")),
             "<GetUsedSpaceRequest " + SERVICE + "><BucketName>Bucket</BucketName>"
             "<RelativePath>a</RelativePath></GetUsedSpaceRequest>");
}

void tst_RequestBodies::objectExists()
{
    QCOMPARE(RequestBodies::objectExists(QStringLiteral("Bucket"), QString()),
             "<ObjectExistsRequest " + SERVICE + "><BucketName>Bucket</BucketName>"
             "<RelativePath></RelativePath></ObjectExistsRequest>");
}

void tst_RequestBodies::cleanUpVersions()
{
    QCOMPARE(RequestBodies::cleanUpVersions(QStringLiteral("Bucket"), QStringLiteral("a"), 12),
             "<CleanupVersionFilesRequest " + SERVICE + "><BucketName>Bucket</BucketName><RelativePath>a</RelativePath>"
             "<KeepNewestVersion>12</KeepNewestVersion></CleanupVersionFilesRequest>");
}

void tst_RequestBodies::listFiles_data()
{
    QTest::addColumn<QString>("delimiter");
    QTest::addColumn<QStringList>("prefixes");
    QTest::addColumn<QByteArray>("children");
    QTest::newRow("whole bucket") << QString() << QStringList()
        << QByteArray("<Delimiter></Delimiter><Prefixes " + ARRAYS + "></Prefixes>");
    QTest::newRow("prefixes in the order given") << QStringLiteral("/") << QStringList{QStringLiteral("b/"), QString()}
        << QByteArray("<Delimiter>/</Delimiter><Prefixes " + ARRAYS
                      + "><d2p1:string>b/</d2p1:string><d2p1:string></d2p1:string></Prefixes>");
}

void tst_RequestBodies::listFiles()
{
    QFETCH(QString, delimiter);
    QFETCH(QStringList, prefixes);
    QFETCH(QByteArray, children);
    QCOMPARE(RequestBodies::listFiles(QStringLiteral("Bucket"), delimiter, prefixes),
             "<FileListFromLocationsRequest " + SERVICE + "><BucketName>Bucket</BucketName>" + children
                 + "</FileListFromLocationsRequest>");
}

void tst_RequestBodies::uploadFile()
{
    QCOMPARE(RequestBodies::uploadFile(sampleFile(), "content"),
             "<PutFileRequest " + SERVICE + "><BucketName>bucket</BucketName><InputFileArray>Y29udGVudA==</InputFileArray>"
             "<OutputFilePath>Video/Sch\xC3\xA4" "chte 1.mp4</OutputFilePath>"
             "<ProjectFolderName>folder</ProjectFolderName></PutFileRequest>");
}

void tst_RequestBodies::contentIsBase64_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("empty") << QByteArray() << QByteArray();
    QTest::newRow("zero bytes") << QByteArray("\0\0\0", 3) << QByteArray("AAAA");
    QTest::newRow("standard alphabet, padded") << QByteArray("\xFB\xEF\xFF\xFE") << QByteArray("++///g==");
}

void tst_RequestBodies::contentIsBase64()
{
    QFETCH(QByteArray, content);
    QFETCH(QByteArray, text);
    const QByteArray file = RequestBodies::uploadFile(sampleFile(), content);
    QVERIFY2(file.contains("<InputFileArray>" + text + "</InputFileArray>"), file.constData());
    const QByteArray part = partBody(content, QStringLiteral("id"), 1);
    QVERIFY2(part.contains("<InputFilePartArray>" + text + "</InputFilePartArray>"), part.constData());
}

void tst_RequestBodies::beginMultiPart()
{
    QCOMPARE(RequestBodies::beginMultiPart(sampleFile()),
             "<InitMultipartUploadRequest " + SERVICE + "><BucketName>bucket</BucketName>"
             "<OutputFilePath>Video/Sch\xC3\xA4" "chte 1.mp4</OutputFilePath></InitMultipartUploadRequest>");
}

void tst_RequestBodies::uploadPart()
{
    QCOMPARE(
        partBody("part", QStringLiteral("upload-7"), 10),
        "<PutMultipartUploadRequest " + SERVICE
            + "><InputFilePartArray>cGFydA==</InputFilePartArray>"
              "<MultipartUploadId>upload-7</MultipartUploadId><PartNumber>10</PartNumber></PutMultipartUploadRequest>");
}

void tst_RequestBodies::completeMultiPart()
{
    QCOMPARE(RequestBodies::completeMultiPart(QStringLiteral("upload-7"), QStringLiteral("folder")),
             "<CompleteMultipartUploadRequest " + SERVICE + "><MultipartUploadId>upload-7</MultipartUploadId>"
             "<ProjectFolderName>folder</ProjectFolderName></CompleteMultipartUploadRequest>");
}

void tst_RequestBodies::abortMultiPart()
{
    QCOMPARE(RequestBodies::abortMultiPart(QStringLiteral("upload-7")),
             "<AbortMultipartUploadRequest " + SERVICE + "><MultipartUploadId>upload-7</MultipartUploadId>"
             "</AbortMultipartUploadRequest>");
}

void tst_RequestBodies::startTranscoding()
{
    QCOMPARE(RequestBodies::startTranscoding(sampleFile()),
             "<PutJobForEachPresetRequest " + SERVICE + "><BucketName>bucket</BucketName>"
             "<FileKey>Video/Sch\xC3\xA4" "chte 1.mp4</FileKey>"
             "<OutputKeyWithoutExtension>Video/Sch\xC3\xA4" "chte 1</OutputKeyWithoutExtension>"
             "</PutJobForEachPresetRequest>");
}

void tst_RequestBodies::outputKeyHasNoExtension_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QByteArray>("output");
    QTest::newRow("the last extension only") << QStringLiteral("a.b.mp4") << QByteArray("a.b");
    QTest::newRow("none") << QStringLiteral("a") << QByteArray("a");
    QTest::newRow("a dot in the folder is none") << QStringLiteral("a.b/c") << QByteArray("a.b/c");
    QTest::newRow("empty") << QString() << QByteArray();
}

void tst_RequestBodies::outputKeyHasNoExtension()
{
    QFETCH(QString, key);
    QFETCH(QByteArray, output);
    UploadFileDescriptor file = sampleFile();
    file.remoteKey = key;
    const QByteArray body = RequestBodies::startTranscoding(file);
    QVERIFY2(body.contains("<OutputKeyWithoutExtension>" + output + "</OutputKeyWithoutExtension>"), body.constData());
}

void tst_RequestBodies::valuesAreNotEscaped()
{
    const QByteArray body = RequestBodies::deleteObject(QStringLiteral("a&b"), QStringLiteral("<c>\"'%1"));
    QVERIFY2(body.contains("<BucketName>a&b</BucketName><RelativePath><c>\"'%1</RelativePath>"), body.constData());
}

void tst_RequestBodies::importTypeElement_data()
{
    QTest::addColumn<ImportType>("type");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("standard") << ImportType::Standard << QByteArray() << QByteArray() << QByteArray();
    QTest::newRow("QZ import") << static_cast<ImportType>(1) << QByteArray("OrvandeImport") << QByteArray("true")
                               << QByteArray("<OrvandeImport>true</OrvandeImport>");
    QTest::newRow("Quickview") << static_cast<ImportType>(2) << QByteArray("ImportType") << QByteArray("Quickview")
                               << QByteArray("<ImportType>Quickview</ImportType>");
    QTest::newRow("unknown") << static_cast<ImportType>(99) << QByteArray() << QByteArray() << QByteArray();
}

void tst_RequestBodies::importTypeElement()
{
    QFETCH(ImportType, type);
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, value);
    const auto element = WebCommunicator::importTypeToXmlElement(type);
    QCOMPARE(element.first, name);
    QCOMPARE(element.second, value);
    QCOMPARE(element.first.isNull(), name.isEmpty());
    QCOMPARE(element.second.isNull(), name.isEmpty());
    QTEST(WebCommunicator::importTypeToStr(type), "text");
}

QTEST_GUILESS_MAIN(tst_RequestBodies)
#include "tst_RequestBodies.moc"
