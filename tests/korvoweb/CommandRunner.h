#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QProcess>
#include <QtCore/QProcessEnvironment>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Korvo::Cli::Test {

/// The words of a line.
QStringList words(const char *line);

struct Result
{
    int exitCode = -1;
    QString out;
    QString err;

    QStringList lines() const { return out.split(QLatin1Char('\n'), Qt::SkipEmptyParts); }
    /// For a failed comparison.
    QString all() const { return QStringLiteral("exit %1\n%2\n%3").arg(QString::number(exitCode), out, err); }
};

/// One run of the program. Nothing of the tests' own environment reaches it but the search path.
class RunningCommand
{
public:
    RunningCommand(const QStringList &arguments, const QProcessEnvironment &environment);
    ~RunningCommand();

    qint64 id() const { return process.processId(); }
    void write(const QByteArray &bytes) { process.write(bytes); }
    void closeInput() { process.closeWriteChannel(); }
    /// As Ctrl-C does.
    void interrupt();
    /// False when the text does not come so often on standard output.
    bool waitForOutput(const QString &text, int times = 1);
    bool isRunning() const { return process.state() == QProcess::Running; }
    Result finish();

private:
    QProcess process;
    QByteArray seen;
};

/// For programs that are built with a sanitizer.
QString leakOptions();
QProcessEnvironment plainEnvironment();
Result run(const QStringList &arguments, const QProcessEnvironment &environment = plainEnvironment(), const QByteArray &input = {});

} // namespace Korvo::Cli::Test
