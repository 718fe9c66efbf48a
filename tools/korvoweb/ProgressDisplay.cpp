#include "ProgressDisplay.h"

#include "Console.h"
#include "Output.h"
#include "PlainProgress.h"
#include "ProgressView.h"

namespace Korvo::Cli {

std::unique_ptr<ProgressDisplay> makeProgressDisplay(Output &output, const TransferState &state, const Interrupts &interrupts)
{
    if (output.form() == Output::Form::Json || output.amount() == Output::Amount::ResultsOnly)
        return nullptr;
    if (Console::isTerminal(Console::Stream::Output))
        return std::make_unique<ProgressView>(output, state, interrupts);
    return std::make_unique<PlainProgress>(output, state);
}

} // namespace Korvo::Cli
