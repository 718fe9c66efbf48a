// What libFuzzer calls; it brings main() along.
#include "FuzzTarget.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static QCoreApplication application(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Korvo::Web::Fuzz::runTarget(QByteArray(reinterpret_cast<const char *>(data), int(size)));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return 0;
}
