#include "TransferCommand.h"

#include "Failure.h"
#include "Output.h"
#include "StallWatch.h"
#include "Text.h"

#include <QtCore/QJsonArray>

#include <algorithm>

namespace Korvo::Cli {

TransferCommand::TransferCommand(Context &usedContext)
    : Command(usedContext)
{
    state.clock.start();
}

TransferCommand::~TransferCommand() = default;

void TransferCommand::beginDisplay()
{
    state.clock.start();
    display = makeProgressDisplay(context.output, state, context.interrupts);
}

void TransferCommand::endDisplay()
{
    display.reset();
}

void TransferCommand::togglePause()
{
    if (!display || !setPaused(!state.paused))
        return;
    state.paused = !state.paused;
    context.output.event(state.paused ? QStringLiteral("paused") : QStringLiteral("resumed"));
    state.total.rate.restart();
    rates.clear();
    if (state.paused)
        context.stallWatch.stop();
    else
        context.stallWatch.start();
}

void TransferCommand::takeCurrentFiles(const QStringList &names)
{
    for (const QString &name : qAsConst(current)) {
        if (!names.contains(name))
            leave(name);
    }
    current = names;
}

void TransferCommand::leave(const QString &name)
{
    Portion file;
    file.percent = percentOf(name);
    measureFile(name, file);
    leftBytes += file.doneBytes;
    rates.remove(name);
}

void TransferCommand::takeFileProgress(const QString &name, int percent)
{
    context.stallWatch.signOfLife();
    if (!percents.contains(name) || percentOf(name) != percent) {
        context.output.event(QStringLiteral("file"), {{QStringLiteral("file"), shortName(name)},
                                                      {QStringLiteral("percent"), percent}});
    }
    percents.insert(name, percent);
}

void TransferCommand::takeTotalProgress(int percent)
{
    state.total.percent = percent;
}

void TransferCommand::takeFilesTotal(int count)
{
    state.filesTotal = count;
    state.counted = true;
}

// The last of the four signals that come together.
void TransferCommand::takeFilesCompleted(int count)
{
    context.stallWatch.signOfLife();
    const bool news = count != state.filesCompleted || state.total.percent != toldPercent;
    state.filesCompleted = count;
    measure();
    if (!news)
        return;
    toldPercent = state.total.percent;
    QJsonArray names;
    for (const QString &name : qAsConst(current))
        names.append(shortName(name));
    context.output.event(QStringLiteral("progress"), {{QStringLiteral("percent"), state.total.percent},
                                                      {QStringLiteral("filesCompleted"), state.filesCompleted},
                                                      {QStringLiteral("filesTotal"), state.filesTotal},
                                                      {QStringLiteral("files"), names}});
}

void TransferCommand::takeError(Web::Error error)
{
    context.output.event(QStringLiteral("error"), {{QStringLiteral("code"), static_cast<int>(error)},
                                                   {QStringLiteral("name"), errorName(error)},
                                                   {QStringLiteral("message"), errorText(error, context.log)}});
    ++errorCount;
    if (firstError == Web::Error::None)
        firstError = error;
}

void TransferCommand::measure()
{
    const qint64 now = state.clock.elapsed();
    state.files.clear();
    state.total.doneBytes = leftBytes;
    for (const QString &name : qAsConst(current)) {
        Portion file;
        file.name = shownName(shortName(name));
        file.percent = percentOf(name);
        measureFile(name, file);
        rates[name].add(now, file.doneBytes);
        file.rate = rates.value(name);
        state.total.doneBytes += file.doneBytes;
        state.files.append(file);
    }
    measureTotal();
    state.total.rate.add(now, state.total.doneBytes);
}

qint64 TransferCommand::averageRate(qint64 bytes) const
{
    return bytes * 1000 / std::max<qint64>(1, state.clock.elapsed());
}

QString TransferCommand::figures(int files, qint64 bytes) const
{
    return fileCount(files) + QStringLiteral(", ") + sizeText(bytes) + QStringLiteral(" in ")
        + secondsText(state.clock.elapsed()) + QStringLiteral(" (") + rateText(static_cast<double>(averageRate(bytes)))
        + QLatin1Char(')');
}

} // namespace Korvo::Cli
