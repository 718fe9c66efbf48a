#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

namespace Korvo::Cli {

struct OptionInfo
{
    QString name;
    QString value; ///< how help calls the value; empty for a switch
    QString text;
};

struct CommandInfo
{
    QString name;
    QStringList arguments; ///< the last may end in "..."
    QString summary;
    QString explanation; ///< what help says besides; may have several lines
    QVector<OptionInfo> options;
    QString example;

    bool takesMore() const;
};

const QVector<CommandInfo> &commands();
/// Null when there is no such command.
const CommandInfo *findCommand(const QString &name);
/// Options that every command takes.
const QVector<OptionInfo> &commonOptions();

} // namespace Korvo::Cli
