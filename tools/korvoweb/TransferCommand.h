#pragma once

#include "Command.h"
#include "ProgressDisplay.h"
#include "TransferState.h"

#include <QtCore/QHash>
#include <QtCore/QStringList>

#include <memory>

namespace Korvo::Cli {

/// What uploads and downloads have in common: files in flight, progress, pause.
class TransferCommand : public Command
{
    Q_OBJECT
public:
    explicit TransferCommand(Context &usedContext);
    ~TransferCommand() override;

    bool canPause() const override { return true; }
    void togglePause() override;

protected:
    void beginDisplay();
    void endDisplay();
    void takeCurrentFiles(const QStringList &names);
    void takeFileProgress(const QString &name, int percent);
    void takeTotalProgress(int percent);
    void takeFilesTotal(int count);
    void takeFilesCompleted(int count);
    void takeError(Web::Error error);
    /// Reads the bytes of all files in flight again.
    void measure();

    /// False when it is too late for it.
    virtual bool setPaused(bool paused) = 0;
    /// How the file is called when it is shown.
    virtual QString shortName(const QString &name) const = 0;
    virtual void measureFile(const QString &name, Portion &file) const = 0;
    virtual void measureTotal() = 0;

    /// The last percentage heard of each file.
    int percentOf(const QString &name) const { return percents.value(name); }
    const QStringList &currentFiles() const { return current; }
    qint64 averageRate(qint64 bytes) const;
    QString figures(int files, qint64 bytes) const;

    TransferState state;
    Web::Error firstError = Web::Error::None;
    int errorCount = 0;
    qint64 leftBytes = 0; ///< bytes of the files that have left the list of current ones

private:
    void leave(const QString &name);

    std::unique_ptr<ProgressDisplay> display;
    QStringList current;
    QHash<QString, int> percents;
    QHash<QString, RateMeter> rates;
    int toldPercent = -1;
};

} // namespace Korvo::Cli
