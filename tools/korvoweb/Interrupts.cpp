#include "Interrupts.h"

#include "Console.h"
#include "ExitCode.h"

namespace Korvo::Cli {

// The handler runs on another thread, so the signals arrive queued.
Interrupts::Interrupts()
{
    Console::watch([this](Console::Notice notice) {
        switch (notice) {
        case Console::Notice::Interrupt: takeInterrupt(); break;
        case Console::Notice::Resize:    Q_EMIT windowResized(); break;
        case Console::Notice::Continue:  Q_EMIT continued(); break;
        }
    });
}

void Interrupts::takeInterrupt()
{
    if (count.fetch_add(1) > 0)
        Console::leave(static_cast<int>(ExitCode::Cancelled),
                       "\nkorvoweb: left at once; the server was not told, and unfinished files may lie around\n");
    Console::interruptReading();
    Q_EMIT interrupted();
}

} // namespace Korvo::Cli
