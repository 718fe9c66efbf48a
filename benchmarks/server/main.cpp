// Both servers in one program, as short and fast as can be: it takes what comes and gives what is asked for, from memory.
#include "server/Serving.h"
#include "support/Arguments.h"
#include "support/Workload.h"

#include "CertificateAuthority.h"
#include "Listener.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>

namespace {

using namespace Korvo::Bench;

std::string hostOf(const std::string &root)
{
    const std::size_t start = root.find("//") + 2;
    return root.substr(start, root.find('/', start) - start);
}

void waitForEndOfInput()
{
    while (std::getchar() != EOF) { }
}

int run(const Arguments &arguments)
{
    const LocalPlatform::CertificateAuthority authority(arguments.required("data"),
                                                        {hostOf(WEB_ROOT), hostOf(SERVICE_ROOT)});
    SSL_CTX *const context = authority.context(LocalPlatform::CertificateFlavour::Right);
    tuneForTransfers(context);
    Record record(arguments.text("record"));
    contentBlock();
    LocalPlatform::Listener listener("127.0.0.1", arguments.number("port", 0), [&](int socket) {
        Connection connection(socket, context);
        if (connection.open())
            serve(connection, record);
    });
    listener.start();
    std::cout << "{\"port\":" << listener.port() << ",\"authority\":\"" << authority.file() << "\"}" << std::endl;
    waitForEndOfInput();
    listener.stop();
    record.save();
    return 0;
}

} // namespace

int main(int count, char **values)
{
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return run(Arguments(count, values));
    } catch (const std::exception &failure) {
        std::cerr << "korvo-bench-server: " << failure.what()
                  << "\nUsage: korvo-bench-server --data DIR [--port N] [--record FILE]\n";
        return 2;
    }
}
