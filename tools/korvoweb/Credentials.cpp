#include "Credentials.h"

#include "CommandLine.h"
#include "Console.h"
#include "Output.h"
#include "Text.h"

namespace Korvo::Cli {

namespace {

Outcome cancelled()
{
    return {ExitCode::Cancelled, QStringLiteral("cancelled; nothing was sent"), {}};
}

} // namespace

QString takeSecretFromEnvironment(const char *name)
{
    const QString value = qEnvironmentVariable(name);
    Console::forgetEnvironment(name);
    return value;
}

Credentials::Credentials(const CommonOptions &options, Output &usedOutput)
    : output(usedOutput)
    , passwordFromInput(options.passwordFromInput)
    , codeFromInput(options.codeFromInput)
    , userName(options.user)
{
}

Outcome Credentials::collect()
{
    userPassword = takeSecretFromEnvironment("KORVOWEB_PASSWORD");
    const Outcome outcome = collectUser();
    return outcome.isSuccess() ? collectPassword() : outcome;
}

Outcome Credentials::collectUser()
{
    if (!userName.isEmpty())
        return {};
    // Standard input may hold the password; it is not to be taken for the name.
    const Answer answer = passwordFromInput || codeFromInput ? Answer() : askOpenly(output, QStringLiteral("User"));
    userName = answer.text;
    if (answer.state == Answer::State::Interrupted)
        return cancelled();
    if (answer.isGiven())
        return {};
    return {ExitCode::Credentials, QStringLiteral("no user name; give --user NAME, or set KORVOWEB_USER"), {}};
}

Outcome Credentials::collectPassword()
{
    if (!userPassword.isEmpty() && !passwordFromInput)
        return {};
    const Answer answer = readPassword();
    userPassword = answer.text;
    if (answer.state == Answer::State::Interrupted)
        return cancelled();
    if (answer.isGiven())
        return {};
    return {ExitCode::Credentials,
            passwordFromInput ? QStringLiteral("standard input holds no password; it has to be its first line")
                              : QStringLiteral("no password; set KORVOWEB_PASSWORD, give --password-stdin, or use a terminal"),
            {}};
}

Answer Credentials::readPassword()
{
    if (passwordFromInput)
        return readSecretLine();
    return askSecretly(output, QStringLiteral("Password for ") + shownName(userName));
}

Answer Credentials::secondFactor()
{
    if (codeFromInput)
        return readSecretLine();
    return askSecretly(output, QStringLiteral("Code for ") + shownName(userName));
}

} // namespace Korvo::Cli
