#pragma once

#include "ProgressDisplay.h"

#include <QtCore/QStringList>
#include <QtCore/QTimer>
#include <QtCore/QVector>

namespace Korvo::Cli {

struct Portion;

/// A bar per file in flight and one for the whole, renewed in place.
class ProgressView : public ProgressDisplay
{
    Q_OBJECT
public:
    ProgressView(Output &usedOutput, const TransferState &shownState, const Interrupts &interrupts);
    ~ProgressView() override;

private:
    void redraw();
    void hide();
    QString eraseSequence() const;
    QStringList lines(int columns, int rows) const;
    QString line(const Portion &portion, const QString &name, int columns) const;
    QString totalName() const;

    Output &output;
    const TransferState &state;
    QTimer timer;
    QVector<int> drawnWidths; // of the lines that stand on the terminal
};

} // namespace Korvo::Cli
