#pragma once

#include <QtCore/QtGlobal>

#include <signal.h>
#include <sys/resource.h>

namespace Korvo::Web::TestSupport {

/// No file of this process grows beyond the limit while this lives: further writes fail, as on a full disk.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(quint64 bytes)
    {
        signal(SIGXFSZ, SIG_IGN); // else the first write too many ends the process
        getrlimit(RLIMIT_FSIZE, &former);
        const rlimit limited{bytes, former.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &former); }

private:
    Q_DISABLE_COPY(FileSizeLimit)

    rlimit former{};
};

} // namespace Korvo::Web::TestSupport
