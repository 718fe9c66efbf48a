#include "api/ProjectIds.h"

#include <QtCore/QCryptographicHash>

namespace Korvo::Web {

QString derivedProjectId(const QString &projectName)
{
    // The digest of the hexadecimal text, not of the name itself: projects uploaded earlier are known by it.
    const QByteArray hexName = projectName.toUtf8().toHex();
    QByteArray id = QCryptographicHash::hash(hexName, QCryptographicHash::Md5).toHex();
    for (const int position : {8, 13, 18, 23})
        id.insert(position, '-');
    return QString::fromLatin1(id);
}

} // namespace Korvo::Web
