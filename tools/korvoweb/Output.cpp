#include "Output.h"

#include "Console.h"

#include <QtCore/QJsonDocument>

#include <utility>

namespace Korvo::Cli {

Output::Output(Form newForm, Amount newAmount)
    : usedForm(newForm)
    , usedAmount(newAmount)
{
    removeOverlay();
}

void Output::print(const QString &line)
{
    if (usedForm == Form::Text)
        writeLine(line);
}

void Output::say(const QString &line)
{
    if (usedAmount == Amount::All)
        print(line);
}

void Output::event(const QString &name, QJsonObject members)
{
    if (usedForm != Form::Json || usedAmount == Amount::ResultsOnly)
        return;
    members.insert(QStringLiteral("event"), name);
    writeLine(QString::fromUtf8(QJsonDocument(members).toJson(QJsonDocument::Compact)));
}

void Output::result(QJsonObject members)
{
    if (usedForm != Form::Json)
        return;
    members.insert(QStringLiteral("event"), QStringLiteral("result"));
    writeLine(QString::fromUtf8(QJsonDocument(members).toJson(QJsonDocument::Compact)));
}

void Output::warn(const QString &line)
{
    writeError(QStringLiteral("korvoweb: ") + line + QLatin1Char('\n'));
}

void Output::log(const QString &text)
{
    writeError(text + QLatin1Char('\n'));
}

void Output::ask(const QString &question)
{
    hideOverlay();
    Console::write(Console::Stream::Error, (question + QLatin1String(": ")).toStdString());
}

void Output::draw(const QString &text)
{
    writeOutput(text);
}

void Output::setOverlay(std::function<void()> hide, std::function<void()> show)
{
    hideOverlay = std::move(hide);
    showOverlay = std::move(show);
}

void Output::removeOverlay()
{
    hideOverlay = [] {};
    showOverlay = [] {};
}

void Output::writeLine(const QString &line)
{
    hideOverlay();
    writeOutput(line + QLatin1Char('\n'));
    showOverlay();
}

void Output::writeOutput(const QString &text)
{
    if (broken || Console::write(Console::Stream::Output, text.toStdString()))
        return;
    broken = true;
    Q_EMIT broke();
}

// Nobody is left to be told when standard error takes nothing.
void Output::writeError(const QString &text)
{
    hideOverlay();
    Console::write(Console::Stream::Error, text.toStdString());
    showOverlay();
}

} // namespace Korvo::Cli
