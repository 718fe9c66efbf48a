#pragma once

#include <QtCore/QString>

namespace Korvo::Web {

/// One file to upload: where it lies and where it goes.
struct UploadFileDescriptor
{
    QString projectFolderName; ///< sent along with the file; empty for project uploads
    QString localFilePath;     ///< absolute
    QString remoteKey;         ///< name inside the bucket
    QString bucketName;
    bool isVideo = false;
};

} // namespace Korvo::Web
