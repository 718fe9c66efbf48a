#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTextStream>

namespace Korvo::Demo {

/// Shows a transfer while it runs: a line for each file that is through, and a line for the whole that is renewed,
/// in place on a terminal, else once a second.
class TransferView : public QObject
{
    Q_OBJECT
public:
    /// @param prefix  cut off the names of files before they are shown
    /// @param sizes   bytes by the name that the library reports
    TransferView(QTextStream &stream, const QString &prefix, const QHash<QString, qint64> &sizes);

    void setFileProgress(const QString &name, int percent);
    void setCurrentFiles(const QStringList &names);
    void setTotalProgress(int percent);
    void setFilesTotal(int count);
    void setFilesCompleted(int count);

    /// Whether every file is through, as far as the counts tell.
    bool isComplete() const { return countsKnown && filesCompleted == filesTotal; }
    int completed() const { return filesCompleted; }

    /// The transfer is over: files still shown as running are through, if it went well.
    void finish(bool successful);

private:
    struct Running
    {
        qint64 since = 0;
        int percent = 0;
    };

    void showDone(const QString &name);
    void renewLine();
    void clearLine();
    QString statusLine() const;
    QString shownName(const QString &name) const;

    QTextStream &out;
    const QString cutOff;
    const QHash<QString, qint64> bytes;
    const bool inPlace;
    QHash<QString, Running> running;
    QStringList order;
    QElapsedTimer clock;
    qint64 lastRenewal = 0;
    int totalPercent = 0;
    int filesTotal = 0;
    int filesCompleted = 0;
    bool countsKnown = false;
};

} // namespace Korvo::Demo
