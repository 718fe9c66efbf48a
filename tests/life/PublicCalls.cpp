#include "life/PublicCalls.h"

#include <QtCore/QMetaProperty>
#include <QtCore/QUuid>

#include <algorithm>

using namespace std::chrono_literals;

namespace Korvo::Web::TestSupport {

namespace {

using Reach = PublicCall::Reach;

const QString STORED = QStringLiteral("stored");
const QByteArrayList LOGIN_ENDS{"loginResult"};
const QByteArrayList UPLOAD_ENDS{"uploadActiveChanged"};
const QByteArrayList DOWNLOAD_ENDS{"downloadActiveChanged"};

template <typename Make>
PublicCall call(const char *method, Reach reach, const QByteArrayList &answers, Make make)
{
    return {method, reach,
            [make](Session &session, const Place &place, unsigned int id) {
                make(session.api(), place, id);
                return 0u;
            },
            answers};
}

template <typename Make>
PublicCall start(const char *method, const QByteArrayList &answers, Make make)
{
    return {method, Reach::Nothing,
            [make](Session &session, const Place &place, unsigned int) { return make(session.api(), place); }, answers};
}

QVector<PublicCall> loginCalls()
{
    return {
        call("login", Reach::EveryTransfer, LOGIN_ENDS,
             [](KorvoWebApi &api, const Place &, unsigned int) { api.login(USER, PASSWORD); }),
        call("loginWithToken", Reach::EveryTransfer, LOGIN_ENDS,
             [](KorvoWebApi &api, const Place &, unsigned int) { api.loginWithToken(SECURE_CODE); }),
        call("cancelLogin", Reach::Nothing, {},
             [](KorvoWebApi &api, const Place &, unsigned int) { api.cancelLogin(); }),
        call("logout", Reach::EveryTransfer, {"loginStatusChanged"},
             [](KorvoWebApi &api, const Place &, unsigned int) { api.logout(); }),
        call("resetPassword", Reach::Nothing, {},
             [](KorvoWebApi &api, const Place &, unsigned int) { api.resetPassword(USER); }),
    };
}

void readEveryProperty(const KorvoWebApi &api)
{
    const QMetaObject &meta = KorvoWebApi::staticMetaObject;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        if (!meta.property(i).read(&api).isValid())
            qFatal("the property %s cannot be read", meta.property(i).name());
    }
}

QVector<PublicCall> questions()
{
    return {
        call("properties", Reach::Nothing, {},
             [](KorvoWebApi &api, const Place &, unsigned int) { readEveryProperty(api); }),
        call("queryRemoteProjects", Reach::Nothing, {"projectInfoReceived", "queryRemoteProjectsError"},
             [](KorvoWebApi &api, const Place &, unsigned int) { api.queryRemoteProjects(); }),
        call("queryUploadProjectStatus", Reach::Nothing, {"uploadStatusInfoReceived"},
             [](KorvoWebApi &api, const Place &place, unsigned int) { api.queryUploadProjectStatus({place.project}); }),
        call("startSingleProjectFileDownload", Reach::Nothing, {"singleFileDownloadLinkReceived", "errorOccurred"},
             [](KorvoWebApi &api, const Place &, unsigned int) {
                 api.startSingleProjectFileDownload(MEDIA_PROJECT, MEDIA_FILE);
             }),
        call("startAllProjectsMediaDownload", Reach::Nothing, {"allProjectsMediaDownloadLinkReceived"},
             [](KorvoWebApi &api, const Place &, unsigned int) {
                 api.startAllProjectsMediaDownload(MEDIA_PROJECT.toString(QUuid::WithoutBraces));
             }),
    };
}

QVector<PublicCall> downloadCalls()
{
    const auto file
        = [](const Place &place, const char *name) { return place.download + QLatin1Char('/') + QLatin1String(name); };
    return {
        start("downloadProject", DOWNLOAD_ENDS,
              [](KorvoWebApi &api, const Place &place) {
                  return api.downloadProject(STORED, STORED, place.download, 2);
              }),
        start("downloadQuickviewProjectData", DOWNLOAD_ENDS,
              [=](KorvoWebApi &api, const Place &place) {
                  return api.downloadQuickviewProjectData(STORED, file(place, "data.xml"));
              }),
        start("downloadQuickviewSurveyData", DOWNLOAD_ENDS,
              [=](KorvoWebApi &api, const Place &place) {
                  return api.downloadQuickviewSurveyData(STORED, file(place, "surveys.xml"));
              }),
        start("downloadQuickviewManholeData", DOWNLOAD_ENDS,
              [=](KorvoWebApi &api, const Place &place) {
                  return api.downloadQuickviewManholeData(STORED, file(place, "nodes.xml"));
              }),
        start("downloadSingleProjectFile", DOWNLOAD_ENDS,
              [=](KorvoWebApi &api, const Place &place) {
                  return api.downloadSingleProjectFile(file(place, "link"),
                                                       QStringLiteral("https://web.korvo.example/api/Projects"));
              }),
        call("abortDownload", Reach::OneTransfer, {},
             [](KorvoWebApi &api, const Place &, unsigned int id) { api.abortDownload(id); }),
        call("pauseDownload", Reach::Nothing, {},
             [](KorvoWebApi &api, const Place &, unsigned int id) { api.pauseDownload(id); }),
        call("resumeDownload", Reach::Nothing, {},
             [](KorvoWebApi &api, const Place &, unsigned int id) { api.resumeDownload(id); }),
    };
}

QVector<PublicCall> uploadCalls()
{
    return {
        start("uploadProject", UPLOAD_ENDS,
              [](KorvoWebApi &api, const Place &place) {
                  return api.uploadProject(place.project, place.project, place.folder, PROJECT_DATE, 2);
              }),
        start("uploadQZProject", UPLOAD_ENDS,
              [](KorvoWebApi &api, const Place &place) {
                  return api.uploadQZProject(place.project, place.folder, PROJECT_DATE);
              }),
        start("uploadQuickviewProject", UPLOAD_ENDS,
              [](KorvoWebApi &api, const Place &place) {
                  const QUuid id = QUuid::createUuidV5(QUuid(), place.project);
                  return api.uploadQuickviewProject(id, place.project, place.folder, PROJECT_DATE, {});
              }),
        call("abortUpload", Reach::OneTransfer, {},
             [](KorvoWebApi &api, const Place &, unsigned int id) { api.abortUpload(id); }),
        call("pauseUpload", Reach::Nothing, {},
             [](KorvoWebApi &api, const Place &, unsigned int id) { api.pauseUpload(id); }),
        call("resumeUpload", Reach::Nothing, {},
             [](KorvoWebApi &api, const Place &, unsigned int id) { api.resumeUpload(id); }),
    };
}

// Ids of transfers of which no end has been told yet.
QList<unsigned int> running(const SignalRecorder &seen, const QByteArray &signal)
{
    QList<unsigned int> ids;
    for (const QVariantList &arguments : seen.all(signal)) {
        ids.removeAll(arguments.first().toUInt());
        if (arguments.last().toBool())
            ids.append(arguments.first().toUInt());
    }
    return ids;
}

// Calls are made in their order. This one begins and ends at once, under an id that no other has, since a device has no folders.
bool callsHavePassed(Session &session)
{
    const unsigned int id = session->downloadQuickviewProjectData(STORED, QStringLiteral("/dev/null/data.xml"));
    return eventually([&] { return session.signalsSeen().all("downloadActiveChanged").contains({id, false}); }, 60s);
}

} // namespace

const QUuid MEDIA_PROJECT(QStringLiteral("{2f1b3c4d-5e6f-4a7b-8c9d-0e1f2a3b4c5d}"));
const QString MEDIA_FILE = QStringLiteral("a.mp4");

bool PublicCall::isAnsweredBy(const QList<SignalEvent> &heard, unsigned int startedId) const
{
    const auto answersIt = [&](const SignalEvent &event) {
        return answers.contains(event.name)
               && (startedId == 0
                   || (event.arguments.first().toUInt() == startedId && !event.arguments.last().toBool()));
    };
    return answers.isEmpty() || std::any_of(heard.cbegin(), heard.cend(), answersIt);
}

QVector<PublicCall> publicCalls()
{
    return loginCalls() + questions() + downloadCalls() + uploadCalls();
}

void makeStoredProjects(LocalPlatform &platform, int files, int bytes)
{
    QJsonArray objects;
    for (int i = 0; i < files; ++i)
        objects.append(QJsonObject{{QStringLiteral("key"), QStringLiteral("sub/f%1").arg(i)},
                                   {QStringLiteral("size"), bytes + i}});
    platform.addProject(STORED, STORED, objects);
    platform.addProject(MEDIA_PROJECT.toString(QUuid::WithoutBraces), QStringLiteral("media"),
                        {QJsonObject{{QStringLiteral("key"), QString(QStringLiteral("Video/Sec/") + MEDIA_FILE)},
                                     {QStringLiteral("size"), 1000}}});
}

bool comesToRest(Session &session)
{
    const SignalRecorder &seen = session.signalsSeen();
    const auto isLoggingIn = [&] { return session->loginStatus() == KorvoWebApi::LoginStatus::LoginStatusLoggingIn; };
    if (!callsHavePassed(session) || !eventually([&] { return !isLoggingIn(); }, 60s) || !callsHavePassed(session))
        return false;
    for (const unsigned int id : running(seen, "uploadActiveChanged"))
        session->resumeUpload(id);
    for (const unsigned int id : running(seen, "downloadActiveChanged"))
        session->resumeDownload(id);
    return eventually(
               [&] {
                   return running(seen, "uploadActiveChanged").isEmpty()
                          && running(seen, "downloadActiveChanged").isEmpty() && !session->anyUploadActive()
                          && !session->anyDownloadActive();
               },
               60s)
           && callsHavePassed(session);
}

} // namespace Korvo::Web::TestSupport
