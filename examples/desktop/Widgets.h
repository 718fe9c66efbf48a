#pragma once

#include "Symbols.h"

#include <QtCore/QStringList>
#include <QtWidgets/QWidget>

#include <functional>

class QAction;
class QFormLayout;
class QLabel;
class QLayout;
class QPushButton;

namespace Korvo::Desktop {

/// Gives a widget the name by which tests and style sheets find it.
template <class Widget>
Widget *named(Widget *widget, const char *name)
{
    widget->setObjectName(QString::fromLatin1(name));
    return widget;
}

/// A label that shows its text as it is: texts of servers must not be taken for markup.
QLabel *plainLabel(const QString &text = {});
/// A label in a smaller role: explanations below a field.
QLabel *quietLabel(const QString &text = {});
/// A label that heads a page.
QLabel *headingLabel(const QString &text);
/// A label for something that is wrong; hidden until showMessage() gives it a text.
QLabel *messageLabel(const char *name);
/// The same for something to be thought of.
QLabel *cautionLabel(const char *name);
void showMessage(QLabel *label, const QString &text);

/// Lets the label of a row that holds more than a field lead to @p field; by itself it shows its "&".
void setBuddyOf(const QFormLayout *form, QLayout *row, QWidget *field);

/// Asks for a file to save to and calls @p use with it; nothing is called when the user changes his mind.
void askForFile(QWidget *parent, const QString &proposal, const std::function<void(const QString &)> &use);
/// The same for files of @p folder to read from.
void askForFiles(QWidget *parent, const QString &folder, const std::function<void(const QStringList &)> &use);

/// What stands in the middle of an empty view: a symbol, a sentence, a hint, and a button if there is something to do.
class EmptyState : public QWidget
{
    Q_OBJECT
public:
    EmptyState(Symbol symbol, const QString &title, const QString &hint, QWidget *parent = nullptr);

    void setTexts(const QString &title, const QString &hint);
    /// A button that does what the action does.
    void setAction(QAction *action);
    QString title() const;

protected:
    void changeEvent(QEvent *event) override;

private:
    void drawPicture();

    const Symbol symbol;
    QLabel *const picture;
    QLabel *const titleLabel;
    QLabel *const hintLabel;
    QPushButton *const button;
    QAction *offered = nullptr;
};

} // namespace Korvo::Desktop
