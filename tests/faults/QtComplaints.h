#pragma once

#include <QtCore/QStringList>

namespace Korvo::Web::Faults {

/// What Qt complains of while this lives, from every thread; a host would find it in its own log.
class QtComplaints
{
public:
    QtComplaints();
    ~QtComplaints();

    QStringList texts() const;

private:
    Q_DISABLE_COPY(QtComplaints)
};

} // namespace Korvo::Web::Faults
