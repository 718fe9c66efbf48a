#pragma once

#include "TransferModel.h"

#include <NQKorvoWeb/KorvoWebApi.h>

#include <QtCore/QObject>
#include <QtCore/QSet>
#include <QtCore/QTimer>

namespace Korvo::Desktop {

/// Gives the library its orders and turns what it tells into the list of transfers.
///
/// Knows the order in which the library tells the ends:
/// - An upload has ended when it is no longer active; the verdict, uploadFinished() or errorOccurred(), follows at once.
/// - An upload is over only when the platform has the notice of it, or of its abort; its answer to a question about
///   the project tells. A project of the import tool is found in the list of projects first.
/// - With several files in flight a download is heard of as finished before its last files have arrived, and again with
///   each of these.
/// - A failure names no transfer. It is matched by what comes next to it, or by there being only one that it can mean.
class Transfers : public QObject
{
    Q_OBJECT
public:
    explicit Transfers(Web::KorvoWebApi &usedApi, QObject *parent = nullptr);

    TransferModel &list() { return model; }

    /// Start what @p order describes; its number in the list, 0 when the library refuses it.
    int startUpload(const Transfer &order);
    int startDownload(const Transfer &order);
    int startSingleFile(const Transfer &order);

    void pause(int number);
    void resume(int number);
    void abort(int number);
    /// Starts it again: the same project, the same folder.
    void retry(int number);

    /// Holds everything while nobody is logged in; resumeAll() lets go on what pauseAll() has stopped.
    void pauseAll();
    void resumeAll();

    /// Something is on its way and would be cut off.
    bool isAnyRunning() const;
    /// The platform still has to be told of an end.
    bool isAnySettling() const;

    /// The title of the transfer that a failure which comes now belongs to, empty when it belongs to none.
    /// @p expected is set when the failure is no news: files that an abort has cut off.
    QString claimError(Web::Error error, bool *expected);

Q_SIGNALS:
    void changed();
    void uploadArrived();
    void ended(int number);

private:
    unsigned int orderUpload(const Transfer &order);
    void connectUploads();
    void connectDownloads();
    int enter(unsigned int id, Transfer transfer);
    int numberOf(Transfer::Kind kind, unsigned int id) const;
    int uploadNumber(unsigned int id) const { return numberOf(Transfer::Kind::Upload, id); }
    int downloadNumber(unsigned int id) const { return numberOf(Transfer::Kind::Download, id); }
    void setStage(int number, Transfer::Stage stage);
    void setFiles(int number, const QStringList &keys);
    void takeTotals(int number, int Transfer::*member, int value);
    void fail(int number, Web::Error error);
    QString claimForDownload(Web::Error error);
    void blame(int number);

    void handleUploadActive(unsigned int id, bool active);
    void handleUploadFinished(unsigned int id);
    void handleStatuses(const QList<Web::UploadStatusInfo> &statuses);
    void takeProjects(const QList<Web::ProjectInfo> &projects);
    void takeAnswer(int number, int status);
    void askStatus(int number);
    void settleLate();
    void settle(int number, const QString &note);
    void handleDownloadActive(unsigned int id, bool active);
    void handleDownloadFinished(unsigned int id);
    void finishSingleFile(int number);
    void finishDownload(int number);
    bool wasTheLastFile(int number);

    Web::KorvoWebApi &api;
    TransferModel model;
    int endingUpload = 0;                      ///< no longer active, its verdict comes next
    Web::Error newestError = Web::Error::None; ///< of a download that the next signal will name
    QHash<int, int> filesLeft;                 ///< downloads that have been heard of as finished: files still in flight
    QHash<int, int> questionsAsked;            ///< uploads that settle: how often the platform has been asked
    QSet<int> heldForLogin;
    QTimer askAgain;
    QTimer settleLimit;
};

} // namespace Korvo::Desktop
