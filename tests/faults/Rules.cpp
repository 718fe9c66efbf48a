#include "faults/Rules.h"

namespace Korvo::Web::Faults {

namespace {

using End = Course::End;

constexpr int FILES = 3;
constexpr int RESEND_BUDGET = 5; // of all steps of one file in parts together
constexpr int CODE_NETWORK = 14;
constexpr int CODE_TIME_OUT = 1;
constexpr int CODE_CANCELLED = 4;
constexpr int CODE_REFUSED = 3;
constexpr int CODE_UNREADABLE_LOGIN = 5;

const QString PARTS_HANDLE = QStringLiteral("UploadFileMultiPartRequestHandle");
const QString LOGIN_UNREADABLE = QStringLiteral("CLoginResponse: Error during parsing Login response. ");

QString error(int code)
{
    return QStringLiteral("errorOccurred(%1)").arg(code);
}

QString failureLine(const QString &handle, const QString &name)
{
    return handle + QStringLiteral(": ") + name;
}

QStringList times(int number, const QString &text)
{
    QStringList list;
    for (int i = 0; i < number; ++i)
        list.append(text);
    return list;
}

/// Each failed attempt is logged, but for those that only a new login can help. Downloads of data log nothing.
QStringList failureLines(const Cell &cell, const Course &course)
{
    if (cell.request.handle.isEmpty() || course.error == UNAUTHORISED)
        return {};
    return times(course.failures, failureLine(cell.request.handle, course.error));
}

/// What is sent when nothing is in the way, with the struck request as often as its course says.
QMap<QString, int> requestsOf(const Cell &cell, const Course &course)
{
    QMap<QString, int> sent;
    for (const QString &step : cell.request.steps) {
        if (step
            != heldRoute(cell.request.scenario)) // whether it had come whole when it was aborted is a matter of luck
            ++sent[step];
    }
    sent[cell.request.route] += course.sends - 1;
    return sent;
}

/// The requests up to the struck one, which is the last of them.
QMap<QString, int> requestsUpTo(const Cell &cell, const Course &course)
{
    QMap<QString, int> sent;
    int number = 0;
    for (const QString &step : cell.request.steps) {
        if (step == cell.request.route && ++number == cell.occurrence)
            break;
        ++sent[step];
    }
    sent[cell.request.route] += course.sends;
    return sent;
}

bool isKind(const Cell &cell, const char *kind)
{
    return cell.fault.kind == QLatin1String(kind);
}

// Login

Outcome notAnsweredCheck(const Cell &cell, const Course &course)
{
    Outcome outcome;
    outcome.sent = requestsUpTo(cell, course);
    outcome.state = QStringLiteral("logging in");
    return outcome;
}

// A check that fails asks for nothing: the login itself tells what is wrong.
Outcome checkOutcome(const Cell &cell, const Course &course)
{
    if (course.end == End::Pending)
        return notAnsweredCheck(cell, course);
    Outcome outcome;
    outcome.log = failureLines(cell, course);
    outcome.sent = requestsOf(cell, course);
    const bool asksForCode = cell.request.scenario == Scenario::LogInAskedCode;
    if (!asksForCode) {
        outcome.heard = QStringList{QStringLiteral("loginResult(0)")};
        outcome.state = QStringLiteral("logged in");
        return outcome;
    }
    outcome.state = QStringLiteral("logged out");
    outcome.heard = QStringList{QStringLiteral("tokenAuthenticationNeeded()")};
    if (course.end == End::Good)
        return outcome;
    // Without its code the account is refused.
    outcome.heard = QStringList{QStringLiteral("loginResult(2)")};
    outcome.log.append(failureLine(QStringLiteral("LoginRequestHandle"), BAD_REQUEST));
    outcome.sent.insert(Route::TOKEN, 1);
    return outcome;
}

Outcome tokenOutcome(const Cell &cell, const Course &course)
{
    Outcome outcome;
    if (cell.request.scenario == Scenario::LogInWithCode)
        outcome.heard.append(QStringLiteral("tokenAuthenticationNeeded()"));
    outcome.log = failureLines(cell, course);
    if (course.end == End::Good) {
        outcome.heard.append(QStringLiteral("loginResult(0)"));
        outcome.sent = requestsOf(cell, course);
        outcome.state = QStringLiteral("logged in");
        return outcome;
    }
    outcome.sent = requestsUpTo(cell, course);
    outcome.state = QStringLiteral("logged out");
    if (course.end == End::Pending) { // until the host cancels it
        outcome.heard.append(QStringLiteral("loginResult(3)"));
        return outcome;
    }
    // No answer that tells why is JSON; what is not counts as unreadable, whatever the transport said.
    outcome.heard += QStringList{error(CODE_UNREADABLE_LOGIN), QStringLiteral("loginResult(1)")};
    outcome.log.append(LOGIN_UNREADABLE);
    return outcome;
}

/// Whether what the login has left behind lets signed requests through.
bool isServiceUsable(const Cell &cell, const Course &course)
{
    if (cell.request.route == Route::CLOCK) // without it the machine's own clock counts
        return !isKind(cell, "wrongClock");
    return course.end == End::Good || course.end == End::Shortened;
}

/// Qt counts on a connection that it has begun for the next request to the same server, too, though the one that it was
/// begun for has been given up.
bool holdsUpTheNext(const Cell &cell)
{
    return isKind(cell, "handshakeStall");
}

// The login succeeds in any case; what it lacks shows later.
Outcome afterLoginOutcome(const Cell &cell, const Course &course)
{
    Outcome outcome;
    outcome.heard = QStringList{QStringLiteral("loginResult(0)")};
    outcome.log = failureLines(cell, course);
    outcome.sent = requestsOf(cell, course);
    outcome.state = QStringLiteral("logged in");
    if (cell.request.route == Route::CLOCK && holdsUpTheNext(cell)) {
        outcome.sent.remove(Route::LISTING);
        outcome.sent.remove(Route::FILE);
        outcome.disk = QStringList{QStringLiteral("one.txt gone")};
        return outcome;
    }
    if (isServiceUsable(cell, course)) {
        outcome.disk = QStringList{QStringLiteral("one.txt whole")};
    } else {
        outcome.heard.append(error(CODE_REFUSED));
        outcome.sent.remove(Route::FILE);
        outcome.disk = QStringList{QStringLiteral("one.txt gone")};
    }
    outcome.heard.append(QStringLiteral("downloadFinished()"));
    return outcome;
}

Outcome loginOutcome(const Cell &cell, const Course &course)
{
    if (cell.request.route == Route::CHECK)
        return checkOutcome(cell, course);
    return cell.request.route == Route::TOKEN ? tokenOutcome(cell, course) : afterLoginOutcome(cell, course);
}

// Questions of one request

struct Answers
{
    QString good;            ///< heard when the answer is right
    QString unreadable;      ///< heard when there is nothing in it
    QString failed;          ///< "%1" stands for the code; heard when there is none
    bool isEmptyToo = false; ///< the empty list is heard after the failure, too
};

Answers answersTo(const QString &title)
{
    static const QMap<QString, Answers> ANSWERS{
        {QStringLiteral("password reset"), {{}, {}, QStringLiteral("errorOccurred(%1)")}},
        {QStringLiteral("project list"),
         {QStringLiteral("projectInfoReceived(some)"), QStringLiteral("projectInfoReceived(none)"),
          QStringLiteral("queryRemoteProjectsError(%1)")}},
        {QStringLiteral("upload statuses"),
         {QStringLiteral("uploadStatusInfoReceived(some)"), QStringLiteral("uploadStatusInfoReceived(none)"),
          QStringLiteral("errorOccurred(%1)"), true}},
        {QStringLiteral("link of a media file"),
         {QStringLiteral("singleFileDownloadLinkReceived()"), QStringLiteral("errorOccurred(0)"),
          QStringLiteral("errorOccurred(%1)")}},
        {QStringLiteral("links of all media files"),
         {QStringLiteral("allProjectsMediaDownloadLinkReceived(some)"),
          QStringLiteral("allProjectsMediaDownloadLinkReceived(none)"), QStringLiteral("errorOccurred(%1)"), true}},
    };
    return ANSWERS.value(title);
}

QStringList unlessEmpty(const QString &text)
{
    return text.isEmpty() ? QStringList() : QStringList{text};
}

QStringList heardOfStruckQuestion(const Cell &cell, const Course &course)
{
    const Answers answers = answersTo(cell.request.title);
    const bool isJson = cell.request.route == Route::STATUSES;
    switch (course.end) {
    case End::Good:
        return unlessEmpty(answers.good);
    case End::Shortened: // XML loses nothing but the end of its last tag
        return unlessEmpty(isJson ? answers.unreadable : answers.good);
    case End::Unreadable:
        return unlessEmpty(answers.unreadable);
    case End::Failed:
        return QStringList{answers.failed.arg(codeFor(course.error))}
               + (answers.isEmptyToo ? QStringList{answers.unreadable} : QStringList());
    case End::TimedOut:
    case End::Pending:
        break;
    }
    return {};
}

/// The host asks no more after a question that stays open.
int callsOf(const Cell &cell, const Course &course)
{
    return course.end == End::Pending ? cell.occurrence : cell.request.occurrences;
}

/// A token that has expired is good for no later request either.
bool meetsTheSame(const Cell &cell, int call)
{
    return call == cell.occurrence
           || (call > cell.occurrence && isKind(cell, "expiredToken") && cell.request.traits.bearer);
}

Outcome questionOutcome(const Cell &cell, const Course &course)
{
    Outcome outcome;
    const int calls = callsOf(cell, course);
    for (int call = 1; call <= calls; ++call) {
        const QStringList heard = meetsTheSame(cell, call) ? heardOfStruckQuestion(cell, course)
                                                           : unlessEmpty(answersTo(cell.request.title).good);
        outcome.heard += heard;
        outcome.heardByCall.append(heard.size());
    }
    outcome.log = failureLines(cell, course);
    outcome.sent.insert(cell.request.route, calls - 1 + course.sends);
    if (cell.request.title == QLatin1String("password reset"))
        outcome.stored = QStringList{numberInWords(calls - 1 + course.worked) + QStringLiteral(" resets")};
    return outcome;
}

// Files of data

QString leftOfFile(const Cell &cell, const Course &course)
{
    switch (course.end) {
    case End::Good:
        return QStringLiteral("whole");
    case End::Shortened:
        return QStringLiteral("part");
    case End::Unreadable:
        if (isKind(cell, "emptyBody"))
            return QStringLiteral("empty");
        return isKind(cell, "truncatedBody") ? QStringLiteral("part") : QStringLiteral("other");
    case End::Failed:
        if (isKind(cell, "contentLengthTooLong"))
            return QStringLiteral("whole");
        // What has come stays; the text of a refusal is no part of the file.
        return isKind(cell, "resetInBody") || isKind(cell, "cutBody") || isKind(cell, "stallInBody")
                   ? QStringLiteral("part")
                   : QStringLiteral("empty");
    case End::TimedOut:
    case End::Pending: // until the host aborts it
        break;
    }
    return QStringLiteral("gone");
}

// Here an end without a name counts among "any other".
int codeOfDataDownload(const QString &error)
{
    return error == QLatin1String("UnknownNetworkError") ? CODE_NETWORK : codeFor(error);
}

Outcome dataOutcome(const Cell &cell, const Course &course)
{
    Outcome outcome;
    const int calls = callsOf(cell, course);
    for (int call = 1; call <= calls; ++call) {
        const bool isStruck = meetsTheSame(cell, call);
        QStringList heard;
        if (isStruck && course.end == End::Failed)
            heard.append(error(codeOfDataDownload(course.error)));
        if (!isStruck || course.end != End::Pending)
            heard.append(QStringLiteral("downloadFinished()"));
        outcome.heard += heard;
        outcome.heardByCall.append(heard.size());
        outcome.disk.append(
            QStringLiteral("%1 %2").arg(call).arg(isStruck ? leftOfFile(cell, course) : QStringLiteral("whole")));
    }
    outcome.sent.insert(cell.request.route, calls - 1 + course.sends);
    return outcome;
}

// Uploads

/// What the platform holds of an upload.
struct Stored
{
    bool bucket = true;
    int files = 0;
    QString project = QStringLiteral("uploaded");
    int completed = 0; // uploads in parts
    int open = 0;
    int aborted = 0;

    QStringList lines() const
    {
        QStringList lines{bucket ? QStringLiteral("bucket") : QStringLiteral("no bucket"),
                          QStringLiteral("%1 files").arg(files), QStringLiteral("project ") + project};
        for (const auto &[number, name] :
             {std::pair{aborted, "aborted"}, std::pair{completed, "completed"}, std::pair{open, "open"}}) {
            if (number > 0)
                lines.append(partsLine(number, QLatin1String(name)));
        }
        return lines;
    }
};

const QString BEGUN = QStringLiteral("begun");
const QString CANCELLED = QStringLiteral("cancelled");

QString done(int files, int total)
{
    return QStringLiteral("%1 of %2").arg(files).arg(total);
}

Outcome finishedUpload(const Cell &cell, const Course &course, const Stored &stored, int files)
{
    Outcome outcome;
    outcome.heard = QStringList{QStringLiteral("uploadFinished()")};
    outcome.log = failureLines(cell, course);
    outcome.sent = requestsOf(cell, course);
    outcome.stored = stored.lines();
    outcome.state = done(files, files);
    return outcome;
}

/// An upload that ends with the struck request, and with nothing but this error.
Outcome endedUpload(const Cell &cell, const Course &course, int code, const Stored &stored, const QString &state)
{
    Outcome outcome;
    outcome.heard = QStringList{error(code)};
    outcome.log = failureLines(cell, course);
    outcome.sent = requestsUpTo(cell, course);
    outcome.stored = stored.lines();
    outcome.state = state;
    return outcome;
}

int codeOfEnd(const Course &course)
{
    if (course.end == End::TimedOut)
        return CODE_TIME_OUT;
    return course.end == End::Failed ? codeFor(course.error) : CODE_NETWORK;
}

Outcome beginOutcome(const Cell &cell, const Course &course)
{
    if (course.end == End::Good || course.end == End::Shortened)
        return finishedUpload(cell, course, {true, FILES}, FILES);
    return endedUpload(cell, course, codeOfEnd(course),
                       {false, 0, course.worked > 0 ? BEGUN : QStringLiteral("unknown")}, done(0, 0));
}

// A query that was answered in any way counts as answered; without the word "true" the bucket is made.
Outcome bucketQueryOutcome(const Cell &cell, const Course &course)
{
    if (course.end == End::TimedOut)
        return endedUpload(cell, course, CODE_TIME_OUT, {false, 0, BEGUN}, done(0, 0));
    return finishedUpload(cell, course, {true, FILES}, FILES);
}

// A creation that was answered in any way counts as done; if it was not, the first file finds no bucket.
Outcome bucketCreationOutcome(const Cell &cell, const Course &course)
{
    if (course.end == End::TimedOut)
        return endedUpload(cell, course, CODE_TIME_OUT, {course.worked > 0, 0, BEGUN}, done(0, 0));
    if (course.worked > 0)
        return finishedUpload(cell, course, {true, FILES}, FILES);
    Outcome outcome = endedUpload(cell, course, CODE_NETWORK, {false, 0, BEGUN}, done(0, FILES));
    outcome.log += QStringList{failureLine(QStringLiteral("ListFilesFromLocationsRequestHandle"), NOT_FOUND),
                               failureLine(QStringLiteral("UploadFileRequestHandle"), NOT_FOUND)};
    outcome.sent.insert(Route::LISTING, 1);
    outcome.sent.insert(Route::PUT_FILE, 1);
    return outcome;
}

/// The host aborts an upload that hangs at the struck request: nothing is heard, and the platform is told.
Outcome abortedUpload(const Cell &cell, const Course &course, Stored stored, const QString &state)
{
    Outcome outcome = endedUpload(cell, course, 0, stored, state);
    outcome.heard.clear();
    outcome.sent.insert(Route::CANCEL, 1);
    return outcome;
}

// Without a listing everything is sent.
Outcome uploadListingOutcome(const Cell &cell, const Course &course)
{
    if (course.end == End::Pending)
        return abortedUpload(cell, course, {true, 0, CANCELLED}, done(0, 0));
    return finishedUpload(cell, course, {true, FILES}, FILES);
}

// The answer to a file is not read; only how its request ends counts.
Outcome singleFileOutcome(const Cell &cell, const Course &course)
{
    const int before = cell.occurrence - 1;
    const int files = before + (course.worked > 0 ? 1 : 0);
    if (course.end == End::Pending) {
        Outcome outcome = abortedUpload(cell, course, {true, files, CANCELLED}, done(before, FILES));
        outcome.heard = QStringList{error(CODE_CANCELLED)}; // for the file in flight
        return outcome;
    }
    if (course.end == End::Failed)
        return endedUpload(cell, course, codeFor(course.error), {true, files, BEGUN}, done(before, FILES));
    return finishedUpload(cell, course, {true, FILES}, FILES);
}

// The end is heard when the notice is sent; that it failed is heard behind.
Outcome endNoticeOutcome(const Cell &cell, const Course &course)
{
    Outcome outcome
        = finishedUpload(cell, course, {true, FILES, course.worked > 0 ? QStringLiteral("uploaded") : BEGUN}, FILES);
    if (course.end == End::Failed)
        outcome.heard.append(error(codeFor(course.error)));
    return outcome;
}

// Nobody waits for a transcoding; a failure is logged.
Outcome transcodingOutcome(const Cell &cell, const Course &course)
{
    const int calls = callsOf(cell, course);
    Outcome outcome;
    outcome.log = failureLines(cell, course);
    for (int call = 1; call <= calls; ++call) {
        outcome.heard.append(QStringLiteral("uploadFinished()"));
        outcome.heardByCall.append(1);
    }
    for (const QString &step : cell.request.steps.mid(0, calls * cell.request.steps.size() / cell.request.occurrences))
        ++outcome.sent[step];
    outcome.sent[cell.request.route] += course.sends - 1;
    outcome.stored = QStringList{QStringLiteral("%1 transcoded").arg(calls - 1 + (course.worked > 0 ? 1 : 0))};
    outcome.state = done(1, 1);
    return outcome;
}

// Files in parts

int budgetLeft(const Course &course)
{
    return RESEND_BUDGET - qMax(0, course.failures - 1);
}

/// Adds the abort of the upload in parts, and how often it is sent when the platform refuses it so.
void addAbort(Outcome &outcome, const Cell &cell, const Course &course, const QString &refusal = {})
{
    if (holdsUpTheNext(cell))
        return;
    const int sends = refusal.isEmpty() ? 1 : 1 + budgetLeft(course);
    outcome.sent.insert(Route::ABORT, sends);
    if (!refusal.isEmpty())
        outcome.log += times(sends, failureLine(PARTS_HANDLE, refusal));
}

Outcome endedParts(const Cell &cell, const Course &course, const Stored &stored)
{
    return course.end == End::Pending ? abortedUpload(cell, course, stored, done(0, 1))
                                      : endedUpload(cell, course, codeOfEnd(course), stored, done(0, 1));
}

QString projectAfter(const Course &course)
{
    return course.end == End::Pending ? CANCELLED : BEGUN;
}

/// An answer that spells its end tag right is found in the text, though no XML reader can read it.
bool isAcknowledged(const Cell &cell, const Course &course)
{
    return course.end == End::Good || course.end == End::Shortened || isKind(cell, "corruptBody");
}

// An upload in parts without a number is refused at its first part, and so is its abort.
Outcome beginOfPartsOutcome(const Cell &cell, const Course &course)
{
    if (course.end == End::Good || course.end == End::Shortened) {
        Stored stored{true, 1};
        stored.completed = 1;
        stored.open = course.worked - 1; // each begin that was carried out made one
        return finishedUpload(cell, course, stored, 1);
    }
    Stored stored{true, 0, projectAfter(course)};
    stored.open = course.worked;
    Outcome outcome = endedParts(cell, course, stored);
    if (!isAcknowledged(cell, course)) {
        addAbort(outcome, cell, course, BAD_REQUEST);
        return outcome;
    }
    outcome.sent.insert(Route::PART, 1 + RESEND_BUDGET);
    outcome.sent.insert(Route::ABORT, 1); // the budget is spent
    outcome.log += times(1 + RESEND_BUDGET + 1, failureLine(PARTS_HANDLE, BAD_REQUEST));
    return outcome;
}

Outcome partsFinished(const Cell &cell, const Course &course)
{
    Stored stored{true, 1};
    stored.completed = 1;
    return finishedUpload(cell, course, stored, 1);
}

Outcome partsAborted(const Cell &cell, const Course &course)
{
    Stored stored{true, 0, projectAfter(course)};
    (holdsUpTheNext(cell) ? stored.open : stored.aborted) = 1;
    Outcome outcome = endedParts(cell, course, stored);
    addAbort(outcome, cell, course);
    return outcome;
}

Outcome partOutcome(const Cell &cell, const Course &course)
{
    return isAcknowledged(cell, course) ? partsFinished(cell, course) : partsAborted(cell, course);
}

// What is complete cannot be aborted any more.
Outcome completionOutcome(const Cell &cell, const Course &course)
{
    if (isAcknowledged(cell, course))
        return partsFinished(cell, course);
    if (course.worked == 0)
        return partsAborted(cell, course);
    Stored stored{true, 1, projectAfter(course)};
    stored.completed = 1;
    Outcome outcome = endedParts(cell, course, stored);
    addAbort(outcome, cell, course, CONFLICT);
    return outcome;
}

// Whatever becomes of the abort, the host hears nothing of it.
Outcome abortOfPartsOutcome(const Cell &cell, const Course &course)
{
    Outcome outcome;
    outcome.log = failureLines(cell, course);
    outcome.sent = requestsOf(cell, course);
    Stored stored{true, 0, CANCELLED};
    (course.worked > 0 ? stored.aborted : stored.open) = 1;
    outcome.stored = stored.lines();
    outcome.state = done(0, 1);
    return outcome;
}

Outcome abortNoticeOutcome(const Cell &cell, const Course &course)
{
    Outcome outcome;
    outcome.heard = QStringList{error(CODE_CANCELLED)}; // for the file in flight
    outcome.log = failureLines(cell, course);
    outcome.sent = requestsOf(cell, course);
    outcome.stored = Stored{true, 0, course.worked > 0 ? CANCELLED : BEGUN}.lines();
    outcome.state = done(0, FILES);
    return outcome;
}

Outcome uploadOutcome(const Cell &cell, const Course &course)
{
    using Rule = Outcome (*)(const Cell &, const Course &);
    // clang-format off
    static const QMap<QString, Rule> RULES {
        { Route::BEGIN, beginOutcome },         { Route::EXISTS, bucketQueryOutcome },    { Route::BUCKET, bucketCreationOutcome },
        { Route::LISTING, uploadListingOutcome }, { Route::PUT_FILE, singleFileOutcome }, { Route::UPLOADED, endNoticeOutcome },
        { Route::TRANSCODING, transcodingOutcome }, { Route::INIT, beginOfPartsOutcome }, { Route::PART, partOutcome },
        { Route::COMPLETE, completionOutcome }, { Route::ABORT, abortOfPartsOutcome },    { Route::CANCEL, abortNoticeOutcome },
    };
    // clang-format on
    return RULES.value(cell.request.route)(cell, course);
}

// Downloads

QStringList filesOnDisk(const QString &first, const QString &second, const QString &third)
{
    return {QStringLiteral("1 ") + first, QStringLiteral("2 ") + second, QStringLiteral("3 ") + third};
}

const QString WHOLE = QStringLiteral("whole");
const QString GONE = QStringLiteral("gone");

Outcome nothingDownloaded(const Cell &cell, const Course &course)
{
    Outcome outcome;
    outcome.log = failureLines(cell, course);
    outcome.sent = requestsUpTo(cell, course);
    outcome.disk = filesOnDisk(GONE, GONE, GONE);
    outcome.state = done(0, 0);
    return outcome;
}

Outcome wholeDownload(const Cell &cell, const Course &course)
{
    Outcome outcome;
    outcome.heard = QStringList{QStringLiteral("downloadFinished()")};
    outcome.log = failureLines(cell, course);
    outcome.sent = requestsOf(cell, course);
    outcome.disk = filesOnDisk(WHOLE, WHOLE, WHOLE);
    outcome.state = done(FILES, FILES);
    return outcome;
}

// A listing in which nothing can be read is that of an empty project.
Outcome downloadListingOutcome(const Cell &cell, const Course &course)
{
    if (course.end == End::Good || course.end == End::Shortened)
        return wholeDownload(cell, course);
    Outcome outcome = nothingDownloaded(cell, course);
    if (course.end == End::Failed)
        outcome.heard.append(error(codeFor(course.error)));
    if (course.end != End::Pending)
        outcome.heard.append(QStringLiteral("downloadFinished()"));
    return outcome;
}

// A failed file does not keep the others. What is whole as far as the transport can tell is counted.
Outcome fileOutcome(const Cell &cell, const Course &course)
{
    if (course.end == End::Pending) {
        Outcome outcome = nothingDownloaded(cell, course); // the abort takes the folder away
        // Until the first bytes have come, nothing is told of the files.
        outcome.state = cell.occurrence == 1 ? done(0, 0) : done(cell.occurrence - 1, FILES);
        return outcome;
    }
    Outcome outcome = wholeDownload(cell, course);
    outcome.disk[cell.occurrence - 1] = QStringLiteral("%1 %2").arg(cell.occurrence).arg(leftOfFile(cell, course));
    if (course.end == End::Failed) {
        outcome.heard.prepend(error(codeFor(course.error)));
        outcome.state = done(FILES - 1, FILES);
    }
    return outcome;
}

Outcome ruledOutcome(const Cell &cell, const Course &course)
{
    if (cell.request.isLogin())
        return loginOutcome(cell, course);
    if (cell.request.scenario == Scenario::Ask)
        return questionOutcome(cell, course);
    if (cell.request.scenario == Scenario::FetchData)
        return dataOutcome(cell, course);
    if (cell.request.isUpload())
        return uploadOutcome(cell, course);
    return cell.request.route == Route::LISTING ? downloadListingOutcome(cell, course) : fileOutcome(cell, course);
}

// Codes for the table

QStringList newErrors(const Outcome &usual, const Outcome &outcome)
{
    QStringList codes;
    for (const QString &signal : outcome.heard) {
        const bool tellsError = signal.startsWith(QLatin1String("errorOccurred"))
                                || signal.startsWith(QLatin1String("queryRemoteProjectsError"));
        if (tellsError && !usual.heard.contains(signal))
            codes.append(signal.section(QLatin1Char('('), 1).chopped(1));
    }
    codes.removeDuplicates(); // what has become of one token is told to all who come with it
    return codes;
}

bool leavesTheSame(const Outcome &usual, const Outcome &outcome)
{
    return usual.heard == outcome.heard && usual.disk == outcome.disk && usual.stored == outcome.stored
           && usual.state == outcome.state;
}

QString codeWithoutError(const Cell &cell, const Course &course, const Outcome &usual, const Outcome &outcome)
{
    if (!leavesTheSame(usual, outcome))
        return QStringLiteral("≠");
    if (course.end == End::TimedOut)
        return QStringLiteral("%1 s").arg(cell.request.waitSeconds);
    if (course.failures > 0 && cell.request.isSentAgain && course.end == End::Good)
        return QStringLiteral("↻");
    return usual.log == outcome.log ? QStringLiteral("✓") : QStringLiteral("log");
}

} // namespace

Outcome expectedOutcome(const Cell &cell)
{
    Outcome outcome = ruledOutcome(cell, courseOf(cell));
    outcome.log.sort();
    return outcome;
}

// The next file is sent again. For the abort of an upload in parts nothing is left of the file's budget of re-sends, so the
// platform keeps the parts until it forgets them by itself; the host has heard of the failure before.
Outcome outcomeTakenAlong(const Cell &cell)
{
    Outcome outcome = expectedOutcome(cell);
    if (!mayTakeAlong(cell))
        return outcome;
    if (cell.request.route == Route::FILE && cell.occurrence < FILES)
        outcome.log.append(failureLine(cell.request.handle, REMOTE_CLOSED));
    if (cell.request.route != Route::ABORT && outcome.sent.remove(Route::ABORT) > 0) {
        const QStringList failures = failureLines(cell, courseOf(cell));
        outcome.log = failures + QStringList{failures.last()};
        outcome.stored.replaceInStrings(partsLine(1, QStringLiteral("aborted")), partsLine(1, QStringLiteral("open")));
    }
    outcome.log.sort();
    return outcome;
}

QString codeOf(const Cell &cell)
{
    const Course course = courseOf(cell);
    if (course.end == End::Pending)
        return QStringLiteral("…");
    const Outcome usual = ruledOutcome(cell, Course());
    const Outcome outcome = ruledOutcome(cell, course);
    const QStringList codes = newErrors(usual, outcome);
    return codes.isEmpty() ? codeWithoutError(cell, course, usual, outcome) : codes.join(QLatin1Char('+'));
}

} // namespace Korvo::Web::Faults
