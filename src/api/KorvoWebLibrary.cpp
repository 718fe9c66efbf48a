#include "api/KorvoWebLibrary.h"

#include <NQKorvoWeb/Error.h>
#include <NQKorvoWeb/ImportType.h>
#include <NQKorvoWeb/KorvoWebApi.h>
#include <NQKorvoWeb/MediaNamesList.h>
#include <NQKorvoWeb/ProjectInfo.h>
#include <NQKorvoWeb/SingleMediaFileLinkData.h>
#include <NQKorvoWeb/UploadStatusInfo.h>

#include <QtCore/QList>
#include <QtCore/QMetaType>

namespace Korvo::Web {

// The names are the texts that signals and hosts use, so a type may have two of them and another only a short one.
// Registering a list or a set also makes it convertible to a sequential iterable.
void KorvoWebLibrary::initialize()
{
    qRegisterMetaType<Error>("Korvo::Web::Error");
    qRegisterMetaType<SingleMediaFileLinkData>("SingleMediaFileLinkData");
    qRegisterMetaType<SingleMediaFileLinkData>("Korvo::Web::SingleMediaFileLinkData");
    qRegisterMetaType<KorvoWebApi::LoginResult>("KorvoWebApi::LoginResult");
    qRegisterMetaType<KorvoWebApi::LoginStatus>("KorvoWebApi::LoginStatus");
    qRegisterMetaType<KorvoWebApi::UploadError>("KorvoWebApi::UploadError");
    qRegisterMetaType<KorvoWebApi::DownloadError>("KorvoWebApi::DownloadError");
    qRegisterMetaType<KorvoWebApi::DownloadError>("DownloadError");
    qRegisterMetaType<QList<ProjectInfo>>("QList<ProjectInfo>");
    qRegisterMetaType<QList<UploadStatusInfo>>("QList<UploadStatusInfo>");
    qRegisterMetaType<QList<SingleMediaFileLinkData>>("QList<SingleMediaFileLinkData>");
    qRegisterMetaType<ImportType>("ImportType");
    qRegisterMetaType<ImportType>("Korvo::Web::ImportType");
    qRegisterMetaType<MediaNamesList>("MediaNamesList");
}

void KorvoWebLibrary::finalize() { }

} // namespace Korvo::Web
