#include "AccountCommands.h"

#include "CommandLine.h"
#include "Failure.h"
#include "Output.h"
#include "StallWatch.h"
#include "Text.h"

#include <QtCore/QMetaEnum>

#include <algorithm>

namespace Korvo::Cli {

using Web::KorvoWebApi;

namespace {

using namespace std::chrono_literals;

// A refusal arrives well within it; a success is silent.
constexpr std::chrono::seconds REFUSAL_LIMIT = 5s;

QString nameOf(KorvoWebApi::UserRole role)
{
    return QString::fromLatin1(QMetaEnum::fromType<KorvoWebApi::UserRole>().valueToKey(static_cast<int>(role)));
}

} // namespace

void LoginCommand::start()
{
    const QString name = (api().currentUserFirstName() + QLatin1Char(' ') + api().currentUserLastName()).trimmed();
    const QString role = nameOf(api().currentUserRole());
    context.output.print(QStringLiteral("user     ") + shownName(api().currentUser()));
    context.output.print(QStringLiteral("name     ") + shownName(name));
    context.output.print(QStringLiteral("company  ") + shownName(api().currentUserCompanyId()));
    context.output.print(QStringLiteral("role     ") + role);
    Outcome outcome;
    outcome.details = {{QStringLiteral("user"), api().currentUser()},
                       {QStringLiteral("firstName"), api().currentUserFirstName()},
                       {QStringLiteral("lastName"), api().currentUserLastName()},
                       {QStringLiteral("companyId"), api().currentUserCompanyId()},
                       {QStringLiteral("role"), role}};
    finish(outcome);
}

ResetPasswordCommand::ResetPasswordCommand(Context &usedContext)
    : Command(usedContext)
{
    silence.setSingleShot(true);
    connect(&silence, &QTimer::timeout, this, &ResetPasswordCommand::succeed);
}

// A success has no answer: the absence of a failure has to do.
void ResetPasswordCommand::start()
{
    connect(&api(), &KorvoWebApi::errorOccurred, this,
            [this](Web::Error error) { finish(failureOf(error, context.log)); });
    context.stallWatch.stop();
    const std::chrono::seconds limit = context.invocation.common.stallTimeout;
    silence.start(limit > 0s ? std::min(limit, REFUSAL_LIMIT) : REFUSAL_LIMIT);
    api().resetPassword(context.invocation.arguments.first());
}

void ResetPasswordCommand::succeed()
{
    context.output.print(QStringLiteral("The platform was asked to send ") + shownName(context.invocation.arguments.first())
                         + QStringLiteral(" a new password and did not object. It does not confirm it."));
    finish({ExitCode::Success, {}, {{QStringLiteral("user"), context.invocation.arguments.first()}}});
}

} // namespace Korvo::Cli
