#include "flow/Folders.h"
#include "life/PublicCalls.h"
#include "life/RandomRun.h"
#include "support/LogCapture.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QMetaMethod>
#include <QtCore/QMetaProperty>
#include <QtCore/QSet>
#include <QtTest/QtTest>

#include <algorithm>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;
using namespace std::chrono_literals;

namespace {

constexpr int STORED_FILES = 3;
constexpr qint64 CALL_LIMIT_MILLISECONDS = 1000; // no call waits for the worker
constexpr int EVERY = 5; // so many pairs are one that is tried, unless KORVOWEB_EVERY says otherwise

/// Which transfer of its own a signal comes with.
enum class Moves { Nothing, Upload, Download };

/// What a host does so that a signal comes.
struct Trigger
{
    const char *signal;
    const char *occasion; ///< where one signal comes in several ways
    Moves moves;
    HostAction act;
};

void logIn(Session &session, const Place &)
{
    session->login(USER, PASSWORD);
}

void logInAsAnother(Session &session, const Place &)
{
    session->login(EXPIRING_USER, EXPIRING_PASSWORD);
}

QVector<Trigger> transferTriggers()
{
    QVector<Trigger> triggers;
    for (const char *signal : {"uploadFileProgressChanged", "currentUploadFilesChanged", "uploadTotalProgressChanged",
                               "filesToUploadTotalChanged", "completedUploadFilesChanged", "uploadActiveChanged",
                               "anyUploadActiveChanged", "uploadFinished"})
        triggers.append({signal, "", Moves::Upload, uploadFolder});
    for (const char *signal :
         {"downloadFileProgressChanged", "currentDownloadFilesChanged", "downloadTotalProgressChanged",
          "filesToDownloadTotalChanged", "completedDownloadFilesChanged", "downloadActiveChanged", "downloadFinished"})
        triggers.append({signal, "", Moves::Download, downloadFolder});
    return triggers;
}

QVector<Trigger> loginTriggers()
{
    return {
        {"currentUserChanged", "", Moves::Nothing, logInAsAnother},
        {"loginResult", "", Moves::Nothing, logIn},
        {"loginStatusChanged", "", Moves::Nothing, logIn},
        {"loginExpired", "", Moves::Nothing, logInAsAnother},
        {"tokenAuthenticationNeeded", "", Moves::Nothing,
         [](Session &session, const Place &) { session->login(SECURE_USER, SECURE_PASSWORD); }},
    };
}

QVector<Trigger> answerTriggers()
{
    return {
        {"projectInfoReceived", "", Moves::Nothing,
         [](Session &session, const Place &) { session->queryRemoteProjects(); }},
        {"uploadStatusInfoReceived", "", Moves::Nothing,
         [](Session &session, const Place &) { session->queryUploadProjectStatus({QStringLiteral("stored")}); }},
        {"errorOccurred", " inside the call", Moves::Nothing,
         [](Session &session, const Place &) { session->uploadProject({}, {}, {}, {}); }},
        {"errorOccurred", " from the worker", Moves::Nothing,
         [](Session &session, const Place &place) {
             session->downloadQuickviewProjectData(QStringLiteral("x"), place.folder);
         }},
        {"queryRemoteProjectsError", "", Moves::Nothing,
         [](Session &session, const Place &) {
             session->logout();
             session->queryRemoteProjects();
         }},
        {"singleFileDownloadLinkReceived", "", Moves::Nothing,
         [](Session &session, const Place &) { session->startSingleProjectFileDownload(MEDIA_PROJECT, MEDIA_FILE); }},
        {"allProjectsMediaDownloadLinkReceived", "", Moves::Nothing,
         [](Session &session, const Place &) {
             session->startAllProjectsMediaDownload(MEDIA_PROJECT.toString(QUuid::WithoutBraces));
         }},
    };
}

QVector<Trigger> triggers()
{
    return transferTriggers() + loginTriggers() + answerTriggers();
}

// Declared, but never emitted.
const QSet<QByteArray> SILENT_SIGNALS{"uploadErrorOccurred", "downloadErrorOccurred", "anyDownloadActiveChanged"};

QSet<QByteArray> methodsOf(QMetaMethod::MethodType type)
{
    const QMetaObject &meta = KorvoWebApi::staticMetaObject;
    QSet<QByteArray> names;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        if (meta.method(i).methodType() == type)
            names.insert(meta.method(i).name());
    }
    return names;
}

QVector<HostState> waits()
{
    QVector<HostState> found;
    const QVector<HostState> states = statesOnTheWire();
    std::copy_if(states.cbegin(), states.cend(), std::back_inserter(found),
                 [](const HostState &state) { return QByteArray(state.name).startsWith("wait for"); });
    return found;
}

/// Acts inside the slot of the first signal of a name.
class FirstSignal : public QObject
{
    Q_OBJECT

public:
    FirstSignal(const KorvoWebApi &api, const QByteArray &signal, std::function<void()> newAction)
        : action(std::move(newAction))
    {
        const QMetaMethod slot = metaObject()->method(metaObject()->indexOfSlot("fire()"));
        const QMetaObject &meta = KorvoWebApi::staticMetaObject;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            if (meta.method(i).methodType() == QMetaMethod::Signal && meta.method(i).name() == signal)
                connect(&api, meta.method(i), this, slot);
        }
    }

    bool hasCome = false;

private Q_SLOTS:
    void fire()
    {
        if (hasCome)
            return;
        hasCome = true;
        action();
    }

private:
    std::function<void()> action;
};

} // namespace

Q_DECLARE_METATYPE(Trigger)
Q_DECLARE_METATYPE(HostState)

/// Every public call is made from inside a slot of every signal, and while the worker stands in each of its waits.
class tst_Reentrancy : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void cleanup();
    void everySignalHasATrigger();
    void everyCallIsListed();
    void callInsideASlot_data();
    void callInsideASlot();
    void callDuringAWait_data();
    void callDuringAWait();

private:
    QVector<PublicCall> nextCalls();
    void makeCall(Session &session, const PublicCall &call);
    void expectItsEnd(Session &session, const PublicCall &call, Moves moves);
    Place place(const char *name);

    LocalPlatform platform;
    QScopedPointer<LogCapture> log;
    QScopedPointer<QTemporaryDir> folder;
    int projects = 0;
    int pairs = 0; // of which only some are tried
    int cells = 0;

    // What became of the call that a cell is about
    int heardBefore = 0;
    unsigned int startedId = 0;
};

void tst_Reentrancy::initTestCase()
{
    log.reset(new LogCapture);
    folder.reset(new QTemporaryDir);
    QCOMPARE(platform.start({QStringLiteral("--web-copies"), QStringLiteral("none")}), QString());
    makeStoredProjects(platform, STORED_FILES, 20000);
    for (const char *name : {"in/a.txt", "in/b.jpg", "in/c.mp4"})
        QVERIFY(writeFile(folder->path(), QLatin1String(name), randomBytes(20000, uint(name[3]))));
}

void tst_Reentrancy::cleanupTestCase()
{
    std::fprintf(stderr, "%d pairs of a signal or a wait and a call\n", cells);
}

void tst_Reentrancy::cleanup()
{
    platform.clearFaults();
    for (const char *name : {"out", "call"})
        QDir(folder->filePath(QLatin1String(name))).removeRecursively();
}

void tst_Reentrancy::everySignalHasATrigger()
{
    QSet<QByteArray> names = SILENT_SIGNALS;
    for (const Trigger &trigger : triggers())
        names.insert(trigger.signal);
    QCOMPARE(names, methodsOf(QMetaMethod::Signal));
}

void tst_Reentrancy::everyCallIsListed()
{
    QSet<QByteArray> names;
    for (const PublicCall &call : publicCalls())
        names.insert(call.method);
    QVERIFY(names.remove("properties"));
    const QMetaObject &meta = KorvoWebApi::staticMetaObject;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i)
        names.insert(meta.property(i).name()); // the getters have the same names
    QCOMPARE(names, methodsOf(QMetaMethod::Method));
}

void tst_Reentrancy::callInsideASlot_data()
{
    QTest::addColumn<Trigger>("trigger");
    for (const Trigger &trigger : triggers())
        QTest::addRow("%s%s", trigger.signal, trigger.occasion) << trigger;
}

void tst_Reentrancy::callInsideASlot()
{
    QFETCH(Trigger, trigger);
    for (const PublicCall &call : nextCalls()) {
        Session session;
        QVERIFY(session.logIn());
        FirstSignal first(session.api(), trigger.signal, [&] { makeCall(session, call); });
        trigger.act(session, place("out"));
        // On a slow machine a short-lived token may be over before the login is; then nothing expires.
        for (int i = 0;
             trigger.signal == QByteArray("loginExpired") && !eventually([&] { return first.hasCome; }, 4s) && i < 5;
             ++i)
            trigger.act(session, place("out"));
        QVERIFY2(eventually([&] { return first.hasCome; }), call.method);
        expectItsEnd(session, call, trigger.moves);
        if (QTest::currentTestFailed()) {
            qWarning("in the slot of %s: %s()", trigger.signal, call.method);
            return;
        }
        cleanup();
    }
}

void tst_Reentrancy::callDuringAWait_data()
{
    QTest::addColumn<HostState>("wait");
    QCOMPARE(waits().size(), 5);
    for (const HostState &wait : waits())
        QTest::newRow(wait.name) << wait;
}

void tst_Reentrancy::callDuringAWait()
{
    QFETCH(HostState, wait);
    for (const PublicCall &call : nextCalls()) {
        Session session;
        if (!wait.isLogin())
            QVERIFY(session.logIn());
        const int slow = platform.addFault({{QStringLiteral("kind"), QStringLiteral("delay")},
                                            {QStringLiteral("route"), wait.route},
                                            {QStringLiteral("delayMs"), 100}});
        wait.act(session, place("out"));
        QVERIFY(platform.waitForHit(slow));
        makeCall(session, call);
        expectItsEnd(session, call, wait.isLogin() ? Moves::Nothing : Moves::Upload);
        if (QTest::currentTestFailed()) {
            qWarning("during the %s: %s()", wait.name, call.method);
            return;
        }
        cleanup();
    }
}

/// The calls whose turn it is; over all rows every call has its turn several times.
QVector<PublicCall> tst_Reentrancy::nextCalls()
{
    const int every = std::max(1, numberFrom("KORVOWEB_EVERY", EVERY));
    const QVector<PublicCall> all = publicCalls();
    QVector<PublicCall> chosen;
    std::copy_if(all.cbegin(), all.cend(), std::back_inserter(chosen),
                 [&](const PublicCall &) { return pairs++ % every == 0; });
    return chosen;
}

void tst_Reentrancy::makeCall(Session &session, const PublicCall &call)
{
    ++cells;
    heardBefore = session.signalsSeen().events().size();
    QElapsedTimer timer;
    timer.start();
    startedId = call.make(session, place("call"), 1);
    const qint64 milliseconds = timer.elapsed();
    QVERIFY2(milliseconds < CALL_LIMIT_MILLISECONDS, qPrintable(QString::number(milliseconds)));
}

// The call is answered, everything ends, and a transfer that the call had nothing to do with ends well.
void tst_Reentrancy::expectItsEnd(Session &session, const PublicCall &call, Moves moves)
{
    const SignalRecorder &seen = session.signalsSeen();
    QVERIFY(eventually([&] { return call.isAnsweredBy(seen.events().mid(heardBefore), startedId); }));
    QVERIFY(comesToRest(session));
    if (call.reach != PublicCall::Reach::Nothing)
        return;
    if (moves == Moves::Upload)
        QCOMPARE(seen.all("uploadFinished").count({1u}), 1);
    if (moves == Moves::Download)
        QCOMPARE(treeOf(folder->filePath(QStringLiteral("out"))).size(), STORED_FILES);
}

Place tst_Reentrancy::place(const char *name)
{
    return {QStringLiteral("p%1").arg(++projects), folder->filePath(QStringLiteral("in")),
            folder->filePath(QLatin1String(name))};
}

QTEST_GUILESS_MAIN(tst_Reentrancy)

#include "tst_Reentrancy.moc"
