#include "LogCollector.h"

#include <atomic>
#include <cstring>

namespace Korvo::Desktop {

namespace {

std::atomic<LogCollector *> current;
std::atomic<QtMessageHandler> former;

bool isOfLibrary(const char *category)
{
    return category && (std::strcmp(category, "KorvoWeb") == 0 || std::strncmp(category, "Korvo::Web::", 12) == 0);
}

} // namespace

LogCollector::LogCollector(QObject *parent)
    : QObject(parent)
{
    qRegisterMetaType<LogLine>("Korvo::Desktop::LogLine");
    current = this;
    former = qInstallMessageHandler(&LogCollector::take);
}

LogCollector::~LogCollector()
{
    qInstallMessageHandler(former);
    current = nullptr;
}

void LogCollector::take(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    LogCollector *const collector = current;
    if (collector && isOfLibrary(context.category))
        Q_EMIT collector->logged({QDateTime::currentDateTime(), type, QString::fromLatin1(context.category), text});
    if (const QtMessageHandler handler = former)
        handler(type, context, text);
}

} // namespace Korvo::Desktop
