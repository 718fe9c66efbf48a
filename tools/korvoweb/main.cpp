#include "Application.h"
#include "CommandLine.h"
#include "Console.h"
#include "HelpText.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTextCodec>

using namespace Korvo::Cli;

namespace {

int printText(const QString &text)
{
    const bool written = Console::write(Console::Stream::Output, text.toStdString());
    return static_cast<int>(written ? ExitCode::Success : ExitCode::Output);
}

bool wantsQtMessages = false;

void handleQtMessage(QtMsgType, const QMessageLogContext &, const QString &message)
{
    if (wantsQtMessages)
        Console::write(Console::Stream::Error, (QStringLiteral("log Qt: ") + message + QLatin1Char('\n')).toStdString());
}

} // namespace

int main(int argc, char *argv[])
{
    Console::prepare();
#ifdef Q_OS_UNIX
    // File names are UTF-8 whatever the locale; a bare "C" locale would turn each umlaut into a question mark.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
    qInstallMessageHandler(handleQtMessage);
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("korvoweb"));
    QCoreApplication::setApplicationVersion(QStringLiteral(KORVOWEB_VERSION));

    const Invocation invocation = parseCommandLine(QCoreApplication::arguments());
    wantsQtMessages = invocation.common.verbose;
    if (invocation.task == Invocation::Task::Help)
        return printText(helpText(invocation.command));
    if (invocation.task == Invocation::Task::Version)
        return printText(QStringLiteral("korvoweb ") + QCoreApplication::applicationVersion() + QLatin1Char('\n'));
    return Application(invocation).run();
}
