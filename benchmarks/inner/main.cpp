// What the library does without a network, each in a process of its own.
#include "inner/Replies.h"
#include "support/Arguments.h"
#include "support/Figures.h"
#include "support/Workload.h"
#include "transfer/ProjectFolderScan.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>

#include <exception>
#include <iostream>

namespace {

using namespace Korvo::Bench;

constexpr double NANOSECONDS = 1e9;
constexpr const char *USAGE = "Usage: korvo-bench-inner listing|listing-expat|projects --entries N\n"
                              "       korvo-bench-inner scan --folder DIR\n"
                              "       korvo-bench-inner make|make-sparse --workload FILESxBYTES --folder DIR\n"
                              "Prints seconds and memory as one line of JSON; \"make\" writes a project folder.\n";

Figures scan(const QString &folder)
{
    QElapsedTimer timer;
    timer.start();
    const auto files = Korvo::Web::ProjectFolderScan(folder, {}).run();
    Figures figures;
    figures.add("seconds", double(timer.nsecsElapsed()) / NANOSECONDS);
    figures.add("files", double(files.size()));
    return figures;
}

Figures make(const std::string &work, const Arguments &arguments)
{
    const Workload workload = Workload::atEndOf(arguments.required("workload"));
    if (work == "make")
        writeFolder(workload, arguments.required("folder"));
    else
        writeSparseFolder(workload, arguments.required("folder"));
    Figures figures;
    figures.add("files", workload.files);
    return figures;
}

Figures measured(const std::string &work, const Arguments &arguments)
{
    if (work == "listing")
        return listingByLibrary(arguments.number("entries", 0));
    if (work == "listing-expat")
        return listingByExpat(arguments.number("entries", 0));
    if (work == "projects")
        return projectsByLibrary(arguments.number("entries", 0));
    if (work == "scan")
        return scan(QString::fromStdString(arguments.required("folder")));
    if (work == "make" || work == "make-sparse")
        return make(work, arguments);
    throw std::invalid_argument("unknown work " + work);
}

} // namespace

int main(int count, char **values)
{
    const QCoreApplication application(count, values);
    try {
        measured(count > 1 ? values[1] : "", Arguments(count, values, 2)).print();
        return 0;
    } catch (const std::exception &failure) {
        std::cerr << "korvo-bench-inner: " << failure.what() << '\n' << USAGE;
        return 2;
    }
}
