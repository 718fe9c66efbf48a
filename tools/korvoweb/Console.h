#pragma once

#include <functional>
#include <string>

/// What differs between systems: the terminal, the keyboard, interrupts, the environment. Nothing of Qt is used in here.
namespace Korvo::Cli::Console {

enum class Stream { Input, Output, Error };
enum class Echo { On, Off };
enum class Notice { Interrupt, Resize, Continue };
enum class Reading { Line, EndOfInput, Interrupted };

struct Line
{
    Reading reading = Reading::EndOfInput;
    std::string text; ///< UTF-8, without the line end
};

constexpr int NO_KEY = -1;

/// First call of the program: later ones rely on it, and threads take over what it sets.
void prepare();
/// Puts the terminal back to how it was found. May be called from every thread, and more than once.
void restore();
/// Restores the terminal and ends the program on the spot; @p lastWords go to standard error.
[[noreturn]] void leave(int exitCode, const std::string &lastWords);

bool isTerminal(Stream stream);
/// Whether other letters than ASCII can be shown.
bool showsUnicode();
int columns();
int rows();

/// Writes all of it; false when nobody can take it any more.
bool write(Stream stream, const std::string &bytes);

/// Reads one line of standard input, and not a byte more. Without echo it is not seen on a terminal.
Line readLine(Echo echo);
/// Makes a readLine() that waits come back as interrupted; for other threads.
void interruptReading();

/// From now on keys arrive one by one and unseen. Does nothing without a terminal, or in the background.
void startKeys();
void stopKeys();
/// The key that was pressed, NO_KEY if there was none. Never waits.
int readKey();

/// Hands every notice to @p handler, on a thread of its own. To be called once.
void watch(std::function<void(Notice)> handler);

/// Overwrites the value, so that a look at the process does not show it, and removes it.
void forgetEnvironment(const char *name);

} // namespace Korvo::Cli::Console
