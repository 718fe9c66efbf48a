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
    , target(named(new QComboBox, "uploadTarget"))
    , created(named(new QDateTimeEdit, "creationDate"))
    , simultaneous(named(new QSpinBox, "filesAtOnce"))
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
    uploadButton->setDefault(true);
    setMinimumWidth(520);
    suggest();
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
    QLabel *const path = plainLabel(QDir::toNativeSeparators(folder));
    path->setWordWrap(true);
    auto *const widget = new QWidget;
    auto *const rows = new QFormLayout(widget);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->addRow(tr("Folder:"), path);
    rows->addRow(tr("Content:"), summaryLabel);
    rows->addRow(tr("Upload &as:"), target);
    rows->addRow(tr("Project &name:"), name);
    rows->addRow(tr("&Created:"), created);
    rows->addRow(tr("&Files at once:"), simultaneous);
    connect(name, &QLineEdit::textChanged, this, &UploadDialog::updateButtons);
    connect(target, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &UploadDialog::takeTarget);
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
    if (project < 0)
        return;
    name->setText(projects.at(project).projectName());
    if (projects.at(project).creationDate().isValid())
        created->setDateTime(projects.at(project).creationDate().toLocalTime());
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
    uploadButton->setEnabled(!name->text().trimmed().isEmpty() && looked && watcher.result().files > 0);
}

Transfer UploadDialog::order() const
{
    Transfer order;
    order.kind = Transfer::Kind::Upload;
    order.title = name->text().trimmed();
    order.projectId = target->currentIndex() > 0 ? target->currentData().toString()
                                                 : QUuid::createUuid().toString(QUuid::WithoutBraces);
    order.folder = folder;
    order.created = created->dateTime();
    order.simultaneousFiles = simultaneous->value();
    return order;
}

} // namespace Korvo::Desktop
