#pragma once

#include <QtCore/QObject>

#include <memory>

namespace Korvo::Cli {

class Interrupts;
class Output;
struct TransferState;

/// Shows a transfer as long as it exists. It looks at the state by itself, now and then.
class ProgressDisplay : public QObject
{
    Q_OBJECT
};

/// Bars on a terminal, lines elsewhere; null when nothing is to be shown.
std::unique_ptr<ProgressDisplay> makeProgressDisplay(Output &output, const TransferState &state, const Interrupts &interrupts);

} // namespace Korvo::Cli
