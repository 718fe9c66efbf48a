// Debian's Qt is not built for the thread sanitizer, which therefore does not see that a posted event, a contended mutex
// or the end of a thread orders what two threads do, and calls every hand-over a race. These definitions stand in front of
// Qt's own for the test programs, tell the sanitizer of the order that is really there, and call Qt's.
#include <QtCore/QCoreApplication>
#include <QtCore/QMetaObject>
#include <QtCore/QMutex>
#include <QtCore/QObject>
#include <QtCore/QThread>

#include <dlfcn.h>

extern "C" {
void __tsan_acquire(void *address);
void __tsan_release(void *address);
}

namespace {

char eventQueues; // its address stands for the locks of Qt's event queues

void handOver()
{
    __tsan_release(&eventQueues);
}

void takeOver()
{
    __tsan_acquire(&eventQueues);
}

template <typename Function>
Function qtOwn(const char *symbol)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, symbol));
}

} // namespace

bool QObject::event(QEvent *event)
{
    static const auto own = qtOwn<bool (*)(QObject *, QEvent *)>("_ZN7QObject5eventEP6QEvent");
    takeOver();
    const bool handled = own(this, event);
    handOver(); // a caller may be waiting for this event
    return handled;
}

void QMetaObject::activate(QObject *sender, const QMetaObject *type, int signalIndex, void **arguments)
{
    static const auto own = qtOwn<void (*)(QObject *, const QMetaObject *, int, void **)>(
        "_ZN11QMetaObject8activateEP7QObjectPKS_iPPv");
    handOver();
    own(sender, type, signalIndex, arguments);
    takeOver();
}

bool QMetaObject::invokeMethodImpl(QObject *object, QtPrivate::QSlotObjectBase *slot, Qt::ConnectionType type, void *result)
{
    static const auto own = qtOwn<bool (*)(QObject *, QtPrivate::QSlotObjectBase *, Qt::ConnectionType, void *)>(
        "_ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14ConnectionTypeEPv");
    handOver();
    const bool invoked = own(object, slot, type, result);
    takeOver();
    return invoked;
}

bool QMetaObject::invokeMethod(QObject *object, const char *member, Qt::ConnectionType type, QGenericReturnArgument result,
                               QGenericArgument a0, QGenericArgument a1, QGenericArgument a2, QGenericArgument a3,
                               QGenericArgument a4, QGenericArgument a5, QGenericArgument a6, QGenericArgument a7,
                               QGenericArgument a8, QGenericArgument a9)
{
    using Own = bool (*)(QObject *, const char *, Qt::ConnectionType, QGenericReturnArgument, QGenericArgument,
                         QGenericArgument, QGenericArgument, QGenericArgument, QGenericArgument, QGenericArgument,
                         QGenericArgument, QGenericArgument, QGenericArgument, QGenericArgument);
    static const auto own = qtOwn<Own>("_ZN11QMetaObject12invokeMethodEP7QObjectPKcN2Qt14ConnectionTypeE22QGenericReturnArgument16"
                                       "QGenericArgumentS7_S7_S7_S7_S7_S7_S7_S7_S7_");
    handOver();
    const bool invoked = own(object, member, type, result, a0, a1, a2, a3, a4, a5, a6, a7, a8, a9);
    takeOver();
    return invoked;
}

void QCoreApplication::postEvent(QObject *receiver, QEvent *event, int priority)
{
    static const auto own = qtOwn<void (*)(QObject *, QEvent *, int)>("_ZN16QCoreApplication9postEventEP7QObjectP6QEventi");
    handOver();
    own(receiver, event, priority);
}

bool QThread::wait(QDeadlineTimer deadline)
{
    static const auto own = qtOwn<bool (*)(QThread *, QDeadlineTimer)>("_ZN7QThread4waitE14QDeadlineTimer");
    const bool ended = own(this, deadline);
    takeOver();
    return ended;
}

void QBasicMutex::lockInternal() QT_MUTEX_LOCK_NOEXCEPT
{
    static const auto own = qtOwn<void (*)(QBasicMutex *)>("_ZN11QBasicMutex12lockInternalEv");
    own(this);
    __tsan_acquire(this);
}

void QBasicMutex::unlockInternal() noexcept
{
    static const auto own = qtOwn<void (*)(QBasicMutex *)>("_ZN11QBasicMutex14unlockInternalEv");
    __tsan_release(this);
    own(this);
}

void QMutex::lock()
{
    static const auto own = qtOwn<void (*)(QMutex *)>("_ZN6QMutex4lockEv");
    own(this);
    __tsan_acquire(this);
}

void QMutex::unlock()
{
    static const auto own = qtOwn<void (*)(QMutex *)>("_ZN6QMutex6unlockEv");
    __tsan_release(this);
    own(this);
}
