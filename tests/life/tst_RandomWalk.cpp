#include "flow/Folders.h"
#include "life/PublicCalls.h"
#include "life/RandomRun.h"
#include "support/LogCapture.h"

#include <QtCore/QSet>
#include <QtTest/QtTest>

#include <algorithm>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;
using namespace std::chrono_literals;

namespace {

constexpr int MIB = 1024 * 1024;
constexpr int STEPS = 400;
constexpr int STORED_FILES = 5;
constexpr int PROJECTS = 4;

// Seeds of the short runs; KORVOWEB_SEED replaces them by one.
const QVector<quint32> SEEDS{1, 2, 3};

QVector<quint32> seeds()
{
    return qEnvironmentVariableIsSet("KORVOWEB_SEED") ? QVector<quint32>{runSeed()} : SEEDS;
}

/// What the host has heard about one transfer.
struct Heard
{
    int begun = 0;
    int ended = 0;
    int finished = 0;
    int completed = 0;
    int total = -1;
};

bool reportsUpload(const SignalEvent &event)
{
    return event.name.toLower().contains("upload");
}

} // namespace

/// The facade is called in a random order. In the middle little can be foretold; what holds at every step is that nothing
/// is said twice or about an unknown transfer. At the end the folders say whether anything was lost.
class tst_RandomWalk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void anyOrderEndsWell_data();
    void anyOrderEndsWell();

private:
    void prepare(quint32 seed);
    void step(int number);
    const PublicCall &nextCall(int number);
    Place nextPlace();
    void note(const SignalEvent &event);
    void expectOrder(const Heard &heard, const SignalEvent &event);
    void expectDownloads();
    void expectUploads();
    void expectRoundTrip();
    QString source(int project) const { return folder->filePath(QStringLiteral("in%1").arg(project)); }
    QString projectName(int project) const { return QStringLiteral("walk%1-%2").arg(walks).arg(project); }

    LocalPlatform platform;
    QScopedPointer<LogCapture> log;
    QScopedPointer<QTemporaryDir> folder;
    QScopedPointer<Session> session;
    QRandomGenerator random;
    QVector<PublicCall> calls;
    int walks = 0;
    int places = 0;
    int loggedOutFor = 0;
    QMap<unsigned int, Heard> uploads;
    QMap<unsigned int, Heard> downloads;
    QMap<unsigned int, QString> downloadFolders; // of project downloads
    QMap<unsigned int, int> uploadedProjects;    // of plain uploads
    QSet<unsigned int> abortedDownloads;
    int currentProject = 0;
    QStringList complaints;
};

void tst_RandomWalk::initTestCase()
{
    log.reset(new LogCapture);
    QCOMPARE(platform.start({QStringLiteral("--web-copies"), QStringLiteral("none")}), QString());
    makeStoredProjects(platform, STORED_FILES, 300000);
    calls = publicCalls();
}

void tst_RandomWalk::anyOrderEndsWell_data()
{
    QTest::addColumn<quint32>("seed");
    for (const quint32 seed : seeds())
        QTest::addRow("seed %u", seed) << seed;
}

void tst_RandomWalk::anyOrderEndsWell()
{
    QFETCH(quint32, seed);
    prepare(seed);
    const int steps = numberFrom("KORVOWEB_STEPS", STEPS);
    for (int i = 0; i < steps && complaints.isEmpty(); ++i)
        step(i);
    QVERIFY(comesToRest(*session));
    QCOMPARE(complaints, QStringList());
    std::fprintf(stderr, "seed %u: %d calls, %d uploads, %d downloads\n", seed, steps, uploads.size(),
                 downloads.size());
    expectDownloads();
    expectUploads();
    expectRoundTrip();
    session.reset();
    platform.clearFaults();
}

void tst_RandomWalk::prepare(quint32 seed)
{
    ++walks;
    random = QRandomGenerator(seed);
    folder.reset(new QTemporaryDir);
    uploads.clear();
    downloads.clear();
    downloadFolders.clear();
    uploadedProjects.clear();
    abortedDownloads.clear();
    for (int i = 0; i < PROJECTS; ++i) {
        QVERIFY(makeRandomTree(source(i), seed + uint(i), 6));
        QVERIFY(writeFile(source(i), QStringLiteral("large.bin"), randomBytes(4 * MIB + 1 + i, seed)));
    }
    session.reset(new Session);
    QVERIFY(session->logIn());
    session->signalsSeen().onEvent = [this](const SignalEvent &event) { note(event); };
    // Slow enough that calls strike in the middle of transfers.
    platform.addFault({{QStringLiteral("kind"), QStringLiteral("tunnelBandwidth")},
                       {QStringLiteral("count"), 0},
                       {QStringLiteral("bytesPerSecond"), 40 * MIB}});
}

void tst_RandomWalk::step(int number)
{
    const PublicCall &call = nextCall(number);
    const Place place = nextPlace();
    const unsigned int newest = unsigned(std::max(uploads.size(), downloads.size()));
    const unsigned int id
        = newest > 2 && random.bounded(4) != 0 ? newest - random.bounded(3u) : random.bounded(newest + 2);
    if (call.method == QByteArray("abortDownload"))
        abortedDownloads.insert(id);
    const unsigned int started = call.make(*session, place, id);
    if (call.method == QByteArray("downloadProject"))
        downloadFolders.insert(started, place.download);
    if (call.method == QByteArray("uploadProject"))
        uploadedProjects.insert(started, currentProject);
    if (number % 40 == 39) { // now and then everything may end
        QVERIFY(comesToRest(*session));
        return;
    }
    // Some calls are made in one go, others after something was heard.
    const int heard = session->signalsSeen().events().size() + int(random.bounded(6));
    eventually([&] { return session->signalsSeen().events().size() >= heard; },
               std::chrono::milliseconds(random.bounded(40)));
}

// A user who is out does not stay out for long, else nothing would move any more.
const PublicCall &tst_RandomWalk::nextCall(int number)
{
    const auto named = [this](const char *method) -> const PublicCall & {
        return *std::find_if(calls.cbegin(), calls.cend(),
                             [&](const PublicCall &call) { return call.method == QByteArray(method); });
    };
    const bool isOut = session->api().loginStatus() == KorvoWebApi::LoginStatus::LoginStatusLoggedOut;
    loggedOutFor = isOut ? loggedOutFor + 1 : 0;
    if (loggedOutFor > 5)
        return named("login");
    const PublicCall &call = calls.at(int(random.bounded(calls.size())));
    const bool isRare = call.reach == PublicCall::Reach::EveryTransfer;
    return isRare && random.bounded(8) != 0 ? named(number % 2 == 0 ? "uploadProject" : "downloadProject") : call;
}

Place tst_RandomWalk::nextPlace()
{
    currentProject = int(random.bounded(PROJECTS));
    return {projectName(currentProject), source(currentProject),
            folder->filePath(QStringLiteral("out%1").arg(++places))};
}

void tst_RandomWalk::note(const SignalEvent &event)
{
    const QVariant first = event.arguments.value(0);
    if (first.userType() != QMetaType::UInt)
        return;
    Heard &heard = (reportsUpload(event) ? uploads : downloads)[first.toUInt()];
    const QVariant last = event.arguments.last();
    if (event.name == "uploadActiveChanged" || event.name == "downloadActiveChanged")
        ++(last.toBool() ? heard.begun : heard.ended);
    else if (event.name == "uploadFinished" || event.name == "downloadFinished")
        ++heard.finished;
    else if (event.name.startsWith("completed"))
        heard.completed = last.toInt();
    else if (event.name.startsWith("filesTo"))
        heard.total = last.toInt();
    expectOrder(heard, event);
}

void tst_RandomWalk::expectOrder(const Heard &heard, const SignalEvent &event)
{
    const bool isPercent = event.name.contains("Progress");
    const int value = event.arguments.last().toInt();
    const bool isInOrder = heard.begun == 1 && heard.ended <= 1 && heard.completed <= std::max(heard.total, 0)
                           && (!reportsUpload(event) || heard.finished <= 1)
                           && (!isPercent || (value >= 0 && value <= 100));
    if (!isInOrder)
        complaints.append(QStringLiteral("%1 of transfer %2: %3 begun, %4 ended, %5 finished, %6 of %7 files, value %8")
                              .arg(QString::fromLatin1(event.name), event.arguments.first().toString())
                              .arg(heard.begun)
                              .arg(heard.ended)
                              .arg(heard.finished)
                              .arg(heard.completed)
                              .arg(heard.total)
                              .arg(value));
}

// A download that counted every file has every file; one that was cut off has none that is longer than it should be.
void tst_RandomWalk::expectDownloads()
{
    const QString bucket = platform.project(QStringLiteral("stored")).value(QLatin1String("bucket")).toString();
    const QMap<QString, QString> stored = platform.hashes(bucket);
    QCOMPARE(stored.size(), STORED_FILES);
    int whole = 0;
    for (auto download = downloadFolders.cbegin(); download != downloadFolders.cend(); ++download) {
        const Heard heard = downloads.value(download.key());
        QCOMPARE(heard.begun, 1);
        QCOMPARE(heard.ended, 1);
        if (heard.total != STORED_FILES || heard.completed != STORED_FILES || abortedDownloads.contains(download.key()))
            continue;
        ++whole;
        for (auto file = stored.cbegin(); file != stored.cend(); ++file)
            QCOMPARE(sha256(readFile(download.value() + QLatin1Char('/') + file.key())), file.value());
    }
    std::fprintf(stderr, "%d of %d project downloads came whole\n", whole, downloadFolders.size());
}

// An upload that finished has brought every file.
void tst_RandomWalk::expectUploads()
{
    QVector<QStringList> stored;
    for (int i = 0; i < PROJECTS; ++i)
        stored.append(
            platform.hashes(platform.project(projectName(i)).value(QLatin1String("bucket")).toString()).values());
    int whole = 0;
    for (auto upload = uploadedProjects.cbegin(); upload != uploadedProjects.cend(); ++upload) {
        const Heard heard = uploads.value(upload.key());
        QCOMPARE(heard.begun, 1);
        QCOMPARE(heard.ended, 1);
        if (heard.finished == 0)
            continue;
        ++whole;
        const Tree tree = treeOf(source(upload.value()));
        for (auto file = tree.cbegin(); file != tree.cend(); ++file)
            QVERIFY2(stored.at(upload.value()).contains(file.value().section(QLatin1Char(' '), 1)),
                     qPrintable(file.key()));
    }
    std::fprintf(stderr, "%d of %d project uploads came whole\n", whole, uploadedProjects.size());
}

// Whatever has happened to the facade before, a new transfer does what it should.
void tst_RandomWalk::expectRoundTrip()
{
    session->signalsSeen().onEvent = {};
    session->signalsSeen().clear();
    QVERIFY(session->logIn());
    for (int i = 0; i < PROJECTS; ++i) {
        const SignalRecorder &seen = session->signalsSeen();
        const QString out = folder->filePath(QStringLiteral("whole%1").arg(i));
        session->api().uploadProject(projectName(i), projectName(i), source(i), PROJECT_DATE, 3);
        QVERIFY(seen.waitFor("uploadFinished", i + 1, 60s));
        session->api().downloadProject(projectName(i), projectName(i), out);
        QVERIFY(seen.waitFor("downloadFinished", i + 1, 60s));
        QCOMPARE(difference(treeAfterRoundTrip(treeOf(source(i))), treeOf(out)), QString());
    }
    QCOMPARE(session->signalsSeen().errors(), QList<Error>());
}

QTEST_GUILESS_MAIN(tst_RandomWalk)

#include "tst_RandomWalk.moc"
