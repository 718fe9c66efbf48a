// A host application that logs in, moves one project and says what that cost.
#include "client/HostLoop.h"
#include "client/ProbedApplication.h"
#include "client/StepCost.h"
#include "client/TransferHost.h"
#include "support/Arguments.h"
#include "support/Figures.h"

#include <NQKorvoWeb/KorvoWebLibrary.h>

#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QSslConfiguration>

#include <exception>
#include <iostream>
#include <memory>

namespace {

using namespace Korvo::Bench;

constexpr double MILLISECONDS = 1e3;
constexpr const char *USAGE
    = "Usage: korvo-bench-client upload|download|steps --folder DIR --authority FILE --in-flight N\n"
      "       [--workload FILESxBYTES] [--proxy PORT] [--probe 1]\n"
      "Logs in, moves one project, and prints what that cost as one line of JSON. \"steps\" tells what reporting one "
      "step\n"
      "of an upload's progress costs the worker. --probe 1 watches worker and event loop, which costs time of its "
      "own.\n";

QString textOf(const std::string &text)
{
    return QString::fromStdString(text);
}

void leadTo(const Arguments &arguments)
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates(QSslCertificate::fromPath(textOf(arguments.required("authority"))));
    QSslConfiguration::setDefaultConfiguration(configuration);
    if (arguments.has("proxy"))
        QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"),
                                                         quint16(arguments.number("proxy", 0))));
}

void transfer(const std::string &work, const Arguments &arguments, TransferHost &host)
{
    const QString folder = textOf(arguments.required("folder"));
    const int inFlight = arguments.number("in-flight", 1);
    if (work == "upload")
        host.upload(folder, inFlight);
    else
        host.download(textOf(arguments.required("workload")), folder, inFlight);
}

void measure(const std::string &work, const Arguments &arguments, TransferHost &host, ProbedApplication *probe)
{
    HostLoop loop;
    Meter meter;
    if (probe) {
        loop.start();
        probe->startRecording();
    }
    meter.start();
    transfer(work, arguments, host);
    meter.stop();

    Figures figures;
    figures.add("files", host.files());
    meter.addTo(figures);
    if (probe) {
        figures.add("longestWorkerEventMilliseconds", probe->longestWorkerEventSeconds() * MILLISECONDS);
        figures.add("worstGapMilliseconds", loop.worstGapMilliseconds());
    }
    if (work == "upload")
        host.settle();
    figures.print();
}

void run(const std::string &work, const Arguments &arguments, ProbedApplication *probe)
{
    leadTo(arguments);
    Korvo::Web::KorvoWebLibrary::initialize();
    TransferHost host;
    host.logIn();
    if (work != "steps")
        return measure(work, arguments, host, probe);
    Figures figures;
    figures.add("stepSeconds",
                stepSeconds(*probe, host, textOf(arguments.required("folder")), arguments.number("in-flight", 1)));
    figures.print();
}

} // namespace

int main(int count, char **values)
{
    const std::string work = count > 1 ? values[1] : "";
    try {
        if (work != "upload" && work != "download" && work != "steps")
            throw std::invalid_argument("neither upload, download nor steps");
        const Arguments arguments(count, values, 2);
        const bool isProbed = arguments.has("probe") || work == "steps";
        std::unique_ptr<QCoreApplication> application;
        if (isProbed)
            application = std::make_unique<ProbedApplication>(count, values);
        else
            application = std::make_unique<QCoreApplication>(count, values);
        QCoreApplication::setApplicationName(QStringLiteral("bench"));
        QCoreApplication::setApplicationVersion(QStringLiteral("1.0"));
        run(work, arguments, isProbed ? static_cast<ProbedApplication *>(application.get()) : nullptr);
        return 0;
    } catch (const std::exception &failure) {
        std::cerr << "korvo-bench-client: " << failure.what() << '\n' << USAGE;
        return 2;
    }
}
