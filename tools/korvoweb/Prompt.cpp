#include "Prompt.h"

#include "Console.h"
#include "Output.h"

namespace Korvo::Cli {

namespace {

Answer answerOf(const Console::Line &line)
{
    switch (line.reading) {
    case Console::Reading::Interrupted: return {Answer::State::Interrupted, {}};
    case Console::Reading::EndOfInput:  return {Answer::State::Missing, {}};
    case Console::Reading::Line:        break;
    }
    const QString text = QString::fromUtf8(line.text.data(), static_cast<int>(line.text.size()));
    return {text.isEmpty() ? Answer::State::Missing : Answer::State::Given, text};
}

// The question goes to standard error: standard output belongs to the results.
Answer ask(Output &output, const QString &question, Console::Echo echo)
{
    if (!Console::isTerminal(Console::Stream::Input))
        return {};
    output.ask(question);
    const Console::Line line = Console::readLine(echo);
    // The line end that the user typed was not shown either.
    if (echo == Console::Echo::Off || line.reading != Console::Reading::Line)
        Console::write(Console::Stream::Error, "\n");
    return answerOf(line);
}

} // namespace

Answer askOpenly(Output &output, const QString &question)
{
    return ask(output, question, Console::Echo::On);
}

Answer askSecretly(Output &output, const QString &question)
{
    return ask(output, question, Console::Echo::Off);
}

Answer readSecretLine()
{
    return answerOf(Console::readLine(Console::Echo::Off));
}

} // namespace Korvo::Cli
