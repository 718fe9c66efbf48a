#pragma once

#include <QtWidgets/QFrame>

class QAction;
class QLabel;
class QPushButton;

namespace Korvo::Desktop {

/// One line above the content that says what has just gone wrong, or what is waited for, and offers what to do about it.
class MessageBar : public QFrame
{
    Q_OBJECT
public:
    explicit MessageBar(QWidget *parent = nullptr);

    void show(const QString &title, const QString &text, QAction *remedy);
    QString text() const;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void fitHeight();

    QLabel *const titleLabel;
    QLabel *const textLabel;
    QPushButton *const button;
    QAction *offered = nullptr;
};

} // namespace Korvo::Desktop
