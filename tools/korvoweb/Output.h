#pragma once

#include <QtCore/QJsonObject>
#include <QtCore/QObject>
#include <QtCore/QString>

#include <functional>

namespace Korvo::Cli {

/// Everything that the program prints goes through here: texts or JSON to standard output, failures to standard error.
class Output : public QObject
{
    Q_OBJECT
public:
    enum class Form { Text, Json };
    enum class Amount { All, ResultsOnly };

    Output(Form newForm, Amount newAmount);

    Form form() const { return usedForm; }
    Amount amount() const { return usedAmount; }

    /// A line of a result; nothing in JSON.
    void print(const QString &line);
    /// A line about what is going on; nothing in JSON and with --quiet.
    void say(const QString &line);
    /// One event; nothing in text and with --quiet.
    void event(const QString &name, QJsonObject members = {});
    /// The last line in JSON; nothing in text.
    void result(QJsonObject members);
    /// A line on standard error.
    void warn(const QString &line);
    void log(const QString &text);
    /// A question on standard error, without a line end. What moves stays hidden until the next drawing.
    void ask(const QString &question);
    /// Bytes for the terminal as they are, control sequences included.
    void draw(const QString &text);

    /// What moves on the terminal is hidden before other lines are written and shown again after.
    void setOverlay(std::function<void()> hide, std::function<void()> show);
    void removeOverlay();

    bool isBroken() const { return broken; }

Q_SIGNALS:
    /// Standard output takes no more. Emitted once.
    void broke();

private:
    void writeLine(const QString &line);
    void writeOutput(const QString &text);
    void writeError(const QString &text);

    const Form usedForm;
    const Amount usedAmount;
    std::function<void()> hideOverlay;
    std::function<void()> showOverlay;
    bool broken = false;
};

} // namespace Korvo::Cli
