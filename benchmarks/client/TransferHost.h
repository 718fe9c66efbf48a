#pragma once

#include <NQKorvoWeb/KorvoWebApi.h>

#include <QtCore/QEventLoop>

#include <functional>

namespace Korvo::Bench {

/// Logs in and moves one project, as a host application does.
class TransferHost : public QObject
{
    Q_OBJECT

public:
    TransferHost();

    /// Each throws std::runtime_error when it fails.
    void logIn();
    /// Ends with the acknowledgement of the last file.
    void upload(const QString &folder, int inFlight);
    /// Waits until the server knows that the upload is done.
    void settle();
    /// @p workload names the project's folder, and with it what lies there.
    void download(const QString &workload, const QString &folder, int inFlight);

    int files() const { return filesTotal; }

Q_SIGNALS:
    /// The first step of progress, and so many files in flight.
    void underWay(int filesInFlight);

private:
    void run();
    void fail(const QString &reason);
    void noteInFlight(int count);
    void noteCompleted(int completed);

    Web::KorvoWebApi api;
    QEventLoop loop;
    QString failure;
    int filesTotal = 0;
    int mostInFlight = 0;
};

} // namespace Korvo::Bench
