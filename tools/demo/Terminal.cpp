#include "Terminal.h"

#include <cstdio>

#ifdef Q_OS_WIN
#include <io.h>
#else
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace Korvo::Demo {

namespace {

constexpr int USUAL_WIDTH = 80;

} // namespace

#ifdef Q_OS_WIN

bool isTerminal()
{
    return _isatty(_fileno(stdout)) != 0;
}

int terminalWidth()
{
    return USUAL_WIDTH;
}

#else

bool isTerminal()
{
    return isatty(STDOUT_FILENO) != 0;
}

int terminalWidth()
{
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return USUAL_WIDTH;
    return size.ws_col;
}

#endif

QString sizeText(qint64 bytes)
{
    if (bytes < 1000)
        return QString::number(bytes) + QStringLiteral(" B");
    if (bytes < 1000 * 1000)
        return QString::number(static_cast<double>(bytes) / 1e3, 'f', 1) + QStringLiteral(" kB");
    return QString::number(static_cast<double>(bytes) / 1e6, 'f', 1) + QStringLiteral(" MB");
}

QString seconds(qint64 milliseconds)
{
    return QString::number(static_cast<double>(milliseconds) / 1e3, 'f', 1) + QStringLiteral(" s");
}

} // namespace Korvo::Demo
