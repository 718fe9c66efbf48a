#pragma once

#include <QtCore/QString>

namespace Korvo::Bench {

class ProbedApplication;
class TransferHost;

/// Processor time that the worker needs to report one step of progress, in seconds, with @p inFlight files in flight:
/// counting it, and putting all signals about it on their way to the host.
double stepSeconds(ProbedApplication &application, TransferHost &host, const QString &folder, int inFlight);

} // namespace Korvo::Bench
