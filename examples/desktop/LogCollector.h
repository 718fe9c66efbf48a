#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QMetaType>
#include <QtCore/QObject>
#include <QtCore/QString>

namespace Korvo::Desktop {

/// One line of the library's log.
struct LogLine
{
    QDateTime time;
    QtMsgType type = QtInfoMsg;
    QString category;
    QString text;
};

/// Listens to the library's log, which goes to Qt's logging under categories of its own, and passes everything on to the
/// message handler that was there before.
///
/// There is one at a time. Create it before the library's facade and destroy it after that: the library logs on a thread
/// of its own.
class LogCollector : public QObject
{
    Q_OBJECT
public:
    explicit LogCollector(QObject *parent = nullptr);
    ~LogCollector() override;

Q_SIGNALS:
    /// Arrives on the thread of the receiver.
    void logged(const Korvo::Desktop::LogLine &line);

private:
    static void take(QtMsgType type, const QMessageLogContext &context, const QString &text);
};

} // namespace Korvo::Desktop

Q_DECLARE_METATYPE(Korvo::Desktop::LogLine)
