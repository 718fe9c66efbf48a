#include "QuickviewView.h"

#include "ErrorText.h"
#include "Texts.h"
#include "Widgets.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QStandardPaths>
#include <QtCore/QXmlStreamReader>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QStackedLayout>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QTreeWidget>
#include <QtWidgets/QVBoxLayout>

#include <utility>

namespace Korvo::Desktop {

using Web::Error;
using Web::KorvoWebApi;

namespace {

constexpr int DEEPEST = 64;

QTreeWidgetItem *itemBelow(QTreeWidget &tree, QTreeWidgetItem *parent, const QString &name)
{
    return parent ? new QTreeWidgetItem(parent, {name}) : new QTreeWidgetItem(&tree, {name});
}

// False when the file is not well-formed, or nested more deeply than data ever are.
bool fill(QTreeWidget &tree, QIODevice &file)
{
    QXmlStreamReader reader(&file);
    QVector<QTreeWidgetItem *> open;
    while (!reader.atEnd() && open.size() < DEEPEST) {
        switch (reader.readNext()) {
        case QXmlStreamReader::StartElement:
            open.append(itemBelow(tree, open.isEmpty() ? nullptr : open.last(), reader.name().toString()));
            break;
        case QXmlStreamReader::EndElement:
            open.removeLast();
            break;
        case QXmlStreamReader::Characters:
            if (!reader.isWhitespace() && !open.isEmpty())
                open.last()->setText(1, open.last()->text(1) + reader.text());
            break;
        default:
            break;
        }
    }
    return reader.atEnd() && !reader.hasError();
}

} // namespace

QuickviewPage::QuickviewPage(QWidget *parent)
    : QWidget(parent)
    , stack(new QStackedLayout(this))
    , empty(new EmptyState(Symbol::Data, {}, {}))
    , tree(new QTreeWidget)
{
    tree->setHeaderLabels({tr("Element"), tr("Value")});
    tree->setAlternatingRowColors(true);
    tree->setFrameShape(QFrame::NoFrame);
    tree->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    stack->addWidget(empty);
    stack->addWidget(tree);
}

void QuickviewPage::showWaiting()
{
    showProblem(tr("Asking the platform…"), {});
}

void QuickviewPage::showProblem(const QString &title, const QString &hint)
{
    shownPath.clear();
    empty->setTexts(title, hint);
    stack->setCurrentWidget(empty);
}

void QuickviewPage::showFile(const QString &path)
{
    QFile file(path);
    tree->clear();
    if (!file.open(QIODevice::ReadOnly) || !fill(*tree, file)) {
        showProblem(tr("The data cannot be shown"), tr("The platform's answer is not well-formed."));
        return;
    }
    if (tree->topLevelItemCount() == 1 && tree->topLevelItem(0)->childCount() == 0) {
        showProblem(tr("The project has no data of this kind"), {});
        return;
    }
    tree->expandToDepth(1);
    shownPath = path;
    stack->setCurrentWidget(tree);
}

QuickviewView::QuickviewView(KorvoWebApi &usedApi, QWidget *parent)
    : QDialog(parent)
    , api(usedApi)
    , tabs(named(new QTabWidget, "quickviewTabs"))
    , saveButton(named(new QPushButton(symbolIcon(Symbol::Download), tr("&Save as…")), "saveQuickview"))
{
    setObjectName(QStringLiteral("quickviewView"));
    resize(680, 480);
    addPage(tr("&Project"), "project", &KorvoWebApi::downloadQuickviewProjectData);
    addPage(tr("S&urveys"), "surveys", &KorvoWebApi::downloadQuickviewSurveyData);
    addPage(tr("&Manholes"), "manholes", &KorvoWebApi::downloadQuickviewManholeData);
    auto *const close = new QPushButton(tr("&Close"));
    close->setAutoDefault(false);
    saveButton->setAutoDefault(false);
    auto *const row = new QHBoxLayout;
    row->addStretch();
    row->addWidget(saveButton);
    row->addWidget(close);
    auto *const layout = new QVBoxLayout(this);
    layout->addWidget(tabs);
    layout->addLayout(row);
    connect(close, &QPushButton::clicked, this, &QDialog::close);
    connect(saveButton, &QPushButton::clicked, this, &QuickviewView::saveCopy);
    connect(tabs, &QTabWidget::currentChanged, this, &QuickviewView::updateButtons);
    connect(&api, &KorvoWebApi::downloadFinished, this, &QuickviewView::handleFinished);
    // A failure that is followed by anything else was another download's.
    connect(&api, &KorvoWebApi::currentDownloadFilesChanged, this, [this] { error = Error::None; });
}

void QuickviewView::addPage(const QString &title, const char *name, Download download)
{
    auto *const page = named(new QuickviewPage, name);
    tabs->addTab(page, title);
    kinds.append({page, download, QString::fromLatin1(name) + QLatin1String(".xml")});
}

void QuickviewView::showProject(const Web::ProjectInfo &newProject)
{
    cutOff();
    project = newProject;
    setWindowTitle(tr("Quickview data of %1").arg(project.projectName()));
    for (int page = 0; page < kinds.size(); ++page)
        fetch(page);
    updateButtons();
    show();
    raise();
}

void QuickviewView::fetch(int page)
{
    const Kind &kind = kinds.at(page);
    kind.page->showWaiting();
    const unsigned int id = (api.*kind.download)(project.projectId(), folder.filePath(kind.fileName));
    if (id != 0)
        pagesById.insert(id, page);
    else
        kind.page->showProblem(explain(Error::InvalidParameter).title, explain(Error::InvalidParameter).remedy);
}

void QuickviewView::handleFinished(unsigned int id)
{
    const Error failure = std::exchange(error, Error::None);
    if (!pagesById.contains(id))
        return;
    const int page = pagesById.take(id);
    if (failure != Error::None)
        kinds.at(page).page->showProblem(explain(failure).title, explain(failure).remedy);
    else
        kinds.at(page).page->showFile(folder.filePath(kinds.at(page).fileName));
    updateButtons();
}

void QuickviewView::cutOff()
{
    const QList<unsigned int> ids = pagesById.keys();
    pagesById.clear();
    for (const unsigned int id : ids)
        api.abortDownload(id);
}

void QuickviewView::updateButtons()
{
    saveButton->setEnabled(kinds.at(tabs->currentIndex()).page->hasData());
}

void QuickviewView::saveCopy()
{
    const Kind &kind = kinds.at(tabs->currentIndex());
    const QDir documents(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    const QString proposal = folderNameFor(project.projectName()) + QLatin1Char(' ') + kind.fileName;
    askForFile(this, documents.filePath(proposal), [this, source = kind.page->path()](const QString &target) {
        QFile::remove(target);
        if (!QFile::copy(source, target))
            QMessageBox::warning(this, tr("Not saved"), explain(Error::FileWrite).title);
    });
}

void QuickviewView::reject()
{
    cutOff();
    QDialog::reject();
}

} // namespace Korvo::Desktop
