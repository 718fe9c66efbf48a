#include "ExitCode.h"

#include <algorithm>

namespace Korvo::Cli {

const QVector<ExitCodeInfo> &exitCodes()
{
    static const QVector<ExitCodeInfo> CODES = {
        {ExitCode::Success, QStringLiteral("success"), QStringLiteral("it is done, whole")},
        {ExitCode::Usage, QStringLiteral("usage"), QStringLiteral("the command line is wrong; nothing was sent")},
        {ExitCode::Credentials, QStringLiteral("credentials"),
         QStringLiteral("user, password or code were refused, or none were given")},
        {ExitCode::SecondFactor, QStringLiteral("second-factor"),
         QStringLiteral("the account asks for a code, and there is no way to ask for it")},
        {ExitCode::Network, QStringLiteral("network"),
         QStringLiteral("no connection, a broken one, no progress in time, or a refusal without a better class")},
        {ExitCode::Server, QStringLiteral("server"), QStringLiteral("the server reports a failure of its own")},
        {ExitCode::LocalFile, QStringLiteral("local-file"),
         QStringLiteral("a local file or folder is missing, unusable, or cannot be read or written")},
        {ExitCode::NotFound, QStringLiteral("not-found"), QStringLiteral("the platform has nothing by that name")},
        {ExitCode::PartlyDone, QStringLiteral("partly-done"), QStringLiteral("some files have arrived, others have not")},
        {ExitCode::Output, QStringLiteral("output"), QStringLiteral("standard output takes no more")},
        {ExitCode::Cancelled, QStringLiteral("cancelled"), QStringLiteral("interrupted, by Ctrl-C for one")},
    };
    return CODES;
}

QString exitCodeName(ExitCode code)
{
    const auto &codes = exitCodes();
    const auto info = std::find_if(codes.begin(), codes.end(), [code](const ExitCodeInfo &i) { return i.code == code; });
    return info == codes.end() ? QString() : info->name;
}

} // namespace Korvo::Cli
