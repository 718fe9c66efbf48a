#pragma once

#include "flow/HostStates.h"

#include <QtCore/QByteArrayList>
#include <QtCore/QVector>

#include <functional>

namespace Korvo::Web::TestSupport {

/// One call of the public interface, ready to be made at any time.
struct PublicCall
{
    /// What running transfers notice of the call.
    enum class Reach { Nothing, OneTransfer, EveryTransfer };

    const char *method;
    Reach reach;
    /// Makes the call; @p id is that of the transfer that it may be about. The id of the transfer that it starts, else 0.
    std::function<unsigned int(Session &session, const Place &place, unsigned int id)> make;
    /// One of these signals follows the call; of a transfer that it starts, with its id and false.
    QByteArrayList answers;

    /// Whether what has been heard since the call answers it.
    bool isAnsweredBy(const QList<SignalEvent> &heard, unsigned int startedId) const;
};

/// All public calls, the getters in one.
QVector<PublicCall> publicCalls();

/// The project whose media are asked for.
extern const QUuid MEDIA_PROJECT;
extern const QString MEDIA_FILE;
/// Makes that project and the one named "stored" on the platform.
void makeStoredProjects(LocalPlatform &platform, int files, int bytes);

/// Lets all that is paused go on, and waits until no transfer is active and every one has said so.
bool comesToRest(Session &session);

} // namespace Korvo::Web::TestSupport
