#pragma once

#include "unit/FileSizeLimit.h"

#include <QtCore/QFile>
#include <QtCore/QScopedPointer>
#include <QtCore/QString>

#include <sched.h>
#include <sys/mount.h>

namespace Korvo::Web::TestSupport {

/// From here on what is mounted is seen by this process alone, if the system allows it. Call it before there are threads.
inline bool haveMountsOfOnesOwn()
{
    static const bool allowed
        = unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    return allowed;
}

/// A disk with little room in the place of a folder. Where none can be mounted, files that grow beyond its size fail the same way.
class SmallDisk
{
public:
    SmallDisk(const QString &newFolder, int bytes)
        : folder(QFile::encodeName(newFolder))
    {
        if (haveMountsOfOnesOwn())
            isMounted
                = mount("none", folder.constData(), "tmpfs", 0, ("size=" + QByteArray::number(bytes)).constData()) == 0;
        if (!isMounted)
            limit.reset(new FileSizeLimit(quint64(bytes)));
    }
    ~SmallDisk()
    {
        if (isMounted)
            umount2(folder.constData(), MNT_DETACH);
    }

    void makeRoom()
    {
        limit.reset();
        if (isMounted)
            mount("none", folder.constData(), nullptr, MS_REMOUNT, "size=64m");
    }

private:
    Q_DISABLE_COPY(SmallDisk)

    const QByteArray folder;
    bool isMounted = false;
    QScopedPointer<FileSizeLimit> limit;
};

} // namespace Korvo::Web::TestSupport
