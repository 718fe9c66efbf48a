#include "client/StepCost.h"

#include "client/ProbedApplication.h"
#include "client/TransferHost.h"
#include "support/Figures.h"

#include <QtCore/QMetaMethod>
#include <QtCore/QVector>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <stdexcept>

namespace Korvo::Bench {
namespace {

constexpr int BATCHES = 60;
constexpr int STEPS_A_BATCH = 500;
constexpr qint64 STEP_BYTES = 1;

QObject *runningJob(const QObject *worker)
{
    const QObjectList children = worker->children();
    for (QObject *const child : children) {
        if (std::strcmp(child->metaObject()->className(), "Korvo::Web::ProjectUpload") == 0)
            return child;
    }
    return nullptr;
}

/// Runs on the worker's thread, where the running job is told of steps as its handles tell it.
double batchSeconds(QObject *job, const QString &file)
{
    const QMetaObject *const meta = job->metaObject();
    const QMetaMethod step = meta->method(meta->indexOfSlot("updateBytes(qint64,qint64,qint64,QString)"));
    const double before = threadSeconds();
    for (int count = 0; count < STEPS_A_BATCH; ++count)
        step.invoke(job, Qt::DirectConnection, Q_ARG(qint64, count), Q_ARG(qint64, STEP_BYTES),
                    Q_ARG(qint64, STEPS_A_BATCH), Q_ARG(QString, file));
    return (threadSeconds() - before) / STEPS_A_BATCH;
}

} // namespace

double stepSeconds(ProbedApplication &application, TransferHost &host, const QString &folder, int inFlight)
{
    QVector<double> batches;
    // One batch at a time: the next is asked for when the host has heard all of the last.
    std::function<void()> askForBatch = [&] {
        QMetaObject::invokeMethod(application.worker(), [&] {
            QObject *const job = runningJob(application.worker());
            const double seconds = job ? batchSeconds(job, folder + QStringLiteral("/a file in flight.bin")) : -1;
            QMetaObject::invokeMethod(&host, [&, seconds] {
                batches.append(seconds);
                if (batches.size() < BATCHES && seconds > 0)
                    askForBatch();
            });
        });
    };
    QObject::connect(&host, &TransferHost::underWay, &host, [&](int count) {
        if (count == inFlight)
            askForBatch();
    });
    host.upload(folder, inFlight);
    batches.removeAll(-1);
    if (batches.isEmpty())
        throw std::runtime_error("the upload was over before its steps could be measured");
    std::sort(batches.begin(), batches.end());
    return batches.at(batches.size() / 2);
}

} // namespace Korvo::Bench
