#pragma once

#include "support/Workload.h"

#include <QtCore/QEventLoop>
#include <QtCore/QString>
#include <QtNetwork/QNetworkAccessManager>

#include <functional>

namespace Korvo::Bench {

/// Moves the bytes of a workload, and does nothing else: the bodies of an upload are all the same text, made beforehand;
/// of a download nothing is looked at. No login, no signature, no Base64, no signal to anybody, one thread less.
class BareTransfer
{
public:
    BareTransfer(const Workload &movedWorkload, int filesInFlight);

    /// Each throws std::runtime_error when a request fails.
    void upload();
    void download(const QString &folder);

private:
    using Start = std::function<QNetworkReply *(int number)>;

    void run(int requests, const Start &start);
    void startNext();
    void finish(QNetworkReply *reply);
    QNetworkReply *put(const QByteArray &body);
    QNetworkReply *get(int number, const QString &folder);

    const Workload workload;
    const int inFlight;
    QNetworkAccessManager manager;
    QEventLoop loop;
    Start startRequest;
    int waiting = 0;
    int next = 0;
    int running = 0;
    QString failure;
};

} // namespace Korvo::Bench
