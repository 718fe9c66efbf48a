#pragma once

#include "support/SecretWatch.h"

#include <NQKorvoWeb/KorvoWebApi.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QEventLoop>
#include <QtCore/QMetaMethod>
#include <QtCore/QObject>
#include <QtCore/QTimer>
#include <QtCore/QVariant>

#include <chrono>
#include <functional>
#include <type_traits>

namespace Korvo::Web {

/// Lets failed comparisons show the code.
inline char *toString(Error error)
{
    return qstrdup(QByteArray::number(int(error)).constData());
}

} // namespace Korvo::Web

namespace Korvo::Web::TestSupport {

/// One signal as it arrived.
struct SignalEvent
{
    QByteArray name;
    QVariantList arguments;
};

/// Runs the event loop until @p condition holds, and no longer; false when @p limit has passed before.
template<typename Condition>
bool eventually(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds(20))
{
    const QDeadlineTimer deadline(limit);
    QTimer wakeUp; // ends a wait for events that do not come
    wakeUp.start(50);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

/// Records every signal that the facade, or the worker behind it, can emit, in the order of arrival.
class SignalRecorder : public QObject
{
public:
    template<class Source>
    explicit SignalRecorder(const Source *source)
    {
        watch(source, &Source::uploadFileProgressChanged);
        watch(source, &Source::currentUploadFilesChanged);
        watch(source, &Source::uploadTotalProgressChanged);
        watch(source, &Source::filesToUploadTotalChanged);
        watch(source, &Source::completedUploadFilesChanged);
        watch(source, &Source::uploadActiveChanged);
        watch(source, &Source::anyUploadActiveChanged);
        watch(source, &Source::uploadFinished);
        watch(source, &Source::downloadFileProgressChanged);
        watch(source, &Source::currentDownloadFilesChanged);
        watch(source, &Source::downloadTotalProgressChanged);
        watch(source, &Source::filesToDownloadTotalChanged);
        watch(source, &Source::completedDownloadFilesChanged);
        watch(source, &Source::downloadActiveChanged);
        watch(source, &Source::anyDownloadActiveChanged);
        watch(source, &Source::downloadFinished);
        watch(source, &Source::currentUserChanged);
        watch(source, &Source::loginResult);
        watch(source, &Source::loginStatusChanged);
        watch(source, &Source::projectInfoReceived);
        watch(source, &Source::uploadStatusInfoReceived);
        watch(source, &Source::errorOccurred);
        watch(source, &Source::queryRemoteProjectsError);
        watch(source, &Source::singleFileDownloadLinkReceived);
        watch(source, &Source::allProjectsMediaDownloadLinkReceived);
        watch(source, &Source::loginExpired);
        watch(source, &Source::tokenAuthenticationNeeded);
        if constexpr (std::is_same_v<Source, KorvoWebApi>) {
            watch(source, &Source::uploadErrorOccurred);
            watch(source, &Source::downloadErrorOccurred);
        }
    }

    const QList<SignalEvent> &events() const { return recorded; }
    void clear() { recorded.clear(); }

    QByteArrayList names() const
    {
        QByteArrayList list;
        for (const SignalEvent &event : recorded)
            list.append(event.name);
        return list;
    }

    int count(const QByteArray &name) const { return names().count(name); }

    /// The arguments of each signal of this name, in order of arrival.
    QList<QVariantList> all(const QByteArray &name) const
    {
        QList<QVariantList> list;
        for (const SignalEvent &event : recorded) {
            if (event.name == name)
                list.append(event.arguments);
        }
        return list;
    }

    /// The signals that carry @p id first and are about transfers of this kind ("pload" or "ownload").
    QList<SignalEvent> ofTransfer(const QByteArray &kind, unsigned int id) const
    {
        QList<SignalEvent> list;
        for (const SignalEvent &event : recorded) {
            if (event.name.contains(kind) && event.arguments.value(0).userType() == QMetaType::UInt
                && event.arguments.first().toUInt() == id)
                list.append(event);
        }
        return list;
    }

    QList<Error> errors() const
    {
        QList<Error> list;
        for (const QVariantList &arguments : all("errorOccurred"))
            list.append(arguments.first().value<Error>());
        return list;
    }

    bool waitFor(const QByteArray &name, int number = 1, std::chrono::milliseconds limit = std::chrono::seconds(20)) const
    {
        return eventually([&] { return count(name) >= number; }, limit);
    }

    /// Called with each signal right after it was recorded.
    std::function<void(const SignalEvent &)> onEvent;

private:
    template<class Source, typename... Arguments>
    void watch(const Source *source, void (Source::*signal)(Arguments...))
    {
        const QByteArray name = QMetaMethod::fromSignal(signal).name();
        connect(source, signal, this, [this, name](std::decay_t<Arguments>... arguments) {
            note({ name, QVariantList { QVariant::fromValue(arguments)... } });
        });
    }

    void note(const SignalEvent &event)
    {
        for (const QVariant &argument : event.arguments)
            expectNoPasswordIn(argument.toString() + argument.toStringList().join(QLatin1Char(' ')), "a signal");
        recorded.append(event);
        if (onEvent)
            onEvent(event);
    }

    QList<SignalEvent> recorded;
};

} // namespace Korvo::Web::TestSupport
