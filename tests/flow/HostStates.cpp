#include "flow/HostStates.h"

#include <algorithm>

namespace Korvo::Web::TestSupport {

namespace {

const QString SILENT = QStringLiteral("noAnswer");
const QString STALLED_REQUEST = QStringLiteral("stallInRequest");
const QString STALLED_BODY = QStringLiteral("stallInBody");

void logInOnly(Session &session, const Place &)
{
    session->login(USER, PASSWORD);
}

void uploadPaused(Session &session, const Place &place)
{
    uploadFolder(session, place);
    session->pauseUpload(1);
}

void makeManyCalls(Session &session, const Place &place)
{
    uploadFolder(session, place);
    downloadFolder(session, place);
    for (int i = 0; i < 200; ++i)
        session->queryRemoteProjects();
}

QVector<HostState> loginStates()
{
    return {
        {"question about the second factor", SILENT, QStringLiteral("api/Users/CheckTwoStepAuthentication"), logInOnly},
        {"login", SILENT, QStringLiteral("Token"), logInOnly},
        {"wait for the clock", SILENT, QStringLiteral("api/Status/Get"), logInOnly},
        {"wait for the credentials", SILENT, QStringLiteral("api/Projects/companykorvoservice"), logInOnly},
    };
}

QVector<HostState> uploadStates()
{
    const QString begin = QStringLiteral("api/UploadProject/Init");
    const QString file = QStringLiteral("api/bucket/putfile");
    const QString part = QStringLiteral("api/multipartupload/upload");
    return {
        {"wait for the begin", SILENT, begin, uploadFolder},
        {"calls behind a wait", SILENT, begin, makeManyCalls},
        {"wait for the bucket query", SILENT, QStringLiteral("api/bucket/exists"), uploadFolder},
        {"wait for the bucket", SILENT, QStringLiteral("api/bucket"), uploadFolder},
        {"listing of an upload", SILENT, QStringLiteral("api/bucket/listoffilesfromlocations"), uploadFolder},
        {"file in one piece", SILENT, file, uploadFolder},
        {"file in one piece, on its way", STALLED_REQUEST, file, uploadFolder},
        {"begin of parts", SILENT, QStringLiteral("api/multipartupload/init"), uploadFolder},
        {"part", SILENT, part, uploadFolder},
        {"part, on its way", STALLED_REQUEST, part, uploadFolder},
        {"completion of parts", SILENT, QStringLiteral("api/multipartupload/complete"), uploadFolder},
        {"paused upload", QStringLiteral("delay"), begin, uploadPaused},
        {"transcoding", SILENT, QStringLiteral("api/job/putforeachpresets"), uploadFolder},
        {"finish notice", SILENT, QStringLiteral("api/UploadProject/Uploaded"), uploadFolder},
    };
}

QVector<HostState> downloadStates()
{
    return {
        {"listing of a download", SILENT, QStringLiteral("api/bucket/listoffilesfromlocations"), downloadFolder},
        {"file without answer", SILENT, QStringLiteral("webdav/*"), downloadFolder},
        {"half a file", STALLED_BODY, QStringLiteral("webdav/*"), downloadFolder},
        {"data", STALLED_BODY, QStringLiteral("api/Projects/*"), downloadData},
    };
}

} // namespace

void uploadFolder(Session &session, const Place &place)
{
    session->uploadProject(place.project, place.project, place.folder, PROJECT_DATE, 3);
}

void downloadFolder(Session &session, const Place &place)
{
    session->downloadProject(QStringLiteral("stored"), QStringLiteral("stored"), place.download, 3);
}

void downloadData(Session &session, const Place &place)
{
    session->downloadQuickviewProjectData(QStringLiteral("stored"), place.download + QStringLiteral("/data.xml"));
}

bool HostState::isLogin() const
{
    const QVector<HostState> logins = loginStates();
    return std::any_of(logins.cbegin(), logins.cend(), [&](const HostState &login) { return login.route == route; });
}

QVector<HostState> statesOnTheWire()
{
    return loginStates() + uploadStates() + downloadStates();
}

} // namespace Korvo::Web::TestSupport
