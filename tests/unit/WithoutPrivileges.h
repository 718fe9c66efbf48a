#pragma once

#include <QtCore/QtGlobal>

#include <unistd.h>

namespace Korvo::Web::TestSupport {

/// While this lives, a process that was started as root may do no more than anybody: else no file is closed to it.
class WithoutPrivileges
{
public:
    WithoutPrivileges()
        : wasRoot(geteuid() == 0)
    {
        if (wasRoot && setresuid(NOBODY, NOBODY, 0) != 0)
            qFatal("cannot give up privileges");
    }
    ~WithoutPrivileges()
    {
        if (wasRoot && setresuid(0, 0, 0) != 0)
            qFatal("cannot take privileges back");
    }

private:
    Q_DISABLE_COPY(WithoutPrivileges)

    static constexpr uid_t NOBODY = 65534;
    const bool wasRoot;
};

} // namespace Korvo::Web::TestSupport
