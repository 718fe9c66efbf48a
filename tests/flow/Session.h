#pragma once

#include "flow/LocalPlatform.h"
#include "flow/SignalRecorder.h"

#include <NQKorvoWeb/KorvoWebApi.h>

#include <QtCore/QScopedPointer>

namespace Korvo::Web::TestSupport {

extern const QString USER;
extern const QString PASSWORD;
extern const QString SECURE_USER;
extern const QString SECURE_PASSWORD;
extern const QString SECURE_CODE;
extern const QString EXPIRING_USER;
extern const QString EXPIRING_PASSWORD;

/// A date for projects whose own does not matter.
extern const QDateTime PROJECT_DATE;

/// A host application as far as the library sees it: one facade, and what it has heard from it.
class Session
{
public:
    Session();

    KorvoWebApi *operator->() const { return facade.data(); }
    KorvoWebApi &api() const { return *facade; }

    /// Logs in and waits for the end; the record is empty afterwards. False unless the login succeeded.
    bool logIn(const QString &user = USER, const QString &password = PASSWORD);
    /// Waits until every call made before has gone through the worker, waits of its own included.
    bool settle();
    /// Destroys the facade; how long that took, in milliseconds.
    qint64 close();

    SignalRecorder &signalsSeen() { return *recorder; }

private:
    QScopedPointer<KorvoWebApi> facade;
    QScopedPointer<SignalRecorder> recorder;
};

} // namespace Korvo::Web::TestSupport
