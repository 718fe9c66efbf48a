#include "MessageBar.h"

#include "Appearance.h"
#include "Widgets.h"

#include <QtGui/QPainter>
#include <QtWidgets/QAction>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QToolButton>

namespace Korvo::Desktop {

MessageBar::MessageBar(QWidget *parent)
    : QFrame(parent)
    , titleLabel(named(plainLabel(), "messageTitle"))
    , textLabel(named(plainLabel(), "messageText"))
    , button(named(new QPushButton, "messageButton"))
{
    setObjectName(QStringLiteral("messageBar"));
    QFont bold = titleLabel->font();
    bold.setBold(true);
    titleLabel->setFont(bold);
    textLabel->setWordWrap(true);
    auto *const close = named(new QToolButton, "messageClose");
    close->setIcon(symbolIcon(Symbol::Abort));
    close->setAutoRaise(true);
    close->setAccessibleName(tr("Close this message"));
    close->setToolTip(tr("Close this message"));
    connect(close, &QToolButton::clicked, this, &QFrame::hide);
    connect(button, &QPushButton::clicked, this, [this] {
        hide();
        if (offered)
            offered->trigger();
    });
    auto *const layout = new QHBoxLayout(this);
    layout->setContentsMargins(14, 8, 8, 8);
    layout->addWidget(titleLabel);
    layout->addSpacing(6);
    layout->addWidget(textLabel, 1);
    layout->addWidget(button);
    layout->addWidget(close);
    hide();
}

void MessageBar::show(const QString &title, const QString &text, QAction *remedy)
{
    titleLabel->setText(title);
    textLabel->setText(text);
    offered = remedy;
    button->setVisible(remedy != nullptr);
    if (remedy)
        button->setText(remedy->text());
    QFrame::show();
    fitHeight();
}

void MessageBar::resizeEvent(QResizeEvent *event)
{
    QFrame::resizeEvent(event);
    fitHeight();
}

// The window's layout gives a text that has got longer its second line only when it is laid out anew.
void MessageBar::fitHeight()
{
    layout()->invalidate();
    setMinimumHeight(layout()->totalHeightForWidth(width()));
}

QString MessageBar::text() const
{
    return titleLabel->text() + QLatin1Char(' ') + textLabel->text();
}

void MessageBar::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    QColor ground = toneColour(Tone::Caution, palette());
    painter.fillRect(QRect(0, 0, 4, height()), ground);
    ground.setAlphaF(isDark(palette()) ? 0.16 : 0.12);
    painter.fillRect(rect(), ground);
    QFrame::paintEvent(event);
}

} // namespace Korvo::Desktop
