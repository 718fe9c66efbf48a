// A multipart upload driven by whatever a server answers and whatever order the job's calls come in.
//
// Input: the first line is the number of bytes that the file has beyond (or short of) a whole number of parts, and that
// number of parts; each further line is one step, see Upload::perform().
#include "FuzzTarget.h"

#include "handles/UploadFileMultiPartRequestHandle.h"
#include "support/FakeNetwork.h"
#include "support/LogCapture.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QMap>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <memory>

namespace Korvo::Web::Fuzz {

namespace {

using Handle = UploadFileMultiPartRequestHandle;
using TestSupport::FakeNetwork;
using TestSupport::FakeReply;

constexpr int PART = 4 * 1024 * 1024;
constexpr int MOST_PARTS = 2;
constexpr int RESENDS = 5;
constexpr int MOST_STEPS = 200;
constexpr int TURNS_A_PART = 20; // of the event loop, at most; the next part waits for it, and is read in slices

/// Content that repeats nowhere near.
const QByteArray &content()
{
    static const QByteArray longest = [] {
        QByteArray text((MOST_PARTS + 1) * PART, Qt::Uninitialized);
        quint32 state = 1;
        for (char &byte : text) {
            state = state * 1664525U + 1013904223U;
            byte = char(state >> 24);
        }
        return text;
    }();
    return longest;
}

int fileSizeFrom(const QByteArray &line)
{
    const QList<QByteArray> numbers = line.split(' ');
    const int parts = std::clamp(numbers.value(1).toInt(), 0, MOST_PARTS);
    return std::max(0, parts * PART + std::clamp(numbers.value(0).toInt(), -1000, 1000));
}

/// One file of each size, kept for the next input.
QString fileOfSize(int size)
{
    static const QTemporaryDir folder;
    const QString path = folder.filePath(QString::number(size));
    QFile file(path);
    if (file.exists() && file.size() == size)
        return path;
    require(file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(content().constData(), size) == size,
            "the scene can be set up");
    return path;
}

class Upload
{
public:
    explicit Upload(int newSize);

    void perform(const QByteArray &step);
    void check();

private:
    void send(const QByteArray &body);
    void onNextPart(const QByteArray &part, int number);
    void onFinishUpload();
    void onAbortUpload();
    void onFinished(bool completed);
    void answer(const QByteArray &text);
    void fail(int error, const QByteArray &text);
    void cutShort(const QByteArray &text);
    void reportProgress(const QList<QByteArray> &numbers);
    void perform(char call);
    FakeReply *reply() const { return network.last() && !network.last()->isFinished() ? network.last() : nullptr; }

    const int size;
    const QString path;
    FakeNetwork network;
    std::unique_ptr<Handle> handle;
    int steps = 0; // requests that the handle has asked for
    int parts = 0;
    int partBytes = 0;
    int aborts = 0;
    int ends = 0;
    int failures = 0;
    qint64 reported = 0;
    bool isPaused = false;
    bool isWholeSent = false;
    bool completionSeen = false; // the server has said that the upload is complete
};

Upload::Upload(int newSize)
    : size(newSize)
    , path(fileOfSize(newSize))
    , handle(std::make_unique<Handle>(UploadFileDescriptor{QStringLiteral("folder"), path, {}, {}, false}))
{
    require(handle->isFileOpen(), "the file is there");
    QObject::connect(handle.get(), &Handle::uploadNextPart, handle.get(),
                     [this](const QString &, const QByteArray &part, int number) { onNextPart(part, number); });
    QObject::connect(handle.get(), &Handle::finishUpload, handle.get(), [this] { onFinishUpload(); });
    QObject::connect(handle.get(), &Handle::abortUpload, handle.get(), [this] { onAbortUpload(); });
    QObject::connect(handle.get(), &Handle::uploadFailed, handle.get(), [this](Error error) {
        require(error != Error::None, "a failure has a code");
        ++failures;
    });
    QObject::connect(handle.get(), &Handle::requestFinished, handle.get(),
                     [this](const auto &response) { onFinished(response.completed()); });
    QObject::connect(handle.get(), &Handle::uploadedBytes, handle.get(),
                     [this](qint64 total, qint64 step, qint64 expected) {
                         require(step >= 0 && total == reported + step, "progress adds up and never goes back");
                         require(expected == size, "progress tells the size of the file");
                         reported = total;
                     });
    send("init");
}

// What the communicator does with each request that the handle asks for.
void Upload::send(const QByteArray &body)
{
    ++steps;
    handle->setReply(network.put(QNetworkRequest(QUrl(QStringLiteral("https://service.example/"))), body));
    handle->enableRetry(&network, body);
}

void Upload::onNextPart(const QByteArray &part, int number)
{
    require(!isPaused, "no part is sent while paused");
    require(ends == 0 && aborts == 0, "no part follows an end");
    require(!isWholeSent, "no part follows the completion");
    require(!reply(), "one request at a time");
    require(number == ++parts, "parts are counted from 1, none is left out or doubled");
    require(!part.isEmpty() && part.size() <= PART, "a part has a byte at least and 4 MiB at most");
    require(part.size() == PART || partBytes + part.size() == size, "only the last part is smaller");
    require(content().mid(partBytes, part.size()) == part, "parts are the file, piece by piece");
    partBytes += part.size();
    send("part " + QByteArray::number(number));
}

void Upload::onFinishUpload()
{
    require(!isPaused && ends == 0 && aborts == 0 && !reply(), "completion is asked for in its turn");
    require(partBytes == size, "completion is asked for when the whole file has been sent");
    isWholeSent = true;
    send("complete");
}

void Upload::onAbortUpload()
{
    require(++aborts == 1, "the abort is asked for once");
    require(ends == 0, "nothing is asked for after the end");
    require(!reply(), "the request in flight is cut off first");
    send("abort");
}

void Upload::onFinished(bool completed)
{
    require(++ends == 1, "an upload ends once");
    require(handle->isUploaded() == completed, "the handle and its answer agree");
    require(!completed || completionSeen, "complete is what the server says is complete");
}

void Upload::answer(const QByteArray &text)
{
    completionSeen |= text.contains("CompleteMultipartUploadResponse");
    if (reply())
        reply()->finish(text);
}

void Upload::fail(int error, const QByteArray &text)
{
    static const QNetworkReply::NetworkError errors[] = {QNetworkReply::ConnectionRefusedError,
                                                         QNetworkReply::RemoteHostClosedError,
                                                         QNetworkReply::TimeoutError,
                                                         QNetworkReply::SslHandshakeFailedError,
                                                         QNetworkReply::OperationCanceledError,
                                                         QNetworkReply::ContentNotFoundError,
                                                         QNetworkReply::ServiceUnavailableError,
                                                         QNetworkReply::AuthenticationRequiredError,
                                                         QNetworkReply::InternalServerError,
                                                         QNetworkReply::UnknownNetworkError};
    completionSeen |= text.contains("CompleteMultipartUploadResponse");
    if (reply())
        reply()->fail(errors[std::clamp(error, 0, int(std::size(errors)) - 1)], QStringLiteral("the cause"), text);
}

void Upload::cutShort(const QByteArray &text)
{
    if (reply())
        reply()->announce(text.size() + 1);
    answer(text);
}

void Upload::reportProgress(const QList<QByteArray> &numbers)
{
    if (reply())
        Q_EMIT reply()->uploadProgress(numbers.value(0).toLongLong(), numbers.value(1).toLongLong());
}

QByteArray documentedAnswer(char letter)
{
    static const QMap<char, QByteArray> answers{
        {'i', "<InitMultipartUploadResponse><MultipartUploadId>id-7</MultipartUploadId></InitMultipartUploadResponse>"},
        {'o', "<PutMultipartUploadResponse/>"},
        {'c', "<CompleteMultipartUploadResponse/>"},
        {'a', "<AbortMultipartUploadResponse/>"}};
    return answers.value(letter);
}

// A letter and its text: the server answers (i, o, c, a: as documented; t: any text), refuses (f, with a number for the
// error and a text) or announces more than it sends (s); the network reports progress (p sent total); the job pauses (P),
// resumes (R) and aborts (A).
void Upload::perform(const QByteArray &step)
{
    const char letter = step.isEmpty() ? '\0' : step.at(0);
    const QByteArray text = step.mid(1).trimmed();
    if (!documentedAnswer(letter).isEmpty())
        answer(documentedAnswer(letter));
    else if (letter == 't')
        answer(text);
    else if (letter == 'f')
        fail(text.left(1).toInt(), text.mid(1));
    else if (letter == 's')
        cutShort(text);
    else if (letter == 'p')
        reportProgress(text.split(' '));
    else
        perform(letter);
}

void Upload::perform(char call)
{
    if (call == 'A')
        handle->abort();
    if (call != 'P' && call != 'R')
        return;
    isPaused = call == 'P';
    if (isPaused)
        handle->pause();
    else
        handle->resume();
}

void Upload::check()
{
    require(network.count() <= steps + RESENDS, "all steps together are sent again five times at most");
    require(ends == 0 || !reply() || failures > 0, "nothing is on its way after the end");
    require(handle->isInFlight() == (reply() != nullptr), "the handle knows whether it waits");
    // Otherwise a job would wait for it for ever.
    require(reply() || ends > 0 || failures > 0 || isPaused, "an upload that waits for nothing has told so");
}

} // namespace

void runTarget(const QByteArray &input)
{
    const TestSupport::LogCapture log(TestSupport::LogCapture::Watch::Nothing);
    const QList<QByteArray> lines = input.split('\n');
    Upload upload(fileSizeFrom(lines.first()));
    for (int i = 1; i < std::min(lines.size(), MOST_STEPS); ++i) {
        upload.perform(lines.at(i));
        for (int turn = 0; turn < TURNS_A_PART; ++turn)
            QCoreApplication::sendPostedEvents();
        upload.check();
    }
}

} // namespace Korvo::Web::Fuzz
