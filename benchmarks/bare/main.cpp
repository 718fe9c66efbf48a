// The same bytes by QNetworkAccessManager alone.
#include "bare/BareTransfer.h"
#include "support/Arguments.h"
#include "support/Figures.h"

#include <QtCore/QCoreApplication>
#include <QtNetwork/QNetworkProxy>
#include <QtNetwork/QSslConfiguration>

#include <exception>
#include <iostream>
#include <stdexcept>

namespace {

using namespace Korvo::Bench;

constexpr const char *USAGE = "Usage: korvo-bench-bare upload|download --workload FILESxBYTES --folder DIR\n"
                              "       --authority FILE --in-flight N [--proxy PORT]\n"
                              "Moves the bytes, and prints what that cost as one line of JSON. An upload does not look "
                              "into the folder.\n";

void leadTo(const Arguments &arguments)
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setCaCertificates(QSslCertificate::fromPath(QString::fromStdString(arguments.required("authority"))));
    QSslConfiguration::setDefaultConfiguration(configuration);
    if (arguments.has("proxy"))
        QNetworkProxy::setApplicationProxy(QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"),
                                                         quint16(arguments.number("proxy", 0))));
}

void run(const std::string &work, const Arguments &arguments)
{
    leadTo(arguments);
    const Workload workload = Workload::atEndOf(arguments.required("workload"));
    BareTransfer transfer(workload, arguments.number("in-flight", 1));
    Meter meter;
    meter.start();
    if (work == "upload")
        transfer.upload();
    else
        transfer.download(QString::fromStdString(arguments.required("folder")));
    meter.stop();
    Figures figures;
    figures.add("files", workload.files);
    meter.addTo(figures);
    figures.print();
}

} // namespace

int main(int count, char **values)
{
    const std::string work = count > 1 ? values[1] : "";
    try {
        if (work != "upload" && work != "download")
            throw std::invalid_argument("neither upload nor download");
        const QCoreApplication application(count, values);
        run(work, Arguments(count, values, 2));
        return 0;
    } catch (const std::exception &failure) {
        std::cerr << "korvo-bench-bare: " << failure.what() << '\n' << USAGE;
        return 2;
    }
}
