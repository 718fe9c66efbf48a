// The same work as the library's, written by hand with libcurl: what the library is measured against.
#include "peer/Download.h"
#include "peer/Session.h"
#include "peer/Upload.h"
#include "support/Arguments.h"
#include "support/Figures.h"
#include "support/Workload.h"

#include <csignal>
#include <exception>
#include <iostream>

namespace {

using namespace Korvo::Bench;

// Company, project and folder name, joined as the platform joins them.
const std::string DOWNLOAD_BUCKET = "korvo-combench";

constexpr const char *USAGE
    = "Usage: korvo-bench-peer upload|download --folder DIR --authority FILE --in-flight N\n"
      "       [--workload FILESxBYTES] [--proxy PORT]\n"
      "Logs in, sends the folder or fetches the files, and prints what that cost as one line of JSON.\n";

void run(const std::string &work, const Arguments &arguments)
{
    const std::string proxy = arguments.has("proxy") ? "http://127.0.0.1:" + arguments.text("proxy") : std::string();
    Requests requests(arguments.required("authority"), proxy);
    Session session(requests);
    session.logIn();

    const int inFlight = arguments.number("in-flight", 1);
    Meter meter;
    Figures figures;
    meter.start();
    if (work == "upload") {
        Upload upload(session, arguments.required("folder"), inFlight);
        upload.run();
        meter.stop();
        upload.finish();
        figures.add("files", upload.files());
    } else {
        Download download(session, DOWNLOAD_BUCKET + arguments.required("workload"), arguments.required("folder"),
                          inFlight);
        download.run();
        meter.stop();
        figures.add("files", download.files());
    }
    meter.addTo(figures);
    figures.print();
}

} // namespace

int main(int count, char **values)
{
    std::signal(SIGPIPE, SIG_IGN);
    const std::string work = count > 1 ? values[1] : "";
    try {
        if (work != "upload" && work != "download")
            throw std::invalid_argument("neither upload nor download");
        curl_global_init(CURL_GLOBAL_DEFAULT);
        run(work, Arguments(count, values, 2));
        return 0;
    } catch (const std::exception &failure) {
        std::cerr << "korvo-bench-peer: " << failure.what() << '\n' << USAGE;
        return 2;
    }
}
