#include "support/LogCapture.h"

#include "support/SecretWatch.h"

#include <NQLogging/CLogger.h>

#include <algorithm>

namespace Korvo::Web::TestSupport {

namespace {

bool holds(const LogEntry &entry, const QString &text)
{
    const auto argumentHolds = [&](const QVariant &argument) { return argument.toString().contains(text); };
    return entry.message.contains(text) || entry.category.contains(text)
           || std::any_of(entry.arguments.cbegin(), entry.arguments.cend(), argumentHolds);
}

void expectNoSecret(const LogEntry &entry)
{
    expectNoSecretIn(entry.category, "the log");
    expectNoSecretIn(entry.message, "the log");
    for (const QVariant &argument : entry.arguments)
        expectNoSecretIn(argument.toString(), "the log");
}

} // namespace

LogCapture::LogCapture(Watch watch)
    : store(std::make_shared<Store>())
{
    Logging::CLogger::setSink([kept = store, watch](Logging::LogLevel level, const QString &category,
                                                    const QString &message, const QList<QVariant> &arguments) {
        const LogEntry entry{int(level), category, message, arguments};
        if (watch == Watch::Secrets)
            expectNoSecret(entry);
        const std::lock_guard<std::mutex> guard(kept->mutex);
        kept->entries.append(entry);
    });
}

LogCapture::~LogCapture()
{
    Logging::CLogger::unsetSink();
}

QList<LogEntry> LogCapture::entries() const
{
    const std::lock_guard<std::mutex> guard(store->mutex);
    return store->entries;
}

QStringList LogCapture::messages() const
{
    QStringList texts;
    for (const LogEntry &entry : entries())
        texts.append(entry.message);
    return texts;
}

bool LogCapture::contains(const QString &text) const
{
    const QList<LogEntry> all = entries();
    return std::any_of(all.cbegin(), all.cend(), [&](const LogEntry &entry) { return holds(entry, text); });
}

void LogCapture::clear()
{
    const std::lock_guard<std::mutex> guard(store->mutex);
    store->entries.clear();
}

} // namespace Korvo::Web::TestSupport
