#include "HelpText.h"

#include "CommandTable.h"
#include "ExitCode.h"

#include <QtCore/QPair>

namespace Korvo::Cli {

namespace {

using Row = QPair<QString, QString>;

constexpr int LEFT_COLUMN = 26;
constexpr int TEXT_WIDTH = 54;

QString synopsis(const CommandInfo &command)
{
    return (QStringList{command.name} + command.arguments).join(QLatin1Char(' '));
}

// Breaks between words; continued lines stand below the right column.
QString wrapped(const QString &text)
{
    QString result;
    int used = 0;
    for (const QString &word : text.split(QLatin1Char(' '))) {
        if (used > 0 && used + 1 + word.size() > TEXT_WIDTH) {
            result += QLatin1Char('\n') + QString(LEFT_COLUMN, QLatin1Char(' '));
            used = 0;
        } else if (used > 0) {
            result += QLatin1Char(' ');
            ++used;
        }
        result += word;
        used += word.size();
    }
    return result;
}

QString section(const QString &title, const QVector<Row> &rows)
{
    QString text = QLatin1Char('\n') + title + QLatin1String(":\n");
    for (const Row &row : rows) {
        const QString left = QLatin1String("  ") + row.first;
        text += left.leftJustified(LEFT_COLUMN);
        if (left.size() >= LEFT_COLUMN)
            text += QLatin1Char('\n') + QString(LEFT_COLUMN, QLatin1Char(' '));
        text += wrapped(row.second) + QLatin1Char('\n');
    }
    return text;
}

QString optionSection(const QString &title, const QVector<OptionInfo> &options)
{
    QVector<Row> rows;
    for (const OptionInfo &option : options) {
        const QString value = option.value.isEmpty() ? QString() : QLatin1Char(' ') + option.value;
        rows.append({QLatin1String("--") + option.name + value, option.text});
    }
    return section(title, rows);
}

QString commandSection()
{
    QVector<Row> rows;
    for (const CommandInfo &command : commands())
        rows.append({synopsis(command), command.summary});
    return section(QStringLiteral("Commands"), rows);
}

QString environmentSection()
{
    return section(QStringLiteral("Environment"),
                   {{QStringLiteral("KORVOWEB_USER"), QStringLiteral("user name, unless --user is given")},
                    {QStringLiteral("KORVOWEB_PASSWORD"),
                     QStringLiteral("password, unless --password-stdin is given; without both it is asked for on the terminal")},
                    {QStringLiteral("KORVOWEB_PROXY_USER"), QStringLiteral("user name for --proxy")},
                    {QStringLiteral("KORVOWEB_PROXY_PASSWORD"), QStringLiteral("password for --proxy")}});
}

QString exitCodeSection()
{
    QVector<Row> rows;
    for (const ExitCodeInfo &info : exitCodes())
        rows.append({QString::number(static_cast<int>(info.code)).leftJustified(4) + QLatin1Char(' ') + info.name, info.text});
    return section(QStringLiteral("Exit codes"), rows);
}

QString generalHelp()
{
    return QStringLiteral("Usage: korvoweb COMMAND [ARGUMENTS] [OPTIONS]\n\n"
                          "Works with the cloud platform for sewer-inspection projects.\n")
        + commandSection() + optionSection(QStringLiteral("Options of every command"), commonOptions())
        + environmentSection() + exitCodeSection()
        + QStringLiteral("\nOn a terminal \"p\" pauses a running transfer and resumes it. Ctrl-C ends it in\n"
                         "good order; pressed again, it leaves at once.\n"
                         "\"korvoweb COMMAND --help\" tells more, with an example.\n");
}

QString commandHelp(const CommandInfo &command)
{
    QString text = QLatin1String("Usage: korvoweb ") + synopsis(command) + QLatin1String(" [OPTIONS]\n\n")
        + command.summary.left(1).toUpper() + command.summary.mid(1) + QLatin1String(".\n");
    if (!command.explanation.isEmpty())
        text += command.explanation + QLatin1Char('\n');
    if (!command.options.isEmpty())
        text += optionSection(QStringLiteral("Options"), command.options);
    return text + optionSection(QStringLiteral("Options of every command"), commonOptions())
        + QLatin1String("\nExample:\n  ") + command.example + QLatin1String("\n")
        + exitCodeSection();
}

} // namespace

QString helpText(const CommandInfo *command)
{
    return command ? commandHelp(*command) : generalHelp();
}

} // namespace Korvo::Cli
