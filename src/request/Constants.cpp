#include "request/Constants.h"

// One source file for all three namespaces, in this order: LegacyXml is derived from Xml while the library is loaded,
// and only within one file the order of initialization is certain.
namespace Korvo::Web::Constants {

namespace {

QString namespaceAttributes(const QString &clrNamespace)
{
    return QStringLiteral("xmlns:i=\"http://www.w3.org/2001/XMLSchema-instance\""
                          " xmlns=\"http://schemas.datacontract.org/2004/07/")
           + clrNamespace + QLatin1Char('"');
}

// Left open for the attribute list that follows.
QString rootStart(const QString &name)
{
    return QLatin1Char('<') + name + QLatin1Char(' ');
}

QString start(const QString &name)
{
    return QLatin1Char('<') + name + QLatin1Char('>');
}

QString end(const QString &name)
{
    return QStringLiteral("</") + name + QLatin1Char('>');
}

} // namespace

namespace Route {

const QString LOGIN = QStringLiteral("Token");
const QString USER_2STEP_AUTH = QStringLiteral("api/Users/CheckTwoStepAuthentication");
const QString PROJECT_COMPANY_KORVO_SERVICE = QStringLiteral("api/Projects/companykorvoservice");
const QString ACCOUNT_RESET_PASSWORD = QStringLiteral("api/Account/ResetPassword");
const QString PROJECT = QStringLiteral("api/Projects");
const QString UPLOAD_STATUS = QStringLiteral("api/UploadProject/Statuses");
const QString PROJECT_UPLOAD_INIT = QStringLiteral("api/UploadProject/Init");
const QString PROJECT_UPLOAD_UPLOADED = QStringLiteral("api/UploadProject/Uploaded");
const QString PROJECT_UPLOAD_CANCEL = QStringLiteral("api/UploadProject/Cancel");
const QString FILE_DOWNLOAD_INIT = QStringLiteral("api/DownloadFile/Init");
const QString BUCKET = QStringLiteral("api/bucket");
const QString BUCKET_DELETE = QStringLiteral("api/bucket/delete");
const QString BUCKET_SPACE = QStringLiteral("api/bucket/space");
const QString BUCKET_EXISTS = QStringLiteral("api/bucket/exists");
const QString BUCKET_CLEANUP = QStringLiteral("api/bucket/cleanup");
const QString BUCKET_FILES_FROM_LOCATIONS = QStringLiteral("api/bucket/listoffilesfromlocations");
const QString BUCKET_PUTFILE = QStringLiteral("api/bucket/putfile");
const QString MULTIPART_UPLOAD_INIT = QStringLiteral("api/multipartupload/init");
const QString MULTIPART_UPLOAD_UPLOAD = QStringLiteral("api/multipartupload/upload");
const QString MULTIPART_UPLOAD_COMPLETE = QStringLiteral("api/multipartupload/complete");
const QString MULTIPART_UPLOAD_ABORT = QStringLiteral("api/multipartupload/abort");
const QString START_TRANSCODING = QStringLiteral("api/job/putforeachpresets");
const QString STATUS = QStringLiteral("api/Status/Get");

} // namespace Route

namespace Xml {

const QString NAMESPACE_WEB = namespaceAttributes(QStringLiteral("Norbel.Korvo.Web.Business.Models"));
const QString NAMESPACE_SERVICE = namespaceAttributes(QStringLiteral("Norbel.Korvo.Service.SDK.Models.Request"));
const QString NAMESPACE_ACCOUNT_API = namespaceAttributes(QStringLiteral("Norbel.Korvo.Web.Client.Controllers.Api"));
const QString PREFIX_API = QStringLiteral("xmlns:d2p1=\"http://schemas.microsoft.com/2003/10/Serialization/Arrays\"");

const QString BUCKET_REQUEST = QStringLiteral("BucketRequest");
const QString OBJECT_DELETE_REQUEST = QStringLiteral("DeleteObjectRequest");
const QString OBJECT_EXISTS_REQUEST = QStringLiteral("ObjectExistsRequest");
const QString USED_SPACE_REQUEST = QStringLiteral("GetUsedSpaceRequest");
const QString CLEANUP_VERSION_FILES_REQUEST = QStringLiteral("CleanupVersionFilesRequest");
const QString LIST_FILES_REQUEST = QStringLiteral("FileListFromLocationsRequest");
const QString UPLOAD_FILE_REQUEST = QStringLiteral("PutFileRequest");
const QString UPLOAD_MULIT_INIT_REQUEST = QStringLiteral("InitMultipartUploadRequest");
const QString UPLOAD_MULIT_PART_REQUEST = QStringLiteral("PutMultipartUploadRequest");
const QString UPLOAD_MULIT_COMPLETE_REQUEST = QStringLiteral("CompleteMultipartUploadRequest");
const QString UPLOAD_MULIT_ABORT_REQUEST = QStringLiteral("AbortMultipartUploadRequest");
const QString PUT_TRANSCODING_JOB = QStringLiteral("PutJobForEachPresetRequest");
// "Proces" with one s is what the server reads, and an upload is finished and cancelled by the same element.
const QString INIT_UPLOAD_REQUEST = QStringLiteral("InitUploadProcesModel");
const QString FINISH_UPLOAD_REQUEST = QStringLiteral("UploadProcesMessageModel");
const QString CANCEL_UPLOAD_REQUEST = QStringLiteral("UploadProcesMessageModel");
const QString RESET_PASSWORD = QStringLiteral("AccountApiController.ResetPasswordBindingModel");

const QString BUCKET_NAME = QStringLiteral("BucketName");
const QString RELATIVE_PATH = QStringLiteral("RelativePath");
const QString KEEP_NEWEST_VERSION = QStringLiteral("KeepNewestVersion");
const QString DELIMITER = QStringLiteral("Delimiter");
const QString PREFIXES = QStringLiteral("Prefixes");
const QString STRING_D2P1 = QStringLiteral("d2p1:string");
const QString INPUT_FILE_ARRAY = QStringLiteral("InputFileArray");
const QString INPUT_FILE_PART_ARRAY = QStringLiteral("InputFilePartArray");
const QString OUTPUT_FILE_PATH = QStringLiteral("OutputFilePath");
const QString PROJECT_FOLDER_NAME = QStringLiteral("ProjectFolderName");
const QString PART_NUMBER = QStringLiteral("PartNumber");
const QString MULTIPART_UPLOAD_ID = QStringLiteral("MultipartUploadId");
const QString PUT_TRANSCODING_FILEKEY = QStringLiteral("FileKey");
const QString PUT_TRANSCODING_OUTPUTKEY = QStringLiteral("OutputKeyWithoutExtension");
const QString COMPANY_ID = QStringLiteral("CompanyId");
const QString CREATION_DATE = QStringLiteral("CreationDate");
const QString EMAIL = QStringLiteral("Email");
// "Project" in the singular is what the server reads.
const QString HAS_PERMISSIONS_TO_OVERRIDE_ALL_PROJECTS = QStringLiteral("HasPermissionsToOverrideAllProject");
const QString PROJECT_ID = QStringLiteral("ProjectId");
const QString PROJECT_NAME = QStringLiteral("ProjectName");
const QString USER_NAME = QStringLiteral("UserName");
const QString IMPORT_TYPE_FLAG = QStringLiteral("ImportType");
const QString IMPORT_TYPE_QUICKVIEW = QStringLiteral("Quickview");
const QString QZ_IMPORT_FLAG = QStringLiteral("OrvandeImport");

} // namespace Xml

namespace LegacyXml {

const QString NAMESPACE_WEB = Xml::NAMESPACE_WEB;
const QString NAMESPACE_SERVICE = Xml::NAMESPACE_SERVICE;
const QString NAMESPACE_ACCOUNT_API = Xml::NAMESPACE_ACCOUNT_API;
const QString IMPORT_TYPE_QUICKVIEW = Xml::IMPORT_TYPE_QUICKVIEW;

const QString REQUEST_O_END = QStringLiteral(">");
const QString BUCKET_REQUEST_0 = rootStart(Xml::BUCKET_REQUEST);
const QString BUCKET_REQUEST_C = end(Xml::BUCKET_REQUEST);
const QString OBJECT_DELETE_REQUEST_0 = rootStart(Xml::OBJECT_DELETE_REQUEST);
const QString OBJECT_DELETE_REQUEST_C = end(Xml::OBJECT_DELETE_REQUEST);
const QString USED_SPACE_REQUEST_0 = rootStart(Xml::USED_SPACE_REQUEST);
const QString USED_SPACE_REQUEST_C = end(Xml::USED_SPACE_REQUEST);
const QString OBJECT_EXISTS_REQUEST_0 = rootStart(Xml::OBJECT_EXISTS_REQUEST);
const QString OBJECT_EXISTS_REQUEST_C = end(Xml::OBJECT_EXISTS_REQUEST);
const QString CLEANUP_VERSION_FILES_REQUEST_0 = rootStart(Xml::CLEANUP_VERSION_FILES_REQUEST);
const QString CLEANUP_VERSION_FILES_REQUEST_C = end(Xml::CLEANUP_VERSION_FILES_REQUEST);
const QString LIST_FILES_REQUEST_0 = rootStart(Xml::LIST_FILES_REQUEST);
const QString LIST_FILES_REQUEST_C = end(Xml::LIST_FILES_REQUEST);
const QString UPLOAD_FILE_REQUEST_0 = rootStart(Xml::UPLOAD_FILE_REQUEST);
const QString UPLOAD_FILE_REQUEST_C = end(Xml::UPLOAD_FILE_REQUEST);
const QString UPLOAD_MULIT_INIT_REQUEST_0 = rootStart(Xml::UPLOAD_MULIT_INIT_REQUEST);
const QString UPLOAD_MULIT_INIT_REQUEST_C = end(Xml::UPLOAD_MULIT_INIT_REQUEST);
const QString UPLOAD_MULIT_PART_REQUEST_0 = rootStart(Xml::UPLOAD_MULIT_PART_REQUEST);
const QString UPLOAD_MULIT_PART_REQUEST_C = end(Xml::UPLOAD_MULIT_PART_REQUEST);
const QString UPLOAD_MULIT_ABORT_REQUEST_0 = rootStart(Xml::UPLOAD_MULIT_ABORT_REQUEST);
const QString UPLOAD_MULIT_ABORT_REQUEST_C = end(Xml::UPLOAD_MULIT_ABORT_REQUEST);
const QString UPLOAD_MULIT_COMPLETE_REQUEST_0 = rootStart(Xml::UPLOAD_MULIT_COMPLETE_REQUEST);
const QString UPLOAD_MULIT_COMPLETE_REQUEST_C = end(Xml::UPLOAD_MULIT_COMPLETE_REQUEST);
const QString INIT_UPLOAD_REQUEST_0 = rootStart(Xml::INIT_UPLOAD_REQUEST);
const QString INIT_UPLOAD_REQUEST_C = end(Xml::INIT_UPLOAD_REQUEST);
const QString FINISH_UPLOAD_REQUEST_0 = rootStart(Xml::FINISH_UPLOAD_REQUEST);
const QString FINISH_UPLOAD_REQUEST_C = end(Xml::FINISH_UPLOAD_REQUEST);
const QString CANCEL_UPLOAD_REQUEST_0 = rootStart(Xml::CANCEL_UPLOAD_REQUEST);
const QString CANCEL_UPLOAD_REQUEST_C = end(Xml::CANCEL_UPLOAD_REQUEST);
const QString RESET_PASSWORD_REQUEST_O = rootStart(Xml::RESET_PASSWORD);
const QString RESET_PASSWORD_REQUEST_C = end(Xml::RESET_PASSWORD);
const QString PUT_TRANSCODING_JOB_O = rootStart(Xml::PUT_TRANSCODING_JOB);
const QString PUT_TRANSCODING_JOB_C = end(Xml::PUT_TRANSCODING_JOB);

const QString COMPANY_ID_O = start(Xml::COMPANY_ID);
const QString COMPANY_ID_C = end(Xml::COMPANY_ID);
const QString CREATION_DATE_O = start(Xml::CREATION_DATE);
const QString CREATION_DATE_C = end(Xml::CREATION_DATE);
const QString DB_NAME_O = start(QStringLiteral("DBName"));
const QString DB_NAME_C = end(QStringLiteral("DBName"));
const QString PROJECT_DB_NEW_O = start(QStringLiteral("ProjectNewDatabase"));
const QString PROJECT_DB_NEW_C = end(QStringLiteral("ProjectNewDatabase"));
const QString EMAIL_O = start(Xml::EMAIL);
const QString EMAIL_C = end(Xml::EMAIL);
const QString USER_ID_O = start(QStringLiteral("UserId"));
const QString USER_ID_C = end(QStringLiteral("UserId"));
const QString HAS_PERMISSIONS_TO_OVERRIDE_ALL_PROJECTS_O = start(Xml::HAS_PERMISSIONS_TO_OVERRIDE_ALL_PROJECTS);
const QString HAS_PERMISSIONS_TO_OVERRIDE_ALL_PROJECTS_C = end(Xml::HAS_PERMISSIONS_TO_OVERRIDE_ALL_PROJECTS);
const QString PROJECT_ID_O = start(Xml::PROJECT_ID);
const QString PROJECT_ID_C = end(Xml::PROJECT_ID);
const QString PROJECT_NAME_O = start(Xml::PROJECT_NAME);
const QString PROJECT_NAME_C = end(Xml::PROJECT_NAME);
const QString USER_NAME_O = start(Xml::USER_NAME);
const QString USER_NAME_C = end(Xml::USER_NAME);
const QString QZ_IMPORT_FLAG_O = start(Xml::QZ_IMPORT_FLAG);
const QString QZ_IMPORT_FLAG_C = end(Xml::QZ_IMPORT_FLAG);
const QString IMPORT_TYPE_FLAG_O = start(Xml::IMPORT_TYPE_FLAG);
const QString IMPORT_TYPE_FLAG_C = end(Xml::IMPORT_TYPE_FLAG);
const QString PUT_TRANSCODING_FILEKEY_O = start(Xml::PUT_TRANSCODING_FILEKEY);
const QString PUT_TRANSCODING_FILEKEY_C = end(Xml::PUT_TRANSCODING_FILEKEY);
const QString PUT_TRANSCODING_OUTPUTKEY_O = start(Xml::PUT_TRANSCODING_OUTPUTKEY);
const QString PUT_TRANSCODING_OUTPUTKEY_C = end(Xml::PUT_TRANSCODING_OUTPUTKEY);
const QString BUCKET_NAME_O = start(Xml::BUCKET_NAME);
const QString BUCKET_NAME_C = end(Xml::BUCKET_NAME);
const QString RELATIVE_PATH_O = start(Xml::RELATIVE_PATH);
const QString RELATIVE_PATH_C = end(Xml::RELATIVE_PATH);
const QString KEEP_NEWEST_VERSION_O = start(Xml::KEEP_NEWEST_VERSION);
const QString KEEP_NEWEST_VERSION_C = end(Xml::KEEP_NEWEST_VERSION);
const QString PART_NUMBER_O = start(Xml::PART_NUMBER);
const QString PART_NUMBER_C = end(Xml::PART_NUMBER);
const QString INPUT_FILE_ARRAY_O = start(Xml::INPUT_FILE_ARRAY);
const QString INPUT_FILE_ARRAY_C = end(Xml::INPUT_FILE_ARRAY);
const QString INPUT_FILE_PART_ARRAY_O = start(Xml::INPUT_FILE_PART_ARRAY);
const QString INPUT_FILE_PART_ARRAY_C = end(Xml::INPUT_FILE_PART_ARRAY);
const QString MULTIPART_UPLOAD_ID_O = start(Xml::MULTIPART_UPLOAD_ID);
const QString MULTIPART_UPLOAD_ID_C = end(Xml::MULTIPART_UPLOAD_ID);
const QString PROJECT_FOLDER_NAME_O = start(Xml::PROJECT_FOLDER_NAME);
const QString PROJECT_FOLDER_NAME_C = end(Xml::PROJECT_FOLDER_NAME);
const QString OUTPUT_FILE_PATH_O = start(Xml::OUTPUT_FILE_PATH);
const QString OUTPUT_FILE_PATH_C = end(Xml::OUTPUT_FILE_PATH);
const QString DELIMITER_O = start(Xml::DELIMITER);
const QString DELIMITER_C = end(Xml::DELIMITER);
const QString PREFIXES_O = rootStart(Xml::PREFIXES) + Xml::PREFIX_API + QLatin1Char('>');
const QString PREFIXES_C = end(Xml::PREFIXES);
const QString STRING_D2P1_O = start(Xml::STRING_D2P1);
const QString STRING_D2P1_C = end(Xml::STRING_D2P1);

} // namespace LegacyXml

} // namespace Korvo::Web::Constants
