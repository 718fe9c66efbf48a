#include "Appearance.h"
#include "ErrorText.h"
#include "FolderSummary.h"
#include "Language.h"
#include "LogModel.h"
#include "MediaModel.h"
#include "NetworkSettings.h"
#include "ProblemModel.h"
#include "ProjectTableModel.h"
#include "Texts.h"
#include "TransferModel.h"
#include "flow/Folders.h"

#include <QtCore/QRegularExpression>
#include <QtCore/QSettings>
#include <QtCore/QSortFilterProxyModel>
#include <QtCore/QTemporaryDir>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QSslConfiguration>
#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QtTest>

#include <cmath>

using namespace Korvo::Desktop;
using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

Q_DECLARE_METATYPE(Korvo::Desktop::Transfer)

namespace {

ProjectInfo project(const char *name, const char *id, quint64 size = 0, const QDateTime &created = {},
                    bool byWeb = false)
{
    const QString text = QString::fromUtf8(name);
    return ProjectInfo(text, QString::fromUtf8(id), text, created, size, byWeb);
}

QStringList column(const QAbstractItemModel &model, int column)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts.append(model.index(row, column).data().toString());
    return texts;
}

FileInFlight file(const char *name)
{
    const QString text = QString::fromUtf8(name);
    return {text, text, 0};
}

// As the guidelines for accessible contents on the web have it.
double luminance(const QColor &colour)
{
    const auto linear
        = [](double part) { return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4); };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

double contrast(const QColor &one, const QColor &other)
{
    const double first = luminance(one) + 0.05;
    const double second = luminance(other) + 0.05;
    return std::max(first, second) / std::min(first, second);
}

} // namespace

class tst_DesktopModels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void projectsAreATable();
    void newListKeepsTheRowsOfOldProjects();
    void sizesAndDatesSortByValue();
    void transfersAreATreeOfFiles();
    void transferTellsHowItIs_data();
    void transferTellsHowItIs();
    void onlyEndedTransfersAreCleared();
    void problemsTellCauseAndRemedy();
    void problemsStayFew();
    void logKeepsItsLastLines();
    void mediaShowTheirState();
    void everyCodeHasCauseAndRemedy_data();
    void everyCodeHasCauseAndRemedy();
    void loginResultIsExplained();
    void projectNamesBecomeHarmlessFolderNames_data();
    void projectNamesBecomeHarmlessFolderNames();
    void freePathIsNew();
    void summaryCountsWhatAnUploadCarries();
    void palettesAreReadable_data();
    void palettesAreReadable();
    void badNetworkSettingsAreRefused();
    void networkSettingsAreKeptWithoutThePassword();
    void proxyIsPutInForce();
};

void tst_DesktopModels::initTestCase()
{
    QVERIFY(installLanguage(*qApp, QLocale(QLocale::English, QLocale::UnitedKingdom)));
    QCoreApplication::setOrganizationName(QStringLiteral("Korvo"));
    QCoreApplication::setApplicationName(QStringLiteral("tst_DesktopModels"));
}

void tst_DesktopModels::projectsAreATable()
{
    ProjectTableModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setProjects(
        {project("Nord", "1", 60200000, QDateTime(QDate(2026, 3, 3), QTime(14, 5)), true), project("<b>Süd</b>", "2")});
    QCOMPARE(model.columnCount(), 4);
    QCOMPARE(column(model, ProjectTableModel::Name),
             QStringList({QStringLiteral("Nord"), QString::fromUtf8("<b>Süd</b>")}));
    QCOMPARE(column(model, ProjectTableModel::Created),
             QStringList({QStringLiteral("03/03/2026 14:05"), QString::fromUtf8("–")}));
    QCOMPARE(column(model, ProjectTableModel::Size),
             QStringList({QStringLiteral("60.2 MB"), QStringLiteral("0 bytes")}));
    QCOMPARE(column(model, ProjectTableModel::ImportedByWeb),
             QStringList({QStringLiteral("Yes"), QStringLiteral("No")}));
    model.setProjects({});
    QCOMPARE(model.rowCount(), 0);
}

void tst_DesktopModels::newListKeepsTheRowsOfOldProjects()
{
    ProjectTableModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setProjects({project("A", "1"), project("B", "2"), project("C", "3")});
    const QPersistentModelIndex kept = model.index(1, 0);
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    model.setProjects({project("D", "4"), project("B new", "2", 5)});
    QVERIFY(kept.isValid());
    QCOMPARE(kept.data().toString(), QStringLiteral("B new"));
    QCOMPARE(kept.data(ProjectTableModel::ProjectIdRole).toString(), QStringLiteral("2"));
    QCOMPARE(column(model, 0), QStringList({QStringLiteral("B new"), QStringLiteral("D")}));
    QCOMPARE(resets.count(), 0);
}

void tst_DesktopModels::sizesAndDatesSortByValue()
{
    ProjectTableModel model;
    QSortFilterProxyModel sorted;
    sorted.setSourceModel(&model);
    sorted.setSortRole(ProjectTableModel::SortRole);
    const QAbstractItemModelTester tester(&sorted, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setProjects({project("ten", "1", 10000, QDateTime(QDate(2026, 2, 1), QTime(0, 0))),
                       project("nine", "2", 9000, QDateTime(QDate(2025, 12, 31), QTime(0, 0))),
                       project("million", "3", 1000000, QDateTime(QDate(2026, 10, 1), QTime(0, 0)))});
    sorted.sort(ProjectTableModel::Size);
    QCOMPARE(column(sorted, 0),
             QStringList({QStringLiteral("nine"), QStringLiteral("ten"), QStringLiteral("million")}));
    sorted.sort(ProjectTableModel::Created, Qt::DescendingOrder);
    QCOMPARE(column(sorted, 0),
             QStringList({QStringLiteral("million"), QStringLiteral("ten"), QStringLiteral("nine")}));
}

void tst_DesktopModels::transfersAreATreeOfFiles()
{
    TransferModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    Transfer transfer;
    transfer.title = QStringLiteral("First");
    const int first = model.add(transfer);
    transfer.title = QStringLiteral("Second");
    const int second = model.add(transfer);
    model.setFiles(first, {file("a"), file("b")});
    model.setFiles(second, {file("c")});
    model.setFilePercent(first, QStringLiteral("b"), 40);
    QCOMPARE(column(model, 0), QStringList({QStringLiteral("Second"), QStringLiteral("First")}));
    const QModelIndex parent = model.index(1);
    QCOMPARE(model.rowCount(parent), 2);
    QCOMPARE(model.index(1, 0, parent).data(TransferModel::PercentRole).toInt(), 40);
    QCOMPARE(model.index(1, 0, parent).data(TransferModel::NumberRole).toInt(), first);
    QCOMPARE(model.index(1, 0, parent).parent(), parent);

    const QPersistentModelIndex b = model.index(1, 0, parent);
    model.setFiles(first, {file("b"), file("d")});
    QVERIFY(b.isValid());
    QCOMPARE(b.row(), 0);
    QCOMPARE(b.data(TransferModel::PercentRole).toInt(), 40);
    model.change(first, [](Transfer &changed) { changed.stage = Transfer::Stage::Done; });
    model.setFiles(first, {});
    model.removeEnded();
    QVERIFY(!b.isValid());
    QCOMPARE(column(model, 0), QStringList{QStringLiteral("Second")});
    QCOMPARE(model.rowCount(model.index(0)), 1);
}

void tst_DesktopModels::transferTellsHowItIs_data()
{
    QTest::addColumn<Transfer>("transfer");
    QTest::addColumn<QString>("detail");
    QTest::addColumn<int>("percent");
    Transfer transfer;
    QTest::newRow("starting") << transfer << QStringLiteral("Starting…") << -1;
    transfer.filesTotal = 57;
    transfer.filesCompleted = 12;
    transfer.percent = 34;
    transfer.stage = Transfer::Stage::Running;
    QTest::newRow("running") << transfer << QString::fromUtf8("12 of 57 files · 34 %") << 34;
    transfer.stage = Transfer::Stage::Paused;
    QTest::newRow("paused") << transfer << QString::fromUtf8("12 of 57 files · paused") << 34;
    transfer.stage = Transfer::Stage::Failed;
    transfer.error = Error::Server;
    QTest::newRow("failed") << transfer << QStringLiteral("Failed: The platform reports a failure of its own") << 34;
    transfer.stage = Transfer::Stage::Done;
    QTest::newRow("done") << transfer << QString::fromUtf8("Uploaded · 57 files") << 100;
    transfer = {};
    transfer.kind = Transfer::Kind::SingleFile;
    transfer.stage = Transfer::Stage::Running;
    QTest::newRow("single file") << transfer << QStringLiteral("On its way…") << -1;
}

void tst_DesktopModels::transferTellsHowItIs()
{
    QFETCH(Transfer, transfer);
    TransferModel model;
    model.add(transfer);
    QTEST(TransferModel::detail(transfer), "detail");
    QTEST(model.index(0).data(TransferModel::PercentRole).toInt(), "percent");
}

void tst_DesktopModels::onlyEndedTransfersAreCleared()
{
    using Stage = Transfer::Stage;
    TransferModel model;
    for (const Stage stage : {Stage::Starting, Stage::Done, Stage::Confirming, Stage::Failed, Stage::Aborting,
                              Stage::Aborted, Stage::Paused, Stage::Incomplete, Stage::LastFiles}) {
        Transfer transfer;
        transfer.stage = stage;
        model.add(transfer);
    }
    model.removeEnded();
    QCOMPARE(model.rowCount(), 5);
    QVERIFY(!model.any([](const Transfer &transfer) { return transfer.hasEnded(); }));
}

void tst_DesktopModels::problemsTellCauseAndRemedy()
{
    ProblemModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.add({QDateTime(QDate(2026, 3, 3), QTime(14, 5)), Error::FileWrite, QStringLiteral("Kanal")});
    model.add({QDateTime(QDate(2026, 3, 3), QTime(14, 6)), Error::Network, QStringLiteral("Login")});
    const QString text = model.index(1).data().toString();
    QCOMPARE(text,
             QString::fromUtf8("A downloaded file cannot be written\n14:05 · Kanal · code 10\nThe disk is full, or the "
                               "folder is write-protected.\nMake room on the disk, then try again: files that have "
                               "arrived are kept."));
    model.clear();
    QCOMPARE(model.rowCount(), 0);
}

void tst_DesktopModels::problemsStayFew()
{
    ProblemModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    for (int i = 0; i < 250; ++i)
        model.add({QDateTime::currentDateTime(), Error::Network, QString::number(i)});
    QCOMPARE(model.rowCount(), 200);
    QVERIFY(model.index(0).data(ProblemModel::HeadRole).toString().contains(QStringLiteral("249")));
}

void tst_DesktopModels::logKeepsItsLastLines()
{
    LogModel model(50);
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    for (int i = 0; i < 51; ++i)
        model.add({QDateTime(QDate(2026, 3, 3), QTime(14, 5, 6, 7)), QtCriticalMsg, QStringLiteral("KorvoWeb"),
                   QStringLiteral("line\n%1").arg(i)});
    QCOMPARE(model.rowCount(), 50);
    QVERIFY(model.asText().startsWith(QStringLiteral("14:05:06.007\tFailure\tKorvoWeb\tline 1\n")));
}

void tst_DesktopModels::mediaShowTheirState()
{
    MediaModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setLinks({{QStringLiteral("https://x.example/a"), QStringLiteral("picture"), QStringLiteral("a.jpg")},
                    {QStringLiteral("https://x.example/b"), QStringLiteral("video"), QStringLiteral("b.mp4")},
                    {QStringLiteral("file:///etc/passwd"), QStringLiteral("picture"), QStringLiteral("c.jpg")}});
    QCOMPARE(model.state(0), MediaModel::State::Waiting);
    QCOMPARE(model.state(1), MediaModel::State::Video);
    QImage picture(80, 60, QImage::Format_RGB32);
    picture.fill(Qt::red);
    model.setThumbnail(0, picture);
    model.setFailed(2);
    QCOMPARE(model.state(0), MediaModel::State::Shown);
    const QPixmap shown = model.index(0).data(Qt::DecorationRole).value<QPixmap>();
    QCOMPARE(shown.size() / shown.devicePixelRatio(), MediaModel::THUMBNAIL_SIZE);
    QCOMPARE(shown.toImage().pixelColor(shown.rect().center()), QColor(Qt::red));
}

void tst_DesktopModels::everyCodeHasCauseAndRemedy_data()
{
    QTest::addColumn<int>("code");
    for (const int code : {0, 1, 2, 3, 4, 5, 6, 7, 8, 10, 11, 14, 99})
        QTest::addRow("%d", code) << code;
}

void tst_DesktopModels::everyCodeHasCauseAndRemedy()
{
    QFETCH(int, code);
    static QMap<QString, int> titles;
    const Explanation explanation = explain(static_cast<Error>(code));
    QVERIFY(!explanation.title.isEmpty());
    QVERIFY(explanation.cause.endsWith(QLatin1Char('.')));
    QVERIFY(explanation.remedy.endsWith(QLatin1Char('.')));
    QVERIFY2(!titles.contains(explanation.title), "two codes look the same");
    titles.insert(explanation.title, code);
}

void tst_DesktopModels::loginResultIsExplained()
{
    using Result = KorvoWebApi::LoginResult;
    QCOMPARE(explain(Result::LoginResultFalseCredentials, Error::None).title, QStringLiteral("The login was refused"));
    QCOMPARE(explain(Result::LoginResultTimeOut, Error::UnreadableLogin).title, explain(Error::UnreadableLogin).title);
    QCOMPARE(explain(Result::LoginResultTimeOut, Error::None).title, explain(Error::TimeOut).title);
}

void tst_DesktopModels::projectNamesBecomeHarmlessFolderNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("folder");
    QTest::newRow("plain") << QString::fromUtf8("Kanal Süd (2026)") << QString::fromUtf8("Kanal Süd (2026)");
    QTest::newRow("parent") << QStringLiteral("../../etc") << QStringLiteral(".._.._etc");
    QTest::newRow("dots") << QStringLiteral("..") << QStringLiteral("project");
    QTest::newRow("empty") << QString() << QStringLiteral("project");
    QTest::newRow("drive") << QStringLiteral("C:\\x") << QStringLiteral("C__x");
    QTest::newRow("device") << QStringLiteral("con.txt") << QStringLiteral("_con.txt");
    QTest::newRow("closing dot") << QStringLiteral("a. ") << QStringLiteral("a");
    QTest::newRow("control") << QStringLiteral("a\nb") << QStringLiteral("a_b");
    QTest::newRow("long") << QString(300, QLatin1Char('x')) << QString(100, QLatin1Char('x'));
}

void tst_DesktopModels::projectNamesBecomeHarmlessFolderNames()
{
    QFETCH(QString, name);
    QTEST(folderNameFor(name), "folder");
}

void tst_DesktopModels::freePathIsNew()
{
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("a")));
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("a (2)")));
    QCOMPARE(freePath(folder.path(), QStringLiteral("a")), folder.filePath(QStringLiteral("a (3)")));
    QCOMPARE(freePath(folder.path(), QStringLiteral("b")), folder.filePath(QStringLiteral("b")));
}

void tst_DesktopModels::summaryCountsWhatAnUploadCarries()
{
    const QTemporaryDir folder;
    QVERIFY(writeFile(folder.path(), QStringLiteral("project.db3"), "12345"));
    QVERIFY(writeFile(folder.path(), QStringLiteral("a/pic.jpg"), "123"));
    QVERIFY(writeFile(folder.path(), QStringLiteral("b/pic.jpg"), "123"));
    QVERIFY(writeFile(folder.path(), QStringLiteral("empty.txt"), ""));
    QVERIFY(writeFile(folder.path(), QStringLiteral("old.xml_bak"), "gone"));
    QVERIFY(writeFile(folder.path(), QStringLiteral(".hidden"), "gone"));
    const FolderSummary summary = summarise(folder.path(), std::make_shared<std::atomic<bool>>(false));
    QCOMPARE(summary.files, 4);
    QCOMPARE(summary.bytes, 11);
    QCOMPARE(summary.emptyFiles, 1);
    QCOMPARE(summary.sameMediaNames, 1);
    QCOMPARE(summary.unreadable, 0);
    QCOMPARE(summarise(folder.path(), std::make_shared<std::atomic<bool>>(true)).files, 0);
}

void tst_DesktopModels::palettesAreReadable_data()
{
    QTest::addColumn<QPalette>("palette");
    QTest::newRow("light") << lightPalette();
    QTest::newRow("dark") << darkPalette();
}

void tst_DesktopModels::palettesAreReadable()
{
    QFETCH(QPalette, palette);
    constexpr double READABLE = 4.5;
    for (const QPalette::ColorRole ground : {QPalette::Base, QPalette::AlternateBase, QPalette::Window}) {
        const QColor behind = palette.color(ground);
        for (const QPalette::ColorRole role : {QPalette::Text, QPalette::WindowText, QPalette::Link})
            QVERIFY2(contrast(palette.color(role), behind) >= READABLE, qPrintable(QString::number(role)));
        for (const Tone tone : {Tone::Good, Tone::Caution, Tone::Bad, Tone::Quiet})
            QVERIFY2(contrast(toneColour(tone, palette), behind) >= READABLE, qPrintable(QString::number(int(tone))));
    }
    QVERIFY(contrast(palette.color(QPalette::HighlightedText), palette.color(QPalette::Highlight)) >= READABLE);
    QVERIFY(contrast(palette.color(QPalette::ButtonText), palette.color(QPalette::Button)) >= READABLE);
}

void tst_DesktopModels::badNetworkSettingsAreRefused()
{
    const QTemporaryDir folder;
    const QNetworkProxy before = QNetworkProxy::applicationProxy();
    NetworkSettings settings;
    settings.proxyKind = NetworkSettings::ProxyKind::Http;
    QCOMPARE(settings.apply(), QStringLiteral("A proxy needs a host and a port."));
    settings.proxyHost = QStringLiteral("proxy.example");
    settings.proxyPort = 8080;
    settings.authorityFile = folder.filePath(QStringLiteral("nowhere.pem"));
    QVERIFY(settings.apply().contains(QStringLiteral("cannot be read")));
    QVERIFY(writeFile(folder.path(), QStringLiteral("no.pem"), "no certificate"));
    settings.authorityFile = folder.filePath(QStringLiteral("no.pem"));
    QVERIFY(settings.apply().contains(QStringLiteral("holds no certificate")));
    QCOMPARE(QNetworkProxy::applicationProxy(), before);
}

void tst_DesktopModels::networkSettingsAreKeptWithoutThePassword()
{
    const QTemporaryDir folder;
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, folder.path());
    NetworkSettings settings;
    settings.proxyKind = NetworkSettings::ProxyKind::Http;
    settings.proxyHost = QStringLiteral("proxy.example");
    settings.proxyPort = 3128;
    settings.proxyUser = QStringLiteral("inspector");
    settings.proxyPassword = QStringLiteral("Proxy-Secret");
    settings.authorityFile = QStringLiteral("/tmp/ca.pem");
    settings.save();
    const NetworkSettings loaded = NetworkSettings::load();
    QCOMPARE(int(loaded.proxyKind), int(NetworkSettings::ProxyKind::Http));
    QCOMPARE(loaded.proxyHost, settings.proxyHost);
    QCOMPARE(loaded.proxyPort, settings.proxyPort);
    QCOMPARE(loaded.proxyUser, settings.proxyUser);
    QCOMPARE(loaded.authorityFile, settings.authorityFile);
    QCOMPARE(loaded.proxyPassword, QString());
    const Tree written = treeOf(folder.path());
    QVERIFY(!written.isEmpty());
    for (const QString &path : written.keys())
        QVERIFY(!readFile(folder.filePath(path)).contains("Proxy-Secret"));
}

void tst_DesktopModels::proxyIsPutInForce()
{
    NetworkSettings settings;
    settings.proxyKind = NetworkSettings::ProxyKind::Http;
    settings.proxyHost = QStringLiteral("proxy.example");
    settings.proxyPort = 3128;
    QCOMPARE(settings.apply(), QString());
    QCOMPARE(QNetworkProxy::applicationProxy().hostName(), QStringLiteral("proxy.example"));
    QCOMPARE(QNetworkProxy::applicationProxy().type(), QNetworkProxy::HttpProxy);
    settings.proxyKind = NetworkSettings::ProxyKind::None;
    QCOMPARE(settings.apply(), QString());
    QCOMPARE(QNetworkProxy::applicationProxy().type(), QNetworkProxy::NoProxy);
}

QTEST_MAIN(tst_DesktopModels)

#include "tst_DesktopModels.moc"
