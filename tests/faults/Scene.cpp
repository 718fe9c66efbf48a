#include "faults/Scene.h"

#include "faults/Observation.h"
#include "faults/QtComplaints.h"
#include "faults/Rules.h"
#include "flow/Folders.h"

#include <QtCore/QJsonArray>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>

#include <chrono>

using namespace Korvo::Web::TestSupport;
using namespace std::chrono_literals;

namespace Korvo::Web::Faults {

namespace {

constexpr int MIB = 1024 * 1024;
constexpr int SMALL_BYTES = 600;
constexpr auto CALL_LIMIT = 50s; // more than the longest wait of the library
constexpr auto REQUEST_LIMIT = 10s;
constexpr qint64 DESTRUCTION_LIMIT_MILLISECONDS = 5000; // of a loaded machine
constexpr unsigned int NO_JOB = 4000000000;

// Long enough for the fault to be put on the tunnel meanwhile.
constexpr int HOLD_MILLISECONDS = 1500;
constexpr int MOST_PLAYS = 5; // of a cell whose tunnel was struck too late

const QString WEB_HOST = QStringLiteral("web.korvo.example");
const QString SERVICE_HOST = QStringLiteral("service.korvo.example");

QByteArray smallFile(int number)
{
    return randomBytes(SMALL_BYTES, quint32(number));
}

QString keyOf(int number)
{
    return QStringLiteral("%1.bin").arg(number);
}

QJsonObject storedObject(const QString &key, const QByteArray &bytes)
{
    return {{QStringLiteral("key"), key}, {QStringLiteral("base64"), QString::fromLatin1(bytes.toBase64())}};
}

QJsonObject fault(const char *kind, const QString &route, int count)
{
    return {{QStringLiteral("kind"), QLatin1String(kind)},
            {QStringLiteral("route"), route},
            {QStringLiteral("count"), count}};
}

/// Never strikes, only counts.
QJsonObject counterOf(const QString &route)
{
    QJsonObject counter = fault("delay", route, 1);
    counter.insert(QStringLiteral("nth"), 1000000000);
    return counter;
}

bool strikesNewConnections(const FaultKind &fault)
{
    return fault.place != Place::Request && !strikesRunningTunnel(fault);
}

void removeLast(QStringList &list, const QString &text)
{
    const int place = list.lastIndexOf(text);
    if (place >= 0)
        list.removeAt(place);
}

unsigned int startFetching(Session &session, const QString &title, const QString &path, const QString &link)
{
    if (title == QLatin1String("Quickview project"))
        return session->downloadQuickviewProjectData(STORED_PROJECT, path);
    if (title == QLatin1String("Quickview surveys"))
        return session->downloadQuickviewSurveyData(STORED_PROJECT, path);
    if (title == QLatin1String("Quickview manholes"))
        return session->downloadQuickviewManholeData(STORED_PROJECT, path);
    return session->downloadSingleProjectFile(path, link);
}

/// The steps of one of the host's calls, or of the whole scenario when it consists of one call.
QStringList stepsOfCall(const RequestKind &request)
{
    const int calls = request.isDriven() ? request.occurrences : 1;
    return request.steps.mid(0, request.steps.size() / calls);
}

} // namespace

/// One cell being played.
class Scene::Play
{
public:
    Play(Scene &usedScene, const Cell &played)
        : scene(usedScene)
        , cell(played)
        , request(played.request)
        , course(courseOf(played))
        , expected(expectedOutcome(played))
        , takenAlong(outcomeTakenAlong(played))
        , id(QStringLiteral("p%1").arg(++usedScene.projects))
    {
    }

    QStringList run()
    {
        scene.platform.clearFaults();
        scene.platform.startJournal();
        counter = scene.platform.addFault(counterOf(request.route));
        resetsBefore = resets();
        if (!prepare())
            return {QStringLiteral("the login before the cell failed")};
        act();
        settle();
        Outcome seen = observe();
        QStringList words = differences(expected, seen);
        const int heard = session.signalsSeen().names().size();
        const qint64 closing = session.close();
        if (closing > DESTRUCTION_LIMIT_MILLISECONDS)
            words.append(QStringLiteral("the facade's destruction took %1 ms").arg(closing));
        if (session.signalsSeen().names().size() != heard)
            words.append(QStringLiteral("signals came after the facade's destruction"));
        for (const QString &complaint : complaints.texts())
            words.append(QStringLiteral("Qt complained: ") + complaint);
        return words;
    }

    /// The machine was too slow; what was seen says nothing.
    bool isVoid() const { return struckTooLate; }

private:
    // Before

    /// Holds and closing answers are in force before the struck request's own fault.
    bool prepare()
    {
        const QString held = heldRoute(request.scenario);
        if (!held.isEmpty())
            hold = scene.platform.addFault(fault("noAnswer", held, 0));
        makeFiles();
        // So that each request needs a connection of its own, and their numbers are known.
        if (strikesNewConnections(cell.fault))
            scene.platform.addFault(fault("noContentLength", {}, 0));
        if (request.isLogin())
            return true;
        const bool isIn = session.logIn();
        log.clear();
        scene.platform.startJournal();
        sendsBefore = scene.platform.seen(counter);
        return isIn;
    }

    void makeFiles()
    {
        if (request.scenario == Scenario::UploadParts || request.scenario == Scenario::AbortParts) {
            const int parts = request.scenario == Scenario::UploadParts ? 2 : 1; // and one byte
            files.insert(QStringLiteral("/large.bin"), randomBytes(parts * 4 * MIB + 1, 7));
        } else if (request.scenario == Scenario::UploadVideos) {
            files.insert(QStringLiteral("film.mp4"), smallFile(1));
        } else if (request.isUpload()) {
            for (int number = 1; number <= 3; ++number)
                files.insert(QLatin1Char('/') + keyOf(number), smallFile(number));
        }
        for (auto file = files.cbegin(); file != files.cend(); ++file)
            writeFile(local(QStringLiteral("in")), file.key(), file.value());
    }

    QString local(const QString &name) const { return folder.filePath(name); }

    // The fault

    QString host() const { return isServiceRoute(request.route) ? SERVICE_HOST : WEB_HOST; }

    QString struckRoute() const
    {
        if (request.route != Route::FILE || request.scenario != Scenario::Download)
            return request.route;
        return QStringLiteral("webdav/%1/%2").arg(scene.threeBucket, keyOf(cell.occurrence));
    }

    /// Which of the matching requests since the fault was put in force is the struck one.
    int numberOfRequest() const { return request.isDriven() || struckRoute() != request.route ? 1 : cell.occurrence; }

    /// The same for the connections to its host, of which each request needs one.
    int numberOfConnection() const
    {
        int connections = 0;
        int requests = 0;
        const int wanted = request.isDriven() ? 1 : cell.occurrence;
        for (const QString &step : stepsOfCall(request)) {
            if (isServiceRoute(step) == isServiceRoute(request.route))
                ++connections;
            if (step == request.route && ++requests == wanted)
                break;
        }
        return connections;
    }

    /// How often it strikes when it lasts: a request until it is cleared; connections, so that later ones get through.
    int strikes() const
    {
        if (!cell.isLasting)
            return 1;
        if (cell.fault.place == Place::Request)
            return 0;
        return course.failures;
    }

    void arm()
    {
        if (strikesRunningTunnel(cell.fault)) {
            QJsonObject delay = fault("delay", struckRoute(), 1);
            delay.insert(QStringLiteral("delayMs"), HOLD_MILLISECONDS);
            delay.insert(QStringLiteral("nth"), numberOfRequest());
            armed = scene.platform.addFault(delay);
            return;
        }
        QJsonObject described = description(cell.fault, request.traits);
        described.insert(QStringLiteral("count"), strikes());
        described.insert(QStringLiteral("nth"),
                         cell.fault.place == Place::Request ? numberOfRequest() : numberOfConnection());
        described.insert(cell.fault.place == Place::Request ? QStringLiteral("route") : QStringLiteral("host"),
                         cell.fault.place == Place::Request ? struckRoute() : host());
        armed = scene.platform.addFault(described);
    }

    void strikeTunnel()
    {
        if (!strikesRunningTunnel(cell.fault) || isTunnelStruck)
            return;
        isTunnelStruck = true;
        const QElapsedTimer sinceOpen = waitForHold();
        QJsonObject described = description(cell.fault, request.traits);
        described.insert(QStringLiteral("count"), strikes());
        described.insert(QStringLiteral("host"), host());
        armed = scene.platform.addFault(described);
        struckTooLate = sinceOpen.hasExpired(HOLD_MILLISECONDS);
    }

    /// Waits until the whole request has come and its answer is being held up; the time since it was not yet.
    QElapsedTimer waitForHold()
    {
        QElapsedTimer sinceOpen;
        sinceOpen.start();
        QElapsedTimer next = sinceOpen;
        const QDeadlineTimer deadline(CALL_LIMIT);
        while (scene.platform.arrived(armed) == 0 && !deadline.hasExpired()) {
            sinceOpen = next;
            next.restart();
        }
        return sinceOpen;
    }

    void awaitStrikes()
    {
        const int wanted = qMax(1, strikes());
        eventually([&] { return scene.platform.hits(armed) >= wanted; }, REQUEST_LIMIT);
        awaitLog();
    }

    /// Lets the calls that follow through, once the fault has done all that it is to do.
    void endStrikes()
    {
        awaitStrikes();
        disarm();
    }

    void disarm() { scene.platform.post(QStringLiteral("faults"), QJsonObject{{QStringLiteral("remove"), armed}}); }

    // The host

    void act()
    {
        if (request.isDriven())
            makeCalls();
        else
            makeOneCall();
    }

    void makeCalls()
    {
        const int calls = expected.heardByCall.size();
        for (int call = 1; call <= calls; ++call) {
            const bool isStruck = call == cell.occurrence;
            if (isStruck)
                arm();
            ask(call);
            if (isStruck)
                strikeTunnel();
            awaitCall(call);
            if (isStruck && course.end == Course::End::Pending)
                endPending();
            else if (isStruck)
                endStrikes();
        }
    }

    void makeOneCall()
    {
        arm();
        begin();
        strikeTunnel();
        if (course.end == Course::End::Pending)
            endPending();
        else if (hold > 0)
            awaitRequests();
        else
            awaitSignals(expected.heard.size());
    }

    void begin()
    {
        switch (request.scenario) {
        case Scenario::LogIn:
            return session->login(USER, PASSWORD);
        case Scenario::LogInAskedCode:
            return session->login(SECURE_USER, SECURE_PASSWORD);
        case Scenario::LogInWithCode:
            session->login(SECURE_USER, SECURE_PASSWORD);
            awaitSignals(1);
            return session->loginWithToken(SECURE_CODE);
        case Scenario::LogInAndFetch:
            session->login(USER, PASSWORD);
            strikeTunnel();
            awaitSignals(1);
            session->downloadProject(QStringLiteral("one"), QStringLiteral("one"), local(QStringLiteral("out")));
            return;
        case Scenario::Upload:
        case Scenario::UploadParts:
            return upload(id);
        case Scenario::AbortParts:
        case Scenario::AbortFile:
            upload(id);
            scene.platform.waitForHit(hold);
            return session->abortUpload(job);
        case Scenario::Download:
            job = session->downloadProject(QStringLiteral("three"), QStringLiteral("three"),
                                           local(QStringLiteral("out")));
            return;
        case Scenario::Ask:
        case Scenario::FetchData:
        case Scenario::UploadVideos:
            break;
        }
        Q_UNREACHABLE();
    }

    void upload(const QString &projectId)
    {
        job = session->uploadProject(projectId, projectId, local(QStringLiteral("in")), PROJECT_DATE);
    }

    void ask(int call)
    {
        const QString &title = request.title;
        if (request.scenario == Scenario::UploadVideos)
            upload(id + QStringLiteral("v%1").arg(call));
        else if (title == QLatin1String("password reset"))
            session->resetPassword(USER);
        else if (title == QLatin1String("project list"))
            session->queryRemoteProjects();
        else if (title == QLatin1String("upload statuses"))
            session->queryUploadProjectStatus({STORED_PROJECT});
        else if (title == QLatin1String("link of a media file"))
            session->startSingleProjectFileDownload(QUuid(STORED_PROJECT), QStringLiteral("photo.jpg"));
        else if (title == QLatin1String("links of all media files"))
            session->startAllProjectsMediaDownload(STORED_PROJECT);
        else
            job = startFetching(session, title, local(QStringLiteral("out/%1").arg(call)), scene.mediaLink);
    }

    /// A request without an end of its own: the host ends it, once the fault has struck and nothing has come of it.
    void endPending()
    {
        scene.platform.waitForHit(armed);
        passThroughWorker();
        if (request.scenario == Scenario::LogIn || request.scenario == Scenario::LogInWithCode)
            session->cancelLogin();
        else if (request.isUpload() && session->anyUploadActive())
            session->abortUpload(job);
        else if (request.scenario == Scenario::FetchData || request.scenario == Scenario::Download)
            session->abortDownload(job);
        awaitSignals(expected.heard.size());
    }

    // Waiting

    /// Waits until the worker has seen to every call made before, without a request.
    void passThroughWorker()
    {
        const int before = ownLogLines();
        session->pauseUpload(NO_JOB);
        eventually([&] { return ownLogLines() > before; }, CALL_LIMIT);
    }

    int ownLogLines() const { return log.messages().filter(QStringLiteral("Cannot pause upload.")).size(); }

    void awaitSignals(int number)
    {
        eventually([&] { return heardOf(session.signalsSeen()).size() >= number; }, CALL_LIMIT);
    }

    void awaitCall(int call)
    {
        int number = 0;
        for (int i = 0; i < call; ++i)
            number += expected.heardByCall.at(i);
        awaitSignals(number);
        if (course.end == Course::End::Pending && call == cell.occurrence)
            return;
        const int struckSends = call >= cell.occurrence ? course.sends - 1 : 0;
        eventually([&] { return sends() >= call + struckSends; }, REQUEST_LIMIT);
    }

    /// How often Qt has sent again below the library is within its own limits; any number there is the one expected.
    int sends()
    {
        const int ownQuestions = request.route == Route::STATUSES ? statusQuestions : 0;
        const int seen = scene.platform.seen(counter) - sendsBefore - ownQuestions;
        const int expectedSends = expected.sent.value(request.route);
        return seen > expectedSends && seen <= expectedSends + course.sendsAtMost - course.sends ? expectedSends : seen;
    }

    void awaitLog()
    {
        eventually([&] { return log.count() - ownLogLines() >= expected.log.size(); }, REQUEST_LIMIT);
    }

    void awaitRequests()
    {
        eventually([&] { return requestsSeen() == expected.sent || isTakenAlong(); }, REQUEST_LIMIT);
        if (isTakenAlong())
            expected = takenAlong;
    }

    /// Only the log tells of a request that the platform never saw.
    bool isTakenAlong() const { return takenAlong.log != expected.log && logLines(log.entries()) == takenAlong.log; }

    /// Whatever is still to come has come afterwards; a question to another server than a silent one would not wake it.
    void settle()
    {
        if (!request.isDriven() && course.end != Course::End::Pending)
            awaitStrikes();
        awaitRequests();
        if (isJournaledLate())
            eventually([&] { return journaled() >= expected.sent.value(request.route); }, REQUEST_LIMIT);
        if (mayAsk()) {
            statusQuestions = 1;
            session.settle();
        }
        awaitLog();
        eventually([&] { return onPlatform() == expected.stored; }, REQUEST_LIMIT);
        passThroughWorker();
    }

    /// What is answered to nobody is journaled nevertheless, and must not be taken for a request of the next cell. One
    /// whose body was not read is journaled as broken off, when its connection ends.
    bool isJournaledLate() const
    {
        if (strikesRunningTunnel(cell.fault))
            return true;
        const bool isUnread = cell.fault.kind == QLatin1String("stallInRequest") && carriesBody(request.route);
        return cell.fault.place == Place::Request && course.end == Course::End::Pending && !isUnread;
    }

    int journaled() { return requestsIn(scene.platform.journalEntries(), request).value(request.route); }

    bool mayAsk() const
    {
        const QString &kind = cell.fault.kind;
        return course.end != Course::End::Pending && kind != QLatin1String("expiredToken")
               && kind != QLatin1String("handshakeStall") && !request.isLogin();
    }

    // What is seen

    QMap<QString, int> requestsSeen()
    {
        QMap<QString, int> seen = requestsIn(scene.platform.journalEntries(), request);
        seen[Route::STATUSES] -= statusQuestions;
        seen.insert(request.route, sends());
        seen.remove(heldRoute(request.scenario));
        QMap<QString, int> some;
        for (auto entry = seen.cbegin(); entry != seen.cend(); ++entry) {
            if (entry.value() > 0 || expected.sent.contains(entry.key()))
                some.insert(entry.key(), entry.value());
        }
        return some;
    }

    Outcome observe()
    {
        Outcome seen;
        seen.heard = heardOf(session.signalsSeen());
        if (statusQuestions > 0)
            removeLast(seen.heard, QStringLiteral("uploadStatusInfoReceived(none)"));
        seen.heardByCall = expected.heardByCall;
        seen.log = logLines(log.entries());
        seen.sent = requestsSeen();
        seen.disk = onDisk();
        seen.stored = onPlatform();
        seen.state = state();
        return seen;
    }

    QString state()
    {
        if (request.isLogin())
            return nameOf(session->loginStatus());
        if (session->anyUploadActive() || session->anyDownloadActive())
            return QStringLiteral("still active");
        const SignalRecorder &heard = session.signalsSeen();
        if (request.isUpload())
            return filesDone(heard, "completedUploadFilesChanged", "filesToUploadTotalChanged");
        return request.scenario == Scenario::Download
                   ? filesDone(heard, "completedDownloadFilesChanged", "filesToDownloadTotalChanged")
                   : QString();
    }

    QStringList onDisk() const
    {
        QStringList lines;
        const QString out = local(QStringLiteral("out/"));
        if (request.scenario == Scenario::LogInAndFetch)
            lines.append(QStringLiteral("one.txt ") + leftOf(out + QStringLiteral("one.txt"), "one"));
        for (int call = 1; request.scenario == Scenario::FetchData && call <= expected.heardByCall.size(); ++call)
            lines.append(QStringLiteral("%1 ").arg(call)
                         + leftOf(out + QString::number(call), scene.dataByTitle.value(request.title)));
        for (int number = 1; request.scenario == Scenario::Download && number <= 3; ++number)
            lines.append(QStringLiteral("%1 ").arg(number) + leftOf(out + keyOf(number), smallFile(number)));
        return lines;
    }

    int resets() { return scene.platform.get(QStringLiteral("resets")).toArray().size(); }

    QStringList onPlatform()
    {
        if (request.title == QLatin1String("password reset"))
            return {numberInWords(resets() - resetsBefore) + QStringLiteral(" resets")};
        if (!request.isUpload())
            return {};
        const QJsonObject held = scene.platform.get(QStringLiteral("state")).toObject();
        return request.scenario == Scenario::UploadVideos ? transcodedOf(held, id)
                                                          : storedOf(scene.platform, held, id, files);
    }

    Scene &scene;
    const Cell &cell;
    const RequestKind &request;
    const Course course;
    Outcome expected;
    const Outcome takenAlong;
    const QString id;                // of the project, or what the ids of several begin with
    QMap<QString, QByteArray> files; // to upload, by their keys
    QtComplaints complaints;
    LogCapture log;
    QTemporaryDir folder;
    Session session;
    unsigned int job = 0;
    int counter = 0;
    int armed = 0;
    int hold = 0;
    int sendsBefore = 0;
    bool isTunnelStruck = false;
    bool struckTooLate = false;
    int statusQuestions = 0;
    int resetsBefore = 0;
};

QString Scene::start()
{
    const QString reason = platform.start({QStringLiteral("--web-copies"), QStringLiteral("none")});
    if (!reason.isEmpty())
        return reason;
    platform.addProject(QStringLiteral("one"), QStringLiteral("one"), {storedObject(QStringLiteral("one.txt"), "one")});
    platform.addProject(STORED_PROJECT, QStringLiteral("stored"),
                        {storedObject(QStringLiteral("Picture/Sec/photo.jpg"), smallFile(8)),
                         storedObject(QStringLiteral("Picture/Nod/node.jpg"), smallFile(9))});
    QJsonArray three;
    for (int number = 1; number <= 3; ++number)
        three.append(storedObject(keyOf(number), smallFile(number)));
    threeBucket = platform.addProject(QStringLiteral("three"), QStringLiteral("three"), three);
    return fetchReferences();
}

/// What the requests that fetch data bring when nothing is in the way.
QString Scene::fetchReferences()
{
    Session session;
    QTemporaryDir folder;
    if (!session.logIn())
        return QStringLiteral("no login");
    session->startSingleProjectFileDownload(QUuid(STORED_PROJECT), QStringLiteral("photo.jpg"));
    if (!session.signalsSeen().waitFor("singleFileDownloadLinkReceived"))
        return QStringLiteral("no media link");
    mediaLink = session.signalsSeen()
                    .all("singleFileDownloadLinkReceived")
                    .first()
                    .first()
                    .value<SingleMediaFileLinkData>()
                    .url;
    int number = 0;
    for (const RequestKind &request : requestKinds()) {
        if (request.scenario != Scenario::FetchData)
            continue;
        const QString path = folder.filePath(request.title);
        startFetching(session, request.title, path, mediaLink);
        if (!session.signalsSeen().waitFor("downloadFinished", ++number))
            return QStringLiteral("no data: ") + request.title;
        dataByTitle.insert(request.title, readFile(path));
    }
    return {};
}

QStringList Scene::play(const Cell &cell)
{
    QStringList words;
    for (int plays = 0; plays < MOST_PLAYS; ++plays) {
        Play play(*this, cell);
        words = play.run();
        if (!play.isVoid())
            return words;
    }
    return words;
}

} // namespace Korvo::Web::Faults
