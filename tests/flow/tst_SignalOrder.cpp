#include "flow/Folders.h"
#include "flow/Session.h"
#include "support/LogCapture.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtTest/QtTest>

#include <functional>

using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

namespace {

const QString PROJECT = QStringLiteral("6f1c2f1e-3d2c-4a1b-9e0f-112233445566");
const QString BUCKET_FOLDER = QStringLiteral("stored");
const QString OTHER_USER = QStringLiteral("other@korvo.example");
constexpr int STORED_FILES = 4;

// The words of the table that stand for several signals.
const QMap<QString, QString> WORDS{
    {QStringLiteral("*progress*"), QStringLiteral("(progress )*")},
    {QStringLiteral("*progress and failures*"), QStringLiteral("(progress |errorOccurred )*")},
    {QStringLiteral("*cancelled files*"), QStringLiteral("(errorOccurred )*")},
    {QStringLiteral("*other files*"), QStringLiteral("(progress |errorOccurred |downloadFinished )*")},
};

/// `name(id, true)` becomes "name(true) ": of the arguments only what switches on or off counts.
QString eventOf(const QString &described)
{
    static const QRegularExpression form(QStringLiteral("^`(\\w+)(?:\\((?:id, )?(true|false)\\))?`$"));
    const QRegularExpressionMatch match = form.match(described);
    const QString state = match.captured(2);
    return match.captured(1) + (state.isEmpty() ? QString() : QStringLiteral("\\(%1\\)").arg(state)) + QLatin1Char(' ');
}

QString patternOf(const QString &item)
{
    if (WORDS.contains(item))
        return WORDS.value(item);
    if (item.startsWith(QLatin1Char('[')))
        return QStringLiteral("(%1)?").arg(eventOf(item.mid(1, item.size() - 2)));
    return eventOf(item);
}

/// What a cell of the table says about the order, as a pattern of all the signals that come.
QString orderOf(const QString &cell)
{
    QStringList ways;
    for (const QString &way : cell.split(QStringLiteral(" or "))) {
        QString pattern;
        for (const QString &item : way.split(QStringLiteral(", `"))
                                       .join(QStringLiteral("\t`"))
                                       .replace(QStringLiteral(", ["), QStringLiteral("\t["))
                                       .replace(QStringLiteral(", *"), QStringLiteral("\t*"))
                                       .split(QLatin1Char('\t')))
            pattern += patternOf(item);
        ways.append(pattern);
    }
    return QStringLiteral("^(%1)$").arg(ways.join(QLatin1Char('|')));
}

/// The table of the document: order by call.
QMap<QString, QString> describedOrders()
{
    QFile file(QStringLiteral(DOCUMENTS_DIR "/signals.md"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString text = QString::fromUtf8(file.readAll());
    const int start = text.indexOf(QStringLiteral("## What comes after which call"));
    const QString table = text.mid(start, text.indexOf(QStringLiteral("## Uploads")) - start);
    static const QRegularExpression row(QStringLiteral("^\\| ([^|]+) \\| ([^|]+) \\|$"),
                                        QRegularExpression::MultilineOption);
    QMap<QString, QString> orders;
    for (auto rows = row.globalMatch(table); rows.hasNext();) {
        const QRegularExpressionMatch match = rows.next();
        if (match.captured(1) != QLatin1String("Call"))
            orders.insert(match.captured(1), match.captured(2));
    }
    return orders;
}

bool isProgress(const QByteArray &name)
{
    return name.endsWith("ProgressChanged") || name.endsWith("FilesChanged") || name.startsWith("filesTo");
}

QString shown(const SignalEvent &event)
{
    if (isProgress(event.name))
        return QStringLiteral("progress ");
    const QVariant last = event.arguments.isEmpty() ? QVariant() : event.arguments.last();
    const QString state = last.type() == QVariant::Bool ? QStringLiteral("(%1)").arg(last.toString()) : QString();
    return QString::fromLatin1(event.name) + state + QLatin1Char(' ');
}

using Host = std::function<void(Session &, const QString &folder)>;

/// One way in which a call can go.
struct Scenario
{
    const char *name;
    const char *call;       ///< first cell of the table's row
    Host act;               ///< what the host does
    const char *end;        ///< the last signal to wait for
    QJsonObject fault = {}; ///< what the platform spoils meanwhile
    Host before = {};       ///< what the host has begun, and the fault holds up, before it acts
    int endings = 1;        ///< how often the last signal comes
};

QJsonObject faultOf(const char *kind, const char *route, int count = 1)
{
    return {{QStringLiteral("kind"), QLatin1String(kind)},
            {QStringLiteral("route"), QLatin1String(route)},
            {QStringLiteral("count"), count}};
}

/// Answered with 404, which is not tried again.
QJsonObject notFound(const char *route)
{
    QJsonObject fault = faultOf("status", route);
    fault.insert(QStringLiteral("status"), 404);
    return fault;
}

/// Never answered.
QJsonObject heldUp(const char *route)
{
    return faultOf("noAnswer", route, 0);
}

Host logIn(const QString &user, const QString &password)
{
    return [user, password](Session &session, const QString &) { session->login(user, password); };
}

void logInWithCode(Session &session, const QString &)
{
    session->login(SECURE_USER, SECURE_PASSWORD);
    QVERIFY(session.signalsSeen().waitFor("tokenAuthenticationNeeded"));
    session.signalsSeen().clear();
    session->loginWithToken(SECURE_CODE);
}

void cancelLogin(Session &session, const QString &)
{
    session->cancelLogin();
}

void logOut(Session &session, const QString &)
{
    session->logout();
}

void resetPassword(Session &session, const QString &)
{
    session->resetPassword(USER);
}

QList<Scenario> loginScenarios()
{
    const char *const login = "`login()`, `loginWithToken()`";
    const char *const secondFactor = "`login()` when a second factor is needed";
    const char *const cancel = "`cancelLogin()` when the password is on its way";
    const Host again = logIn(USER, PASSWORD);
    return {
        {"login of the same user", login, again, "loginResult"},
        {"login of another user", login, logIn(OTHER_USER, PASSWORD), "loginResult"},
        {"refused login", login, logIn(USER, QStringLiteral("wrong")), "loginResult"},
        {"failed login", login, again, "loginResult", faultOf("garbage", "Token")},
        {"login with a code", login, logInWithCode, "loginResult"},
        {"second factor", secondFactor, logIn(SECURE_USER, SECURE_PASSWORD), "tokenAuthenticationNeeded"},
        {"cancelled login", cancel, cancelLogin, "loginResult", heldUp("Token"), again},
        {"logout", "`logout()`", logOut, "loginStatusChanged"},
        {"reset", "`resetPassword()`", resetPassword, ""},
        {"failed reset", "`resetPassword()`", resetPassword, "errorOccurred", notFound("api/Account/ResetPassword")},
    };
}

void queryProjects(Session &session, const QString &)
{
    session->queryRemoteProjects();
}

void queryStatuses(Session &session, const QString &)
{
    session->queryUploadProjectStatus({PROJECT});
}

void askForLink(Session &session, const QString &)
{
    session->startSingleProjectFileDownload(QUuid(PROJECT), QStringLiteral("f1.jpg"));
}

void askForLinks(Session &session, const QString &)
{
    session->startAllProjectsMediaDownload(PROJECT);
}

QList<Scenario> queryScenarios()
{
    const char *const projects = "`queryRemoteProjects()`";
    const char *const statuses = "`queryUploadProjectStatus()`";
    const char *const link = "`startSingleProjectFileDownload()`";
    const char *const links = "`startAllProjectsMediaDownload()`";
    const char *const linksEnd = "allProjectsMediaDownloadLinkReceived";
    return {
        {"projects", projects, queryProjects, "projectInfoReceived"},
        {"no projects", projects, queryProjects, "queryRemoteProjectsError", notFound("api/Projects")},
        {"statuses", statuses, queryStatuses, "uploadStatusInfoReceived"},
        {"no statuses", statuses, queryStatuses, "uploadStatusInfoReceived", notFound("api/UploadProject/Statuses")},
        {"link", link, askForLink, "singleFileDownloadLinkReceived"},
        {"no link", link, askForLink, "errorOccurred", faultOf("emptyBody", "api/Projects/*")},
        {"links", links, askForLinks, linksEnd},
        {"no links", links, askForLinks, linksEnd, notFound("api/Projects/*")},
    };
}

void upload(Session &session, const QString &folder)
{
    session->uploadProject(QStringLiteral("order"), QStringLiteral("order"), folder + QStringLiteral("/in/"),
                           PROJECT_DATE, 2);
}

void abortUpload(Session &session, const QString &)
{
    session->abortUpload(1);
}

QList<Scenario> uploadScenarios()
{
    const char *const failing = "an upload that fails";
    return {
        {"upload", "an upload that ends well", upload, "anyUploadActiveChanged(false)"},
        {"failed upload", failing, upload, "errorOccurred", notFound("api/UploadProject/Init")},
        {"failed file", failing, upload, "errorOccurred", notFound("api/bucket/putfile")},
        {"aborted upload", "`abortUpload()`", abortUpload, "errorOccurred", heldUp("api/bucket/putfile"), upload},
    };
}

Host download(int simultaneous)
{
    return [simultaneous](Session &session, const QString &folder) {
        session->downloadProject(PROJECT, BUCKET_FOLDER, folder + QStringLiteral("/out"), simultaneous);
    };
}

void downloadData(Session &session, const QString &folder)
{
    session->downloadQuickviewProjectData(PROJECT, folder + QStringLiteral("/data.xml"));
}

void abortDownload(Session &session, const QString &)
{
    session->abortDownload(1);
}

void downloadNothing(Session &session, const QString &)
{
    session->downloadProject(QString(), QString(), QString(), 0);
}

QList<Scenario> downloadScenarios()
{
    const char *const project = "a project download";
    const char *const data = "Quickview data, a single file";
    const char *const end = "downloadActiveChanged(false)";
    return {
        {"download", project, download(1), end},
        {"download all at once", project, download(9), "downloadFinished", {}, {}, 1 + STORED_FILES},
        {"download with a failure", project, download(1), end, notFound("webdav/*")},
        {"aborted download", "`abortDownload()`", abortDownload, end, heldUp("webdav/*"), download(2)},
        {"data", data, downloadData, end},
        {"no data", data, downloadData, end, notFound("api/Projects/*")},
        {"bad argument", "a transfer call with a bad argument", downloadNothing, "errorOccurred"},
    };
}

} // namespace

Q_DECLARE_METATYPE(Scenario)

class tst_SignalOrder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void comesAsTheDocumentSays_data();
    void comesAsTheDocumentSays();
    void everyRowOfTheDocumentIsTried();

private:
    bool hearEverythingSoFar(QString *heard);
    QString recorded() const;

    LocalPlatform platform;
    QMap<QString, QString> orders;
    QSet<QString> tried;
    QScopedPointer<LogCapture> log;
    QScopedPointer<QTemporaryDir> folder;
    QScopedPointer<Session> session;
};

void tst_SignalOrder::initTestCase()
{
    QCOMPARE(platform.start(), QString());
    QJsonArray objects;
    for (int i = 0; i < STORED_FILES; ++i)
        objects.append(QJsonObject{{QStringLiteral("key"), QStringLiteral("Picture/Sec/f%1.jpg").arg(i)},
                                   {QStringLiteral("size"), 1000 + i}});
    platform.addProject(PROJECT, BUCKET_FOLDER, objects);
    platform.addAccount({{QStringLiteral("email"), OTHER_USER},
                         {QStringLiteral("password"), PASSWORD},
                         {QStringLiteral("companyId"), COMPANY}});
    orders = describedOrders();
    QVERIFY(orders.size() > 10);
}

void tst_SignalOrder::init()
{
    log.reset(new LogCapture);
    folder.reset(new QTemporaryDir);
    session.reset(new Session);
    QVERIFY(session->logIn());
    QVERIFY(writeFile(folder->path(), QStringLiteral("in/a.txt"), "a"));
    QVERIFY(writeFile(folder->path(), QStringLiteral("in/b.txt"), "b"));
}

void tst_SignalOrder::cleanup()
{
    platform.clearFaults();
    session.reset();
    folder.reset();
    log.reset();
}

// The list of projects is the one question with a single signal for an answer, logged in or not. It comes behind
// everything that was asked for before, and is taken out of the record again.
bool tst_SignalOrder::hearEverythingSoFar(QString *heard)
{
    const auto answers = [this] {
        return session->signalsSeen().count("projectInfoReceived")
               + session->signalsSeen().count("queryRemoteProjectsError");
    };
    const int before = answers();
    session->api().queryRemoteProjects();
    if (!eventually([&] { return answers() > before; }))
        return false;
    static const QRegularExpression lastAnswer(
        QStringLiteral("(projectInfoReceived|queryRemoteProjectsError) (?!.*(projectInfo|queryRemote))"));
    *heard = recorded().remove(lastAnswer);
    return true;
}

QString tst_SignalOrder::recorded() const
{
    QString all;
    for (const SignalEvent &event : session->signalsSeen().events())
        all += shown(event);
    return all;
}

void tst_SignalOrder::comesAsTheDocumentSays_data()
{
    QTest::addColumn<Scenario>("scenario");
    const QList<Scenario> scenarios = loginScenarios() + queryScenarios() + uploadScenarios() + downloadScenarios();
    for (const Scenario &scenario : scenarios)
        QTest::newRow(scenario.name) << scenario;
}

void tst_SignalOrder::comesAsTheDocumentSays()
{
    QFETCH(Scenario, scenario);
    const QString call = QString::fromLatin1(scenario.call);
    QVERIFY2(orders.contains(call), qPrintable(call));
    tried.insert(call);

    const int fault = scenario.fault.isEmpty() ? 0 : platform.addFault(scenario.fault);
    QString heard;
    if (scenario.before) {
        scenario.before(*session, folder->path());
        QVERIFY(platform.waitForHit(fault));
        QVERIFY(hearEverythingSoFar(&heard));
        session->signalsSeen().clear();
    }
    scenario.act(*session, folder->path());
    const QString end = QString::fromLatin1(scenario.end);
    QVERIFY2(eventually([&] { return recorded().count(end) >= scenario.endings; }), qPrintable(recorded()));
    QVERIFY(hearEverythingSoFar(&heard));

    const QRegularExpression order(orderOf(orders.value(call)));
    QVERIFY2(order.isValid(), qPrintable(order.pattern()));
    QVERIFY2(order.match(heard).hasMatch(), qPrintable(heard + QStringLiteral("is not ") + order.pattern()));
}

void tst_SignalOrder::everyRowOfTheDocumentIsTried()
{
    QStringList untried;
    for (const QString &call : orders.keys()) {
        if (!tried.contains(call))
            untried.append(call);
    }
    QCOMPARE(untried, QStringList());
}

QTEST_GUILESS_MAIN(tst_SignalOrder)

#include "tst_SignalOrder.moc"
