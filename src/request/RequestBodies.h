#pragma once

#include <NQKorvoWeb/ImportType.h>

#include <QtCore/QByteArray>
#include <QtCore/QDateTime>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Korvo::Web {

struct UploadFileDescriptor;

/// The body of every request that carries one; for a part of a file see PartRequestBody. The order of the elements is the
/// order the servers read them in.
namespace RequestBodies {

/// What the web server is told at the beginning of an upload.
struct UploadBegin
{
    QString companyId;
    QString email;
    QString projectId;
    QString projectName;
    QDateTime creationDate;
};

QByteArray login(const QString &user, const QString &password);
QByteArray loginWithCode(const QString &user, const QString &password, const QString &code);
QByteArray resetPassword(const QString &user);

QByteArray uploadStatuses(const QStringList &projectIds);
QByteArray uploadBegin(const UploadBegin &upload);
QByteArray uploadFinished(const QString &projectId, ImportType importType);
QByteArray uploadCancelled(const QString &projectId);

QByteArray createBucket(const QString &bucketName);
QByteArray deleteObject(const QString &bucketName, const QString &relativePath);
QByteArray usedSpace(const QString &bucketName, const QString &relativePath);
QByteArray objectExists(const QString &bucketName, const QString &relativePath);
QByteArray cleanUpVersions(const QString &bucketName, const QString &relativePath, int keepNewest);
QByteArray listFiles(const QString &bucketName, const QString &delimiter, const QStringList &prefixes);

QByteArray uploadFile(const UploadFileDescriptor &file, const QByteArray &content);
QByteArray beginMultiPart(const UploadFileDescriptor &file);
QByteArray completeMultiPart(const QString &uploadId, const QString &projectFolderName);
QByteArray abortMultiPart(const QString &uploadId);
QByteArray startTranscoding(const UploadFileDescriptor &file);

} // namespace RequestBodies

} // namespace Korvo::Web
