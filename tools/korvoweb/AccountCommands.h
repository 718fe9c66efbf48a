#pragma once

#include "Command.h"

#include <QtCore/QTimer>

namespace Korvo::Cli {

/// login: the session has done the work, this tells about it.
class LoginCommand : public Command
{
    Q_OBJECT
public:
    using Command::Command;
    void start() override;
};

/// reset-password USER
class ResetPasswordCommand : public Command
{
    Q_OBJECT
public:
    explicit ResetPasswordCommand(Context &usedContext);
    bool needsLogin() const override { return false; }
    void start() override;

private:
    void succeed();

    QTimer silence;
};

} // namespace Korvo::Cli
