#pragma once

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVariant>

#include <memory>
#include <mutex>

namespace Korvo::Web::TestSupport {

struct LogEntry
{
    int level = 0;
    QString category;
    QString message;
    QList<QVariant> arguments;
};

/// Takes everything that is logged while it lives, from every thread, instead of Qt's logging.
///
/// The test program ends at once when a secret of the local platform is logged, see SecretWatch.
class LogCapture
{
public:
    enum class Watch { Secrets, Nothing };

    /// @param watch  Nothing where texts made up at random may look like a secret
    explicit LogCapture(Watch watch = Watch::Secrets);
    ~LogCapture();

    QList<LogEntry> entries() const;
    QStringList messages() const;
    int count() const { return entries().size(); }
    /// Whether any message, category or argument holds @p text.
    bool contains(const QString &text) const;
    void clear();

private:
    Q_DISABLE_COPY(LogCapture)

    // A message that is just being logged may still come when the capture has gone.
    struct Store
    {
        std::mutex mutex; // guards entries; not Qt's, which thread sanitizers cannot see
        QList<LogEntry> entries;
    };
    std::shared_ptr<Store> store;
};

} // namespace Korvo::Web::TestSupport
