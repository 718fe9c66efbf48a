#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QPointer>
#include <QtCore/QSharedPointer>

#include <functional>
#include <vector>

namespace Korvo::Web {

/// The memory into which the parts of large files are read. All files that a thread has in flight share it and take
/// turns: a part is read in slices with the event loop in between, and two of them at once would need it twice.
///
/// It also keeps the bodies that files leave behind for those that follow: new memory costs more than filling it, and so
/// does giving it back.
///
/// All of it goes with the last file. Lives on one thread.
class PartBuffer
{
public:
    using Call = std::function<void()>;

    static QSharedPointer<PartBuffer> ofThisThread();

    /// Makes it the turn of @p file, and empties the buffer for it.
    /// @return false while it is another's turn; @p callAgain is then called on behalf of @p file, from the event loop, as
    ///         soon as the turn may be had
    bool takeFor(QObject *file, const Call &callAgain);
    /// Ends the turn of @p file, if it has it.
    void leave(const QObject *file);

    /// Keeps @p spent, the body of a request that has been answered, for the next file.
    void keepBody(QByteArray spent);
    /// @return a body that was kept; empty when there is none
    QByteArray takeBody();
    void dropBodies() { bodies.clear(); }

    QByteArray bytes;

private:
    struct Waiting
    {
        QPointer<QObject> file;
        Call callAgain;
    };

    const QObject *reader = nullptr;
    std::vector<Waiting> waiting;
    QList<QByteArray> bodies;
};

} // namespace Korvo::Web
