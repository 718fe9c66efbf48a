#include "Keys.h"

#include "Console.h"
#include "Interrupts.h"

#include <chrono>

namespace Korvo::Cli {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds LOOK_INTERVAL = 100ms;

} // namespace

Keys::Keys(const Interrupts &interrupts)
{
    Console::startKeys();
    connect(&timer, &QTimer::timeout, this, &Keys::look);
    // Meanwhile the shell has had the terminal.
    connect(&interrupts, &Interrupts::continued, this, [] {
        Console::stopKeys();
        Console::startKeys();
    });
    timer.start(LOOK_INTERVAL);
}

Keys::~Keys()
{
    Console::stopKeys();
}

void Keys::look()
{
    for (int key = Console::readKey(); key != Console::NO_KEY; key = Console::readKey()) {
        if (key == 'p' || key == 'P')
            Q_EMIT pausePressed();
    }
}

} // namespace Korvo::Cli
