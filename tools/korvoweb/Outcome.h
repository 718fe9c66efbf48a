#pragma once

#include "ExitCode.h"

#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace Korvo::Cli {

/// How a command ended.
struct Outcome
{
    ExitCode code = ExitCode::Success;
    QString message;     ///< for a failure: one line that says what happened and what to do
    QJsonObject details; ///< for the last line of --json

    bool isSuccess() const { return code == ExitCode::Success; }
};

} // namespace Korvo::Cli
