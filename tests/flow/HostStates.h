#pragma once

#include "flow/Session.h"

#include <QtCore/QString>
#include <QtCore/QVector>

#include <functional>

namespace Korvo::Web::TestSupport {

/// What a transfer of a test works with.
struct Place
{
    QString project;  ///< id and name of the project that is uploaded
    QString folder;   ///< its files
    QString download; ///< folder for the files of the project "stored"
};

void uploadFolder(Session &session, const Place &place);
void downloadFolder(Session &session, const Place &place);
void downloadData(Session &session, const Place &place);

using HostAction = std::function<void(Session &session, const Place &place)>;

/// A state of the facade: what to hold up at the server, and what the host does meanwhile.
struct HostState
{
    const char *name;
    QString fault; ///< kind of the fault on the route
    QString route;
    HostAction act;

    /// Whether the login itself is held up; in all other states the user is logged in before.
    bool isLogin() const;
};

/// Every place where an exchange with the servers can stand still.
QVector<HostState> statesOnTheWire();

} // namespace Korvo::Web::TestSupport
