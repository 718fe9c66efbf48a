#include "FakeApi.h"
#include "Patience.h"
#include "Transfers.h"
#include "flow/SignalRecorder.h"

#include <QtTest/QAbstractItemModelTester>
#include <QtTest/QtTest>

using namespace Korvo::Desktop;
using namespace Korvo::Web;
using namespace Korvo::Web::TestSupport;

using Stage = Transfer::Stage;

namespace {

Transfer uploadOrder()
{
    Transfer order;
    order.title = QStringLiteral("Kanal");
    order.projectId = QStringLiteral("p1");
    order.folder = QStringLiteral("/data/kanal");
    order.created = QDateTime(QDate(2026, 3, 3), QTime(14, 5), Qt::OffsetFromUTC, 3600);
    order.simultaneousFiles = 3;
    return order;
}

Transfer downloadOrder(int simultaneousFiles)
{
    Transfer order = uploadOrder();
    order.kind = Transfer::Kind::Download;
    order.folderName = QStringLiteral("kanal-folder");
    order.simultaneousFiles = simultaneousFiles;
    return order;
}

} // namespace

/// The library's signals in the orders that surprise, and what the list of transfers makes of them.
class tst_DesktopTransfers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void uploadIsOrderedInUtcWithAClosingSeparator();
    void contentDecidesWhatIsOrdered();
    void projectOfTheImportToolIsLookedForFirst();
    void filesInFlightAreShownByRelativePath();
    void uploadIsDoneWhenThePlatformConfirms();
    void statusThatOvertookTheNoticeIsAskedAgain();
    void failedUploadIsMatchedWithItsError();
    void failedNoticeIsToldAsUnconfirmed();
    void abortedUploadIsOverWhenThePlatformWasTold();
    void fileCutOffByAnAbortIsNoNews();
    void earlyFinishWaitsForTheLastFiles();
    void lateFilesThatFailLeaveTheDownloadIncomplete();
    void oneFileAtATimeEndsWithTheFirstFinish();
    void failedListingIsNoSuccess();
    void emptyProjectIsDone();
    void errorBelongsToTheDownloadThatSpeaksNext();
    void lastFilesTakeNoOrders();
    void everythingIsHeldForALoginAndLetGo();
    void pausedByTheUserStaysPaused();
    void retryOrdersTheSameAgain();
    void signalsOfOthersAreIgnored();

private:
    const Transfer &transfer(int number) const { return *transfers->list().find(number); }
    int startUpload() { return transfers->startUpload(uploadOrder()); }
    int startDownload(int files) { return transfers->startDownload(downloadOrder(files)); }
    void tellTotals(unsigned int id, const QStringList &files, int percent, int total, int completed);
    QString tellError(Error error, bool *expected = nullptr);

    QScopedPointer<FakeApi> api;
    QScopedPointer<Transfers> transfers;
    QScopedPointer<QAbstractItemModelTester> tester;
};

void tst_DesktopTransfers::init()
{
    api.reset(new FakeApi);
    transfers.reset(new Transfers(*api));
    tester.reset(
        new QAbstractItemModelTester(&transfers->list(), QAbstractItemModelTester::FailureReportingMode::QtTest));
}

void tst_DesktopTransfers::cleanup()
{
    tester.reset();
    transfers.reset();
    api.reset();
}

void tst_DesktopTransfers::tellTotals(unsigned int id, const QStringList &files, int percent, int total, int completed)
{
    Q_EMIT api->currentDownloadFilesChanged(id, files);
    Q_EMIT api->downloadTotalProgressChanged(id, percent);
    Q_EMIT api->filesToDownloadTotalChanged(id, total);
    Q_EMIT api->completedDownloadFilesChanged(id, completed);
}

QString tst_DesktopTransfers::tellError(Error error, bool *expected)
{
    bool unasked = false;
    return transfers->claimError(error, expected ? expected : &unasked);
}

void tst_DesktopTransfers::uploadIsOrderedInUtcWithAClosingSeparator()
{
    startUpload();
    QCOMPARE(api->orders, QStringList{QStringLiteral("upload|p1|Kanal|/data/kanal/|2026-03-03T13:05:00Z|3")});
}

void tst_DesktopTransfers::contentDecidesWhatIsOrdered()
{
    Transfer order = uploadOrder();
    order.content = Transfer::Content::ImportTool;
    transfers->startUpload(order);
    order.content = Transfer::Content::Quickview;
    order.projectId = QStringLiteral("6e0c2bd5-93f4-4f3c-a8d5-5a3d6a4b7c11");
    order.manholeMedia = {QStringLiteral("Nod/a.jpg")};
    const int number = transfers->startUpload(order);
    const QString quickview = QStringLiteral("uploadQuickview|6e0c2bd5-93f4-4f3c-a8d5-5a3d6a4b7c11|Kanal|/data/kanal/|"
                                             "2026-03-03T13:05:00Z|Nod/a.jpg");
    QCOMPARE(api->orders, QStringList({QStringLiteral("uploadQZ|Kanal|/data/kanal/|2026-03-03T13:05:00Z"), quickview}));
    Q_EMIT api->uploadActiveChanged(2, false);
    tellError(Error::Server);
    transfers->retry(number);
    QCOMPARE(api->orders.last(), quickview);
}

void tst_DesktopTransfers::projectOfTheImportToolIsLookedForFirst()
{
    Transfer order = uploadOrder();
    order.content = Transfer::Content::ImportTool;
    order.projectId.clear();
    const int number = transfers->startUpload(order);
    Q_EMIT api->uploadFinished(1);
    QCOMPARE(api->orders.last(), QStringLiteral("projects"));
    Q_EMIT api->projectInfoReceived({});
    QTRY_COMPARE_WITH_TIMEOUT(api->orders.count(QStringLiteral("projects")), 2, PATIENCE_MILLISECONDS);
    Q_EMIT api->projectInfoReceived({ProjectInfo(QStringLiteral("Kanal"), QStringLiteral("q1"), QStringLiteral("Kanal"),
                                                 QDateTime::currentDateTime(), 1, false)});
    QTRY_COMPARE_WITH_TIMEOUT(api->orders.last(), QStringLiteral("status q1"), PATIENCE_MILLISECONDS);
    QCOMPARE(transfer(number).stage, Stage::Confirming);
    Q_EMIT api->uploadStatusInfoReceived({{QStringLiteral("q1"), 2}});
    QCOMPARE(transfer(number).stage, Stage::Done);
}

void tst_DesktopTransfers::filesInFlightAreShownByRelativePath()
{
    startUpload();
    const QString path = QStringLiteral("/data/kanal/Video/a.mp4");
    Q_EMIT api->currentUploadFilesChanged(1, {path});
    Q_EMIT api->uploadFileProgressChanged(1, path, 40);
    TransferModel &model = transfers->list();
    const QModelIndex file = model.index(0, 0, model.index(0));
    QCOMPARE(file.data().toString(), QStringLiteral("Video/a.mp4"));
    QCOMPARE(file.data(TransferModel::PercentRole).toInt(), 40);
}

void tst_DesktopTransfers::uploadIsDoneWhenThePlatformConfirms()
{
    const int number = startUpload();
    QSignalSpy arrived(transfers.data(), &Transfers::uploadArrived);
    Q_EMIT api->uploadActiveChanged(1, true);
    Q_EMIT api->uploadActiveChanged(1, false);
    Q_EMIT api->uploadFinished(1);
    QCOMPARE(transfer(number).stage, Stage::Confirming);
    QVERIFY(transfers->isAnySettling());
    QVERIFY(!transfers->isAnyRunning());
    QCOMPARE(api->orders.last(), QStringLiteral("status p1"));
    Q_EMIT api->uploadStatusInfoReceived({{QStringLiteral("other"), 2}});
    QCOMPARE(transfer(number).stage, Stage::Confirming);
    Q_EMIT api->uploadStatusInfoReceived({{QStringLiteral("p1"), 2}});
    QCOMPARE(transfer(number).stage, Stage::Done);
    QVERIFY(!transfers->isAnySettling());
    QCOMPARE(arrived.count(), 1);
}

void tst_DesktopTransfers::statusThatOvertookTheNoticeIsAskedAgain()
{
    const int number = startUpload();
    Q_EMIT api->uploadFinished(1);
    Q_EMIT api->uploadStatusInfoReceived({{QStringLiteral("p1"), 1}});
    QCOMPARE(transfer(number).stage, Stage::Confirming);
    QTRY_COMPARE_WITH_TIMEOUT(api->orders.count(QStringLiteral("status p1")), 2, PATIENCE_MILLISECONDS);
    Q_EMIT api->uploadStatusInfoReceived({{QStringLiteral("p1"), 2}});
    QCOMPARE(transfer(number).stage, Stage::Done);
}

void tst_DesktopTransfers::failedUploadIsMatchedWithItsError()
{
    const int first = startUpload();
    const int second = startUpload();
    Q_EMIT api->uploadActiveChanged(2, false);
    QCOMPARE(tellError(Error::FileOpen), QStringLiteral("Kanal"));
    QCOMPARE(transfer(first).stage, Stage::Starting);
    QCOMPARE(transfer(second).stage, Stage::Failed);
    QCOMPARE(transfer(second).error, Error::FileOpen);
}

void tst_DesktopTransfers::failedNoticeIsToldAsUnconfirmed()
{
    const int number = startUpload();
    Q_EMIT api->uploadFinished(1);
    QCOMPARE(tellError(Error::Server), QStringLiteral("Kanal"));
    Q_EMIT api->uploadStatusInfoReceived({});
    QCOMPARE(transfer(number).stage, Stage::Done);
    QVERIFY(TransferModel::detail(transfer(number)).contains(QStringLiteral("not confirmed")));
}

void tst_DesktopTransfers::abortedUploadIsOverWhenThePlatformWasTold()
{
    const int number = startUpload();
    transfers->abort(number);
    QCOMPARE(api->orders.last(), QStringLiteral("abortUpload 1"));
    Q_EMIT api->uploadActiveChanged(1, false);
    QCOMPARE(transfer(number).stage, Stage::Aborting);
    QVERIFY(transfers->isAnySettling());
    Q_EMIT api->uploadStatusInfoReceived({{QStringLiteral("p1"), 3}});
    QCOMPARE(transfer(number).stage, Stage::Aborted);
    QCOMPARE(TransferModel::detail(transfer(number)), QStringLiteral("Aborted. The platform has been told."));
}

void tst_DesktopTransfers::fileCutOffByAnAbortIsNoNews()
{
    const int number = startUpload();
    bool expected = false;
    transfers->abort(number);
    tellError(Error::Cancelled, &expected);
    QVERIFY(expected);
    tellError(Error::Server, &expected);
    QVERIFY(!expected);
}

void tst_DesktopTransfers::earlyFinishWaitsForTheLastFiles()
{
    const int number = startDownload(3);
    tellTotals(1, {QStringLiteral("b"), QStringLiteral("c")}, 50, 3, 1);
    Q_EMIT api->downloadFinished(1);
    Q_EMIT api->downloadActiveChanged(1, false);
    QCOMPARE(transfer(number).stage, Stage::LastFiles);
    QVERIFY(transfers->isAnyRunning());
    tellTotals(1, {QStringLiteral("c")}, 80, 3, 2);
    Q_EMIT api->downloadFinished(1);
    QCOMPARE(transfer(number).stage, Stage::LastFiles);
    tellTotals(1, {QStringLiteral("c")}, 100, 3, 3);
    Q_EMIT api->downloadFinished(1);
    QCOMPARE(transfer(number).stage, Stage::Done);
    Q_EMIT api->downloadFinished(1);
    QCOMPARE(transfer(number).stage, Stage::Done);
}

void tst_DesktopTransfers::lateFilesThatFailLeaveTheDownloadIncomplete()
{
    const int number = startDownload(2);
    tellTotals(1, {QStringLiteral("b"), QStringLiteral("c")}, 50, 3, 1);
    Q_EMIT api->downloadFinished(1);
    tellError(Error::Network);
    tellTotals(1, {QStringLiteral("b"), QStringLiteral("c")}, 50, 3, 1);
    tellTotals(1, {QStringLiteral("c")}, 50, 3, 1);
    Q_EMIT api->downloadFinished(1);
    QCOMPARE(transfer(number).stage, Stage::LastFiles);
    tellTotals(1, {QStringLiteral("c")}, 90, 3, 2);
    Q_EMIT api->downloadFinished(1);
    QCOMPARE(transfer(number).stage, Stage::Incomplete);
    QVERIFY(transfer(number).canRetry());
}

void tst_DesktopTransfers::oneFileAtATimeEndsWithTheFirstFinish()
{
    const int number = startDownload(1);
    tellTotals(1, {QStringLiteral("a")}, 50, 2, 1);
    tellError(Error::Network);
    tellTotals(1, {QStringLiteral("b")}, 50, 2, 1);
    Q_EMIT api->downloadFinished(1);
    QCOMPARE(transfer(number).stage, Stage::Incomplete);
}

void tst_DesktopTransfers::failedListingIsNoSuccess()
{
    const int number = startDownload(3);
    tellError(Error::AuthenticationRequired);
    tellTotals(1, {}, 100, 0, 0);
    Q_EMIT api->downloadFinished(1);
    QCOMPARE(transfer(number).stage, Stage::Failed);
    QCOMPARE(transfer(number).error, Error::AuthenticationRequired);
}

void tst_DesktopTransfers::emptyProjectIsDone()
{
    const int number = startDownload(3);
    tellTotals(1, {}, 100, 0, 0);
    Q_EMIT api->downloadFinished(1);
    QCOMPARE(transfer(number).stage, Stage::Done);
}

void tst_DesktopTransfers::errorBelongsToTheDownloadThatSpeaksNext()
{
    const int first = startDownload(1);
    const int second = startDownload(1);
    QCOMPARE(tellError(Error::Server), QStringLiteral("One of 2 download(s)"));
    tellTotals(1, {}, 100, 0, 0);
    tellTotals(2, {}, 100, 0, 0);
    Q_EMIT api->downloadFinished(2);
    Q_EMIT api->downloadFinished(1);
    QCOMPARE(transfer(first).stage, Stage::Failed);
    QCOMPARE(transfer(second).stage, Stage::Done);
}

void tst_DesktopTransfers::lastFilesTakeNoOrders()
{
    const int number = startDownload(3);
    tellTotals(1, {QStringLiteral("b")}, 50, 2, 1);
    Q_EMIT api->downloadFinished(1);
    const QStringList before = api->orders;
    transfers->pause(number);
    transfers->abort(number);
    transfers->retry(number);
    QCOMPARE(api->orders, before);
    QCOMPARE(transfer(number).stage, Stage::LastFiles);
}

void tst_DesktopTransfers::everythingIsHeldForALoginAndLetGo()
{
    const int upload = startUpload();
    const int download = startDownload(2);
    transfers->pauseAll();
    QCOMPARE(transfer(upload).stage, Stage::Paused);
    QCOMPARE(transfer(download).stage, Stage::Paused);
    QVERIFY(api->orders.contains(QStringLiteral("pauseUpload 1")));
    QVERIFY(api->orders.contains(QStringLiteral("pauseDownload 1")));
    transfers->resumeAll();
    QCOMPARE(transfer(upload).stage, Stage::Running);
    QCOMPARE(transfer(download).stage, Stage::Running);
}

void tst_DesktopTransfers::pausedByTheUserStaysPaused()
{
    const int number = startUpload();
    transfers->pause(number);
    transfers->pauseAll();
    transfers->resumeAll();
    QCOMPARE(transfer(number).stage, Stage::Paused);
    QCOMPARE(api->orders.count(QStringLiteral("resumeUpload 1")), 0);
}

void tst_DesktopTransfers::retryOrdersTheSameAgain()
{
    const int number = startDownload(2);
    const QString order = api->orders.last();
    QCOMPARE(order, QStringLiteral("download|p1|kanal-folder|/data/kanal|2"));
    tellError(Error::DownloadFolder);
    Q_EMIT api->downloadFinished(1);
    // One file in flight at least may still be told of: nothing was, so the first finish was the last.
    QCOMPARE(transfer(number).stage, Stage::Failed);
    transfers->retry(number);
    QCOMPARE(api->orders.count(order), 2);
    QCOMPARE(transfers->list().rowCount(), 2);
}

void tst_DesktopTransfers::signalsOfOthersAreIgnored()
{
    startUpload();
    Q_EMIT api->downloadFinished(1);
    Q_EMIT api->uploadFinished(7);
    Q_EMIT api->currentUploadFilesChanged(7, {QStringLiteral("x")});
    Q_EMIT api->uploadActiveChanged(7, false);
    QCOMPARE(tellError(Error::Network), QString());
    QCOMPARE(transfers->list().rowCount(), 1);
    QCOMPARE(transfers->list().rowCount(transfers->list().index(0)), 0);
}

QTEST_GUILESS_MAIN(tst_DesktopTransfers)

#include "tst_DesktopTransfers.moc"
