#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Korvo::Cli::Test {

/// A terminal that can be typed at and looked at, with a server of its own.
class Tmux
{
public:
    Tmux(const QString &program, const QString &workFolder);
    ~Tmux();

    /// A shell of @p columns by @p rows.
    bool start(int columns, int rows);
    void typeLine(const QString &text);
    /// A key by tmux's name, "C-c" for one.
    void press(const QString &key);
    void resize(int columns, int rows);

    /// What is to be seen now; with colours when @p escapes.
    QString screen();
    /// What was to be seen at any time, scrolled away included.
    QString history();
    /// False when it does not come to be seen.
    bool waitFor(const QString &text);
    bool waitForPattern(const QString &pattern);
    bool waitUntilGone(const QString &text);

private:
    QString tmux(const QStringList &arguments);

    const QString program;
    const QString socket;
};

} // namespace Korvo::Cli::Test
