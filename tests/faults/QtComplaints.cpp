#include "faults/QtComplaints.h"

#include <mutex>

namespace Korvo::Web::Faults {

namespace {

std::mutex mutex; // guards complaints
QStringList complaints;
QtMessageHandler handlerBefore = nullptr;

void note(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (type == QtDebugMsg || type == QtInfoMsg)
        return handlerBefore(type, context, text);
    if (text.contains(QLatin1String("(QTcpSocket)"))) // Qt's own business below its HTTP layer, when a line breaks
        return;
    const std::lock_guard<std::mutex> guard(mutex);
    complaints.append(text);
}

} // namespace

QtComplaints::QtComplaints()
{
    {
        const std::lock_guard<std::mutex> guard(mutex);
        complaints.clear();
    }
    handlerBefore = qInstallMessageHandler(note);
}

QtComplaints::~QtComplaints()
{
    qInstallMessageHandler(handlerBefore);
}

QStringList QtComplaints::texts() const
{
    const std::lock_guard<std::mutex> guard(mutex);
    return complaints;
}

} // namespace Korvo::Web::Faults
