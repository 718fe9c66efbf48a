#pragma once

#include "Outcome.h"
#include "Prompt.h"

#include <QtCore/QString>

namespace Korvo::Cli {

class Output;
struct CommonOptions;

/// User, password and second factor, from wherever the user gives them; never from the command line.
class Credentials
{
public:
    Credentials(const CommonOptions &options, Output &usedOutput);

    /// Takes the password out of the environment in any case, and asks for what is missing. Not successful: why.
    Outcome collect();
    /// Asks for the second factor, each time anew.
    Answer secondFactor();

    QString user() const { return userName; }
    QString password() const { return userPassword; }

private:
    Outcome collectUser();
    Outcome collectPassword();
    Answer readPassword();

    Output &output;
    const bool passwordFromInput;
    const bool codeFromInput;
    QString userName;
    QString userPassword;
};

/// The value of an environment variable that holds a secret; it is gone from the environment afterwards.
QString takeSecretFromEnvironment(const char *name);

} // namespace Korvo::Cli
