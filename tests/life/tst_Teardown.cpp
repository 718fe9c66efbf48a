#include "flow/Folders.h"
#include "flow/HostStates.h"
#include "life/RandomRun.h"
#include "support/LogCapture.h"

#include <QtCore/QEventLoop>
#include <QtCore/QTimer>
#include <QtTest/QtTest>

#include <algorithm>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

constexpr int MIB = 1024 * 1024;
constexpr int ROUNDS = 300; // of all states together, unless KORVOWEB_ROUNDS says otherwise
#ifdef __SANITIZE_THREAD__ // makes the encoding of a part, which nothing interrupts, some ten times slower
constexpr qint64 DESTRUCTION_LIMIT_MILLISECONDS = 3000;
#else
constexpr qint64 DESTRUCTION_LIMIT_MILLISECONDS = 1000;
#endif

const QString NOTHING; // is held up

void doNothing(Session &, const Place &) { }

void uploadAndDownload(Session &session, const Place &place)
{
    uploadFolder(session, place);
    downloadFolder(session, place);
    downloadData(session, place);
}

void pauseAll(Session &session, const Place &place)
{
    uploadAndDownload(session, place);
    session->pauseUpload(1);
    session->pauseDownload(1);
    session->pauseDownload(2);
}

void abortAll(Session &session, const Place &place)
{
    uploadAndDownload(session, place);
    session->abortUpload(1);
    session->abortDownload(1);
    session->abortDownload(2);
}

void logOutInTheMiddle(Session &session, const Place &place)
{
    uploadAndDownload(session, place);
    session->logout();
    session->login(EXPIRING_USER, EXPIRING_PASSWORD);
}

void askManyQuestions(Session &session, const Place &)
{
    for (int i = 0; i < 20; ++i) {
        session->queryRemoteProjects();
        session->queryUploadProjectStatus({QStringLiteral("stored")});
        session->startAllProjectsMediaDownload(QStringLiteral("stored"));
        session->resetPassword(USER);
    }
}

// Besides those that an exchange standing still makes: states in which nothing stands still.
QVector<HostState> movingStates()
{
    return {
        {"idle", NOTHING, NOTHING, doNothing},
        {"transfers running", NOTHING, NOTHING, uploadAndDownload},
        {"transfers paused", NOTHING, NOTHING, pauseAll},
        {"transfers aborted", NOTHING, NOTHING, abortAll},
        {"logged out and in again", NOTHING, NOTHING, logOutInTheMiddle},
        {"answers queued", NOTHING, NOTHING, askManyQuestions},
        {"login under way", NOTHING, NOTHING, [](Session &session, const Place &) { session->login(USER, PASSWORD); }},
        {"second factor under way", NOTHING, NOTHING,
         [](Session &session, const Place &) { session->login(SECURE_USER, SECURE_PASSWORD); }},
    };
}

/// Runs the event loop for so long.
void runFor(std::chrono::microseconds duration)
{
    QEventLoop loop;
    QTimer end;
    end.setTimerType(Qt::PreciseTimer);
    QObject::connect(&end, &QTimer::timeout, &loop, &QEventLoop::quit);
    end.start(std::chrono::duration_cast<std::chrono::milliseconds>(duration));
    loop.exec();
}

} // namespace

Q_DECLARE_METATYPE(HostState)

/// The facade is destroyed at random instants. Whatever it was doing: it goes within a second, and nothing is heard of it
/// any more. What a sanitizer has to say ends the program.
class tst_Teardown : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void facadeGoesAtAnyInstant_data();
    void facadeGoesAtAnyInstant();

private:
    void destroyOnce(const HostState &state, QRandomGenerator &random);
    bool waitForInstant(int fault, QRandomGenerator &random);
    bool closeInSlot(int number);
    void close();

    LocalPlatform platform;
    QScopedPointer<LogCapture> log;
    QTemporaryDir folder;
    QScopedPointer<Session> session;
    int projects = 0;
    int destructions = 0;
    qint64 longest = 0; // milliseconds
};

void tst_Teardown::initTestCase()
{
    log.reset(new LogCapture);
    runSeed();
    QCOMPARE(platform.start({QStringLiteral("--web-copies"), QStringLiteral("none")}), QString());
    QJsonArray objects;
    for (int i = 0; i < 6; ++i)
        objects.append(QJsonObject{{QStringLiteral("key"), QStringLiteral("sub/f%1").arg(i)},
                                   {QStringLiteral("size"), MIB / 2 + i}});
    platform.addProject(QStringLiteral("stored"), QStringLiteral("stored"), objects);
    QVERIFY(writeFile(folder.path(), QStringLiteral("in/large.bin"), randomBytes(4 * MIB + 1, 1)));
    QVERIFY(writeFile(folder.path(), QStringLiteral("in/medium.bin"), randomBytes(MIB, 2)));
    QVERIFY(writeFile(folder.path(), QStringLiteral("in/video.mp4"), randomBytes(1000, 3)));
}

void tst_Teardown::cleanupTestCase()
{
    std::fprintf(stderr, "%d destructions, the longest took %lld ms\n", destructions, longest);
}

void tst_Teardown::facadeGoesAtAnyInstant_data()
{
    QTest::addColumn<HostState>("state");
    const QVector<HostState> states = statesOnTheWire() + movingStates();
    for (const HostState &state : states)
        QTest::newRow(state.name) << state;
}

void tst_Teardown::facadeGoesAtAnyInstant()
{
    QFETCH(HostState, state);
    const int states = statesOnTheWire().size() + movingStates().size();
    const int rounds = (numberFrom("KORVOWEB_ROUNDS", ROUNDS) + states - 1) / states;
    for (int i = 0; i < rounds; ++i) {
        QRandomGenerator random(seedOf(state.name, i));
        destroyOnce(state, random);
        if (QTest::currentTestFailed()) {
            qWarning("in round %d of KORVOWEB_SEED=%u", i, runSeed());
            return;
        }
    }
}

void tst_Teardown::destroyOnce(const HostState &state, QRandomGenerator &random)
{
    session.reset(new Session);
    if (!state.isLogin())
        QVERIFY(session->logIn());
    const int fault = state.fault.isEmpty() ? 0 : platform.addFault(state.fault, state.route, 0);
    const Place place{QStringLiteral("p%1").arg(++projects), folder.filePath(QStringLiteral("in")),
                      folder.filePath(QStringLiteral("out"))};
    state.act(*session, place);
    if (waitForInstant(fault, random))
        close();
    const int heard = session->signalsSeen().events().size();
    QCoreApplication::processEvents();
    QCOMPARE(session->signalsSeen().events().size(), heard);
    platform.clearFaults();
    QDir(place.download).removeRecursively();
}

// False when the facade has gone meanwhile.
bool tst_Teardown::waitForInstant(int fault, QRandomGenerator &random)
{
    enum { AtOnce, SomeTimeLater, InsideASlot, WhenHeldUp, Kinds };
    const int kind = int(random.bounded(fault == 0 ? WhenHeldUp : Kinds));
    const int number = int(random.bounded(1, 40));
    const std::chrono::milliseconds later(random.bounded(80));
    if (kind == SomeTimeLater)
        runFor(later);
    if (kind == InsideASlot)
        return !closeInSlot(number);
    if (kind == WhenHeldUp)
        platform.waitForHit(fault);
    return true;
}

// Inside the slot of that signal, if so many come in a while.
bool tst_Teardown::closeInSlot(int number)
{
    int seen = 0;
    bool closed = false;
    session->signalsSeen().onEvent = [&](const SignalEvent &) {
        if (++seen == number) {
            closed = true;
            close();
        }
    };
    eventually([&] { return closed; }, std::chrono::milliseconds(150));
    session->signalsSeen().onEvent = {};
    return closed;
}

void tst_Teardown::close()
{
    const qint64 milliseconds = session->close();
    ++destructions;
    longest = std::max(longest, milliseconds);
    QVERIFY2(milliseconds < DESTRUCTION_LIMIT_MILLISECONDS, qPrintable(QString::number(milliseconds)));
}

QTEST_GUILESS_MAIN(tst_Teardown)

#include "tst_Teardown.moc"
