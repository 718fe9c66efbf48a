#include "Tmux.h"

#include "CommandRunner.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QProcess>
#include <QtCore/QRegularExpression>

#include <chrono>
#include <functional>

namespace Korvo::Cli::Test {

namespace {

using namespace std::chrono_literals;

// Long enough for 200 MB under a sanitizer, on a machine that has other work too.
constexpr std::chrono::seconds LIMIT = 90s;

// A server that is ending would still be found under the name of its socket.
int started = 0;

bool eventually(const std::function<bool()> &condition)
{
    const QDeadlineTimer deadline(LIMIT);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
    }
    return true;
}

} // namespace

Tmux::Tmux(const QString &newProgram, const QString &workFolder)
    : program(newProgram)
    , socket(workFolder + QStringLiteral("/tmux%1").arg(++started))
{
}

Tmux::~Tmux()
{
    tmux({QStringLiteral("kill-server")});
}

QString Tmux::tmux(const QStringList &arguments)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    environment.insert(QStringLiteral("LSAN_OPTIONS"), leakOptions());
    environment.remove(QStringLiteral("TMUX"));
    process.setProcessEnvironment(environment);
    process.start(program, QStringList{QStringLiteral("-S"), socket, QStringLiteral("-f"), QStringLiteral("/dev/null")} + arguments);
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput());
}

bool Tmux::start(int columns, int rows)
{
    tmux({QStringLiteral("new-session"), QStringLiteral("-d"), QStringLiteral("-x"), QString::number(columns),
          QStringLiteral("-y"), QString::number(rows), QStringLiteral("env PS1='$ ' bash --norc --noprofile")});
    return waitFor(QStringLiteral("$"));
}

void Tmux::typeLine(const QString &text)
{
    tmux({QStringLiteral("send-keys"), QStringLiteral("-l"), text});
    press(QStringLiteral("Enter"));
}

void Tmux::press(const QString &key)
{
    tmux({QStringLiteral("send-keys"), key});
}

void Tmux::resize(int columns, int rows)
{
    tmux({QStringLiteral("resize-window"), QStringLiteral("-x"), QString::number(columns), QStringLiteral("-y"),
          QString::number(rows)});
}

QString Tmux::screen()
{
    return tmux({QStringLiteral("capture-pane"), QStringLiteral("-p")});
}

QString Tmux::history()
{
    return tmux({QStringLiteral("capture-pane"), QStringLiteral("-p"), QStringLiteral("-J"), QStringLiteral("-S"), QStringLiteral("-")});
}

bool Tmux::waitFor(const QString &text)
{
    return eventually([&] { return history().contains(text); });
}

bool Tmux::waitForPattern(const QString &pattern)
{
    const QRegularExpression expression(pattern);
    return eventually([&] { return screen().contains(expression); });
}

bool Tmux::waitUntilGone(const QString &text)
{
    return eventually([&] { return !screen().contains(text); });
}

} // namespace Korvo::Cli::Test
