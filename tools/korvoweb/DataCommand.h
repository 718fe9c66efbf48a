#pragma once

#include "TransferCommand.h"

#include <QtCore/QTimer>

namespace Korvo::Cli {

/// quickview and get: one file, whose size nobody tells before.
class DataCommand : public TransferCommand
{
    Q_OBJECT
public:
    DataCommand(Context &usedContext, const QString &file);

    Outcome prepare() override;
    void start() override;
    void cancel(Reason reason) override;
    void settle(Outcome &outcome) override;

protected:
    bool setPaused(bool paused) override;
    QString shortName(const QString &name) const override;
    void measureFile(const QString &name, Portion &file) const override;
    void measureTotal() override;
    /// Starts the download into @p path and returns its id.
    virtual unsigned int startDownload(const QString &path) = 0;

private:
    void look();
    void handleFinished(unsigned int downloadId);
    void handleActive(unsigned int downloadId, bool active);
    Outcome keep();

    const QString target;
    const QString unfinished; ///< takes the bytes until all are there, so that the target is whole at all times
    unsigned int id = 0;
    QTimer timer;
    QTimer limit;
    qint64 seenBytes = 0;
    bool cancelling = false;
    Outcome cancelOutcome;
};

/// quickview project|survey|manhole ID FILE
class QuickviewCommand : public DataCommand
{
    Q_OBJECT
public:
    explicit QuickviewCommand(Context &usedContext);

protected:
    unsigned int startDownload(const QString &path) override;
};

/// get URL FILE
class GetCommand : public DataCommand
{
    Q_OBJECT
public:
    explicit GetCommand(Context &usedContext);
    bool needsLogin() const override { return false; }

protected:
    unsigned int startDownload(const QString &path) override;
};

} // namespace Korvo::Cli
