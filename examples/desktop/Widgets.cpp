#include "Widgets.h"

#include "Appearance.h"

#include <QtCore/QEvent>
#include <QtCore/QFileInfo>
#include <QtGui/QPainter>
#include <QtWidgets/QAction>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

namespace Korvo::Desktop {

namespace {

constexpr int PICTURE_SIDE = 56;
constexpr qreal TITLE_SCALE = 1.25;
constexpr qreal HEADING_SCALE = 1.3;

/// Keeps its colour when the palette changes.
class ToneLabel : public QLabel
{
public:
    ToneLabel(Tone labelTone, const QString &text)
        : QLabel(text)
        , tone(labelTone)
    {
        setTextFormat(Qt::PlainText);
        setWordWrap(true);
        takeColour();
    }

protected:
    void changeEvent(QEvent *event) override
    {
        QLabel::changeEvent(event);
        if (event->type() == QEvent::PaletteChange && !taking)
            takeColour();
    }

private:
    void takeColour()
    {
        taking = true;
        QPalette own;
        own.setColor(QPalette::WindowText, toneColour(tone, own));
        setPalette(own);
        taking = false;
    }

    const Tone tone;
    bool taking = false;
};

QLabel *hiddenLabel(Tone tone, const char *name)
{
    QLabel *const label = named(new ToneLabel(tone, {}), name);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->hide();
    return label;
}

} // namespace

QLabel *plainLabel(const QString &text)
{
    auto *const label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    return label;
}

QLabel *quietLabel(const QString &text)
{
    return new ToneLabel(Tone::Quiet, text);
}

QLabel *headingLabel(const QString &text)
{
    QLabel *const label = plainLabel(text);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * HEADING_SCALE);
    font.setBold(true);
    label->setFont(font);
    return label;
}

QLabel *messageLabel(const char *name)
{
    return hiddenLabel(Tone::Bad, name);
}

QLabel *cautionLabel(const char *name)
{
    return hiddenLabel(Tone::Caution, name);
}

void showMessage(QLabel *label, const QString &text)
{
    label->setText(text);
    label->setVisible(!text.isEmpty());
}

void setBuddyOf(const QFormLayout *form, QLayout *row, QWidget *field)
{
    if (auto *const label = qobject_cast<QLabel *>(form->labelForField(row)))
        label->setBuddy(field);
}

void askForFile(QWidget *parent, const QString &proposal, const std::function<void(const QString &)> &use)
{
    auto *const dialog = named(new QFileDialog(parent), "fileDialog");
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDirectory(QFileInfo(proposal).absolutePath());
    dialog->selectFile(QFileInfo(proposal).fileName());
    QObject::connect(dialog, &QFileDialog::fileSelected, parent, use);
    dialog->open();
}

void askForFiles(QWidget *parent, const QString &folder, const std::function<void(const QStringList &)> &use)
{
    auto *const dialog = named(new QFileDialog(parent), "fileDialog");
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFiles);
    dialog->setDirectory(folder);
    QObject::connect(dialog, &QFileDialog::filesSelected, parent, use);
    dialog->open();
}

EmptyState::EmptyState(Symbol shownSymbol, const QString &title, const QString &hint, QWidget *parent)
    : QWidget(parent)
    , symbol(shownSymbol)
    , picture(new QLabel)
    , titleLabel(named(plainLabel(), "emptyTitle"))
    , hintLabel(named(quietLabel(), "emptyHint"))
    , button(named(new QPushButton, "emptyButton"))
{
    QFont font = titleLabel->font();
    font.setPointSizeF(font.pointSizeF() * TITLE_SCALE);
    titleLabel->setFont(font);
    for (QLabel *const label : {picture, titleLabel, hintLabel})
        label->setAlignment(Qt::AlignCenter);
    button->hide();
    auto *const layout = new QVBoxLayout(this);
    layout->addStretch();
    layout->addWidget(picture);
    layout->addWidget(titleLabel);
    layout->addWidget(hintLabel);
    layout->addSpacing(6);
    layout->addWidget(button, 0, Qt::AlignHCenter);
    layout->addStretch();
    connect(button, &QPushButton::clicked, this, [this] {
        if (offered)
            offered->trigger();
    });
    drawPicture();
    setTexts(title, hint);
}

void EmptyState::setTexts(const QString &title, const QString &hint)
{
    titleLabel->setText(title);
    hintLabel->setText(hint);
    hintLabel->setVisible(!hint.isEmpty());
}

void EmptyState::setAction(QAction *action)
{
    offered = action;
    button->setVisible(action != nullptr);
    if (!action)
        return;
    button->setText(action->text());
    button->setIcon(action->icon());
}

QString EmptyState::title() const
{
    return titleLabel->text();
}

void EmptyState::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        drawPicture();
}

void EmptyState::drawPicture()
{
    const qreal ratio = devicePixelRatioF();
    QPixmap pixmap(QSize(PICTURE_SIDE, PICTURE_SIDE) * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    drawSymbol(painter, QRectF(0, 0, PICTURE_SIDE, PICTURE_SIDE), symbol, toneColour(Tone::Quiet, palette()));
    picture->setPixmap(pixmap);
}

} // namespace Korvo::Desktop
