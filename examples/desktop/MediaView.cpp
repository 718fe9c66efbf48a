#include "MediaView.h"

#include "ErrorText.h"
#include "Texts.h"
#include "Widgets.h"

#include <QtCore/QDir>
#include <QtCore/QStandardPaths>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QListView>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QStackedLayout>
#include <QtWidgets/QVBoxLayout>

namespace Korvo::Desktop {

using Web::KorvoWebApi;

namespace {

constexpr QSize CELL(184, 160);

} // namespace

MediaView::MediaView(KorvoWebApi &usedApi, QWidget *parent)
    : QDialog(parent)
    , api(usedApi)
    , loader(model)
    , stack(new QStackedLayout)
    , empty(new EmptyState(Symbol::Pictures, {}, {}))
    , view(named(new QListView, "mediaList"))
    , count(named(quietLabel(), "mediaCount"))
    , saveButton(named(new QPushButton(symbolIcon(Symbol::Download), tr("&Save as…")), "saveMedia"))
{
    setObjectName(QStringLiteral("mediaView"));
    resize(820, 560);
    view->setModel(&model);
    view->setViewMode(QListView::IconMode);
    view->setIconSize(MediaModel::THUMBNAIL_SIZE);
    view->setGridSize(CELL);
    view->setResizeMode(QListView::Adjust);
    view->setMovement(QListView::Static);
    view->setUniformItemSizes(true);
    view->setTextElideMode(Qt::ElideMiddle);
    view->setWordWrap(false);
    view->setAccessibleName(tr("Pictures and videos"));
    stack->addWidget(empty);
    stack->addWidget(view);
    auto *const close = new QPushButton(tr("&Close"));
    close->setAutoDefault(false);
    saveButton->setAutoDefault(false);
    auto *const row = new QHBoxLayout;
    row->addWidget(count, 1);
    row->addWidget(saveButton);
    row->addWidget(close);
    auto *const layout = new QVBoxLayout(this);
    layout->addLayout(stack);
    layout->addLayout(row);
    connect(close, &QPushButton::clicked, this, &QDialog::close);
    connect(saveButton, &QPushButton::clicked, this, &MediaView::saveSelected);
    connect(view, &QListView::activated, this, &MediaView::saveSelected);
    connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, this, &MediaView::updateButtons);
    connect(&api, &KorvoWebApi::allProjectsMediaDownloadLinkReceived, this, &MediaView::takeLinks);
    connect(this, &QDialog::finished, &loader, &ThumbnailLoader::stop);
    updateButtons();
}

void MediaView::showProject(const Web::ProjectInfo &newProject)
{
    project = newProject;
    error = Web::Error::None;
    loader.stop();
    model.setLinks({});
    setWindowTitle(tr("Pictures and videos of %1").arg(project.projectName()));
    empty->setTexts(tr("Asking the platform…"), {});
    count->clear();
    stack->setCurrentWidget(empty);
    ++questions;
    api.startAllProjectsMediaDownload(project.projectId());
    show();
    raise();
}

void MediaView::takeError(Web::Error newError)
{
    error = newError;
}

void MediaView::takeLinks(const QList<Web::SingleMediaFileLinkData> &links)
{
    if (questions == 0 || --questions > 0)
        return;
    model.setLinks(links);
    count->setText(tr("%n file(s)", nullptr, links.size()));
    stack->setCurrentIndex(links.isEmpty() ? 0 : 1);
    if (error != Web::Error::None)
        empty->setTexts(explain(error).title, explain(error).remedy);
    else
        empty->setTexts(tr("This project has no pictures or videos"), {});
    if (!links.isEmpty())
        view->setCurrentIndex(model.index(0));
    view->setFocus();
    loader.restart();
    updateButtons();
}

void MediaView::updateButtons()
{
    saveButton->setEnabled(view->currentIndex().isValid());
}

void MediaView::saveSelected()
{
    const int row = view->currentIndex().row();
    if (row < 0)
        return;
    Transfer order;
    order.kind = Transfer::Kind::SingleFile;
    order.title = model.link(row).name;
    order.projectId = project.projectId();
    order.link = model.link(row).url;
    const QDir pictures(QStandardPaths::writableLocation(QStandardPaths::PicturesLocation));
    askForFile(this, pictures.filePath(folderNameFor(order.title)), [this, order](const QString &file) {
        Transfer complete = order;
        complete.folder = file;
        Q_EMIT saveWanted(complete);
    });
}

} // namespace Korvo::Desktop
