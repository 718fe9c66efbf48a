#pragma once

#include "TransferCommand.h"
#include "UploadFolder.h"

#include <QtCore/QTimer>

namespace Korvo::Cli {

/// upload FOLDER
class UploadCommand : public TransferCommand
{
    Q_OBJECT
public:
    explicit UploadCommand(Context &usedContext);

    Outcome prepare() override;
    void start() override;
    void cancel(Reason reason) override;

protected:
    bool setPaused(bool paused) override;
    QString shortName(const QString &name) const override;
    void measureFile(const QString &name, Portion &file) const override;
    void measureTotal() override;

private:
    /// Ending: the upload has ended, how is still to be heard. Confirming and Telling: the server is asked for the
    /// upload's status, which also proves that what was said to it before has left this machine.
    enum class Step { Running, Ending, Confirming, Cancelling, Telling };

    Outcome readManholeMedia();
    void connectProgress();
    unsigned int startUpload();
    bool isOtherMatter(Web::Error error) const;
    void handleError(Web::Error error);
    void handleExpiry();
    void handleRenewal();
    void handleActive(bool active);
    void handleFinished();
    void handleLimit();
    void handleStatuses(const QList<Web::UploadStatusInfo> &statuses);
    void handleProjects(const QList<Web::ProjectInfo> &projects);
    void askServer();
    void takeServerAnswer();
    void succeed();
    void fail();
    void finishCancelled(bool serverWasTold);
    QJsonObject details() const;

    UploadFolder folder;
    Web::MediaNamesList manholeMedia;
    QTimer limit;
    Step step = Step::Running;
    Outcome cancelOutcome;
    unsigned int id = 0;
    QString projectId;
    int serverAnswers = 0;
    int serverStatus = -1;
};

} // namespace Korvo::Cli
