#include "Console.h"

#include <conio.h>
#include <cstdlib>
#include <cstring>
#include <io.h>
#include <mutex>
#include <optional>
#include <utility>
#include <windows.h>

namespace Korvo::Cli::Console {

namespace {

constexpr int USUAL_COLUMNS = 80;
constexpr int USUAL_ROWS = 24;
constexpr std::size_t LONGEST_LINE = 4096;

struct TerminalState
{
    std::mutex mutex; // guards both: the thread that watches interrupts may end the program
    std::optional<DWORD> found;
    bool keysStarted = false;
};

TerminalState terminal;
std::function<void(Notice)> noticeHandler;

HANDLE handleOf(Stream stream)
{
    switch (stream) {
    case Stream::Input:  return GetStdHandle(STD_INPUT_HANDLE);
    case Stream::Output: return GetStdHandle(STD_OUTPUT_HANDLE);
    case Stream::Error:  return GetStdHandle(STD_ERROR_HANDLE);
    }
    return INVALID_HANDLE_VALUE;
}

void changeTerminal(DWORD clearedModes)
{
    const std::lock_guard<std::mutex> lock(terminal.mutex);
    DWORD mode = 0;
    if (GetConsoleMode(handleOf(Stream::Input), &mode) == 0)
        return;
    if (!terminal.found)
        terminal.found = mode;
    SetConsoleMode(handleOf(Stream::Input), *terminal.found & ~clearedModes);
}

void restoreLocked()
{
    if (terminal.found)
        SetConsoleMode(handleOf(Stream::Input), *terminal.found);
    terminal.found.reset();
}

std::string toUtf8(const std::wstring &text)
{
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

void dropLineEnd(std::string &text)
{
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.pop_back();
}

Line readFromTerminal()
{
    std::wstring buffer(LONGEST_LINE, L'\0');
    DWORD count = 0;
    const BOOL good = ReadConsoleW(handleOf(Stream::Input), buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr);
    // Ctrl-C and Ctrl-Break end the call by themselves.
    if (count == 0)
        return {GetLastError() == ERROR_OPERATION_ABORTED ? Reading::Interrupted : Reading::EndOfInput, {}};
    if (good == 0)
        return {};
    buffer.resize(count);
    Line line{Reading::Line, toUtf8(buffer)};
    dropLineEnd(line.text);
    return line;
}

Line readFromPipe()
{
    Line line;
    char byte = 0;
    DWORD count = 0;
    while (line.text.size() < LONGEST_LINE && ReadFile(handleOf(Stream::Input), &byte, 1, &count, nullptr) != 0 && count == 1) {
        line.reading = Reading::Line;
        if (byte == '\n')
            break;
        line.text += byte;
    }
    dropLineEnd(line.text);
    return line;
}

BOOL WINAPI handleControl(DWORD)
{
    noticeHandler(Notice::Interrupt);
    return TRUE;
}

std::optional<CONSOLE_SCREEN_BUFFER_INFO> screen()
{
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (GetConsoleScreenBufferInfo(handleOf(Stream::Output), &info) == 0)
        return std::nullopt;
    return info;
}

} // namespace

void prepare()
{
    SetConsoleOutputCP(CP_UTF8);
    DWORD mode = 0;
    if (GetConsoleMode(handleOf(Stream::Output), &mode) != 0)
        SetConsoleMode(handleOf(Stream::Output), mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
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
    std::_Exit(exitCode);
}

bool isTerminal(Stream stream)
{
    DWORD mode = 0;
    return GetConsoleMode(handleOf(stream), &mode) != 0;
}

bool showsUnicode()
{
    return true;
}

int columns()
{
    const auto info = screen();
    return info ? info->srWindow.Right - info->srWindow.Left + 1 : USUAL_COLUMNS;
}

int rows()
{
    const auto info = screen();
    return info ? info->srWindow.Bottom - info->srWindow.Top + 1 : USUAL_ROWS;
}

bool write(Stream stream, const std::string &bytes)
{
    std::size_t written = 0;
    while (written < bytes.size()) {
        DWORD count = 0;
        if (WriteFile(handleOf(stream), bytes.data() + written, static_cast<DWORD>(bytes.size() - written), &count, nullptr) == 0)
            return false;
        written += count;
    }
    return true;
}

Line readLine(Echo echo)
{
    if (!isTerminal(Stream::Input))
        return readFromPipe();
    if (echo == Echo::On)
        return readFromTerminal();
    changeTerminal(ENABLE_ECHO_INPUT);
    Line line = readFromTerminal();
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
    CancelIoEx(handleOf(Stream::Input), nullptr);
}

void startKeys()
{
    changeTerminal(ENABLE_ECHO_INPUT | ENABLE_LINE_INPUT);
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
        if (!terminal.keysStarted)
            return NO_KEY;
    }
    return _kbhit() != 0 ? _getch() : NO_KEY;
}

// A resized window needs no notice: its width is asked for whenever something is drawn.
void watch(std::function<void(Notice)> handler)
{
    noticeHandler = std::move(handler);
    SetConsoleCtrlHandler(handleControl, TRUE);
}

void forgetEnvironment(const char *name)
{
    _putenv_s(name, "");
    SetEnvironmentVariableA(name, nullptr);
}

} // namespace Korvo::Cli::Console
