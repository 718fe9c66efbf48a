#include <NQKorvoWeb/Constants.h>

#include <QtCore/QXmlStreamReader>
#include <QtTest/QtTest>

using namespace Korvo::Web::Constants;

namespace {

const QString ARRAYS_NAMESPACE = QStringLiteral("http://schemas.microsoft.com/2003/10/Serialization/Arrays");
const QString INSTANCE_NAMESPACE = QStringLiteral("http://www.w3.org/2001/XMLSchema-instance");

void addColumns()
{
    QTest::addColumn<QString>("actual");
    QTest::addColumn<QString>("expected");
}

void row(const char *name, const QString &actual, const char *expected)
{
    QTest::newRow(name) << actual << QString::fromUtf8(expected);
}

void compareRow()
{
    QFETCH(QString, actual);
    QFETCH(QString, expected);
    QCOMPARE(actual, expected);
}

struct AttributeList
{
    QString attributes;
    QString namespaceUri;
};

QList<AttributeList> attributeLists()
{
    const QString prefix = QStringLiteral("http://schemas.datacontract.org/2004/07/");
    return {
        { LegacyXml::NAMESPACE_WEB, prefix + QStringLiteral("Norbel.Korvo.Web.Business.Models") },
        { LegacyXml::NAMESPACE_SERVICE, prefix + QStringLiteral("Norbel.Korvo.Service.SDK.Models.Request") },
        { LegacyXml::NAMESPACE_ACCOUNT_API, prefix + QStringLiteral("Norbel.Korvo.Web.Client.Controllers.Api") }
    };
}

} // namespace

class tst_Constants : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void routes_data();
    void routes();
    void routesCanBeAppendedToARoot_data();
    void routesCanBeAppendedToARoot();
    void xmlNames_data();
    void xmlNames();
    void legacyTags_data();
    void legacyTags();
    void finishAndCancelShareTheirRoot();
    void rootTagsEndInOneBlank_data();
    void rootTagsEndInOneBlank();
    void rootTagsBecomeStartTags_data();
    void rootTagsBecomeStartTags();
    void prefixesTagDeclaresTheArraysNamespace();
};

void tst_Constants::routes_data()
{
    addColumns();
    row("LOGIN", Route::LOGIN, "Token");
    row("USER_2STEP_AUTH", Route::USER_2STEP_AUTH, "api/Users/CheckTwoStepAuthentication");
    row("PROJECT_COMPANY_KORVO_SERVICE", Route::PROJECT_COMPANY_KORVO_SERVICE, "api/Projects/companykorvoservice");
    row("ACCOUNT_RESET_PASSWORD", Route::ACCOUNT_RESET_PASSWORD, "api/Account/ResetPassword");
    row("PROJECT", Route::PROJECT, "api/Projects");
    row("UPLOAD_STATUS", Route::UPLOAD_STATUS, "api/UploadProject/Statuses");
    row("PROJECT_UPLOAD_INIT", Route::PROJECT_UPLOAD_INIT, "api/UploadProject/Init");
    row("PROJECT_UPLOAD_UPLOADED", Route::PROJECT_UPLOAD_UPLOADED, "api/UploadProject/Uploaded");
    row("PROJECT_UPLOAD_CANCEL", Route::PROJECT_UPLOAD_CANCEL, "api/UploadProject/Cancel");
    row("FILE_DOWNLOAD_INIT", Route::FILE_DOWNLOAD_INIT, "api/DownloadFile/Init");
    row("BUCKET", Route::BUCKET, "api/bucket");
    row("BUCKET_DELETE", Route::BUCKET_DELETE, "api/bucket/delete");
    row("BUCKET_SPACE", Route::BUCKET_SPACE, "api/bucket/space");
    row("BUCKET_EXISTS", Route::BUCKET_EXISTS, "api/bucket/exists");
    row("BUCKET_CLEANUP", Route::BUCKET_CLEANUP, "api/bucket/cleanup");
    row("BUCKET_FILES_FROM_LOCATIONS", Route::BUCKET_FILES_FROM_LOCATIONS, "api/bucket/listoffilesfromlocations");
    row("BUCKET_PUTFILE", Route::BUCKET_PUTFILE, "api/bucket/putfile");
    row("MULTIPART_UPLOAD_INIT", Route::MULTIPART_UPLOAD_INIT, "api/multipartupload/init");
    row("MULTIPART_UPLOAD_UPLOAD", Route::MULTIPART_UPLOAD_UPLOAD, "api/multipartupload/upload");
    row("MULTIPART_UPLOAD_COMPLETE", Route::MULTIPART_UPLOAD_COMPLETE, "api/multipartupload/complete");
    row("MULTIPART_UPLOAD_ABORT", Route::MULTIPART_UPLOAD_ABORT, "api/multipartupload/abort");
    row("START_TRANSCODING", Route::START_TRANSCODING, "api/job/putforeachpresets");
    row("STATUS", Route::STATUS, "api/Status/Get");
}

void tst_Constants::routes()
{
    compareRow();
}

void tst_Constants::routesCanBeAppendedToARoot_data()
{
    routes_data();
}

void tst_Constants::routesCanBeAppendedToARoot()
{
    QFETCH(QString, actual);
    QVERIFY(!actual.isEmpty());
    QVERIFY(!actual.startsWith(QLatin1Char('/')));
    QVERIFY(!actual.endsWith(QLatin1Char('/')));
    QVERIFY(!actual.contains(QStringLiteral("//")));
}

void tst_Constants::xmlNames_data()
{
    addColumns();
    row("NAMESPACE_WEB", Xml::NAMESPACE_WEB,
        "xmlns:i=\"http://www.w3.org/2001/XMLSchema-instance\""
        " xmlns=\"http://schemas.datacontract.org/2004/07/Norbel.Korvo.Web.Business.Models\"");
    row("NAMESPACE_SERVICE", Xml::NAMESPACE_SERVICE,
        "xmlns:i=\"http://www.w3.org/2001/XMLSchema-instance\""
        " xmlns=\"http://schemas.datacontract.org/2004/07/Norbel.Korvo.Service.SDK.Models.Request\"");
    row("NAMESPACE_ACCOUNT_API", Xml::NAMESPACE_ACCOUNT_API,
        "xmlns:i=\"http://www.w3.org/2001/XMLSchema-instance\""
        " xmlns=\"http://schemas.datacontract.org/2004/07/Norbel.Korvo.Web.Client.Controllers.Api\"");
    row("PREFIX_API", Xml::PREFIX_API, "xmlns:d2p1=\"http://schemas.microsoft.com/2003/10/Serialization/Arrays\"");
    row("BUCKET_REQUEST", Xml::BUCKET_REQUEST, "BucketRequest");
    row("OBJECT_DELETE_REQUEST", Xml::OBJECT_DELETE_REQUEST, "DeleteObjectRequest");
    row("OBJECT_EXISTS_REQUEST", Xml::OBJECT_EXISTS_REQUEST, "ObjectExistsRequest");
    row("USED_SPACE_REQUEST", Xml::USED_SPACE_REQUEST, "GetUsedSpaceRequest");
    row("CLEANUP_VERSION_FILES_REQUEST", Xml::CLEANUP_VERSION_FILES_REQUEST, "CleanupVersionFilesRequest");
    row("LIST_FILES_REQUEST", Xml::LIST_FILES_REQUEST, "FileListFromLocationsRequest");
    row("UPLOAD_FILE_REQUEST", Xml::UPLOAD_FILE_REQUEST, "PutFileRequest");
    row("UPLOAD_MULIT_INIT_REQUEST", Xml::UPLOAD_MULIT_INIT_REQUEST, "InitMultipartUploadRequest");
    row("UPLOAD_MULIT_PART_REQUEST", Xml::UPLOAD_MULIT_PART_REQUEST, "PutMultipartUploadRequest");
    row("UPLOAD_MULIT_COMPLETE_REQUEST", Xml::UPLOAD_MULIT_COMPLETE_REQUEST, "CompleteMultipartUploadRequest");
    row("UPLOAD_MULIT_ABORT_REQUEST", Xml::UPLOAD_MULIT_ABORT_REQUEST, "AbortMultipartUploadRequest");
    row("PUT_TRANSCODING_JOB", Xml::PUT_TRANSCODING_JOB, "PutJobForEachPresetRequest");
    row("INIT_UPLOAD_REQUEST", Xml::INIT_UPLOAD_REQUEST, "InitUploadProcesModel");
    row("FINISH_UPLOAD_REQUEST", Xml::FINISH_UPLOAD_REQUEST, "UploadProcesMessageModel");
    row("CANCEL_UPLOAD_REQUEST", Xml::CANCEL_UPLOAD_REQUEST, "UploadProcesMessageModel");
    row("RESET_PASSWORD", Xml::RESET_PASSWORD, "AccountApiController.ResetPasswordBindingModel");
    row("BUCKET_NAME", Xml::BUCKET_NAME, "BucketName");
    row("RELATIVE_PATH", Xml::RELATIVE_PATH, "RelativePath");
    row("KEEP_NEWEST_VERSION", Xml::KEEP_NEWEST_VERSION, "KeepNewestVersion");
    row("DELIMITER", Xml::DELIMITER, "Delimiter");
    row("PREFIXES", Xml::PREFIXES, "Prefixes");
    row("STRING_D2P1", Xml::STRING_D2P1, "d2p1:string");
    row("INPUT_FILE_ARRAY", Xml::INPUT_FILE_ARRAY, "InputFileArray");
    row("INPUT_FILE_PART_ARRAY", Xml::INPUT_FILE_PART_ARRAY, "InputFilePartArray");
    row("OUTPUT_FILE_PATH", Xml::OUTPUT_FILE_PATH, "OutputFilePath");
    row("PROJECT_FOLDER_NAME", Xml::PROJECT_FOLDER_NAME, "ProjectFolderName");
    row("PART_NUMBER", Xml::PART_NUMBER, "PartNumber");
    row("MULTIPART_UPLOAD_ID", Xml::MULTIPART_UPLOAD_ID, "MultipartUploadId");
    row("PUT_TRANSCODING_FILEKEY", Xml::PUT_TRANSCODING_FILEKEY, "FileKey");
    row("PUT_TRANSCODING_OUTPUTKEY", Xml::PUT_TRANSCODING_OUTPUTKEY, "OutputKeyWithoutExtension");
    row("COMPANY_ID", Xml::COMPANY_ID, "CompanyId");
    row("CREATION_DATE", Xml::CREATION_DATE, "CreationDate");
    row("EMAIL", Xml::EMAIL, "Email");
    row("HAS_PERMISSIONS_TO_OVERRIDE_ALL_PROJECTS", Xml::HAS_PERMISSIONS_TO_OVERRIDE_ALL_PROJECTS,
        "HasPermissionsToOverrideAllProject");
    row("PROJECT_ID", Xml::PROJECT_ID, "ProjectId");
    row("PROJECT_NAME", Xml::PROJECT_NAME, "ProjectName");
    row("USER_NAME", Xml::USER_NAME, "UserName");
    row("IMPORT_TYPE_FLAG", Xml::IMPORT_TYPE_FLAG, "ImportType");
    row("IMPORT_TYPE_QUICKVIEW", Xml::IMPORT_TYPE_QUICKVIEW, "Quickview");
    row("QZ_IMPORT_FLAG", Xml::QZ_IMPORT_FLAG, "OrvandeImport");
}

void tst_Constants::xmlNames()
{
    compareRow();
}

void tst_Constants::legacyTags_data()
{
    addColumns();
    row("NAMESPACE_WEB", LegacyXml::NAMESPACE_WEB,
        "xmlns:i=\"http://www.w3.org/2001/XMLSchema-instance\""
        " xmlns=\"http://schemas.datacontract.org/2004/07/Norbel.Korvo.Web.Business.Models\"");
    row("NAMESPACE_SERVICE", LegacyXml::NAMESPACE_SERVICE,
        "xmlns:i=\"http://www.w3.org/2001/XMLSchema-instance\""
        " xmlns=\"http://schemas.datacontract.org/2004/07/Norbel.Korvo.Service.SDK.Models.Request\"");
    row("NAMESPACE_ACCOUNT_API", LegacyXml::NAMESPACE_ACCOUNT_API,
        "xmlns:i=\"http://www.w3.org/2001/XMLSchema-instance\""
        " xmlns=\"http://schemas.datacontract.org/2004/07/Norbel.Korvo.Web.Client.Controllers.Api\"");
    row("IMPORT_TYPE_QUICKVIEW", LegacyXml::IMPORT_TYPE_QUICKVIEW, "Quickview");
    row("REQUEST_O_END", LegacyXml::REQUEST_O_END, ">");
    row("BUCKET_REQUEST_0", LegacyXml::BUCKET_REQUEST_0, "<BucketRequest ");
    row("BUCKET_REQUEST_C", LegacyXml::BUCKET_REQUEST_C, "</BucketRequest>");
    row("OBJECT_DELETE_REQUEST_0", LegacyXml::OBJECT_DELETE_REQUEST_0, "<DeleteObjectRequest ");
    row("OBJECT_DELETE_REQUEST_C", LegacyXml::OBJECT_DELETE_REQUEST_C, "</DeleteObjectRequest>");
    row("USED_SPACE_REQUEST_0", LegacyXml::USED_SPACE_REQUEST_0, "<GetUsedSpaceRequest ");
    row("USED_SPACE_REQUEST_C", LegacyXml::USED_SPACE_REQUEST_C, "</GetUsedSpaceRequest>");
    row("OBJECT_EXISTS_REQUEST_0", LegacyXml::OBJECT_EXISTS_REQUEST_0, "<ObjectExistsRequest ");
    row("OBJECT_EXISTS_REQUEST_C", LegacyXml::OBJECT_EXISTS_REQUEST_C, "</ObjectExistsRequest>");
    row("CLEANUP_VERSION_FILES_REQUEST_0", LegacyXml::CLEANUP_VERSION_FILES_REQUEST_0, "<CleanupVersionFilesRequest ");
    row("CLEANUP_VERSION_FILES_REQUEST_C", LegacyXml::CLEANUP_VERSION_FILES_REQUEST_C, "</CleanupVersionFilesRequest>");
    row("LIST_FILES_REQUEST_0", LegacyXml::LIST_FILES_REQUEST_0, "<FileListFromLocationsRequest ");
    row("LIST_FILES_REQUEST_C", LegacyXml::LIST_FILES_REQUEST_C, "</FileListFromLocationsRequest>");
    row("UPLOAD_FILE_REQUEST_0", LegacyXml::UPLOAD_FILE_REQUEST_0, "<PutFileRequest ");
    row("UPLOAD_FILE_REQUEST_C", LegacyXml::UPLOAD_FILE_REQUEST_C, "</PutFileRequest>");
    row("UPLOAD_MULIT_INIT_REQUEST_0", LegacyXml::UPLOAD_MULIT_INIT_REQUEST_0, "<InitMultipartUploadRequest ");
    row("UPLOAD_MULIT_INIT_REQUEST_C", LegacyXml::UPLOAD_MULIT_INIT_REQUEST_C, "</InitMultipartUploadRequest>");
    row("UPLOAD_MULIT_PART_REQUEST_0", LegacyXml::UPLOAD_MULIT_PART_REQUEST_0, "<PutMultipartUploadRequest ");
    row("UPLOAD_MULIT_PART_REQUEST_C", LegacyXml::UPLOAD_MULIT_PART_REQUEST_C, "</PutMultipartUploadRequest>");
    row("UPLOAD_MULIT_ABORT_REQUEST_0", LegacyXml::UPLOAD_MULIT_ABORT_REQUEST_0, "<AbortMultipartUploadRequest ");
    row("UPLOAD_MULIT_ABORT_REQUEST_C", LegacyXml::UPLOAD_MULIT_ABORT_REQUEST_C, "</AbortMultipartUploadRequest>");
    row("UPLOAD_MULIT_COMPLETE_REQUEST_0", LegacyXml::UPLOAD_MULIT_COMPLETE_REQUEST_0,
        "<CompleteMultipartUploadRequest ");
    row("UPLOAD_MULIT_COMPLETE_REQUEST_C", LegacyXml::UPLOAD_MULIT_COMPLETE_REQUEST_C,
        "</CompleteMultipartUploadRequest>");
    row("INIT_UPLOAD_REQUEST_0", LegacyXml::INIT_UPLOAD_REQUEST_0, "<InitUploadProcesModel ");
    row("INIT_UPLOAD_REQUEST_C", LegacyXml::INIT_UPLOAD_REQUEST_C, "</InitUploadProcesModel>");
    row("FINISH_UPLOAD_REQUEST_0", LegacyXml::FINISH_UPLOAD_REQUEST_0, "<UploadProcesMessageModel ");
    row("FINISH_UPLOAD_REQUEST_C", LegacyXml::FINISH_UPLOAD_REQUEST_C, "</UploadProcesMessageModel>");
    row("CANCEL_UPLOAD_REQUEST_0", LegacyXml::CANCEL_UPLOAD_REQUEST_0, "<UploadProcesMessageModel ");
    row("CANCEL_UPLOAD_REQUEST_C", LegacyXml::CANCEL_UPLOAD_REQUEST_C, "</UploadProcesMessageModel>");
    row("RESET_PASSWORD_REQUEST_O", LegacyXml::RESET_PASSWORD_REQUEST_O,
        "<AccountApiController.ResetPasswordBindingModel ");
    row("RESET_PASSWORD_REQUEST_C", LegacyXml::RESET_PASSWORD_REQUEST_C,
        "</AccountApiController.ResetPasswordBindingModel>");
    row("PUT_TRANSCODING_JOB_O", LegacyXml::PUT_TRANSCODING_JOB_O, "<PutJobForEachPresetRequest ");
    row("PUT_TRANSCODING_JOB_C", LegacyXml::PUT_TRANSCODING_JOB_C, "</PutJobForEachPresetRequest>");
    row("COMPANY_ID_O", LegacyXml::COMPANY_ID_O, "<CompanyId>");
    row("COMPANY_ID_C", LegacyXml::COMPANY_ID_C, "</CompanyId>");
    row("CREATION_DATE_O", LegacyXml::CREATION_DATE_O, "<CreationDate>");
    row("CREATION_DATE_C", LegacyXml::CREATION_DATE_C, "</CreationDate>");
    row("DB_NAME_O", LegacyXml::DB_NAME_O, "<DBName>");
    row("DB_NAME_C", LegacyXml::DB_NAME_C, "</DBName>");
    row("PROJECT_DB_NEW_O", LegacyXml::PROJECT_DB_NEW_O, "<ProjectNewDatabase>");
    row("PROJECT_DB_NEW_C", LegacyXml::PROJECT_DB_NEW_C, "</ProjectNewDatabase>");
    row("EMAIL_O", LegacyXml::EMAIL_O, "<Email>");
    row("EMAIL_C", LegacyXml::EMAIL_C, "</Email>");
    row("USER_ID_O", LegacyXml::USER_ID_O, "<UserId>");
    row("USER_ID_C", LegacyXml::USER_ID_C, "</UserId>");
    row("HAS_PERMISSIONS_TO_OVERRIDE_ALL_PROJECTS_O", LegacyXml::HAS_PERMISSIONS_TO_OVERRIDE_ALL_PROJECTS_O,
        "<HasPermissionsToOverrideAllProject>");
    row("HAS_PERMISSIONS_TO_OVERRIDE_ALL_PROJECTS_C", LegacyXml::HAS_PERMISSIONS_TO_OVERRIDE_ALL_PROJECTS_C,
        "</HasPermissionsToOverrideAllProject>");
    row("PROJECT_ID_O", LegacyXml::PROJECT_ID_O, "<ProjectId>");
    row("PROJECT_ID_C", LegacyXml::PROJECT_ID_C, "</ProjectId>");
    row("PROJECT_NAME_O", LegacyXml::PROJECT_NAME_O, "<ProjectName>");
    row("PROJECT_NAME_C", LegacyXml::PROJECT_NAME_C, "</ProjectName>");
    row("USER_NAME_O", LegacyXml::USER_NAME_O, "<UserName>");
    row("USER_NAME_C", LegacyXml::USER_NAME_C, "</UserName>");
    row("QZ_IMPORT_FLAG_O", LegacyXml::QZ_IMPORT_FLAG_O, "<OrvandeImport>");
    row("QZ_IMPORT_FLAG_C", LegacyXml::QZ_IMPORT_FLAG_C, "</OrvandeImport>");
    row("IMPORT_TYPE_FLAG_O", LegacyXml::IMPORT_TYPE_FLAG_O, "<ImportType>");
    row("IMPORT_TYPE_FLAG_C", LegacyXml::IMPORT_TYPE_FLAG_C, "</ImportType>");
    row("PUT_TRANSCODING_FILEKEY_O", LegacyXml::PUT_TRANSCODING_FILEKEY_O, "<FileKey>");
    row("PUT_TRANSCODING_FILEKEY_C", LegacyXml::PUT_TRANSCODING_FILEKEY_C, "</FileKey>");
    row("PUT_TRANSCODING_OUTPUTKEY_O", LegacyXml::PUT_TRANSCODING_OUTPUTKEY_O, "<OutputKeyWithoutExtension>");
    row("PUT_TRANSCODING_OUTPUTKEY_C", LegacyXml::PUT_TRANSCODING_OUTPUTKEY_C, "</OutputKeyWithoutExtension>");
    row("BUCKET_NAME_O", LegacyXml::BUCKET_NAME_O, "<BucketName>");
    row("BUCKET_NAME_C", LegacyXml::BUCKET_NAME_C, "</BucketName>");
    row("RELATIVE_PATH_O", LegacyXml::RELATIVE_PATH_O, "<RelativePath>");
    row("RELATIVE_PATH_C", LegacyXml::RELATIVE_PATH_C, "</RelativePath>");
    row("KEEP_NEWEST_VERSION_O", LegacyXml::KEEP_NEWEST_VERSION_O, "<KeepNewestVersion>");
    row("KEEP_NEWEST_VERSION_C", LegacyXml::KEEP_NEWEST_VERSION_C, "</KeepNewestVersion>");
    row("PART_NUMBER_O", LegacyXml::PART_NUMBER_O, "<PartNumber>");
    row("PART_NUMBER_C", LegacyXml::PART_NUMBER_C, "</PartNumber>");
    row("INPUT_FILE_ARRAY_O", LegacyXml::INPUT_FILE_ARRAY_O, "<InputFileArray>");
    row("INPUT_FILE_ARRAY_C", LegacyXml::INPUT_FILE_ARRAY_C, "</InputFileArray>");
    row("INPUT_FILE_PART_ARRAY_O", LegacyXml::INPUT_FILE_PART_ARRAY_O, "<InputFilePartArray>");
    row("INPUT_FILE_PART_ARRAY_C", LegacyXml::INPUT_FILE_PART_ARRAY_C, "</InputFilePartArray>");
    row("MULTIPART_UPLOAD_ID_O", LegacyXml::MULTIPART_UPLOAD_ID_O, "<MultipartUploadId>");
    row("MULTIPART_UPLOAD_ID_C", LegacyXml::MULTIPART_UPLOAD_ID_C, "</MultipartUploadId>");
    row("PROJECT_FOLDER_NAME_O", LegacyXml::PROJECT_FOLDER_NAME_O, "<ProjectFolderName>");
    row("PROJECT_FOLDER_NAME_C", LegacyXml::PROJECT_FOLDER_NAME_C, "</ProjectFolderName>");
    row("OUTPUT_FILE_PATH_O", LegacyXml::OUTPUT_FILE_PATH_O, "<OutputFilePath>");
    row("OUTPUT_FILE_PATH_C", LegacyXml::OUTPUT_FILE_PATH_C, "</OutputFilePath>");
    row("DELIMITER_O", LegacyXml::DELIMITER_O, "<Delimiter>");
    row("DELIMITER_C", LegacyXml::DELIMITER_C, "</Delimiter>");
    row("PREFIXES_O", LegacyXml::PREFIXES_O,
        "<Prefixes xmlns:d2p1=\"http://schemas.microsoft.com/2003/10/Serialization/Arrays\">");
    row("PREFIXES_C", LegacyXml::PREFIXES_C, "</Prefixes>");
    row("STRING_D2P1_O", LegacyXml::STRING_D2P1_O, "<d2p1:string>");
    row("STRING_D2P1_C", LegacyXml::STRING_D2P1_C, "</d2p1:string>");
}

void tst_Constants::legacyTags()
{
    compareRow();
}

void tst_Constants::finishAndCancelShareTheirRoot()
{
    QCOMPARE(Xml::FINISH_UPLOAD_REQUEST, Xml::CANCEL_UPLOAD_REQUEST);
    QCOMPARE(LegacyXml::FINISH_UPLOAD_REQUEST_0, LegacyXml::CANCEL_UPLOAD_REQUEST_0);
}

void tst_Constants::rootTagsEndInOneBlank_data()
{
    QTest::addColumn<QString>("start");
    QTest::addColumn<QString>("end");
    QTest::addColumn<QString>("name");
    QTest::newRow("BUCKET_REQUEST")
        << LegacyXml::BUCKET_REQUEST_0 << LegacyXml::BUCKET_REQUEST_C
        << QStringLiteral("BucketRequest");
    QTest::newRow("OBJECT_DELETE_REQUEST")
        << LegacyXml::OBJECT_DELETE_REQUEST_0 << LegacyXml::OBJECT_DELETE_REQUEST_C
        << QStringLiteral("DeleteObjectRequest");
    QTest::newRow("USED_SPACE_REQUEST")
        << LegacyXml::USED_SPACE_REQUEST_0 << LegacyXml::USED_SPACE_REQUEST_C
        << QStringLiteral("GetUsedSpaceRequest");
    QTest::newRow("OBJECT_EXISTS_REQUEST")
        << LegacyXml::OBJECT_EXISTS_REQUEST_0 << LegacyXml::OBJECT_EXISTS_REQUEST_C
        << QStringLiteral("ObjectExistsRequest");
    QTest::newRow("CLEANUP_VERSION_FILES_REQUEST")
        << LegacyXml::CLEANUP_VERSION_FILES_REQUEST_0 << LegacyXml::CLEANUP_VERSION_FILES_REQUEST_C
        << QStringLiteral("CleanupVersionFilesRequest");
    QTest::newRow("LIST_FILES_REQUEST")
        << LegacyXml::LIST_FILES_REQUEST_0 << LegacyXml::LIST_FILES_REQUEST_C
        << QStringLiteral("FileListFromLocationsRequest");
    QTest::newRow("UPLOAD_FILE_REQUEST")
        << LegacyXml::UPLOAD_FILE_REQUEST_0 << LegacyXml::UPLOAD_FILE_REQUEST_C
        << QStringLiteral("PutFileRequest");
    QTest::newRow("UPLOAD_MULIT_INIT_REQUEST")
        << LegacyXml::UPLOAD_MULIT_INIT_REQUEST_0 << LegacyXml::UPLOAD_MULIT_INIT_REQUEST_C
        << QStringLiteral("InitMultipartUploadRequest");
    QTest::newRow("UPLOAD_MULIT_PART_REQUEST")
        << LegacyXml::UPLOAD_MULIT_PART_REQUEST_0 << LegacyXml::UPLOAD_MULIT_PART_REQUEST_C
        << QStringLiteral("PutMultipartUploadRequest");
    QTest::newRow("UPLOAD_MULIT_ABORT_REQUEST")
        << LegacyXml::UPLOAD_MULIT_ABORT_REQUEST_0 << LegacyXml::UPLOAD_MULIT_ABORT_REQUEST_C
        << QStringLiteral("AbortMultipartUploadRequest");
    QTest::newRow("UPLOAD_MULIT_COMPLETE_REQUEST")
        << LegacyXml::UPLOAD_MULIT_COMPLETE_REQUEST_0 << LegacyXml::UPLOAD_MULIT_COMPLETE_REQUEST_C
        << QStringLiteral("CompleteMultipartUploadRequest");
    QTest::newRow("INIT_UPLOAD_REQUEST")
        << LegacyXml::INIT_UPLOAD_REQUEST_0 << LegacyXml::INIT_UPLOAD_REQUEST_C
        << QStringLiteral("InitUploadProcesModel");
    QTest::newRow("FINISH_UPLOAD_REQUEST")
        << LegacyXml::FINISH_UPLOAD_REQUEST_0 << LegacyXml::FINISH_UPLOAD_REQUEST_C
        << QStringLiteral("UploadProcesMessageModel");
    QTest::newRow("CANCEL_UPLOAD_REQUEST")
        << LegacyXml::CANCEL_UPLOAD_REQUEST_0 << LegacyXml::CANCEL_UPLOAD_REQUEST_C
        << QStringLiteral("UploadProcesMessageModel");
    QTest::newRow("RESET_PASSWORD_REQUEST")
        << LegacyXml::RESET_PASSWORD_REQUEST_O << LegacyXml::RESET_PASSWORD_REQUEST_C
        << QStringLiteral("AccountApiController.ResetPasswordBindingModel");
    QTest::newRow("PUT_TRANSCODING_JOB")
        << LegacyXml::PUT_TRANSCODING_JOB_O << LegacyXml::PUT_TRANSCODING_JOB_C
        << QStringLiteral("PutJobForEachPresetRequest");
}

void tst_Constants::rootTagsEndInOneBlank()
{
    QFETCH(QString, start);
    QVERIFY(start.endsWith(QLatin1Char(' ')));
    QCOMPARE(start.count(QLatin1Char(' ')), 1);
    QVERIFY(!start.contains(QLatin1Char('>')));
}

void tst_Constants::rootTagsBecomeStartTags_data()
{
    rootTagsEndInOneBlank_data();
}

void tst_Constants::rootTagsBecomeStartTags()
{
    QFETCH(QString, start);
    QFETCH(QString, end);
    QFETCH(QString, name);
    for (const AttributeList &list : attributeLists()) {
        QXmlStreamReader reader(start + list.attributes + LegacyXml::REQUEST_O_END + end);
        QVERIFY(reader.readNextStartElement());
        QCOMPARE(reader.name().toString(), name);
        QCOMPARE(reader.namespaceUri().toString(), list.namespaceUri);
        QCOMPARE(reader.namespaceDeclarations().size(), 2);
        QVERIFY(reader.namespaceDeclarations().contains({ QStringLiteral("i"), INSTANCE_NAMESPACE }));
        QCOMPARE(reader.readElementText(), QString());
        QCOMPARE(reader.readNext(), QXmlStreamReader::EndDocument);
        QVERIFY2(!reader.hasError(), qPrintable(reader.errorString()));
    }
}

void tst_Constants::prefixesTagDeclaresTheArraysNamespace()
{
    QXmlStreamReader reader(LegacyXml::PREFIXES_O + LegacyXml::STRING_D2P1_O + QStringLiteral("Video/Sec")
                            + LegacyXml::STRING_D2P1_C + LegacyXml::PREFIXES_C);
    QVERIFY(reader.readNextStartElement());
    QCOMPARE(reader.name().toString(), QStringLiteral("Prefixes"));
    QVERIFY(reader.readNextStartElement());
    QCOMPARE(reader.name().toString(), QStringLiteral("string"));
    QCOMPARE(reader.namespaceUri().toString(), ARRAYS_NAMESPACE);
    QCOMPARE(reader.readElementText(), QStringLiteral("Video/Sec"));
    QVERIFY(!reader.readNextStartElement());
    QVERIFY2(!reader.hasError(), qPrintable(reader.errorString()));
}

QTEST_APPLESS_MAIN(tst_Constants)

#include "tst_Constants.moc"
