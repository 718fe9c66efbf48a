#include "CommandRunner.h"

#include <QtCore/QDeadlineTimer>

#include <csignal>
#include <sys/types.h>

namespace Korvo::Cli::Test {

namespace {

// Behind a proxy Qt may miss that a connection was cut; the library then gives up after half a minute of silence.
constexpr int LIMIT_MILLISECONDS = 90000;

} // namespace

QStringList words(const char *line)
{
    return QString::fromUtf8(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

QString leakOptions()
{
    return QStringLiteral("suppressions=" LEAK_SUPPRESSIONS ":print_suppressions=0");
}

QProcessEnvironment plainEnvironment()
{
    QProcessEnvironment environment;
    environment.insert(QStringLiteral("PATH"), qEnvironmentVariable("PATH"));
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
    for (const char *name : {"ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"}) {
        if (qEnvironmentVariableIsSet(name))
            environment.insert(QString::fromLatin1(name), qEnvironmentVariable(name));
    }
    environment.insert(QStringLiteral("LSAN_OPTIONS"), leakOptions());
    return environment;
}

// A shell may have started the tests in the background, where Ctrl-C is ignored; the program would respect that.
RunningCommand::RunningCommand(const QStringList &arguments, const QProcessEnvironment &environment)
{
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral("env"), QStringList{QStringLiteral("--default-signal=INT,TERM,HUP"),
                                                     QStringLiteral(KORVOWEB_PROGRAM)} + arguments);
    process.waitForStarted(LIMIT_MILLISECONDS);
}

RunningCommand::~RunningCommand()
{
    if (!isRunning())
        return;
    process.kill();
    process.waitForFinished(LIMIT_MILLISECONDS);
}

void RunningCommand::interrupt()
{
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
}

bool RunningCommand::waitForOutput(const QString &text, int times)
{
    const QDeadlineTimer deadline(LIMIT_MILLISECONDS);
    const QByteArray bytes = text.toUtf8();
    while (seen.count(bytes) < times) {
        if (!process.waitForReadyRead(static_cast<int>(deadline.remainingTime())) && process.bytesAvailable() == 0)
            return false;
        seen += process.readAllStandardOutput();
    }
    return true;
}

Result RunningCommand::finish()
{
    if (!process.waitForFinished(LIMIT_MILLISECONDS))
        return {-1, QString::fromUtf8(seen), QStringLiteral("still running")};
    seen += process.readAllStandardOutput();
    const int code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    return {code, QString::fromUtf8(seen), QString::fromUtf8(process.readAllStandardError())};
}

Result run(const QStringList &arguments, const QProcessEnvironment &environment, const QByteArray &input)
{
    RunningCommand command(arguments, environment);
    command.write(input);
    command.closeInput();
    return command.finish();
}

} // namespace Korvo::Cli::Test
