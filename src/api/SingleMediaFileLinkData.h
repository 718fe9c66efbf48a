#pragma once

#include <QtCore/QMetaType>
#include <QtCore/QString>

namespace Korvo::Web {

/// One downloadable media file of a project.
struct SingleMediaFileLinkData
{
    QString url;  ///< address of the file, to be passed to KorvoWebApi::downloadSingleProjectFile()
    QString type; ///< kind of media, in the server's words
    QString name; ///< file name; hostile until checked, like every text of a server
};

} // namespace Korvo::Web

Q_DECLARE_METATYPE(Korvo::Web::SingleMediaFileLinkData)
