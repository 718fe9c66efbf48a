#pragma once

#include "LogCollector.h"
#include "MainWindow.h"
#include "NetworkSettings.h"
#include "UnseenScreen.h"
#include "flow/LocalPlatform.h"

#include <NQKorvoWeb/KorvoWebApi.h>

#include <QtCore/QScopedPointer>
#include <QtCore/QTemporaryDir>
#include <QtWidgets/QApplication>
#include <QtWidgets/QWidget>

namespace Korvo::Web::TestSupport {

/// The sample host on a screen that nobody sees, and a user's hands.
///
/// Widgets are found by their names, wherever they are, as long as they can be seen; "a/b" is the b that lies in an a.
class DesktopStage
{
public:
    DesktopStage();
    ~DesktopStage();

    Desktop::MainWindow &window() { return *mainWindow; }
    KorvoWebApi &api() { return *facade; }
    Desktop::TransferModel &transfers() { return mainWindow->transferList().list(); }
    /// The newest transfer.
    const Desktop::Transfer &transfer();

    /// Waits for a widget and brings its window to the front; null when it does not appear.
    template <class Widget>
    Widget *see(const char *name)
    {
        return qobject_cast<Widget *>(seeWidget(QString::fromLatin1(name)));
    }
    bool isSeen(const char *name) const { return visible(QString::fromLatin1(name)) != nullptr; }
    bool waitUntilGone(const char *name);

    /// False when there is no such widget, or it cannot be used.
    bool click(const char *name);
    /// Replaces what is in a field, key by key.
    bool type(const char *name, const QString &text);
    bool press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    /// The text of a label, or of a field.
    QString read(const char *name);

    bool logIn(const QString &user, const QString &password);
    /// Selects the project of that name in the table.
    bool select(const QString &projectName);
    /// Drags a folder onto the window and drops it there.
    bool drop(const QString &folder);
    /// Drops a folder and accepts what the dialog proposes.
    bool upload(const QString &folder);
    /// Downloads the selected project into @p folder.
    bool download(const QString &folder);
    bool waitFor(Desktop::Transfer::Stage stage);

private:
    QWidget *visible(const QString &name) const;
    QWidget *seeWidget(const QString &name);

    const UnseenScreen screen;
    QScopedPointer<Desktop::LogCollector> log;
    QScopedPointer<KorvoWebApi> facade;
    QScopedPointer<Desktop::MainWindow> mainWindow;
};

/// Settings that are as good as new, in a folder of their own, for as long as it lives.
class FreshSettings
{
public:
    FreshSettings();

private:
    QTemporaryDir folder;
};

} // namespace Korvo::Web::TestSupport
