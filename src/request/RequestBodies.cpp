#include "request/RequestBodies.h"

#include "handles/UploadFileDescriptor.h"
#include "request/WebCommunicator.h"

#include <NQKorvoWeb/Constants.h>
#include <NQKorvoWeb/NetworkRequestBodyBuilder.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QUrl>

namespace Korvo::Web::RequestBodies {

namespace {

namespace Xml = Constants::Xml;

NetworkRequestBodyBuilder rooted(const QString &root, const QString &nameSpace)
{
    return NetworkRequestBodyBuilder().startElement(root.toUtf8(), nameSpace.toUtf8());
}

NetworkRequestBodyBuilder webBody(const QString &root)
{
    return rooted(root, Xml::NAMESPACE_WEB);
}

NetworkRequestBodyBuilder serviceBody(const QString &root)
{
    return rooted(root, Xml::NAMESPACE_SERVICE);
}

void add(NetworkRequestBodyBuilder &builder, const QString &name, const QString &value)
{
    builder.addElement(name.toUtf8(), value.toUtf8());
}

void addContent(NetworkRequestBodyBuilder &builder, const QString &name, const QByteArray &content)
{
    builder.startElement(name.toUtf8()).addBase64(content).closeElement();
}

QByteArray objectRequest(const QString &root, const QString &bucketName, const QString &relativePath)
{
    NetworkRequestBodyBuilder builder = serviceBody(root);
    add(builder, Xml::BUCKET_NAME, bucketName);
    add(builder, Xml::RELATIVE_PATH, relativePath);
    return builder.generate();
}

// The clock reading of the creation date is sent unchanged and called UTC: the server stores what it is sent.
QString asWallClock(QDateTime creationDate)
{
    creationDate.setTimeSpec(Qt::OffsetFromUTC);
    return creationDate.toString(Qt::ISODate);
}

// The transcoder appends the extension of each format that it makes.
QString withoutExtension(const QString &key)
{
    const int dot = key.lastIndexOf(QLatin1Char('.'));
    return dot > key.lastIndexOf(QLatin1Char('/')) ? key.left(dot) : key;
}

// The server reads the user name percent-encoded, but password and code as they are.
QStringList loginForm(const QString &user, const QString &password)
{
    return {QStringLiteral("grant_type=password"), QStringLiteral("keepInMind=true"),
            QStringLiteral("username=") + QString::fromLatin1(QUrl::toPercentEncoding(user)),
            QStringLiteral("password=") + password};
}

QByteArray formText(const QStringList &items)
{
    return items.join(QLatin1Char('&')).toUtf8();
}

} // namespace

QByteArray login(const QString &user, const QString &password)
{
    return formText(loginForm(user, password));
}

QByteArray loginWithCode(const QString &user, const QString &password, const QString &code)
{
    return formText(loginForm(user, password) << QStringLiteral("twoFactorAuthenticationCode=") + code);
}

QByteArray resetPassword(const QString &user)
{
    NetworkRequestBodyBuilder builder = rooted(Xml::RESET_PASSWORD, Xml::NAMESPACE_ACCOUNT_API);
    add(builder, Xml::USER_NAME, user);
    return builder.generate();
}

QByteArray uploadStatuses(const QStringList &projectIds)
{
    const QJsonObject object{{QStringLiteral("Projects"), QJsonArray::fromStringList(projectIds)}};
    return QJsonDocument(object).toJson();
}

QByteArray uploadBegin(const UploadBegin &upload)
{
    NetworkRequestBodyBuilder builder = webBody(Xml::INIT_UPLOAD_REQUEST);
    add(builder, Xml::COMPANY_ID, upload.companyId);
    add(builder, Xml::CREATION_DATE, asWallClock(upload.creationDate));
    add(builder, Xml::EMAIL, upload.email);
    add(builder, Xml::HAS_PERMISSIONS_TO_OVERRIDE_ALL_PROJECTS, QStringLiteral("true"));
    add(builder, Xml::PROJECT_ID, upload.projectId);
    add(builder, Xml::PROJECT_NAME, upload.projectName);
    return builder.generate();
}

QByteArray uploadFinished(const QString &projectId, ImportType importType)
{
    const auto importElement = WebCommunicator::importTypeToXmlElement(importType);
    NetworkRequestBodyBuilder builder = webBody(Xml::FINISH_UPLOAD_REQUEST);
    builder.addElement(importElement.first, importElement.second);
    add(builder, Xml::PROJECT_ID, projectId);
    return builder.generate();
}

QByteArray uploadCancelled(const QString &projectId)
{
    NetworkRequestBodyBuilder builder = webBody(Xml::CANCEL_UPLOAD_REQUEST);
    add(builder, Xml::PROJECT_ID, projectId);
    return builder.generate();
}

QByteArray createBucket(const QString &bucketName)
{
    NetworkRequestBodyBuilder builder = serviceBody(Xml::BUCKET_REQUEST);
    add(builder, Xml::BUCKET_NAME, bucketName.toLower());
    return builder.generate();
}

QByteArray deleteObject(const QString &bucketName, const QString &relativePath)
{
    return objectRequest(Xml::OBJECT_DELETE_REQUEST, bucketName, relativePath);
}

QByteArray usedSpace(const QString &bucketName, const QString &relativePath)
{
    return objectRequest(Xml::USED_SPACE_REQUEST, bucketName, relativePath);
}

QByteArray objectExists(const QString &bucketName, const QString &relativePath)
{
    return objectRequest(Xml::OBJECT_EXISTS_REQUEST, bucketName, relativePath);
}

QByteArray cleanUpVersions(const QString &bucketName, const QString &relativePath, int keepNewest)
{
    NetworkRequestBodyBuilder builder = serviceBody(Xml::CLEANUP_VERSION_FILES_REQUEST);
    add(builder, Xml::BUCKET_NAME, bucketName);
    add(builder, Xml::RELATIVE_PATH, relativePath);
    add(builder, Xml::KEEP_NEWEST_VERSION, QString::number(keepNewest));
    return builder.generate();
}

QByteArray listFiles(const QString &bucketName, const QString &delimiter, const QStringList &prefixes)
{
    NetworkRequestBodyBuilder builder = serviceBody(Xml::LIST_FILES_REQUEST);
    add(builder, Xml::BUCKET_NAME, bucketName);
    add(builder, Xml::DELIMITER, delimiter);
    builder.startElement(Xml::PREFIXES.toUtf8(), Xml::PREFIX_API.toUtf8());
    for (const QString &prefix : prefixes)
        add(builder, Xml::STRING_D2P1, prefix);
    return builder.generate();
}

QByteArray uploadFile(const UploadFileDescriptor &file, const QByteArray &content)
{
    NetworkRequestBodyBuilder builder = serviceBody(Xml::UPLOAD_FILE_REQUEST);
    add(builder, Xml::BUCKET_NAME, file.bucketName);
    addContent(builder, Xml::INPUT_FILE_ARRAY, content);
    add(builder, Xml::OUTPUT_FILE_PATH, file.remoteKey);
    add(builder, Xml::PROJECT_FOLDER_NAME, file.projectFolderName);
    return builder.generate();
}

QByteArray beginMultiPart(const UploadFileDescriptor &file)
{
    NetworkRequestBodyBuilder builder = serviceBody(Xml::UPLOAD_MULIT_INIT_REQUEST);
    add(builder, Xml::BUCKET_NAME, file.bucketName);
    add(builder, Xml::OUTPUT_FILE_PATH, file.remoteKey);
    return builder.generate();
}

QByteArray completeMultiPart(const QString &uploadId, const QString &projectFolderName)
{
    NetworkRequestBodyBuilder builder = serviceBody(Xml::UPLOAD_MULIT_COMPLETE_REQUEST);
    add(builder, Xml::MULTIPART_UPLOAD_ID, uploadId);
    add(builder, Xml::PROJECT_FOLDER_NAME, projectFolderName);
    return builder.generate();
}

QByteArray abortMultiPart(const QString &uploadId)
{
    NetworkRequestBodyBuilder builder = serviceBody(Xml::UPLOAD_MULIT_ABORT_REQUEST);
    add(builder, Xml::MULTIPART_UPLOAD_ID, uploadId);
    return builder.generate();
}

QByteArray startTranscoding(const UploadFileDescriptor &file)
{
    NetworkRequestBodyBuilder builder = serviceBody(Xml::PUT_TRANSCODING_JOB);
    add(builder, Xml::BUCKET_NAME, file.bucketName);
    add(builder, Xml::PUT_TRANSCODING_FILEKEY, file.remoteKey);
    add(builder, Xml::PUT_TRANSCODING_OUTPUTKEY, withoutExtension(file.remoteKey));
    return builder.generate();
}

} // namespace Korvo::Web::RequestBodies
