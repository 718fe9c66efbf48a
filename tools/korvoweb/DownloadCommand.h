#pragma once

#include "TransferCommand.h"

#include <QtCore/QSet>
#include <QtCore/QTimer>

namespace Korvo::Cli {

/// download ID BUCKET FOLDER
class DownloadCommand : public TransferCommand
{
    Q_OBJECT
public:
    explicit DownloadCommand(Context &usedContext);

    Outcome prepare() override;
    void start() override;
    void cancel(Reason reason) override;
    void settle(Outcome &outcome) override;

protected:
    bool setPaused(bool paused) override;
    QString shortName(const QString &name) const override;
    void measureFile(const QString &name, Portion &file) const override;
    void measureTotal() override;

private:
    void connectProgress();
    void handleFinished();
    bool wasTheLastFile();
    void handleActive(bool active);
    void conclude();
    Outcome verdict() const;
    Outcome partlyDone() const;
    QStringList unwholeFiles() const;
    void removeFolder(Outcome &outcome);
    void keepFolder(Outcome &outcome);
    QJsonObject details() const;

    QString folder;
    bool folderIsNew = false;
    unsigned int id = 0;
    QTimer limit;
    QSet<QString> seenFiles;
    bool oneFileWasLeft = false;
    bool noFileIsLeftToStart = false;
    bool cancelling = false;
    bool removing = false;
    Outcome cancelOutcome;
};

} // namespace Korvo::Cli
