#include "Console.h"

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <langinfo.h>
#include <mutex>
#include <optional>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace Korvo::Cli::Console {

namespace {

constexpr int USUAL_COLUMNS = 80;
constexpr int USUAL_ROWS = 24;
constexpr std::size_t LONGEST_LINE = 4096;

struct TerminalState
{
    std::mutex mutex; // guards both: the thread that watches signals may end the program
    std::optional<termios> found;
    bool keysStarted = false;
};

TerminalState terminal;
int wakeUpPipe[2] = {-1, -1};
sigset_t watchedSignals;

int descriptorOf(Stream stream)
{
    switch (stream) {
    case Stream::Input:  return STDIN_FILENO;
    case Stream::Output: return STDOUT_FILENO;
    case Stream::Error:  return STDERR_FILENO;
    }
    return STDERR_FILENO;
}

bool isIgnored(int signalNumber)
{
    struct sigaction action = {};
    return sigaction(signalNumber, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

// nohup, and a shell that starts a job in the background, want it to stay ignored.
void watchUnlessIgnored(int signalNumber)
{
    if (!isIgnored(signalNumber))
        sigaddset(&watchedSignals, signalNumber);
}

bool isInForeground()
{
    return isatty(STDIN_FILENO) != 0 && tcgetpgrp(STDIN_FILENO) == getpgrp();
}

winsize windowSize()
{
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0)
        return {};
    return size;
}

// Changes the terminal; what was found first is kept for restore().
void changeTerminal(tcflag_t clearedFlags, bool waitForInput)
{
    const std::lock_guard<std::mutex> lock(terminal.mutex);
    termios mode{};
    if (!isInForeground() || tcgetattr(STDIN_FILENO, &mode) != 0)
        return;
    if (!terminal.found)
        terminal.found = mode;
    mode = *terminal.found;
    mode.c_lflag &= ~clearedFlags;
    if (!waitForInput) {
        mode.c_cc[VMIN] = 0;
        mode.c_cc[VTIME] = 0;
    }
    tcsetattr(STDIN_FILENO, TCSADRAIN, &mode);
}

void restoreLocked()
{
    if (terminal.found && isInForeground())
        tcsetattr(STDIN_FILENO, TCSADRAIN, &*terminal.found);
    terminal.found.reset();
}

// False when the wait was interrupted by interruptReading().
bool waitForInput()
{
    pollfd waits[] = {{STDIN_FILENO, POLLIN, 0}, {wakeUpPipe[0], POLLIN, 0}};
    while (poll(waits, 2, -1) < 0 && errno == EINTR) {
    }
    return waits[1].revents == 0;
}

Line readBytes()
{
    Line line;
    while (line.text.size() < LONGEST_LINE) {
        if (!waitForInput())
            return {Reading::Interrupted, {}};
        char byte = 0;
        const ssize_t count = ::read(STDIN_FILENO, &byte, 1);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        line.reading = Reading::Line;
        if (byte == '\n')
            break;
        line.text += byte;
    }
    if (!line.text.empty() && line.text.back() == '\r')
        line.text.pop_back();
    return line;
}

Notice noticeOf(int signalNumber)
{
    switch (signalNumber) {
    case SIGWINCH: return Notice::Resize;
    case SIGCONT:  return Notice::Continue;
    default:       return Notice::Interrupt;
    }
}

bool waitUntilWritable(int descriptor)
{
    pollfd wait = {descriptor, POLLOUT, 0};
    return poll(&wait, 1, -1) > 0 || errno == EINTR;
}

} // namespace

void prepare()
{
    std::setlocale(LC_CTYPE, "");
    // A reader that has gone is noticed where something is written.
    std::signal(SIGPIPE, SIG_IGN);
    if (pipe(wakeUpPipe) != 0)
        std::abort();
    sigemptyset(&watchedSignals);
    for (const int signalNumber : {SIGINT, SIGTERM, SIGHUP})
        watchUnlessIgnored(signalNumber);
    sigaddset(&watchedSignals, SIGWINCH);
    sigaddset(&watchedSignals, SIGCONT);
    // Blocked in all threads, so that only the one that waits for them sees them.
    pthread_sigmask(SIG_BLOCK, &watchedSignals, nullptr);
}

void restore()
{
    const std::lock_guard<std::mutex> lock(terminal.mutex);
    terminal.keysStarted = false;
    restoreLocked();
}

void leave(int exitCode, const std::string &lastWords)
{
    restore();
    write(Stream::Error, lastWords);
    _exit(exitCode);
}

bool isTerminal(Stream stream)
{
    return isatty(descriptorOf(stream)) != 0;
}

bool showsUnicode()
{
    return std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0;
}

int columns()
{
    const int width = windowSize().ws_col;
    return width > 0 ? width : USUAL_COLUMNS;
}

int rows()
{
    const int height = windowSize().ws_row;
    return height > 0 ? height : USUAL_ROWS;
}

bool write(Stream stream, const std::string &bytes)
{
    const int descriptor = descriptorOf(stream);
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = ::write(descriptor, bytes.data() + written, bytes.size() - written);
        if (count > 0)
            written += static_cast<std::size_t>(count);
        else if (errno == EAGAIN ? !waitUntilWritable(descriptor) : errno != EINTR)
            return false;
    }
    return true;
}

Line readLine(Echo echo)
{
    if (echo == Echo::On)
        return readBytes();
    changeTerminal(ECHO, true);
    Line line = readBytes();
    bool keysStarted = false;
    {
        const std::lock_guard<std::mutex> lock(terminal.mutex);
        keysStarted = terminal.keysStarted;
        restoreLocked();
    }
    if (keysStarted)
        startKeys();
    return line;
}

void interruptReading()
{
    const char anything = 0;
    [[maybe_unused]] const ssize_t count = ::write(wakeUpPipe[1], &anything, 1);
}

void startKeys()
{
    changeTerminal(ECHO | ICANON, false);
    const std::lock_guard<std::mutex> lock(terminal.mutex);
    terminal.keysStarted = terminal.found.has_value();
}

void stopKeys()
{
    restore();
}

int readKey()
{
    {
        const std::lock_guard<std::mutex> lock(terminal.mutex);
        if (!terminal.keysStarted || !isInForeground())
            return NO_KEY;
    }
    // Where the shell has just given the terminal back, a read could wait for a whole line.
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    if (poll(&input, 1, 0) <= 0)
        return NO_KEY;
    unsigned char key = 0;
    return ::read(STDIN_FILENO, &key, 1) == 1 ? key : NO_KEY;
}

void watch(std::function<void(Notice)> handler)
{
    std::thread([handler = std::move(handler)] {
        int signalNumber = 0;
        while (sigwait(&watchedSignals, &signalNumber) == 0)
            handler(noticeOf(signalNumber));
    }).detach();
}

void forgetEnvironment(const char *name)
{
    if (char *value = std::getenv(name))
        std::memset(value, '*', std::strlen(value));
    unsetenv(name);
}

} // namespace Korvo::Cli::Console
