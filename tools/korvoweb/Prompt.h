#pragma once

#include <QtCore/QString>

namespace Korvo::Cli {

class Output;

/// An answer of the user, or why there is none.
struct Answer
{
    enum class State { Given, Missing, Interrupted };

    State state = State::Missing;
    QString text;

    bool isGiven() const { return state == State::Given; }
};

/// Asks on the terminal; missing when there is no terminal to ask on.
Answer askOpenly(Output &output, const QString &question);
/// The same; what is typed is not shown.
Answer askSecretly(Output &output, const QString &question);
/// One line of standard input, whatever that is.
Answer readSecretLine();

} // namespace Korvo::Cli
