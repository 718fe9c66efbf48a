#pragma once

#include <QtCore/QString>
#include <QtCore/QVector>

namespace Korvo::Cli {

/// How the program ended; one value per class of failure. The numbers are part of the interface.
enum class ExitCode : int {
    Success = 0,
    Usage = 2,
    Credentials = 3,
    SecondFactor = 4,
    Network = 5,
    Server = 6,
    LocalFile = 7,
    NotFound = 8,
    PartlyDone = 9,
    Output = 10,
    Cancelled = 130 ///< what a shell reports for a program that Ctrl-C has ended
};

struct ExitCodeInfo
{
    ExitCode code;
    QString name;
    QString text;
};

/// All codes in ascending order, as help, manual and documentation list them.
const QVector<ExitCodeInfo> &exitCodes();
QString exitCodeName(ExitCode code);

} // namespace Korvo::Cli
