#include "DesktopStage.h"

#include "Patience.h"
#include "flow/SignalRecorder.h"

#include <NQKorvoWeb/KorvoWebLibrary.h>

#include <QtCore/QMimeData>
#include <QtCore/QSettings>
#include <QtCore/QUrl>
#include <QtGui/QDragEnterEvent>
#include <QtGui/QDropEvent>
#include <QtTest/QTest>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QTableView>

namespace Korvo::Web::TestSupport {

using namespace Desktop;

FreshSettings::FreshSettings()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Korvo"));
    QCoreApplication::setApplicationName(QStringLiteral("korvo-desktop"));
    QSettings::setDefaultFormat(QSettings::IniFormat);
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, folder.path());
}

DesktopStage::DesktopStage()
{
    KorvoWebLibrary::initialize();
    log.reset(new LogCollector);
    facade.reset(new KorvoWebApi);
    mainWindow.reset(new MainWindow(*facade, *log, NetworkSettings::load()));
    mainWindow->show();
    mainWindow->start();
}

DesktopStage::~DesktopStage()
{
    mainWindow.reset();
    facade.reset();
}

const Transfer &DesktopStage::transfer()
{
    static const Transfer none;
    const QList<int> numbers = transfers().numbers();
    return numbers.isEmpty() ? none : *transfers().find(numbers.first());
}

QWidget *DesktopStage::visible(const QString &name) const
{
    const QString own = name.section(QLatin1Char('/'), -1);
    const QString owner = name.section(QLatin1Char('/'), 0, -2);
    const QWidgetList widgets = QApplication::allWidgets();
    for (QWidget *const widget : widgets) {
        if (widget->objectName() == own && widget->isVisible()
            && (owner.isEmpty() || widget->parentWidget()->objectName() == owner))
            return widget;
    }
    return nullptr;
}

QWidget *DesktopStage::seeWidget(const QString &name)
{
    if (!eventually([&] { return visible(name) != nullptr; }, PATIENCE))
        return nullptr;
    QWidget *const widget = visible(name);
    widget->window()->activateWindow();
    return widget;
}

bool DesktopStage::waitUntilGone(const char *name)
{
    return eventually([&] { return !isSeen(name); }, PATIENCE);
}

bool DesktopStage::click(const char *name)
{
    auto *const button = see<QAbstractButton>(name);
    if (!button || !eventually([&] { return button->isEnabled(); }, PATIENCE))
        return false;
    QTest::mouseClick(button, Qt::LeftButton);
    return true;
}

bool DesktopStage::type(const char *name, const QString &text)
{
    auto *const field = see<QLineEdit>(name);
    if (!field || !field->isEnabled() || field->isReadOnly())
        return false;
    QTest::mouseClick(field, Qt::LeftButton);
    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(field, Qt::Key_Delete);
    QTest::keyClicks(field, text);
    return field->text() == text;
}

// To whatever has the focus in the window in front, as a keyboard does.
bool DesktopStage::press(int key, Qt::KeyboardModifiers modifiers)
{
    QWidget *front = QApplication::activeModalWidget();
    if (!front)
        front = QApplication::activeWindow();
    // Without a window manager a window that is gone may still count as the active one.
    if (!front || !front->isVisible())
        front = mainWindow.data();
    // Shortcuts are for the window in front only.
    front->activateWindow();
    if (!eventually([&] { return QApplication::activeWindow() == front; }, PATIENCE))
        return false;
    QWidget *const target = front->focusWidget() ? front->focusWidget() : front;
    QTest::keyClick(target, static_cast<Qt::Key>(key), modifiers);
    return true;
}

QString DesktopStage::read(const char *name)
{
    QWidget *const widget = seeWidget(QString::fromLatin1(name));
    if (const auto *const label = qobject_cast<QLabel *>(widget))
        return label->text();
    if (const auto *const button = qobject_cast<QAbstractButton *>(widget))
        return button->text();
    const auto *const field = qobject_cast<QLineEdit *>(widget);
    return field ? field->text() : QStringLiteral("nothing to read");
}

bool DesktopStage::logIn(const QString &user, const QString &password)
{
    return type("userName", user) && type("password", password) && click("loginButton") && waitUntilGone("loginDialog");
}

bool DesktopStage::select(const QString &projectName)
{
    auto *const table = see<QTableView>("projectTable");
    if (!table)
        return false;
    for (int row = 0; row < table->model()->rowCount(); ++row) {
        const QModelIndex index = table->model()->index(row, 0);
        if (index.data().toString() != projectName)
            continue;
        QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, table->visualRect(index).center());
        return table->selectionModel()->isRowSelected(row, {});
    }
    return false;
}

bool DesktopStage::drop(const QString &folder)
{
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(folder)});
    const QPoint middle = mainWindow->rect().center();
    QDragEnterEvent enter(middle, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QApplication::sendEvent(mainWindow.data(), &enter);
    if (!enter.isAccepted() || !isSeen("dropOverlay"))
        return false;
    QDropEvent drop(middle, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(mainWindow.data(), &drop);
    return !isSeen("dropOverlay");
}

bool DesktopStage::upload(const QString &folder)
{
    return drop(folder) && click("startUpload") && waitUntilGone("uploadDialog");
}

bool DesktopStage::download(const QString &folder)
{
    return press(Qt::Key_D, Qt::ControlModifier) && type("downloadFolder", folder) && click("startDownload")
           && waitUntilGone("downloadDialog");
}

bool DesktopStage::waitFor(Transfer::Stage stage)
{
    return eventually([&] { return !transfers().numbers().isEmpty() && transfer().stage == stage; }, 2 * PATIENCE);
}

} // namespace Korvo::Web::TestSupport
