#include <NQLogging/CLogger.h>

#include <QtCore/QByteArray>
#include <QtCore/QDebug>
#include <QtCore/QLoggingCategory>
#include <QtCore/QStringList>

#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace Korvo::Logging {

namespace {

struct Shared
{
    std::mutex mutex; // guards both members below; thread checkers see through it, unlike through Qt's own
    std::shared_ptr<const CLogger::Sink> sink;
    std::map<QByteArray, QLoggingCategory> categories;
};

Shared &shared()
{
    static Shared instance;
    return instance;
}

std::shared_ptr<const CLogger::Sink> currentSink()
{
    const std::lock_guard locker(shared().mutex);
    return shared().sink;
}

// A category keeps the pointer to its name and not the name, so both stay for good; the key shares its bytes with name.
const QLoggingCategory &categoryNamed(const QByteArray &name)
{
    const std::lock_guard locker(shared().mutex);
    return shared().categories.try_emplace(name, name.constData()).first->second;
}

QtMsgType qtLevelOf(LogLevel level)
{
    // clang-format off
    switch (level) {
    case LogLevel::Fatal: // Qt's own fatal level would end the application
    case LogLevel::Failure: return QtCriticalMsg;
    case LogLevel::Warning: return QtWarningMsg;
    case LogLevel::Info:    return QtInfoMsg;
    case LogLevel::Debug:   return QtDebugMsg;
    }
    // clang-format on
    return QtInfoMsg; // a number that a newer caller knows
}

QDebug streamOf(const QMessageLogger &logger, QtMsgType type)
{
    // clang-format off
    switch (type) {
    case QtCriticalMsg: return logger.critical();
    case QtWarningMsg:  return logger.warning();
    case QtInfoMsg:     return logger.info();
    default:            return logger.debug();
    }
    // clang-format on
}

QString readable(const QVariant &argument)
{
    if (argument.canConvert<QString>()) {
        return argument.toString();
    }
    QString text;
    QDebug(&text).nospace() << argument;
    return text;
}

QString withArguments(const QString &message, const QList<QVariant> &arguments)
{
    if (arguments.isEmpty()) {
        return message;
    }
    QStringList texts;
    for (const QVariant &argument : arguments) {
        texts.append(readable(argument));
    }
    return message + QLatin1String(" [") + texts.join(QLatin1String(", ")) + QLatin1Char(']');
}

void writeToQt(LogLevel level, const QString &categoryName, const QString &message, const QList<QVariant> &arguments)
{
    const QLoggingCategory &category = categoryNamed(categoryName.toUtf8());
    const QtMsgType type = qtLevelOf(level);
    if (category.isEnabled(type)) {
        const QMessageLogger logger(nullptr, 0, nullptr, category.categoryName());
        streamOf(logger, type).noquote() << withArguments(message, arguments);
    }
}

} // namespace

void CLogger::logMessage(LogLevel level, const QString &category, const QString &message, QList<QVariant> arguments)
{
    // Called outside the lock: a sink may log in its turn.
    if (const auto sink = currentSink()) {
        (*sink)(level, category, message, arguments);
        return;
    }
    writeToQt(level, category, message, arguments);
}

void CLogger::setSink(Sink sink)
{
    auto newSink = sink ? std::make_shared<const Sink>(std::move(sink)) : nullptr;
    const std::lock_guard locker(shared().mutex);
    shared().sink.swap(newSink);
}

void CLogger::unsetSink()
{
    setSink({});
}

} // namespace Korvo::Logging
