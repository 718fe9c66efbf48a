// Uploads and downloads folders with faults on two requests of a hundred, over and over, and looks after each job whether
// everything that it took has been given back.
#include "flow/Folders.h"
#include "flow/Session.h"
#include "soak/ProcessState.h"
#include "support/LogCapture.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QRandomGenerator>
#include <QtCore/QTextStream>

#include <algorithm>
#include <cstdio>
#include <utility>
#include <vector>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

constexpr int FAULT_PERCENT = 2;
constexpr int MOST_REQUESTS_OF_A_JOB = 1000; // faults are laid out for so many
constexpr int FILES = 40;
constexpr int LARGE_BYTES = 5 * 1024 * 1024; // in two parts
constexpr int PROJECTS = 10;
constexpr int WARM_UP_JOBS = 3;
constexpr int JOBS_BEFORE_SLOPE = 10; // buffers and caches have found their size by then
constexpr auto JOB_LIMIT = std::chrono::minutes(3);
constexpr auto WARM_UP_PAUSE = std::chrono::milliseconds(1000);
constexpr auto RETURN_LIMIT = std::chrono::milliseconds(15000);
constexpr double KIB = 1024.0;

/// Faults that a client can notice on one request; those that take half a minute each are left to other tests.
const char *const KINDS[] = {"status",         "closeWithoutAnswer", "resetInRequest", "resetBeforeAnswer",
                             "resetInHeaders", "resetAfterHeaders",  "resetInBody",    "resetAfterBody",
                             "cutBody",        "noContentLength",    "badStatusLine",  "delay"};

QJsonObject randomFault(int nth, QRandomGenerator &random)
{
    const char *const kind = KINDS[random.bounded(int(std::size(KINDS)))];
    return {
        {QStringLiteral("kind"), QLatin1String(kind)}, {QStringLiteral("nth"), nth}, {QStringLiteral("delayMs"), 50}};
}

QJsonObject randomFaults(QRandomGenerator &random)
{
    QJsonArray faults;
    for (int request = 1; request <= MOST_REQUESTS_OF_A_JOB; ++request) {
        if (random.bounded(100) < FAULT_PERCENT)
            faults.append(randomFault(request, random));
    }
    return {{QStringLiteral("set"), faults}};
}

/// The same names for every job, so that the platform's disk does not fill up, but other content and other sizes.
void makeFolder(const QString &root, int job)
{
    static const int sizes[] = {1, 1000, 20000, 70000, 200000};
    static const char *const extensions[] = {".txt", ".jpg", ".mp4", ".db3", ".pdf"};
    for (int i = 0; i < FILES; ++i) {
        const QString name = QStringLiteral("Docs %1/file %2").arg(i % 4).arg(i) + QLatin1String(extensions[i % 5]);
        if (!writeFile(root, name, randomBytes(sizes[i % 5] + job % 997, quint32(job * FILES + i))))
            qFatal("cannot write below %s", qPrintable(root));
    }
    if (!writeFile(root, QStringLiteral("large.bin"), randomBytes(LARGE_BYTES + job % 997, quint32(job))))
        qFatal("cannot write below %s", qPrintable(root));
}

struct JobResult
{
    int requests = 0;
    int faults = 0;
    int errors = 0;
    QString trouble; // what must not happen
};

class Soak
{
public:
    explicit Soak(quint32 seed)
        : random(seed)
    {
    }

    void start();
    JobResult runJob(int job);

private:
    QString moveFolder(Session &session, const QString &root, int job, int *errors);
    bool upload(Session &session, const QString &id, const QString &path);
    bool download(Session &session, const QString &id, const QString &path);
    void countRequests(JobResult *result);

    LocalPlatform platform;
    QRandomGenerator random;
};

void Soak::start()
{
    const QString trouble = platform.start();
    if (!trouble.isEmpty())
        qFatal("%s", qPrintable(trouble));
}

JobResult Soak::runJob(int job)
{
    JobResult result;
    platform.clearFaults();
    platform.startJournal();
    const QTemporaryDir folder; // longer than the session: after an error, other files may still be on their way
    {
        Session session;
        // The login is one request in a hundred; it decides whether there is a job at all.
        if (!session.logIn()) {
            result.trouble = QStringLiteral("the login failed");
            return result;
        }
        platform.post(QStringLiteral("faults"), randomFaults(random));
        result.trouble = moveFolder(session, folder.path(), job, &result.errors);
    }
    countRequests(&result);
    return result;
}

/// There and back; what is wrong with what has come back, unless an error was told.
QString Soak::moveFolder(Session &session, const QString &root, int job, int *errors)
{
    const QString id = QStringLiteral("soak-%1").arg(job % PROJECTS);
    const QString in = root + QStringLiteral("/in");
    const QString out = root + QStringLiteral("/out");
    makeFolder(in, job);
    const bool ended = upload(session, id, in) && download(session, id, out);
    *errors = session.signalsSeen().errors().size();
    if (!ended)
        return QStringLiteral("a transfer did not come to its end");
    if (*errors > 0)
        return {};
    return difference(treeAfterRoundTrip(treeOf(in)), treeOf(out));
}

bool Soak::upload(Session &session, const QString &id, const QString &path)
{
    session->uploadProject(id, id, path, PROJECT_DATE, 3);
    const SignalRecorder &seen = session.signalsSeen();
    return eventually(
        [&] {
            const bool hasFailed = !seen.errors().isEmpty() && !session->anyUploadActive();
            return seen.count("uploadFinished") > 0 || hasFailed;
        },
        JOB_LIMIT);
}

bool Soak::download(Session &session, const QString &id, const QString &path)
{
    session->downloadProject(id, id, path, 3);
    const SignalRecorder &seen = session.signalsSeen();
    return eventually(
        [&] {
            const QList<QVariantList> completed = seen.all("completedDownloadFilesChanged");
            const QList<QVariantList> total = seen.all("filesToDownloadTotalChanged");
            const bool isWhole = seen.count("downloadFinished") > 0 && !completed.isEmpty() && !total.isEmpty()
                                 && completed.last().last() == total.last().last();
            const bool hasFailed = !seen.errors().isEmpty() && !session->anyDownloadActive();
            return isWhole || hasFailed;
        },
        JOB_LIMIT);
}

void Soak::countRequests(JobResult *result)
{
    const QJsonArray entries = platform.journalEntries();
    result->requests = entries.size();
    for (const QJsonValue &entry : entries)
        result->faults += entry[QLatin1String("fault")].isUndefined() ? 0 : 1;
}

struct Sample
{
    double requests; // so far
    ProcessState state;
};

/// Bytes per request of the straight line that fits best.
double slope(const std::vector<Sample> &samples, qint64 ProcessState::*bytes)
{
    double x = 0;
    double y = 0;
    for (const Sample &sample : samples) {
        x += sample.requests / double(samples.size());
        y += double(sample.state.*bytes) / double(samples.size());
    }
    double both = 0;
    double square = 0;
    for (const Sample &sample : samples) {
        both += (sample.requests - x) * (double(sample.state.*bytes) - y);
        square += (sample.requests - x) * (sample.requests - x);
    }
    return square > 0 ? both / square : 0;
}

struct Totals
{
    quint32 seed = 0;
    double minutes = 0;
    int jobs = 0;
    int requests = 0;
    int faults = 0;
    int jobsWithErrors = 0;
    int troubles = 0;
    ProcessState first;   // after the warm-up: what may be held
    ProcessState settled; // where the slopes begin
    ProcessState last;
    double residentSlope = 0;
    double heapSlope = 0;
};

QString mib(qint64 bytes)
{
    return QString::number(double(bytes) / KIB / KIB, 'f', 1);
}

QString reportOf(const Totals &totals)
{
    QString text;
    QTextStream out(&text);
    out << "# Soak\n\n"
        << "Written by `scripts/soak`: one process uploads a folder of " << FILES + 1
        << " files, one of them in parts, and downloads it again,\n"
        << "over and over with a new facade each time, while " << FAULT_PERCENT
        << " % of the requests meet a fault of the local platform. Measured\n"
        << "after each job, when the facade is gone: counts from job " << WARM_UP_JOBS << " on, memory from job "
        << JOBS_BEFORE_SLOPE << " on.\n\n"
        << "| | |\n|---|---:|\n"
        << "| duration | " << QString::number(totals.minutes, 'f', 1) << " min |\n"
        << "| seed | " << totals.seed << " |\n"
        << "| jobs (there and back) | " << totals.jobs << " |\n"
        << "| requests | " << totals.requests << " |\n"
        << "| faults met | " << totals.faults << " ("
        << QString::number(100.0 * totals.faults / qMax(1, totals.requests), 'f', 2) << " %) |\n"
        << "| jobs that told an error | " << totals.jobsWithErrors << " |\n"
        << "| jobs that lost something, hung, or kept something | " << totals.troubles << " |\n\n"
        << "| | at first | at the end | slope | per million requests |\n|---|---:|---:|---:|---:|\n"
        << "| resident memory | " << mib(totals.settled.residentBytes) << " MiB | " << mib(totals.last.residentBytes)
        << " MiB | " << QString::number(totals.residentSlope, 'f', 2) << " bytes a request | "
        << mib(qint64(totals.residentSlope * 1e6)) << " MiB |\n"
        << "| heap in use | " << mib(totals.settled.heapBytes) << " MiB | " << mib(totals.last.heapBytes) << " MiB | "
        << QString::number(totals.heapSlope, 'f', 2) << " bytes a request | " << mib(qint64(totals.heapSlope * 1e6))
        << " MiB |\n"
        << "| open descriptors | " << totals.first.descriptors << " | " << totals.last.descriptors << " | | |\n"
        << "| threads | " << totals.first.threads << " | " << totals.last.threads << " | | |\n"
        << "| live QObjects | " << totals.first.objects << " | " << totals.last.objects << " | | |\n";
    out.flush();
    return text;
}

bool writeReport(const QString &path, const Totals &totals)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(reportOf(totals).toUtf8()) > 0;
}

void tell(int job, const JobResult &result, const ProcessState &state)
{
    std::printf("job %d: %d requests, %d faults, %d errors; %s MiB resident, %s%s%s\n", job, result.requests,
                result.faults, result.errors, qPrintable(mib(state.residentBytes)), qPrintable(state.words()),
                result.trouble.isEmpty() ? "" : "; TROUBLE: ", qPrintable(result.trouble));
    std::fflush(stdout);
}

/// All jobs, and what they leave behind.
class Course
{
public:
    explicit Course(quint32 seed)
        : work(seed)
    {
        totals.seed = seed;
    }

    void run(int minutes, int jobs);
    const Totals &figures() const { return totals; }

private:
    void runJob();
    ProcessState stateAfterJob() const;
    void add(const JobResult &result, const ProcessState &state);

    LogCapture log; // faults are logged as failures; here they are wanted
    Soak work;
    Totals totals;
    std::vector<Sample> samples;
};

void Course::run(int minutes, int jobs)
{
    QElapsedTimer clock;
    clock.start();
    work.start();
    while (totals.jobs < jobs || clock.elapsed() < minutes * 60000LL)
        runJob();
    totals.minutes = double(clock.elapsed()) / 60000;
    totals.residentSlope = slope(samples, &ProcessState::residentBytes);
    totals.heapSlope = slope(samples, &ProcessState::heapBytes);
}

void Course::runJob()
{
    ++totals.jobs;
    JobResult result = work.runJob(totals.jobs);
    log.clear();
    const ProcessState state = stateAfterJob();
    if (totals.jobs == WARM_UP_JOBS)
        totals.first = state;
    if (totals.jobs == JOBS_BEFORE_SLOPE)
        totals.settled = state;
    if (totals.jobs > WARM_UP_JOBS && !state.holdsNoMoreThan(totals.first) && result.trouble.isEmpty())
        result.trouble = QStringLiteral("not given back: at first ") + totals.first.words();
    tell(totals.jobs, result, state);
    add(result, state);
}

// Sockets and their threads take a moment to go.
ProcessState Course::stateAfterJob() const
{
    const bool isWarm = totals.jobs > WARM_UP_JOBS;
    eventually([&] { return isWarm && ProcessState::now().holdsNoMoreThan(totals.first); },
               isWarm ? RETURN_LIMIT : WARM_UP_PAUSE);
    return ProcessState::now();
}

void Course::add(const JobResult &result, const ProcessState &state)
{
    totals.requests += result.requests;
    totals.faults += result.faults;
    totals.jobsWithErrors += result.errors > 0 ? 1 : 0;
    totals.troubles += result.trouble.isEmpty() ? 0 : 1;
    totals.last = state;
    if (totals.jobs >= JOBS_BEFORE_SLOPE)
        samples.push_back({double(totals.requests), state});
}

} // namespace

int main(int argc, char *argv[])
{
    countObjects();
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption minutes(QStringLiteral("minutes"), QStringLiteral("how long, at least"),
                                     QStringLiteral("N"), QStringLiteral("0"));
    const QCommandLineOption jobs(QStringLiteral("jobs"), QStringLiteral("how many jobs, at least"),
                                  QStringLiteral("N"), QString::number(WARM_UP_JOBS + 2));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("seed of the faults"), QStringLiteral("N"),
                                  QStringLiteral("1"));
    const QCommandLineOption report(QStringLiteral("report"), QStringLiteral("where the figures go"),
                                    QStringLiteral("FILE"));
    parser.addOptions({minutes, jobs, seed, report});
    parser.process(application);
    Course course(parser.value(seed).toUInt());
    course.run(parser.value(minutes).toInt(), parser.value(jobs).toInt());
    if (parser.isSet(report) && !writeReport(parser.value(report), course.figures()))
        qFatal("cannot write %s", qPrintable(parser.value(report)));
    return course.figures().troubles == 0 ? 0 : 1;
}
