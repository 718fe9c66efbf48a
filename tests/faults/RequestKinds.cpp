#include "faults/RequestKinds.h"

namespace Korvo::Web::Faults {

const QString STORED_PROJECT = QStringLiteral("0c9bd4a6-1f5e-4a7c-9a53-6f6f5f3f2b11");

namespace Route {
const QString CHECK = QStringLiteral("api/Users/CheckTwoStepAuthentication");
const QString TOKEN = QStringLiteral("Token");
const QString CLOCK = QStringLiteral("api/Status/Get");
const QString CREDENTIALS = QStringLiteral("api/Projects/companykorvoservice");
const QString STATUSES = QStringLiteral("api/UploadProject/Statuses");
const QString BEGIN = QStringLiteral("api/UploadProject/Init");
const QString UPLOADED = QStringLiteral("api/UploadProject/Uploaded");
const QString CANCEL = QStringLiteral("api/UploadProject/Cancel");
const QString EXISTS = QStringLiteral("api/bucket/exists");
const QString BUCKET = QStringLiteral("api/bucket");
const QString LISTING = QStringLiteral("api/bucket/listoffilesfromlocations");
const QString PUT_FILE = QStringLiteral("api/bucket/putfile");
const QString INIT = QStringLiteral("api/multipartupload/init");
const QString PART = QStringLiteral("api/multipartupload/upload");
const QString COMPLETE = QStringLiteral("api/multipartupload/complete");
const QString ABORT = QStringLiteral("api/multipartupload/abort");
const QString TRANSCODING = QStringLiteral("api/job/putforeachpresets");
const QString FILE = QStringLiteral("webdav/*");
} // namespace Route

namespace {

using namespace Route;

constexpr int THRICE = 3;
constexpr bool SENT_AGAIN = true;
constexpr bool SENT_ONCE = false;
constexpr int FOR_EVER = 0;
constexpr int CLOCK_WAIT_SECONDS = 3;
constexpr int WAIT_SECONDS = 10;

RequestTraits open()
{
    return {};
}

RequestTraits oneWord()
{
    RequestTraits traits;
    traits.oneWord = true;
    return traits;
}

RequestTraits bearer(bool streamed = false)
{
    RequestTraits traits;
    traits.bearer = true;
    traits.streamed = streamed;
    return traits;
}

RequestTraits signedOne(bool stores = false, bool streamed = false)
{
    RequestTraits traits;
    traits.isSigned = true;
    traits.stores = stores;
    traits.streamed = streamed;
    return traits;
}

RequestTraits link()
{
    RequestTraits traits;
    traits.streamed = true;
    traits.redirected = true;
    return traits;
}

QStringList times(int number, const QStringList &steps)
{
    QStringList all;
    for (int i = 0; i < number; ++i)
        all += steps;
    return all;
}

const QStringList LOG_IN{CHECK, TOKEN, CLOCK, CREDENTIALS};
const QStringList BEGIN_UPLOAD{BEGIN, EXISTS, BUCKET, LISTING};
const QStringList UPLOAD = BEGIN_UPLOAD + times(THRICE, {PUT_FILE}) + QStringList{UPLOADED};
const QStringList UPLOAD_PARTS
    = BEGIN_UPLOAD + QStringList{INIT} + times(THRICE, {PART}) + QStringList{COMPLETE, UPLOADED};
const QStringList UPLOAD_VIDEOS = times(THRICE, BEGIN_UPLOAD + QStringList{PUT_FILE, Route::TRANSCODING, UPLOADED});
const QStringList ABORT_PARTS = BEGIN_UPLOAD + QStringList{INIT, PART, ABORT, CANCEL};
const QStringList ABORT_FILE = BEGIN_UPLOAD + QStringList{PUT_FILE, CANCEL};
const QStringList DOWNLOAD = QStringList{LISTING} + times(THRICE, {Route::FILE});

RequestKind logIn(const char *title, Scenario scenario, const QString &route, const char *handle, RequestTraits traits,
                  int wait)
{
    QStringList steps = scenario == Scenario::LogInAskedCode ? QStringList{CHECK} : LOG_IN;
    if (scenario == Scenario::LogInAndFetch)
        steps += QStringList{LISTING, Route::FILE};
    return {QLatin1String(title), route, scenario, QLatin1String(handle), traits, SENT_ONCE, wait, 1, steps};
}

RequestKind ask(const char *title, const QString &route, const char *handle, RequestTraits traits)
{
    return {QLatin1String(title),  route, Scenario::Ask, QLatin1String(handle), traits, SENT_ONCE, FOR_EVER, THRICE,
            times(THRICE, {route})};
}

RequestKind order(const char *title, const QString &route, const char *handle, RequestTraits traits)
{
    RequestKind request = ask(title, route, handle, traits);
    request.occurrences = 1; // nobody hears of its end, so there is no moment for another one
    request.steps = QStringList{route};
    return request;
}

RequestKind fetch(const char *title, const QString &route, RequestTraits traits)
{
    return {QLatin1String(title),  route, Scenario::FetchData, {}, traits, SENT_ONCE, FOR_EVER, THRICE,
            times(THRICE, {route})};
}

RequestKind step(const char *title, Scenario scenario, const QStringList &steps, const QString &route,
                 const char *handle, RequestTraits traits, bool isSentAgain, int wait = FOR_EVER)
{
    return {QLatin1String(title), route, scenario, QLatin1String(handle), traits, isSentAgain, wait,
            steps.count(route),   steps};
}

QVector<RequestKind> allKinds()
{
    using S = Scenario;
    const QString quickview = QStringLiteral("api/Projects/%1/Quickview").arg(STORED_PROJECT);
    const char *const links = "SingleProjectFileDownloadRequestHandle";
    // clang-format off
    return {
        logIn("two-step check", S::LogIn, CHECK, "Check2StepAuthenticationRequestHandle", oneWord(), FOR_EVER),
        logIn("two-step check that asks for a code", S::LogInAskedCode, CHECK, "Check2StepAuthenticationRequestHandle", oneWord(), FOR_EVER),
        logIn("login with a password", S::LogIn, TOKEN, "LoginRequestHandle", open(), FOR_EVER),
        logIn("login with a code", S::LogInWithCode, TOKEN, "LoginRequestHandle", open(), FOR_EVER),
        logIn("clock", S::LogInAndFetch, CLOCK, "NoticeRequestHandle", open(), CLOCK_WAIT_SECONDS),
        logIn("client credentials", S::LogInAndFetch, CREDENTIALS, "ClientCredentialsRequestHandle", bearer(), WAIT_SECONDS),

        order("password reset", QStringLiteral("api/Account/ResetPassword"), "ResetPasswordRequestHandle", open()),
        ask("project list", QStringLiteral("api/Projects"), "UserProjectsRequestHandle", bearer()),
        ask("upload statuses", STATUSES, "UploadProjectsStatusHandle", bearer()),
        ask("link of a media file", quickview + QStringLiteral("/Media/photo.jpg/Download"), links, bearer()),
        ask("links of all media files", quickview + QStringLiteral("/Media/Download"), links, bearer()),
        fetch("Quickview project", quickview, bearer(true)),
        fetch("Quickview surveys", quickview + QStringLiteral("/Surveys"), bearer(true)),
        fetch("Quickview manholes", quickview + QStringLiteral("/Manholes"), bearer(true)),
        fetch("file behind a link", QStringLiteral("media/*"), link()),

        step("begin of an upload", S::Upload, UPLOAD, BEGIN, "BeginUploadProjectRequestHandle", bearer(), SENT_ONCE, WAIT_SECONDS),
        step("bucket query", S::Upload, UPLOAD, EXISTS, "BucketGetRequestHandle", signedOne(), SENT_ONCE, WAIT_SECONDS),
        step("bucket creation", S::Upload, UPLOAD, BUCKET, "BucketCreateRequestHandle", signedOne(), SENT_ONCE, WAIT_SECONDS),
        step("listing for an upload", S::Upload, UPLOAD, LISTING, "ListFilesFromLocationsRequestHandle", signedOne(), SENT_ONCE),
        step("file in one piece", S::Upload, UPLOAD, PUT_FILE, "UploadFileRequestHandle", signedOne(true), SENT_AGAIN),
        step("notice of the end", S::Upload, UPLOAD, UPLOADED, "NoticeRequestHandle", bearer(), SENT_ONCE),
        step("transcoding", S::UploadVideos, UPLOAD_VIDEOS, Route::TRANSCODING, "NoticeRequestHandle", signedOne(), SENT_ONCE),
        step("begin of the parts", S::UploadParts, UPLOAD_PARTS, INIT, "UploadFileMultiPartRequestHandle", signedOne(), SENT_AGAIN),
        step("part", S::UploadParts, UPLOAD_PARTS, PART, "UploadFileMultiPartRequestHandle", signedOne(true), SENT_AGAIN),
        step("completion of the parts", S::UploadParts, UPLOAD_PARTS, COMPLETE, "UploadFileMultiPartRequestHandle", signedOne(), SENT_AGAIN),
        step("abort of the parts", S::AbortParts, ABORT_PARTS, ABORT, "UploadFileMultiPartRequestHandle", signedOne(), SENT_AGAIN),
        step("notice of the abort", S::AbortFile, ABORT_FILE, CANCEL, "NoticeRequestHandle", bearer(), SENT_ONCE),

        step("listing for a download", S::Download, DOWNLOAD, LISTING, "ListFilesFromLocationsRequestHandle", signedOne(), SENT_AGAIN),
        step("file download", S::Download, DOWNLOAD, Route::FILE, "DownloadFileHandle", signedOne(false, true), SENT_AGAIN),
    };
    // clang-format on
}

} // namespace

bool RequestKind::isLogin() const
{
    return scenario == Scenario::LogIn || scenario == Scenario::LogInAskedCode || scenario == Scenario::LogInWithCode
           || scenario == Scenario::LogInAndFetch;
}

bool RequestKind::isUpload() const
{
    return steps.contains(BEGIN);
}

const QVector<RequestKind> &requestKinds()
{
    static const QVector<RequestKind> KINDS = allKinds();
    return KINDS;
}

const RequestKind &requestKind(const QString &title)
{
    for (const RequestKind &request : requestKinds()) {
        if (request.title == title)
            return request;
    }
    qFatal("no kind of request has the title %s", qPrintable(title));
}

QString heldRoute(Scenario scenario)
{
    if (scenario == Scenario::AbortParts)
        return PART;
    return scenario == Scenario::AbortFile ? PUT_FILE : QString();
}

bool isServiceRoute(const QString &route)
{
    return route.startsWith(QLatin1String("api/bucket")) || route.startsWith(QLatin1String("api/multipartupload"))
           || route.startsWith(QLatin1String("api/job")) || route == CLOCK || route == Route::FILE
           || route.startsWith(QLatin1String("media/"));
}

bool carriesBody(const QString &route)
{
    return route != CHECK && route != CLOCK && route != Route::FILE && !route.startsWith(QLatin1String("media/"))
           && !route.startsWith(QLatin1String("api/Projects"));
}

} // namespace Korvo::Web::Faults
