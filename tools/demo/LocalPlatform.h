#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QProcess>
#include <QtCore/QString>
#include <QtCore/QTemporaryDir>

namespace Korvo::Demo {

/// The local platform as a process of its own, with a data folder that lives as long as this object.
class LocalPlatform : public QObject
{
    Q_OBJECT
public:
    explicit LocalPlatform(const QString &program);
    /// Ends the process and removes its data.
    ~LocalPlatform() override;

    /// Starts the process and waits until it is ready; false with failure() set.
    bool start();
    /// Ends the process and waits for it; false when it had to be killed.
    bool stop();

    quint16 proxyPort() const { return proxy; }
    QString authorityFile() const { return authority; }
    QString failure() const { return reasonOfFailure; }

Q_SIGNALS:
    /// The process has ended although nobody asked it to.
    void died(const QString &reason);

private:
    bool fail(const QString &reason);
    bool readReadyLine();
    bool takeReadyLine(const QByteArray &line);
    void handleFinished();

    QString program;
    QTemporaryDir data;
    QProcess process;
    bool stopping = false;
    quint16 proxy = 0;
    QString authority;
    QString reasonOfFailure;
};

} // namespace Korvo::Demo
