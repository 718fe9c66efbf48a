#pragma once

#include <QtCore/QMetaType>
#include <QtCore/QString>

namespace Korvo::Web {

/// Processing status of one earlier upload, as the web server reports it.
struct UploadStatusInfo
{
    QString projectId; ///< id of the project asked for
    qint32 status = 0; ///< the server's own number, 0 when its answer has none
};

} // namespace Korvo::Web

Q_DECLARE_METATYPE(Korvo::Web::UploadStatusInfo)
