#pragma once

#include <NQKorvoWeb/KorvoWebExport.h>

#include <QtCore/QString>

/// The vocabulary of the wire. All texts are constants that stand as soon as the library is loaded; they may be read on
/// every thread.
namespace Korvo::Web::Constants {

/// Paths below the root of a server: no leading "/", to be appended to a root that ends in "/".
namespace Route {

// Web server.
/// "Token": log in, with or without a code (PUT).
extern NQKORVOWEB_EXPORT const QString LOGIN;
/// "api/Users/CheckTwoStepAuthentication": does the account need a second factor? (GET)
extern NQKORVOWEB_EXPORT const QString USER_2STEP_AUTH;
/// "api/Projects/companykorvoservice": client credentials and root of the storage service (GET).
extern NQKORVOWEB_EXPORT const QString PROJECT_COMPANY_KORVO_SERVICE;
/// "api/Account/ResetPassword": ask for a new password (POST).
extern NQKORVOWEB_EXPORT const QString ACCOUNT_RESET_PASSWORD;
/// "api/Projects": list the projects (GET); also the beginning of all Quickview paths.
extern NQKORVOWEB_EXPORT const QString PROJECT;
/// "api/UploadProject/Statuses": what has become of uploads (POST).
extern NQKORVOWEB_EXPORT const QString UPLOAD_STATUS;
/// "api/UploadProject/Init": begin an upload (POST).
extern NQKORVOWEB_EXPORT const QString PROJECT_UPLOAD_INIT;
/// "api/UploadProject/Uploaded": every file has arrived (POST).
extern NQKORVOWEB_EXPORT const QString PROJECT_UPLOAD_UPLOADED;
/// "api/UploadProject/Cancel": an upload was aborted (POST).
extern NQKORVOWEB_EXPORT const QString PROJECT_UPLOAD_CANCEL;
/// "api/DownloadFile/Init". No request of the library uses it; it is there for hosts.
extern NQKORVOWEB_EXPORT const QString FILE_DOWNLOAD_INIT;

// Storage service.
/// "api/bucket": create a bucket (PUT).
extern NQKORVOWEB_EXPORT const QString BUCKET;
/// "api/bucket/delete": delete an object (POST).
extern NQKORVOWEB_EXPORT const QString BUCKET_DELETE;
/// "api/bucket/space": bytes that an object takes (POST).
extern NQKORVOWEB_EXPORT const QString BUCKET_SPACE;
/// "api/bucket/exists": is there such an object, or bucket? (POST)
extern NQKORVOWEB_EXPORT const QString BUCKET_EXISTS;
/// "api/bucket/cleanup": remove old versions of an object (POST).
extern NQKORVOWEB_EXPORT const QString BUCKET_CLEANUP;
/// "api/bucket/listoffilesfromlocations": list files (POST).
extern NQKORVOWEB_EXPORT const QString BUCKET_FILES_FROM_LOCATIONS;
/// "api/bucket/putfile": upload a file of up to 4 MiB (PUT).
extern NQKORVOWEB_EXPORT const QString BUCKET_PUTFILE;
/// "api/multipartupload/init": begin a large file (PUT).
extern NQKORVOWEB_EXPORT const QString MULTIPART_UPLOAD_INIT;
/// "api/multipartupload/upload": one part of a large file (PUT).
extern NQKORVOWEB_EXPORT const QString MULTIPART_UPLOAD_UPLOAD;
/// "api/multipartupload/complete": all parts have arrived (PUT).
extern NQKORVOWEB_EXPORT const QString MULTIPART_UPLOAD_COMPLETE;
/// "api/multipartupload/abort": forget a large file (PUT).
extern NQKORVOWEB_EXPORT const QString MULTIPART_UPLOAD_ABORT;
/// "api/job/putforeachpresets": make web copies of a video (PUT).
extern NQKORVOWEB_EXPORT const QString START_TRANSCODING;
/// "api/Status/Get": the clock of the storage service (GET).
extern NQKORVOWEB_EXPORT const QString STATUS;

} // namespace Route

/// Names of elements, without brackets, and whole attribute lists, for NetworkRequestBodyBuilder.
namespace Xml {

/// Attribute list of a root element: the instance namespace, then the namespace of the models that the root belongs to.
/// @{
extern NQKORVOWEB_EXPORT const QString NAMESPACE_WEB;
extern NQKORVOWEB_EXPORT const QString NAMESPACE_SERVICE;
extern NQKORVOWEB_EXPORT const QString NAMESPACE_ACCOUNT_API;
/// @}
/// Attribute list of an element that holds STRING_D2P1 elements.
extern NQKORVOWEB_EXPORT const QString PREFIX_API;

/// Name of a root element. "MULIT" is the published spelling of these names; the values are spelled as the servers read
/// them.
/// @{
extern NQKORVOWEB_EXPORT const QString BUCKET_REQUEST;
extern NQKORVOWEB_EXPORT const QString OBJECT_DELETE_REQUEST;
extern NQKORVOWEB_EXPORT const QString OBJECT_EXISTS_REQUEST;
extern NQKORVOWEB_EXPORT const QString USED_SPACE_REQUEST;
extern NQKORVOWEB_EXPORT const QString CLEANUP_VERSION_FILES_REQUEST;
extern NQKORVOWEB_EXPORT const QString LIST_FILES_REQUEST;
extern NQKORVOWEB_EXPORT const QString UPLOAD_FILE_REQUEST;
extern NQKORVOWEB_EXPORT const QString UPLOAD_MULIT_INIT_REQUEST;
extern NQKORVOWEB_EXPORT const QString UPLOAD_MULIT_PART_REQUEST;
extern NQKORVOWEB_EXPORT const QString UPLOAD_MULIT_COMPLETE_REQUEST;
extern NQKORVOWEB_EXPORT const QString UPLOAD_MULIT_ABORT_REQUEST;
extern NQKORVOWEB_EXPORT const QString PUT_TRANSCODING_JOB;
extern NQKORVOWEB_EXPORT const QString INIT_UPLOAD_REQUEST;
extern NQKORVOWEB_EXPORT const QString FINISH_UPLOAD_REQUEST;
extern NQKORVOWEB_EXPORT const QString CANCEL_UPLOAD_REQUEST;
extern NQKORVOWEB_EXPORT const QString RESET_PASSWORD;
/// @}

/// Name of an element inside a root.
/// @{
extern NQKORVOWEB_EXPORT const QString BUCKET_NAME;
extern NQKORVOWEB_EXPORT const QString RELATIVE_PATH;
extern NQKORVOWEB_EXPORT const QString KEEP_NEWEST_VERSION;
extern NQKORVOWEB_EXPORT const QString DELIMITER;
extern NQKORVOWEB_EXPORT const QString PREFIXES;
extern NQKORVOWEB_EXPORT const QString STRING_D2P1;
extern NQKORVOWEB_EXPORT const QString INPUT_FILE_ARRAY;
extern NQKORVOWEB_EXPORT const QString INPUT_FILE_PART_ARRAY;
extern NQKORVOWEB_EXPORT const QString OUTPUT_FILE_PATH;
extern NQKORVOWEB_EXPORT const QString PROJECT_FOLDER_NAME;
extern NQKORVOWEB_EXPORT const QString PART_NUMBER;
extern NQKORVOWEB_EXPORT const QString MULTIPART_UPLOAD_ID;
extern NQKORVOWEB_EXPORT const QString PUT_TRANSCODING_FILEKEY;
extern NQKORVOWEB_EXPORT const QString PUT_TRANSCODING_OUTPUTKEY;
extern NQKORVOWEB_EXPORT const QString COMPANY_ID;
extern NQKORVOWEB_EXPORT const QString CREATION_DATE;
extern NQKORVOWEB_EXPORT const QString EMAIL;
extern NQKORVOWEB_EXPORT const QString HAS_PERMISSIONS_TO_OVERRIDE_ALL_PROJECTS;
extern NQKORVOWEB_EXPORT const QString PROJECT_ID;
extern NQKORVOWEB_EXPORT const QString PROJECT_NAME;
extern NQKORVOWEB_EXPORT const QString USER_NAME;
extern NQKORVOWEB_EXPORT const QString IMPORT_TYPE_FLAG;
/// @}
/// The value of IMPORT_TYPE_FLAG for Quickview projects.
extern NQKORVOWEB_EXPORT const QString IMPORT_TYPE_QUICKVIEW;
/// Name of the element that marks projects of the import tool; its value is "true".
extern NQKORVOWEB_EXPORT const QString QZ_IMPORT_FLAG;

} // namespace Xml

/// The same vocabulary as finished tags, for bodies that are put together by plain concatenation.
///
/// The opening tag of a root element ends in a blank and is completed by one of the attribute lists and REQUEST_O_END.
/// Opening tags end in _O or, for most root elements, in _0 (the digit): hosts use these very names.
namespace LegacyXml {

/// The same as in Xml.
/// @{
extern NQKORVOWEB_EXPORT const QString NAMESPACE_WEB;
extern NQKORVOWEB_EXPORT const QString NAMESPACE_SERVICE;
extern NQKORVOWEB_EXPORT const QString NAMESPACE_ACCOUNT_API;
extern NQKORVOWEB_EXPORT const QString IMPORT_TYPE_QUICKVIEW;
/// @}

/// ">": completes the opening tag of a root element, behind its attribute list.
extern NQKORVOWEB_EXPORT const QString REQUEST_O_END;
/// Opening or closing tag of a root element; the opening one ends in a blank.
/// @{
extern NQKORVOWEB_EXPORT const QString BUCKET_REQUEST_0;
extern NQKORVOWEB_EXPORT const QString BUCKET_REQUEST_C;
extern NQKORVOWEB_EXPORT const QString OBJECT_DELETE_REQUEST_0;
extern NQKORVOWEB_EXPORT const QString OBJECT_DELETE_REQUEST_C;
extern NQKORVOWEB_EXPORT const QString USED_SPACE_REQUEST_0;
extern NQKORVOWEB_EXPORT const QString USED_SPACE_REQUEST_C;
extern NQKORVOWEB_EXPORT const QString OBJECT_EXISTS_REQUEST_0;
extern NQKORVOWEB_EXPORT const QString OBJECT_EXISTS_REQUEST_C;
extern NQKORVOWEB_EXPORT const QString CLEANUP_VERSION_FILES_REQUEST_0;
extern NQKORVOWEB_EXPORT const QString CLEANUP_VERSION_FILES_REQUEST_C;
extern NQKORVOWEB_EXPORT const QString LIST_FILES_REQUEST_0;
extern NQKORVOWEB_EXPORT const QString LIST_FILES_REQUEST_C;
extern NQKORVOWEB_EXPORT const QString UPLOAD_FILE_REQUEST_0;
extern NQKORVOWEB_EXPORT const QString UPLOAD_FILE_REQUEST_C;
extern NQKORVOWEB_EXPORT const QString UPLOAD_MULIT_INIT_REQUEST_0;
extern NQKORVOWEB_EXPORT const QString UPLOAD_MULIT_INIT_REQUEST_C;
extern NQKORVOWEB_EXPORT const QString UPLOAD_MULIT_PART_REQUEST_0;
extern NQKORVOWEB_EXPORT const QString UPLOAD_MULIT_PART_REQUEST_C;
extern NQKORVOWEB_EXPORT const QString UPLOAD_MULIT_ABORT_REQUEST_0;
extern NQKORVOWEB_EXPORT const QString UPLOAD_MULIT_ABORT_REQUEST_C;
extern NQKORVOWEB_EXPORT const QString UPLOAD_MULIT_COMPLETE_REQUEST_0;
extern NQKORVOWEB_EXPORT const QString UPLOAD_MULIT_COMPLETE_REQUEST_C;
extern NQKORVOWEB_EXPORT const QString INIT_UPLOAD_REQUEST_0;
extern NQKORVOWEB_EXPORT const QString INIT_UPLOAD_REQUEST_C;
extern NQKORVOWEB_EXPORT const QString FINISH_UPLOAD_REQUEST_0;
extern NQKORVOWEB_EXPORT const QString FINISH_UPLOAD_REQUEST_C;
extern NQKORVOWEB_EXPORT const QString CANCEL_UPLOAD_REQUEST_0;
extern NQKORVOWEB_EXPORT const QString CANCEL_UPLOAD_REQUEST_C;
extern NQKORVOWEB_EXPORT const QString RESET_PASSWORD_REQUEST_O;
extern NQKORVOWEB_EXPORT const QString RESET_PASSWORD_REQUEST_C;
extern NQKORVOWEB_EXPORT const QString PUT_TRANSCODING_JOB_O;
extern NQKORVOWEB_EXPORT const QString PUT_TRANSCODING_JOB_C;
/// @}

/// Opening or closing tag of an element inside a root.
/// @{
extern NQKORVOWEB_EXPORT const QString COMPANY_ID_O;
extern NQKORVOWEB_EXPORT const QString COMPANY_ID_C;
extern NQKORVOWEB_EXPORT const QString CREATION_DATE_O;
extern NQKORVOWEB_EXPORT const QString CREATION_DATE_C;
extern NQKORVOWEB_EXPORT const QString DB_NAME_O;
extern NQKORVOWEB_EXPORT const QString DB_NAME_C;
extern NQKORVOWEB_EXPORT const QString PROJECT_DB_NEW_O;
extern NQKORVOWEB_EXPORT const QString PROJECT_DB_NEW_C;
extern NQKORVOWEB_EXPORT const QString EMAIL_O;
extern NQKORVOWEB_EXPORT const QString EMAIL_C;
extern NQKORVOWEB_EXPORT const QString USER_ID_O;
extern NQKORVOWEB_EXPORT const QString USER_ID_C;
extern NQKORVOWEB_EXPORT const QString HAS_PERMISSIONS_TO_OVERRIDE_ALL_PROJECTS_O;
extern NQKORVOWEB_EXPORT const QString HAS_PERMISSIONS_TO_OVERRIDE_ALL_PROJECTS_C;
extern NQKORVOWEB_EXPORT const QString PROJECT_ID_O;
extern NQKORVOWEB_EXPORT const QString PROJECT_ID_C;
extern NQKORVOWEB_EXPORT const QString PROJECT_NAME_O;
extern NQKORVOWEB_EXPORT const QString PROJECT_NAME_C;
extern NQKORVOWEB_EXPORT const QString USER_NAME_O;
extern NQKORVOWEB_EXPORT const QString USER_NAME_C;
extern NQKORVOWEB_EXPORT const QString QZ_IMPORT_FLAG_O;
extern NQKORVOWEB_EXPORT const QString QZ_IMPORT_FLAG_C;
extern NQKORVOWEB_EXPORT const QString IMPORT_TYPE_FLAG_O;
extern NQKORVOWEB_EXPORT const QString IMPORT_TYPE_FLAG_C;
extern NQKORVOWEB_EXPORT const QString PUT_TRANSCODING_FILEKEY_O;
extern NQKORVOWEB_EXPORT const QString PUT_TRANSCODING_FILEKEY_C;
extern NQKORVOWEB_EXPORT const QString PUT_TRANSCODING_OUTPUTKEY_O;
extern NQKORVOWEB_EXPORT const QString PUT_TRANSCODING_OUTPUTKEY_C;
extern NQKORVOWEB_EXPORT const QString BUCKET_NAME_O;
extern NQKORVOWEB_EXPORT const QString BUCKET_NAME_C;
extern NQKORVOWEB_EXPORT const QString RELATIVE_PATH_O;
extern NQKORVOWEB_EXPORT const QString RELATIVE_PATH_C;
extern NQKORVOWEB_EXPORT const QString KEEP_NEWEST_VERSION_O;
extern NQKORVOWEB_EXPORT const QString KEEP_NEWEST_VERSION_C;
extern NQKORVOWEB_EXPORT const QString PART_NUMBER_O;
extern NQKORVOWEB_EXPORT const QString PART_NUMBER_C;
extern NQKORVOWEB_EXPORT const QString INPUT_FILE_ARRAY_O;
extern NQKORVOWEB_EXPORT const QString INPUT_FILE_ARRAY_C;
extern NQKORVOWEB_EXPORT const QString INPUT_FILE_PART_ARRAY_O;
extern NQKORVOWEB_EXPORT const QString INPUT_FILE_PART_ARRAY_C;
extern NQKORVOWEB_EXPORT const QString MULTIPART_UPLOAD_ID_O;
extern NQKORVOWEB_EXPORT const QString MULTIPART_UPLOAD_ID_C;
extern NQKORVOWEB_EXPORT const QString PROJECT_FOLDER_NAME_O;
extern NQKORVOWEB_EXPORT const QString PROJECT_FOLDER_NAME_C;
extern NQKORVOWEB_EXPORT const QString OUTPUT_FILE_PATH_O;
extern NQKORVOWEB_EXPORT const QString OUTPUT_FILE_PATH_C;
extern NQKORVOWEB_EXPORT const QString DELIMITER_O;
extern NQKORVOWEB_EXPORT const QString DELIMITER_C;
extern NQKORVOWEB_EXPORT const QString PREFIXES_C;
extern NQKORVOWEB_EXPORT const QString STRING_D2P1_O;
extern NQKORVOWEB_EXPORT const QString STRING_D2P1_C;
/// @}
/// Opening tag of the list of prefixes; it carries Xml::PREFIX_API inside.
extern NQKORVOWEB_EXPORT const QString PREFIXES_O;

} // namespace LegacyXml

} // namespace Korvo::Web::Constants
