#include "LibraryLog.h"

#include "Output.h"
#include "Text.h"

#include <QtCore/QMutexLocker>
#include <QtCore/QStringList>

namespace Korvo::Cli {

namespace {

// The numbers of the levels are fixed, their names are not.
constexpr int FAILURE_LEVEL = 1;

// The library's text about a failed request: the name of the failure in quotes, then Qt's own words.
const QString NETWORK_MARK = QStringLiteral("Network Error: \"");
const QString CAUSE_MARK = QStringLiteral(" Message: ");

QString nameIn(const QString &message)
{
    const int start = message.indexOf(NETWORK_MARK) + NETWORK_MARK.size();
    return message.mid(start, message.indexOf(QLatin1Char('"'), start) - start);
}

QString wordsIn(const QString &message)
{
    return message.mid(message.indexOf(CAUSE_MARK) + CAUSE_MARK.size()).simplified();
}

// Each line is made harmless by itself: a text may have several.
QString shownLines(const QString &text)
{
    QStringList lines = text.split(QLatin1Char('\n'));
    for (QString &line : lines)
        line = shownName(line);
    return lines.join(QLatin1String("\n  "));
}

QString logLine(Logging::LogLevel level, const QString &category, const QString &message, const QList<QVariant> &arguments)
{
    QStringList values;
    for (const QVariant &argument : arguments)
        values.append(argument.toString());
    QString line = QStringLiteral("log %1 ").arg(static_cast<int>(level)) + category + QLatin1String(": ") + message;
    if (!values.isEmpty())
        line += QLatin1String(" [") + values.join(QLatin1String(", ")) + QLatin1Char(']');
    return shownLines(line);
}

} // namespace

LibraryLog::LibraryLog(Output &usedOutput, Showing showing)
{
    if (showing == Showing::Yes)
        connect(this, &LibraryLog::lineLogged, &usedOutput, &Output::log);
    Logging::CLogger::setSink([this](Logging::LogLevel level, const QString &category, const QString &message,
                                     const QList<QVariant> &arguments) { take(level, category, message, arguments); });
}

LibraryLog::~LibraryLog()
{
    Logging::CLogger::unsetSink();
}

void LibraryLog::take(Logging::LogLevel level, const QString &category, const QString &message,
                      const QList<QVariant> &arguments)
{
    if (static_cast<int>(level) == FAILURE_LEVEL)
        keepCause(message);
    Q_EMIT lineLogged(logLine(level, category, message, arguments));
}

// What comes of a failed request, an answer that cannot be read for one, explains less than its failure.
void LibraryLog::keepCause(const QString &message)
{
    const QMutexLocker lock(&mutex);
    if (message.startsWith(NETWORK_MARK)) {
        networkError = nameIn(message);
        cause = wordsIn(message);
    } else if (networkError.isEmpty()) {
        cause = message.simplified();
    }
}

QString LibraryLog::lastCause() const
{
    const QMutexLocker lock(&mutex);
    return cause;
}

QString LibraryLog::lastNetworkError() const
{
    const QMutexLocker lock(&mutex);
    return networkError;
}

void LibraryLog::forgetCause()
{
    const QMutexLocker lock(&mutex);
    cause.clear();
    networkError.clear();
}

} // namespace Korvo::Cli
