#include "UploadDialog.h"

#include "Texts.h"
#include "Widgets.h"

#include <QtConcurrent/QtConcurrentRun>
#include <QtCore/QDir>
#include <QtCore/QUuid>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDateTimeEdit>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>

#include <algorithm>

namespace Korvo::Desktop {

using Content = Transfer::Content;
using Web::ProjectInfo;

namespace {

constexpr int USUAL_FILES_AT_ONCE = 3;
constexpr int MOST_FILES_AT_ONCE = 6; // no more connections go to one server

QDateTime newestChange(const QString &folder)
{
    const QFileInfoList entries
        = QDir(folder).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot, QDir::Time);
    return entries.isEmpty() ? QDateTime::currentDateTime() : entries.first().lastModified();
}

} // namespace

UploadDialog::UploadDialog(const QString &uploadFolder, const QList<ProjectInfo> &knownProjects, QWidget *parent)
    : QDialog(parent)
    , folder(uploadFolder)
    , projects(knownProjects)
    , name(named(new QLineEdit, "projectName"))
    , contentChoice(named(new QComboBox, "uploadContent"))
    , target(named(new QComboBox, "uploadTarget"))
    , created(named(new QDateTimeEdit, "creationDate"))
    , simultaneous(named(new QSpinBox, "filesAtOnce"))
    , manholeButton(named(new QPushButton, "manholeMedia"))
    , summaryLabel(named(plainLabel(tr("Looking at the files…")), "folderSummary"))
    , warnings(cautionLabel("folderWarnings"))
    , uploadButton(named(new QPushButton(symbolIcon(Symbol::Upload), tr("&Upload")), "startUpload"))
    , cancelled(std::make_shared<std::atomic<bool>>(false))
{
    setObjectName(QStringLiteral("uploadDialog"));
    setWindowTitle(tr("Upload a project"));
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    buttons->addButton(uploadButton, QDialogButtonBox::AcceptRole);
    connect(buttons, &QDialogButtonBox::accepted, this, &UploadDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &UploadDialog::reject);
    auto *const layout = new QVBoxLayout(this);
    layout->addWidget(form());
    layout->addWidget(warnings);
    layout->addStretch();
    layout->addWidget(buttons);
    // Once they are in the dialog: of two buttons without a dialog the first becomes the default.
    buttons->button(QDialogButtonBox::Cancel)->setAutoDefault(false);
    manholeButton->setAutoDefault(false);
    uploadButton->setDefault(true);
    setMinimumWidth(520);
    suggest();
    takeContent();
    look();
}

UploadDialog::~UploadDialog()
{
    *cancelled = true;
    watcher.waitForFinished();
}

QWidget *UploadDialog::form()
{
    simultaneous->setRange(1, MOST_FILES_AT_ONCE);
    simultaneous->setValue(USUAL_FILES_AT_ONCE);
    created->setCalendarPopup(true);
    contentChoice->addItem(tr("Standard project"), static_cast<int>(Content::Standard));
    contentChoice->addItem(tr("Project of the import tool"), static_cast<int>(Content::ImportTool));
    contentChoice->addItem(tr("Quickview project"), static_cast<int>(Content::Quickview));
    QLabel *const path = plainLabel(QDir::toNativeSeparators(folder));
    path->setWordWrap(true);
    auto *const widget = new QWidget;
    auto *const rows = new QFormLayout(widget);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->addRow(tr("Folder:"), path);
    rows->addRow(tr("Content:"), summaryLabel);
    rows->addRow(tr("&Kind:"), contentChoice);
    rows->addRow(tr("Upload &as:"), target);
    rows->addRow(tr("Project &name:"), name);
    rows->addRow(tr("&Created:"), created);
    rows->addRow(tr("&Files at once:"), simultaneous);
    rows->addRow(tr("&Media of manholes:"), manholeButton);
    connect(name, &QLineEdit::textChanged, this, &UploadDialog::updateButtons);
    connect(target, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &UploadDialog::takeTarget);
    connect(contentChoice, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &UploadDialog::takeContent);
    connect(manholeButton, &QPushButton::clicked, this, &UploadDialog::chooseManholeMedia);
    return widget;
}

// A project of the folder's name is most likely meant to be brought up to date.
void UploadDialog::suggest()
{
    const QString folderName = QDir(folder).dirName();
    name->setText(folderName);
    created->setDateTime(newestChange(folder));
    target->addItem(tr("A new project"));
    for (const ProjectInfo &project : projects)
        target->addItem(tr("Update of \"%1\"").arg(project.projectName()), project.projectId());
    for (int i = 0; i < projects.size(); ++i) {
        if (projects.at(i).projectName() == folderName)
            target->setCurrentIndex(i + 1);
    }
}

void UploadDialog::takeTarget()
{
    const int project = target->currentIndex() - 1;
    name->setReadOnly(project >= 0);
    updateButtons();
    if (project < 0)
        return;
    name->setText(projects.at(project).projectName());
    if (projects.at(project).creationDate().isValid())
        created->setDateTime(projects.at(project).creationDate().toLocalTime());
}

Content UploadDialog::content() const
{
    return static_cast<Content>(contentChoice->currentData().toInt());
}

// Which project one of the import tool is, its name decides.
void UploadDialog::takeContent()
{
    const bool isImport = content() == Content::ImportTool;
    if (isImport)
        target->setCurrentIndex(0);
    target->setEnabled(!isImport);
    simultaneous->setEnabled(content() == Content::Standard);
    simultaneous->setValue(content() == Content::Standard ? USUAL_FILES_AT_ONCE : 1);
    updateManholeMedia();
    updateButtons();
}

void UploadDialog::chooseManholeMedia()
{
    askForFiles(this, folder, [this](const QStringList &files) {
        manholeMedia.clear();
        for (const QString &file : files) {
            const QString path = QDir(folder).relativeFilePath(file);
            if (!path.startsWith(QLatin1String("..")))
                manholeMedia.insert(path);
        }
        updateManholeMedia();
    });
}

// All other media are taken for those of sections.
void UploadDialog::updateManholeMedia()
{
    manholeButton->setEnabled(content() == Content::Quickview);
    manholeButton->setText(manholeMedia.isEmpty() ? tr("None…") : tr("%n file(s)…", nullptr, manholeMedia.size()));
}

void UploadDialog::look()
{
    connect(&watcher, &QFutureWatcher<FolderSummary>::finished, this, &UploadDialog::showSummary);
    watcher.setFuture(QtConcurrent::run(summarise, folder, cancelled));
    updateButtons();
}

void UploadDialog::showSummary()
{
    const FolderSummary summary = watcher.result();
    summaryLabel->setText(
        tr("%n file(s), %1", nullptr, summary.files).arg(sizeText(static_cast<quint64>(summary.bytes))));
    QStringList lines;
    if (summary.files == 0)
        lines.append(tr("The folder holds no file to upload."));
    if (summary.unreadable > 0)
        lines.append(tr("%n file(s) cannot be read; the upload would fail.", nullptr, summary.unreadable));
    if (summary.sameMediaNames > 0)
        lines.append(
            tr("%n picture(s) or video(s) have the name of another one: on the platform one replaces the other.",
               nullptr, summary.sameMediaNames));
    if (summary.emptyFiles > 0)
        lines.append(tr("%n empty file(s) will not be downloaded again.", nullptr, summary.emptyFiles));
    showMessage(warnings, lines.join(QLatin1Char('\n')));
    updateButtons();
}

void UploadDialog::updateButtons()
{
    const bool looked = watcher.isFinished() && watcher.future().resultCount() > 0;
    // A Quickview project is known by a UUID; others may have been given another id.
    const bool hasId = content() != Content::Quickview || !QUuid(projectId()).isNull();
    uploadButton->setEnabled(!name->text().trimmed().isEmpty() && looked && watcher.result().files > 0 && hasId);
}

QString UploadDialog::projectId() const
{
    if (content() == Content::ImportTool)
        return {};
    if (target->currentIndex() > 0)
        return target->currentData().toString();
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

Transfer UploadDialog::order() const
{
    Transfer order;
    order.kind = Transfer::Kind::Upload;
    order.title = name->text().trimmed();
    order.content = content();
    order.projectId = projectId();
    order.folder = folder;
    order.created = created->dateTime();
    order.simultaneousFiles = simultaneous->value();
    order.manholeMedia = manholeMedia;
    return order;
}

} // namespace Korvo::Desktop
