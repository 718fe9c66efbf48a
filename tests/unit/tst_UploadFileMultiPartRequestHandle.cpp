#include "handles/UploadFileMultiPartRequestHandle.h"

#include "support/FakeNetwork.h"
#include "support/LogCapture.h"
#include "support/ScriptedServer.h"

#include <QtCore/QEventLoop>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTimer>
#include <QtTest/QtTest>

#include <functional>
#include <memory>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

constexpr int MEBIBYTE = 1024 * 1024;
constexpr int PART = 4 * MEBIBYTE;
constexpr int TURNS_A_PART = 20; // of the event loop, at most; a part is read in slices, with one in between

const QByteArray INIT_ANSWER
    = "<InitMultipartUploadResponse><MultipartUploadId>id-7</MultipartUploadId></InitMultipartUploadResponse>";
const QByteArray PART_ANSWER = "<PutMultipartUploadResponse/>";
const QByteArray COMPLETE_ANSWER = "<CompleteMultipartUploadResponse/>";
const QByteArray ABORT_ANSWER = "<AbortMultipartUploadResponse/>";

// Content of which every stretch is different.
QByteArray sampleContent(int size)
{
    static const QByteArray longest = [] {
        QByteArray content;
        for (int i = 0; content.size() < 3 * PART; ++i)
            content += QByteArray::number(i);
        return content;
    }();
    return longest.left(size);
}

// What a part body has been told. Its owner, the handle, may be gone by then.
struct PartRecord
{
    QStringList calls; // slices by their length
    QList<QByteArray> spent;
    QByteArray content;
    std::function<void()> atSlice; // runs inside each
};

class RecordingPartBody : public PartBody
{
public:
    explicit RecordingPartBody(PartRecord *usedRecord)
        : record(usedRecord)
    {
    }

    void begin(int expectedBytes, QByteArray spent) override
    {
        record->calls.append(QStringLiteral("begin %1").arg(expectedBytes));
        record->spent.append(spent);
        record->content.clear();
    }

    void add(const QByteArray &bytes) override
    {
        record->calls.append(QString::number(bytes.size()));
        record->content += bytes;
        const auto atSlice = record->atSlice; // a copy: it may replace itself
        if (atSlice)
            atSlice();
    }

    void drop() override { record->calls.append(QStringLiteral("drop")); }

private:
    PartRecord *record;
};

} // namespace

class tst_UploadFileMultiPartRequestHandle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void newHandleHasSentNothing();
    void missingFileIsLogged();

    void fileIsCutIntoParts_data();
    void fileIsCutIntoParts();
    void partsTogetherAreTheFile();
    void emptyFileHasNoPart();
    void partIsGoneBeforeTheNextIsRead();
    void spentBodyIsHandedOn();
    void bodyOfAFileThatEndsServesTheNext_data();
    void bodyOfAFileThatEndsServesTheNext();
    void noBodyOutlivesTheLastFile();
    void bodyInFlightIsNotHandedOn();
    void pauseKeepsNoSpentBody();
    void filesInFlightDoNotMixTheirParts();

    void partIsReadInSlices();
    void resumeReadsInOneGo();
    void pauseAmidAPart_data();
    void pauseAmidAPart();
    void abortAmidAPart();
    void fileThatShrinksAmidAPart();
    void filesReadOneAfterTheOther();
    void fileThatEndsAmidAPartLetsTheNextRead_data();
    void fileThatEndsAmidAPartLetsTheNextRead();
    void pausedFileDoesNotKeepTheNextFromReading();
    void resumeWaitsForItsTurn();

    void firstMarkerDecides_data();
    void firstMarkerDecides();
    void answerWithoutAMarkerFailsTheFile_data();
    void answerWithoutAMarkerFailsTheFile();
    void refusedPartIsNotSkipped();
    void endsAreSuccessesWhateverTheNetworkSaid();
    void abortThatNobodyAskedFor();
    void answersAfterTheEndAreIgnored();

    void failureAfterAllAttempts_data();
    void failureAfterAllAttempts();
    void attemptsAreCountedOverTheWholeUpload();

    void noOrderLosesOrDoublesAPart_data();
    void noOrderLosesOrDoublesAPart();
    void pauseLetsThePartInFlightRunOut();
    void resumeDoesNotSkipAFailedPart();

    void abortInEachState_data();
    void abortInEachState();
    void abortEndsWithAnyFinalAnswer_data();
    void abortEndsWithAnyFinalAnswer();
    void abortIsSentOnce();
    void resumeAfterAnAbortSendsNothing();
    void abortAfterAFailureTellsTheServer();
    void uploadCompletedMeanwhile();

    void fileThatShrinksIsAborted_data();
    void fileThatShrinksIsAborted();

    void onlyBytesOfTheFileCount();
    void smallerFigureIsNoStepBack();

    void receiverMayDeleteTheHandle_data();
    void receiverMayDeleteTheHandle();

    void serverTakesTheFile();
    void serverRefusesNowAndThen();

private:
    void makeHandle(int fileBytes);
    void follow(QNetworkAccessManager *manager, const QByteArray &root);
    void send(const QByteArray &body);
    void perform(const QString &steps);
    void performStep(QChar step);
    void letGoOn();
    static void letAllGoOn();
    std::unique_ptr<UploadFileMultiPartRequestHandle> otherFile(int bytes) const;
    static void begin(UploadFileMultiPartRequestHandle &file);
    FakeReply *reply() { return static_cast<FakeNetwork *>(access)->last(); }
    QString localPath() const { return folder.filePath(QStringLiteral("video ü.mp4")); }

    QTemporaryDir folder;
    QByteArray content;
    std::unique_ptr<FakeNetwork> network;
    std::unique_ptr<LogCapture> log;
    std::unique_ptr<UploadFileMultiPartRequestHandle> handle;
    QNetworkAccessManager *access = nullptr;
    QByteArray serverRoot;
    QStringList events;   // what the handle has asked for and reported, in order; no progress
    QStringList progress; // the reports of progress
    QByteArray uploadedContent;
};

void tst_UploadFileMultiPartRequestHandle::initTestCase()
{
    registerResponseMetaTypes();
}

void tst_UploadFileMultiPartRequestHandle::init()
{
    network = std::make_unique<FakeNetwork>();
    log = std::make_unique<LogCapture>();
}

void tst_UploadFileMultiPartRequestHandle::cleanup()
{
    handle.reset();
    log.reset();
    network.reset();
}

void tst_UploadFileMultiPartRequestHandle::makeHandle(int fileBytes)
{
    content = sampleContent(fileBytes);
    QFile file(localPath());
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(fileBytes));
    file.close();
    const UploadFileDescriptor description{QStringLiteral("folder"), localPath(), QStringLiteral("key"),
                                           QStringLiteral("bucket"), true};
    handle = std::make_unique<UploadFileMultiPartRequestHandle>(description);
    events.clear();
    progress.clear();
    uploadedContent.clear();
    follow(network.get(), "https://service.example");
}

// Does what the communicator does: sends each request that the handle asks for.
void tst_UploadFileMultiPartRequestHandle::follow(QNetworkAccessManager *manager, const QByteArray &root)
{
    using Handle = UploadFileMultiPartRequestHandle;
    access = manager;
    serverRoot = root;
    handle->disconnect(this);
    connect(handle.get(), &Handle::uploadNextPart, this, [this](const QString &id, const QByteArray &part, int number) {
        events.append(QStringLiteral("part %1 of %2: %3").arg(number).arg(id).arg(part.size()));
        uploadedContent += part;
        send("part " + QByteArray::number(number));
    });
    connect(handle.get(), &Handle::finishUpload, this, [this](const QString &id, const QString &folderName) {
        events.append(QStringLiteral("complete ") + id + QLatin1Char(' ') + folderName);
        send("complete");
    });
    connect(handle.get(), &Handle::abortUpload, this, [this](const QString &id) {
        events.append(QStringLiteral("abort ") + id);
        send("abort");
    });
    connect(handle.get(), &Handle::requestFinished, this, [this](const UploadFileMultiPartFinishedResponse &response) {
        events.append(QStringLiteral("finished %1 %2")
                          .arg(response.completed() ? QStringLiteral("whole") : QStringLiteral("not"))
                          .arg(int(response.error())));
    });
    connect(handle.get(), &Handle::uploadFailed, this,
            [this](Error error) { events.append(QStringLiteral("failed %1").arg(int(error))); });
    connect(handle.get(), &RequestHandle::errorOccurred, this,
            [this](Error error) { events.append(QStringLiteral("error %1").arg(int(error))); });
    connect(handle.get(), &Handle::uploadedBytes, this,
            [this](qint64 total, qint64 step, qint64 expected, const QString &path) {
                progress.append(QStringLiteral("%1 %2 %3").arg(total).arg(step).arg(expected)
                                + (path == localPath() ? QString() : QStringLiteral(" wrong file")));
            });
    send("init");
}

void tst_UploadFileMultiPartRequestHandle::send(const QByteArray &body)
{
    const QByteArray step = body.split(' ').first();
    handle->setReply(access->put(QNetworkRequest(QUrl::fromEncoded(serverRoot + '/' + step)), body));
    handle->enableRetry(access, body);
}

// One letter a step: i, o and c answer the start, a part and the completion; a answers an abort, e is an empty answer;
// f refuses with 503, x with 404; P pauses, R resumes, A aborts. Capitals come from the job, the others from the server.
void tst_UploadFileMultiPartRequestHandle::perform(const QString &steps)
{
    for (const QChar step : steps) {
        performStep(step);
        letGoOn();
    }
}

// A part is asked for once the event loop has let go of the one before.
void tst_UploadFileMultiPartRequestHandle::letGoOn()
{
    for (int turn = 0; handle && turn < TURNS_A_PART; ++turn)
        QCoreApplication::sendPostedEvents(handle.get(), QEvent::MetaCall);
}

void tst_UploadFileMultiPartRequestHandle::letAllGoOn()
{
    for (int turn = 0; turn < 3 * TURNS_A_PART; ++turn)
        QCoreApplication::sendPostedEvents();
}

// A file of nothing but "o".
std::unique_ptr<UploadFileMultiPartRequestHandle> tst_UploadFileMultiPartRequestHandle::otherFile(int bytes) const
{
    QFile file(folder.filePath(QStringLiteral("other.mp4")));
    if (file.open(QIODevice::WriteOnly))
        file.write(QByteArray(bytes, 'o'));
    return std::make_unique<UploadFileMultiPartRequestHandle>(
        UploadFileDescriptor{QString(), file.fileName(), QString(), QString(), true});
}

void tst_UploadFileMultiPartRequestHandle::begin(UploadFileMultiPartRequestHandle &file)
{
    auto *const answer = new FakeReply;
    file.setReply(answer);
    answer->finish(INIT_ANSWER);
}

void tst_UploadFileMultiPartRequestHandle::performStep(QChar step)
{
    switch (step.toLatin1()) {
    case 'i': reply()->finish(INIT_ANSWER); return;
    case 'o': reply()->finish(PART_ANSWER); return;
    case 'c': reply()->finish(COMPLETE_ANSWER); return;
    case 'a': reply()->finish(ABORT_ANSWER); return;
    case 'e': reply()->finish(); return;
    case 'f': reply()->fail(QNetworkReply::ServiceUnavailableError); return;
    case 'x': reply()->fail(QNetworkReply::ContentNotFoundError); return;
    case 'P': handle->pause(); return;
    case 'R': handle->resume(); return;
    case 'A': handle->abort(); return;
    default: QFAIL("no such step");
    }
}

void tst_UploadFileMultiPartRequestHandle::newHandleHasSentNothing()
{
    const QDateTime before = QDateTime::currentDateTimeUtc();
    makeHandle(10);
    QVERIFY(handle->isFileOpen());
    QVERIFY(!handle->isUploaded());
    QVERIFY(handle->begun() >= before && handle->begun() <= QDateTime::currentDateTimeUtc());
    QCOMPARE(handle->begun().timeSpec(), Qt::UTC);
    QCOMPARE(network->count(), 1);
    QVERIFY(events.isEmpty());
    handle->reportStart();
    QCOMPARE(progress, QStringList{QStringLiteral("0 0 10")});
}

void tst_UploadFileMultiPartRequestHandle::missingFileIsLogged()
{
    const QString missing = folder.filePath(QStringLiteral("missing %1"));
    const UploadFileMultiPartRequestHandle unopened({{}, missing, {}, {}, false});
    QVERIFY(!unopened.isFileOpen());
    QCOMPARE(log->messages(),
             QStringList{QStringLiteral("Couldn't open upload file: \"") + missing + QLatin1Char('"')});
    QCOMPARE(log->entries().first().level, 1);
    QCOMPARE(log->entries().first().category, QStringLiteral("Korvo::Web::UploadFileMultiPartRequestHandle"));
}

void tst_UploadFileMultiPartRequestHandle::fileIsCutIntoParts_data()
{
    QTest::addColumn<int>("fileBytes");
    QTest::addColumn<QStringList>("parts");
    const QString whole = QStringLiteral("part 1 of id-7: 4194304");
    QTest::newRow("a byte") << 1 << QStringList{QStringLiteral("part 1 of id-7: 1")};
    QTest::newRow("a byte less than a part") << PART - 1 << QStringList{QStringLiteral("part 1 of id-7: 4194303")};
    QTest::newRow("exactly a part") << PART << QStringList{whole};
    QTest::newRow("a byte more than a part") << PART + 1 << QStringList{whole, QStringLiteral("part 2 of id-7: 1")};
    QTest::newRow("two parts") << 2 * PART << QStringList{whole, QStringLiteral("part 2 of id-7: 4194304")};
}

void tst_UploadFileMultiPartRequestHandle::fileIsCutIntoParts()
{
    QFETCH(int, fileBytes);
    QFETCH(QStringList, parts);
    makeHandle(fileBytes);
    perform(QStringLiteral("i"));
    for (int i = 1; i < parts.size(); ++i)
        perform(QStringLiteral("o"));
    QCOMPARE(events, parts);
    perform(QStringLiteral("oc"));
    QCOMPARE(events, parts + QStringList({QStringLiteral("complete id-7 folder"), QStringLiteral("finished whole 0")}));
    QVERIFY(uploadedContent == content);
    QVERIFY(handle->isUploaded());
    QVERIFY(!handle->isInFlight());
    QCOMPARE(log->count(), 0);
}

void tst_UploadFileMultiPartRequestHandle::partsTogetherAreTheFile()
{
    makeHandle(2 * PART + 12345);
    perform(QStringLiteral("ioooc"));
    QVERIFY(uploadedContent == content);
    QCOMPARE(events.last(), QStringLiteral("finished whole 0"));
}

void tst_UploadFileMultiPartRequestHandle::emptyFileHasNoPart()
{
    makeHandle(0);
    perform(QStringLiteral("i"));
    QCOMPARE(events, QStringList{QStringLiteral("complete id-7 folder")});
    perform(QStringLiteral("c"));
    QCOMPARE(events.last(), QStringLiteral("finished whole 0"));
}

// Each holds megabytes, in its reply.
void tst_UploadFileMultiPartRequestHandle::partIsGoneBeforeTheNextIsRead()
{
    makeHandle(PART + 1);
    perform(QStringLiteral("i"));
    const QPointer<FakeReply> first(reply());
    bool isGone = false;
    QEventLoop loop;
    connect(handle.get(), &UploadFileMultiPartRequestHandle::uploadNextPart, &loop, [&] {
        isGone = first.isNull();
        loop.quit();
    });
    QTimer::singleShot(0, first, [first] { first->finish(PART_ANSWER); });
    loop.exec();
    QCOMPARE(events.last(), QStringLiteral("part 2 of id-7: 1"));
    QVERIFY(isGone);
}

void tst_UploadFileMultiPartRequestHandle::spentBodyIsHandedOn()
{
    makeHandle(2 * PART);
    PartRecord record;
    handle->setPartBody(std::make_unique<RecordingPartBody>(&record));
    perform(QStringLiteral("ioo"));
    QCOMPARE(events.last(), QStringLiteral("complete id-7 folder"));
    QCOMPARE(record.spent, QList<QByteArray>({QByteArray(), "part 1"}));
    handle.reset();
}

// The system takes long to hand out memory and to take it back.
void tst_UploadFileMultiPartRequestHandle::bodyOfAFileThatEndsServesTheNext_data()
{
    QTest::addColumn<QString>("steps");
    QTest::addColumn<QByteArray>("spent");
    QTest::newRow("completed") << QStringLiteral("io") << QByteArray("part 1");
    QTest::newRow("paused since") << QStringLiteral("ioP") << QByteArray();
    QTest::newRow("in flight") << QStringLiteral("i") << QByteArray();
    QTest::newRow("held back by a pause") << QStringLiteral("iPo") << QByteArray();
}

void tst_UploadFileMultiPartRequestHandle::bodyOfAFileThatEndsServesTheNext()
{
    QFETCH(QString, steps);
    QFETCH(QByteArray, spent);
    makeHandle(PART);
    perform(steps);
    PartRecord record;
    const auto second = otherFile(PART);
    second->setPartBody(std::make_unique<RecordingPartBody>(&record));
    begin(*second);
    letAllGoOn();
    QCOMPARE(record.spent, QList<QByteArray>{spent});
}

// No memory is kept for files that are not there.
void tst_UploadFileMultiPartRequestHandle::noBodyOutlivesTheLastFile()
{
    makeHandle(PART);
    perform(QStringLiteral("ioc"));
    handle.reset();
    PartRecord record;
    const auto second = otherFile(PART);
    second->setPartBody(std::make_unique<RecordingPartBody>(&record));
    begin(*second);
    letAllGoOn();
    QCOMPARE(record.spent, QList<QByteArray>{QByteArray()});
}

void tst_UploadFileMultiPartRequestHandle::bodyInFlightIsNotHandedOn()
{
    makeHandle(PART + 1);
    PartRecord record;
    handle->setPartBody(std::make_unique<RecordingPartBody>(&record));
    perform(QStringLiteral("iPRRf"));
    QCOMPARE(record.spent, QList<QByteArray>{QByteArray()});
    QCOMPARE(network->sent().last().body, QByteArray("part 1"));
    handle.reset();
}

void tst_UploadFileMultiPartRequestHandle::pauseKeepsNoSpentBody()
{
    makeHandle(PART + 1);
    PartRecord record;
    handle->setPartBody(std::make_unique<RecordingPartBody>(&record));
    perform(QStringLiteral("iPoR"));
    QCOMPARE(events.last(), QStringLiteral("part 2 of id-7: 1"));
    QCOMPARE(record.spent, QList<QByteArray>({QByteArray(), QByteArray()}));
    handle.reset();
}

// One buffer serves them all: whoever keeps a part must not find another file's in it.
void tst_UploadFileMultiPartRequestHandle::filesInFlightDoNotMixTheirParts()
{
    makeHandle(PART + 1);
    const auto second = otherFile(PART + 1);
    QList<QByteArray> kept;
    const auto keep = [&](const QString &, const QByteArray &part) { kept.append(part); };
    connect(handle.get(), &UploadFileMultiPartRequestHandle::uploadNextPart, this, keep);
    connect(second.get(), &UploadFileMultiPartRequestHandle::uploadNextPart, this, keep);
    begin(*second);
    performStep(QLatin1Char('i'));
    QTRY_COMPARE(kept.size(), 2);
    QVERIFY(kept.at(0) == QByteArray(PART, 'o'));
    QVERIFY(kept.at(1) == content.left(PART));
}

// The thread has other things to do meanwhile.
void tst_UploadFileMultiPartRequestHandle::partIsReadInSlices()
{
    makeHandle(PART + 7);
    PartRecord record;
    QObject other;
    int turns = 0;
    int turnsBetweenSlices = 0;
    record.atSlice = [&] {
        turnsBetweenSlices = turns;
        QMetaObject::invokeMethod(
            &other, [&turns] { ++turns; }, Qt::QueuedConnection);
    };
    handle->setPartBody(std::make_unique<RecordingPartBody>(&record));
    performStep(QLatin1Char('i'));
    QVERIFY(record.calls.isEmpty());
    letAllGoOn();
    QCOMPARE(events, QStringList{QStringLiteral("part 1 of id-7: 4194304")});
    QVERIFY(record.content == content.left(PART));
    QCOMPARE(record.calls.takeFirst(), QStringLiteral("begin 4194304"));
    QVERIFY(record.calls.size() >= 8);
    QCOMPARE(turnsBetweenSlices, record.calls.size() - 1);
    record.calls.removeLast();
    for (const QString &length : qAsConst(record.calls))
        QVERIFY2(length.toInt() % 3 == 0, qPrintable(length)); // its Base64 goes on without padding
    record.calls.clear();
    performStep(QLatin1Char('o'));
    letAllGoOn();
    QCOMPARE(record.calls, QStringList({QStringLiteral("begin 7"), QStringLiteral("7")}));
    handle.reset();
}

void tst_UploadFileMultiPartRequestHandle::resumeReadsInOneGo()
{
    makeHandle(PART);
    PartRecord record;
    handle->setPartBody(std::make_unique<RecordingPartBody>(&record));
    perform(QStringLiteral("Pi"));
    QVERIFY(record.calls.isEmpty());
    performStep(QLatin1Char('R'));
    QCOMPARE(events, QStringList{QStringLiteral("part 1 of id-7: 4194304")});
    QVERIFY(record.content == content);
    handle.reset();
}

void tst_UploadFileMultiPartRequestHandle::pauseAmidAPart_data()
{
    QTest::addColumn<int>("slice");
    QTest::addColumn<QString>("stepsMeanwhile");
    for (const int slice : {1, 2, 5, 10}) {
        QTest::addRow("after slice %d", slice) << slice << QString();
        QTest::addRow("after slice %d, twice", slice) << slice << QStringLiteral("PP");
        QTest::addRow("after slice %d, resumed twice", slice) << slice << QStringLiteral("RR");
    }
}

// It is read again from its start, and nothing of it is sent or kept before.
void tst_UploadFileMultiPartRequestHandle::pauseAmidAPart()
{
    QFETCH(int, slice);
    QFETCH(QString, stepsMeanwhile);
    makeHandle(2 * PART);
    perform(QStringLiteral("i"));
    events.clear();
    PartRecord record;
    int slices = 0;
    record.atSlice = [&] {
        if (++slices == slice)
            QMetaObject::invokeMethod(
                handle.get(), [this] { handle->pause(); }, Qt::QueuedConnection);
    };
    handle->setPartBody(std::make_unique<RecordingPartBody>(&record));
    perform(QStringLiteral("o"));
    QCOMPARE(slices, slice);
    QCOMPARE(record.calls.last(), QStringLiteral("drop"));
    QCOMPARE(events, QStringList());
    perform(stepsMeanwhile + QLatin1Char('R'));
    QCOMPARE(events, QStringList{QStringLiteral("part 2 of id-7: 4194304")});
    QVERIFY(record.content == content.mid(PART));
    perform(QStringLiteral("oc"));
    QCOMPARE(events.last(), QStringLiteral("finished whole 0"));
    QVERIFY(uploadedContent == content);
    handle.reset();
}

void tst_UploadFileMultiPartRequestHandle::abortAmidAPart()
{
    makeHandle(PART);
    PartRecord record;
    record.atSlice = [&] {
        QMetaObject::invokeMethod(
            handle.get(), [this] { handle->abort(); }, Qt::QueuedConnection);
    };
    handle->setPartBody(std::make_unique<RecordingPartBody>(&record));
    perform(QStringLiteral("i"));
    QCOMPARE(record.calls.last(), QStringLiteral("drop"));
    QCOMPARE(record.calls.size(), 3);
    perform(QStringLiteral("Ra"));
    QCOMPARE(events, QStringList({QStringLiteral("abort id-7"), QStringLiteral("finished not 0")}));
    handle.reset();
}

// What has been read of the part is sent; that the rest is missing shows afterwards.
void tst_UploadFileMultiPartRequestHandle::fileThatShrinksAmidAPart()
{
    makeHandle(PART);
    PartRecord record;
    record.atSlice = [&] { QVERIFY(QFile::resize(localPath(), 10)); };
    handle->setPartBody(std::make_unique<RecordingPartBody>(&record));
    perform(QStringLiteral("i"));
    QCOMPARE(events.size(), 1);
    QVERIFY(content.startsWith(record.content));
    QVERIFY(record.content.size() < PART);
    perform(QStringLiteral("o"));
    QCOMPARE(events.mid(1), QStringList({QStringLiteral("abort id-7"), QStringLiteral("failed 6")}));
    handle.reset();
}

// Two at once would need the memory of two parts.
void tst_UploadFileMultiPartRequestHandle::filesReadOneAfterTheOther()
{
    makeHandle(PART);
    const auto second = otherFile(PART);
    QStringList slices;
    PartRecord record;
    record.atSlice = [&slices] { slices.append(QStringLiteral("own")); };
    PartRecord otherRecord;
    otherRecord.atSlice = [&slices] { slices.append(QStringLiteral("other")); };
    handle->setPartBody(std::make_unique<RecordingPartBody>(&record));
    second->setPartBody(std::make_unique<RecordingPartBody>(&otherRecord));
    performStep(QLatin1Char('i'));
    begin(*second);
    letAllGoOn();
    QVERIFY(record.content == content);
    QVERIFY(otherRecord.content == QByteArray(PART, 'o'));
    QCOMPARE(slices.lastIndexOf(QStringLiteral("own")) + 1, slices.indexOf(QStringLiteral("other")));
    handle.reset();
}

void tst_UploadFileMultiPartRequestHandle::fileThatEndsAmidAPartLetsTheNextRead_data()
{
    QTest::addColumn<QString>("step");
    QTest::newRow("paused") << QStringLiteral("P");
    QTest::newRow("aborted") << QStringLiteral("A");
    QTest::newRow("gone") << QString();
}

void tst_UploadFileMultiPartRequestHandle::fileThatEndsAmidAPartLetsTheNextRead()
{
    QFETCH(QString, step);
    makeHandle(PART);
    const auto second = otherFile(PART);
    PartRecord record;
    record.atSlice = [&] {
        record.atSlice = nullptr;
        QMetaObject::invokeMethod(
            this,
            [=] {
                if (step.isEmpty())
                    handle.reset();
                else
                    performStep(step.at(0));
            },
            Qt::QueuedConnection);
    };
    PartRecord otherRecord;
    handle->setPartBody(std::make_unique<RecordingPartBody>(&record));
    second->setPartBody(std::make_unique<RecordingPartBody>(&otherRecord));
    performStep(QLatin1Char('i'));
    begin(*second);
    letAllGoOn();
    QCOMPARE(events.filter(QStringLiteral("part")), QStringList());
    QVERIFY(otherRecord.content == QByteArray(PART, 'o'));
    handle.reset();
}

// It has given up its turn by the time it comes.
void tst_UploadFileMultiPartRequestHandle::pausedFileDoesNotKeepTheNextFromReading()
{
    makeHandle(PART);
    const auto second = otherFile(PART);
    const auto third = otherFile(PART);
    PartRecord record;
    record.atSlice = [&] { second->pause(); };
    PartRecord thirdRecord;
    handle->setPartBody(std::make_unique<RecordingPartBody>(&record));
    third->setPartBody(std::make_unique<RecordingPartBody>(&thirdRecord));
    performStep(QLatin1Char('i'));
    begin(*second);
    begin(*third);
    letAllGoOn();
    QVERIFY(record.content == content);
    QVERIFY(thirdRecord.content == QByteArray(PART, 'o'));
    handle.reset();
}

void tst_UploadFileMultiPartRequestHandle::resumeWaitsForItsTurn()
{
    makeHandle(PART);
    const auto second = otherFile(PART);
    PartRecord record;
    record.atSlice = [&] {
        record.atSlice = nullptr;
        second->resume();
    };
    PartRecord otherRecord;
    handle->setPartBody(std::make_unique<RecordingPartBody>(&record));
    second->setPartBody(std::make_unique<RecordingPartBody>(&otherRecord));
    second->pause();
    begin(*second);
    performStep(QLatin1Char('i'));
    letAllGoOn();
    QVERIFY(record.content == content);
    QVERIFY(otherRecord.content == QByteArray(PART, 'o'));
    handle.reset();
}

void tst_UploadFileMultiPartRequestHandle::firstMarkerDecides_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QStringList>("expected");
    const QStringList nextPart{QStringLiteral("part 2 of id-7: 1")};
    QTest::newRow("start again before all others")
        << QByteArray("PutMultipartUploadResponse AbortMultipartUploadResponse CompleteMultipartUploadResponse "
                      "<InitMultipartUploadResponse><MultipartUploadId>id-8</MultipartUploadId>"
                      "</InitMultipartUploadResponse>")
        << QStringList{QStringLiteral("part 2 of : 1")}; // not well-formed, so there is no id
    QTest::newRow("part before the ends")
        << QByteArray("CompleteMultipartUploadResponse AbortMultipartUploadResponse PutMultipartUploadResponse")
        << nextPart;
    QTest::newRow("abort before completion")
        << QByteArray("CompleteMultipartUploadResponse AbortMultipartUploadResponse")
        << QStringList{QStringLiteral("failed 14"), QStringLiteral("finished not 0")};
    QTest::newRow("completion") << QByteArray("...CompleteMultipartUploadResponse...")
                                << QStringList{QStringLiteral("finished whole 0")};
    QTest::newRow("marker inside another word") << QByteArray("<x:PutMultipartUploadResponseType/>") << nextPart;
}

void tst_UploadFileMultiPartRequestHandle::firstMarkerDecides()
{
    QFETCH(QByteArray, answer);
    makeHandle(PART + 1);
    perform(QStringLiteral("i"));
    events.clear();
    reply()->finish(answer);
    letGoOn();
    QTEST(events, "expected");
}

void tst_UploadFileMultiPartRequestHandle::answerWithoutAMarkerFailsTheFile_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("something else") << QByteArray("<html>all is well</html>");
    QTest::newRow("lower case") << PART_ANSWER.toLower();
    QTest::newRow("behind a zero byte") << QByteArray("\0", 1) + PART_ANSWER;
}

void tst_UploadFileMultiPartRequestHandle::answerWithoutAMarkerFailsTheFile()
{
    QFETCH(QByteArray, answer);
    makeHandle(PART + 1);
    perform(QStringLiteral("i"));
    events.clear();
    reply()->finish(answer);
    QCOMPARE(events, QStringList{QStringLiteral("failed 14")}); // neither an end nor the next part
    QVERIFY(!handle->isInFlight());
    QVERIFY(!handle->isUploaded());
    perform(QStringLiteral("R"));
    QCOMPARE(events.size(), 1);
}

void tst_UploadFileMultiPartRequestHandle::refusedPartIsNotSkipped()
{
    makeHandle(PART + 1);
    perform(QStringLiteral("i"));
    events.clear();
    reply()->fail(QNetworkReply::ContentNotFoundError, QStringLiteral("the cause"), PART_ANSWER);
    QCOMPARE(events, QStringList{QStringLiteral("failed 14")});
}

void tst_UploadFileMultiPartRequestHandle::endsAreSuccessesWhateverTheNetworkSaid()
{
    makeHandle(1);
    perform(QStringLiteral("io"));
    events.clear();
    reply()->fail(QNetworkReply::ContentNotFoundError, QStringLiteral("the cause"), COMPLETE_ANSWER);
    QCOMPARE(events, QStringList{QStringLiteral("finished whole 0")});
}

void tst_UploadFileMultiPartRequestHandle::abortThatNobodyAskedFor()
{
    makeHandle(PART + 1);
    perform(QStringLiteral("i"));
    events.clear();
    perform(QStringLiteral("a"));
    // The host hears of it, then the handle ends as it always does.
    QCOMPARE(events, QStringList({QStringLiteral("failed 14"), QStringLiteral("finished not 0")}));
    QVERIFY(!handle->isUploaded());
    perform(QStringLiteral("RA"));
    QCOMPARE(events.size(), 2);

    makeHandle(PART + 1);
    perform(QStringLiteral("i"));
    events.clear();
    reply()->fail(QNetworkReply::AuthenticationRequiredError, QStringLiteral("the cause"), ABORT_ANSWER);
    QCOMPARE(events, QStringList({QStringLiteral("failed 3"), QStringLiteral("finished not 0")}));
}

void tst_UploadFileMultiPartRequestHandle::answersAfterTheEndAreIgnored()
{
    makeHandle(1);
    perform(QStringLiteral("ioc"));
    const QStringList soFar = events;
    send("late");
    perform(QStringLiteral("oRPRA"));
    QCOMPARE(events, soFar);
}

void tst_UploadFileMultiPartRequestHandle::failureAfterAllAttempts_data()
{
    QTest::addColumn<QString>("stepsBefore");
    QTest::addColumn<QNetworkReply::NetworkError>("error");
    QTest::addColumn<int>("sends");
    QTest::addColumn<QString>("end");
    using Reply = QNetworkReply;
    QTest::newRow("start, 503") << QString() << Reply::ServiceUnavailableError << 6 << QStringLiteral("failed 14");
    QTest::newRow("start, time-out") << QString() << Reply::TimeoutError << 6 << QStringLiteral("failed 1");
    QTest::newRow("part, 500") << QStringLiteral("i") << Reply::InternalServerError << 6 << QStringLiteral("failed 2");
    QTest::newRow("part, 401") << QStringLiteral("i") << Reply::AuthenticationRequiredError << 1
                               << QStringLiteral("failed 3");
    QTest::newRow("part, 404") << QStringLiteral("i") << Reply::ContentNotFoundError << 1 << QStringLiteral("failed 14");
    QTest::newRow("completion, 503") << QStringLiteral("io") << Reply::ServiceUnavailableError << 6
                                     << QStringLiteral("failed 14");
}

void tst_UploadFileMultiPartRequestHandle::failureAfterAllAttempts()
{
    QFETCH(QString, stepsBefore);
    QFETCH(QNetworkReply::NetworkError, error);
    QFETCH(int, sends);
    QFETCH(QString, end);
    makeHandle(1);
    perform(stepsBefore);
    events.clear();
    const int sentBefore = network->count() - 1;
    for (int i = 0; i < 10 && handle->isInFlight(); ++i)
        reply()->fail(error);
    QCOMPARE(network->count() - sentBefore, sends);
    QCOMPARE(events, QStringList{end});
    const QByteArray body = network->sent().at(sentBefore).body;
    for (int i = sentBefore; i < network->count(); ++i)
        QCOMPARE(network->sent().at(i).body, body); // the very same step
}

void tst_UploadFileMultiPartRequestHandle::attemptsAreCountedOverTheWholeUpload()
{
    makeHandle(PART + 1);
    perform(QStringLiteral("i" "fffo" "ffo")); // part 1 needed three re-sends, part 2 the other two
    QCOMPARE(events.last(), QStringLiteral("complete id-7 folder"));
    QCOMPARE(network->count(), 9);
    perform(QStringLiteral("f"));
    QCOMPARE(network->count(), 9); // none is left for the completion
    QCOMPARE(events.last(), QStringLiteral("failed 14"));
    QVERIFY(uploadedContent == content);
}

void tst_UploadFileMultiPartRequestHandle::noOrderLosesOrDoublesAPart_data()
{
    QTest::addColumn<QString>("steps");
    for (const char *steps : {
             "ioooc", "PiRoooc", "PRiRoooc", "iPoRooc", "iPRoooc", "iPRPRoooc", "iPoRRooc", "iRRoooc", "iPoPRooc",
             "iPfoRooc", "iPfRoooc", "ifPoRooc", "ifPRoooc", "iPffRRfoooc", "PfRioooc", "PfiRoooc",
             "ioPoRPoRc", "ioooPRc", "iooPoRc", "iooPoRRc", "ioooPcR", "iPoRoPoRc", "iooofPRc", "iooofPcR",
         })
        QTest::newRow(steps) << QString::fromLatin1(steps);
}

// However pause, resume, failure and re-send follow each other: each part once, in order, and the completion once.
void tst_UploadFileMultiPartRequestHandle::noOrderLosesOrDoublesAPart()
{
    QFETCH(QString, steps);
    makeHandle(2 * PART + 5);
    perform(steps);
    QCOMPARE(events, QStringList({QStringLiteral("part 1 of id-7: 4194304"), QStringLiteral("part 2 of id-7: 4194304"),
                                  QStringLiteral("part 3 of id-7: 5"), QStringLiteral("complete id-7 folder"),
                                  QStringLiteral("finished whole 0")}));
    QVERIFY(uploadedContent == content);
}

void tst_UploadFileMultiPartRequestHandle::pauseLetsThePartInFlightRunOut()
{
    makeHandle(2 * PART);
    perform(QStringLiteral("iP"));
    QVERIFY(handle->isInFlight());
    QVERIFY(!reply()->isFinished());
    perform(QStringLiteral("o"));
    QVERIFY(!handle->isInFlight());
    QCOMPARE(events, QStringList{QStringLiteral("part 1 of id-7: 4194304")});
    perform(QStringLiteral("R"));
    QCOMPARE(events.last(), QStringLiteral("part 2 of id-7: 4194304")); // inside the call
}

void tst_UploadFileMultiPartRequestHandle::resumeDoesNotSkipAFailedPart()
{
    for (const char *steps : {"iPxR", "iPxRR", "ixPR", "iPeR", "iPffffffR"}) {
        makeHandle(2 * PART);
        perform(QString::fromLatin1(steps));
        QVERIFY2(events == QStringList({QStringLiteral("part 1 of id-7: 4194304"), QStringLiteral("failed 14")}), steps);
        QVERIFY2(!handle->isInFlight(), steps);
    }
}

void tst_UploadFileMultiPartRequestHandle::abortInEachState_data()
{
    QTest::addColumn<QString>("steps");
    QTest::addColumn<QString>("abort");
    const QString unknown = QStringLiteral("abort ");
    const QString known = QStringLiteral("abort id-7");
    QTest::newRow("before the id is known") << QString() << unknown;
    QTest::newRow("paused before the id is known") << QStringLiteral("P") << unknown;
    QTest::newRow("first part in flight") << QStringLiteral("i") << known;
    QTest::newRow("part being sent again") << QStringLiteral("if") << known;
    QTest::newRow("later part in flight") << QStringLiteral("io") << known;
    QTest::newRow("paused, part in flight") << QStringLiteral("iP") << known;
    QTest::newRow("paused, nothing in flight") << QStringLiteral("iPo") << known;
    QTest::newRow("completion in flight") << QStringLiteral("ioo") << known;
    QTest::newRow("completion held back") << QStringLiteral("ioPo") << known;
}

void tst_UploadFileMultiPartRequestHandle::abortInEachState()
{
    QFETCH(QString, steps);
    QFETCH(QString, abort);
    makeHandle(PART + 1);
    perform(steps);
    events.clear();
    log->clear();
    const QPointer<FakeReply> cutOff = reply();
    perform(QStringLiteral("A"));
    QVERIFY(cutOff->isFinished());
    QCOMPARE(events, QStringList{abort});
    perform(QStringLiteral("ARPR")); // nothing more is asked for
    QCOMPARE(events, QStringList{abort});
    perform(QStringLiteral("a"));
    QCOMPARE(events, QStringList({abort, QStringLiteral("finished not 0")}));
    QVERIFY(!handle->isUploaded());
    QVERIFY(!handle->isInFlight());
    QCOMPARE(log->count(), 0);
}

void tst_UploadFileMultiPartRequestHandle::abortEndsWithAnyFinalAnswer_data()
{
    QTest::addColumn<QString>("steps");
    QTest::addColumn<int>("sends"); // of the abort request
    QTest::newRow("the answer to an abort") << QStringLiteral("a") << 1;
    QTest::newRow("empty") << QStringLiteral("e") << 1;
    QTest::newRow("the answer to a part") << QStringLiteral("o") << 1;
    QTest::newRow("404") << QStringLiteral("x") << 1;
    QTest::newRow("503 until nothing is left") << QStringLiteral("ffffff") << 6;
    QTest::newRow("503, then well") << QStringLiteral("ffa") << 3;
}

void tst_UploadFileMultiPartRequestHandle::abortEndsWithAnyFinalAnswer()
{
    QFETCH(QString, steps);
    QFETCH(int, sends);
    makeHandle(PART + 1);
    perform(QStringLiteral("iA"));
    events.clear();
    const int sentBefore = network->count() - 1;
    perform(steps);
    QCOMPARE(events, QStringList{QStringLiteral("finished not 0")});
    QCOMPARE(network->count() - sentBefore, sends);
    QVERIFY(!handle->isInFlight());
}

// A part that was held back by a pause goes with the upload.
void tst_UploadFileMultiPartRequestHandle::resumeAfterAnAbortSendsNothing()
{
    makeHandle(PART + 1);
    perform(QStringLiteral("iPoAaR"));
    QCOMPARE(events, QStringList({QStringLiteral("part 1 of id-7: 4194304"), QStringLiteral("abort id-7"),
                                  QStringLiteral("finished not 0")}));
    QVERIFY(!handle->isInFlight());
}

void tst_UploadFileMultiPartRequestHandle::abortIsSentOnce()
{
    makeHandle(PART + 1);
    perform(QStringLiteral("iAAA"));
    QCOMPARE(events.count(QStringLiteral("abort id-7")), 1);
    perform(QStringLiteral("aA"));
    QCOMPARE(events.count(QStringLiteral("abort id-7")), 1);
    QCOMPARE(events.count(QStringLiteral("finished not 0")), 1);
    QCOMPARE(network->sent().last().body, QByteArray("abort"));
}

void tst_UploadFileMultiPartRequestHandle::abortAfterAFailureTellsTheServer()
{
    makeHandle(PART + 1);
    perform(QStringLiteral("ixAa"));
    QCOMPARE(events, QStringList({QStringLiteral("part 1 of id-7: 4194304"), QStringLiteral("failed 14"),
                                  QStringLiteral("abort id-7"), QStringLiteral("finished not 0")}));
}

// The completion may have gone through before the abort came.
void tst_UploadFileMultiPartRequestHandle::uploadCompletedMeanwhile()
{
    makeHandle(1);
    perform(QStringLiteral("ioAc"));
    QCOMPARE(events.last(), QStringLiteral("finished whole 0"));
}

void tst_UploadFileMultiPartRequestHandle::fileThatShrinksIsAborted_data()
{
    QTest::addColumn<int>("newSize");
    QTest::addColumn<QString>("steps");
    QTest::newRow("to the end of the part sent") << PART << QStringLiteral("o");
    QTest::newRow("below the part sent") << 10 << QStringLiteral("o");
    QTest::newRow("to nothing") << 0 << QStringLiteral("o");
    QTest::newRow("inside the next part") << PART + MEBIBYTE << QStringLiteral("oo");
    QTest::newRow("while paused") << PART << QStringLiteral("PoR");
}

void tst_UploadFileMultiPartRequestHandle::fileThatShrinksIsAborted()
{
    QFETCH(int, newSize);
    QFETCH(QString, steps);
    makeHandle(2 * PART);
    perform(QStringLiteral("i"));
    QVERIFY(QFile::resize(localPath(), newSize));
    perform(steps);
    QCOMPARE(events.mid(events.size() - 2), QStringList({QStringLiteral("abort id-7"), QStringLiteral("failed 6")}));
    perform(QStringLiteral("RA")); // it is ending already
    perform(QStringLiteral("e"));
    QCOMPARE(events.last(), QStringLiteral("finished not 0"));
    QCOMPARE(events.count(QStringLiteral("abort id-7")), 1);
    QVERIFY(!events.contains(QStringLiteral("complete id-7 folder")));
    QVERIFY(!handle->isUploaded());
}

void tst_UploadFileMultiPartRequestHandle::onlyBytesOfTheFileCount()
{
    const int fileBytes = PART + 1000;
    makeHandle(fileBytes);
    const QString total = QLatin1Char(' ') + QString::number(fileBytes);
    Q_EMIT reply()->uploadProgress(300, 300); // no part is on its way yet
    QCOMPARE(progress, QStringList{QStringLiteral("0 0") + total});
    perform(QStringLiteral("i"));
    progress.clear();
    const qint64 request = 6 * MEBIBYTE; // in Base64 and with all around it
    Q_EMIT reply()->uploadProgress(0, request);
    Q_EMIT reply()->uploadProgress(2 * MEBIBYTE, request);
    Q_EMIT reply()->uploadProgress(3 * MEBIBYTE, request);
    Q_EMIT reply()->uploadProgress(request, request);
    Q_EMIT reply()->uploadProgress(0, 0);
    QCOMPARE(progress, QStringList({QStringLiteral("0 0") + total, QStringLiteral("0 0") + total,
                                    QStringLiteral("1048576 1048576") + total,
                                    QStringLiteral("4194304 3145728") + total}));
    perform(QStringLiteral("o"));
    progress.clear();
    Q_EMIT reply()->uploadProgress(1500, 2000);
    Q_EMIT reply()->uploadProgress(2000, 2000);
    QCOMPARE(progress, QStringList({QStringLiteral("4194804 500") + total, QStringLiteral("4195304 500") + total}));
    perform(QStringLiteral("o"));
    progress.clear();
    Q_EMIT reply()->uploadProgress(400, 400); // the completion
    QCOMPARE(progress, QStringList{QStringLiteral("4195304 0") + total});
    QCOMPARE(handle->uploadedSize(), qint64(fileBytes));
}

void tst_UploadFileMultiPartRequestHandle::smallerFigureIsNoStepBack()
{
    makeHandle(1000);
    perform(QStringLiteral("i"));
    Q_EMIT reply()->uploadProgress(1500, 1500);
    Q_EMIT reply()->uploadProgress(700, 1500);
    Q_EMIT reply()->uploadProgress(800, 1500);
    QCOMPARE(progress, QStringList({QStringLiteral("1000 1000 1000"), QStringLiteral("1000 0 1000"),
                                    QStringLiteral("1100 100 1000")}));
}

void tst_UploadFileMultiPartRequestHandle::receiverMayDeleteTheHandle_data()
{
    QTest::addColumn<QString>("stepsBefore");
    QTest::addColumn<QString>("event"); // the one in which the handle goes
    QTest::addColumn<QString>("step");
    QTest::newRow("at a part") << QString() << QStringLiteral("part 1 of id-7: 1") << QStringLiteral("i");
    QTest::newRow("at the completion") << QStringLiteral("i") << QStringLiteral("complete id-7 folder")
                                       << QStringLiteral("o");
    QTest::newRow("at the end") << QStringLiteral("io") << QStringLiteral("finished whole 0") << QStringLiteral("c");
    QTest::newRow("at a failure") << QStringLiteral("i") << QStringLiteral("failed 14") << QStringLiteral("x");
    QTest::newRow("at an abort that nobody asked for") << QStringLiteral("i") << QStringLiteral("failed 14")
                                                       << QStringLiteral("a");
    QTest::newRow("at an abort") << QStringLiteral("i") << QStringLiteral("abort id-7") << QStringLiteral("A");
}

void tst_UploadFileMultiPartRequestHandle::receiverMayDeleteTheHandle()
{
    QFETCH(QString, stepsBefore);
    QFETCH(QString, event);
    QFETCH(QString, step);
    using Handle = UploadFileMultiPartRequestHandle;
    makeHandle(1);
    perform(stepsBefore);
    events.clear();
    const std::unique_ptr<FakeReply> kept(reply());
    const auto goAtTheEvent = [this, event, finishing = kept.get()] {
        if (!handle || events.isEmpty() || events.last() != event)
            return;
        finishing->setParent(nullptr); // a reply does not outlive its deletion while it emits
        handle.reset();
    };
    connect(handle.get(), &Handle::uploadNextPart, this, goAtTheEvent);
    connect(handle.get(), &Handle::finishUpload, this, goAtTheEvent);
    connect(handle.get(), &Handle::abortUpload, this, goAtTheEvent);
    connect(handle.get(), &Handle::requestFinished, this, goAtTheEvent);
    connect(handle.get(), &Handle::uploadFailed, this, goAtTheEvent);
    perform(step);
    QVERIFY(!handle);
    QCOMPARE(events, QStringList{event});
}

void tst_UploadFileMultiPartRequestHandle::serverTakesTheFile()
{
    ScriptedServer server;
    server.always("/init", ScriptedAnswer::ok(INIT_ANSWER));
    server.always("/part", ScriptedAnswer::ok(PART_ANSWER));
    server.always("/complete", ScriptedAnswer::ok(COMPLETE_ANSWER));
    QNetworkAccessManager manager;
    makeHandle(2 * PART + 99);
    follow(&manager, server.plainRoot());
    QTRY_VERIFY(handle->isUploaded());
    QVERIFY(uploadedContent == content);
    QCOMPARE(server.requestCount(), 5);
    QCOMPARE(server.requestCount("/part"), 3);
    for (const RecordedRequest &request : server.requests())
        QCOMPARE(request.method, QByteArray("PUT"));
    QCOMPARE(log->count(), 0);
    handle.reset();
}

void tst_UploadFileMultiPartRequestHandle::serverRefusesNowAndThen()
{
    ScriptedServer server;
    server.enqueue("/init", ScriptedAnswer(503));
    server.always("/init", ScriptedAnswer::ok(INIT_ANSWER));
    server.enqueue("/part", ScriptedAnswer(500));
    server.enqueue("/part", ScriptedAnswer::ok(PART_ANSWER).closedAt(3));
    server.always("/part", ScriptedAnswer::ok(PART_ANSWER));
    server.enqueue("/complete", ScriptedAnswer(503));
    server.always("/complete", ScriptedAnswer::ok(COMPLETE_ANSWER));
    QNetworkAccessManager manager;
    makeHandle(PART + 1);
    follow(&manager, server.plainRoot());
    QTRY_VERIFY(handle->isUploaded());
    QVERIFY(uploadedContent == content);
    QCOMPARE(events.last(), QStringLiteral("finished whole 0"));
    QStringList bodies;
    for (const RecordedRequest &request : server.requests())
        bodies.append(QString::fromUtf8(request.body));
    QCOMPARE(bodies.join(QLatin1String(", ")),
             QStringLiteral("init, init, part 1, part 1, part 1, part 2, complete, complete"));
    handle.reset();
}

QTEST_GUILESS_MAIN(tst_UploadFileMultiPartRequestHandle)
#include "tst_UploadFileMultiPartRequestHandle.moc"
