#pragma once

#include <QtCore/QObject>
#include <QtCore/QTimer>

namespace Korvo::Cli {

class Interrupts;

/// The keyboard while a transfer runs on a terminal.
class Keys : public QObject
{
    Q_OBJECT
public:
    explicit Keys(const Interrupts &interrupts);
    ~Keys() override;

Q_SIGNALS:
    void pausePressed();

private:
    void look();

    QTimer timer;
};

} // namespace Korvo::Cli
