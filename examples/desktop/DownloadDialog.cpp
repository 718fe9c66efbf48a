#include "DownloadDialog.h"

#include "Texts.h"
#include "Widgets.h"

#include <QtCore/QDir>
#include <QtCore/QSettings>
#include <QtCore/QStandardPaths>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>

namespace Korvo::Desktop {

namespace {

const QString PARENT_KEY = QStringLiteral("download/parent");
constexpr int USUAL_FILES_AT_ONCE = 3;
constexpr int MOST_FILES_AT_ONCE = 6; // no more connections go to one server
constexpr QDir::Filters EVERYTHING = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;

QString usualParent()
{
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QSettings().value(PARENT_KEY, documents).toString();
}

} // namespace

DownloadDialog::DownloadDialog(const Web::ProjectInfo &downloadedProject, QWidget *parent)
    : QDialog(parent)
    , project(downloadedProject)
    , folderField(named(new QLineEdit, "downloadFolder"))
    , simultaneous(named(new QSpinBox, "filesAtOnce"))
    , warning(cautionLabel("downloadWarning"))
    , downloadButton(named(new QPushButton(symbolIcon(Symbol::Download), tr("&Download")), "startDownload"))
{
    setObjectName(QStringLiteral("downloadDialog"));
    setWindowTitle(tr("Download a project"));
    simultaneous->setRange(1, MOST_FILES_AT_ONCE);
    simultaneous->setValue(USUAL_FILES_AT_ONCE);
    auto *const browseButton = new QPushButton(tr("&Browse…"));
    browseButton->setAutoDefault(false);
    auto *const folderRow = new QHBoxLayout;
    folderRow->addWidget(folderField);
    folderRow->addWidget(browseButton);
    auto *const form = new QFormLayout;
    form->addRow(tr("Project:"), plainLabel(project.projectName()));
    form->addRow(tr("Size:"), plainLabel(sizeText(project.diskUsage())));
    form->addRow(tr("&Into folder:"), folderRow);
    setBuddyOf(form, folderRow, folderField);
    form->addRow(tr("&Files at once:"), simultaneous);
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    buttons->addButton(downloadButton, QDialogButtonBox::AcceptRole);
    auto *const layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(warning);
    layout->addWidget(quietLabel(tr("Aborting the download removes this folder with everything in it.")));
    layout->addStretch();
    layout->addWidget(buttons);
    // Once they are in the dialog: of two buttons without a dialog the first becomes the default.
    buttons->button(QDialogButtonBox::Cancel)->setAutoDefault(false);
    downloadButton->setDefault(true);
    setMinimumWidth(560);
    connect(browseButton, &QPushButton::clicked, this, &DownloadDialog::browse);
    connect(folderField, &QLineEdit::textChanged, this, &DownloadDialog::updateWarning);
    connect(buttons, &QDialogButtonBox::accepted, this, &DownloadDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &DownloadDialog::reject);
    folderField->setText(QDir::toNativeSeparators(freePath(usualParent(), folderNameFor(project.projectName()))));
}

QString DownloadDialog::folder() const
{
    const QString text = folderField->text().trimmed();
    return text.isEmpty() ? QString() : QDir::cleanPath(QFileInfo(QDir::fromNativeSeparators(text)).absoluteFilePath());
}

void DownloadDialog::browse()
{
    const QString parent = QFileDialog::getExistingDirectory(this, tr("Where shall the project's folder be made?"),
                                                             QFileInfo(folder()).absolutePath());
    if (!parent.isEmpty())
        folderField->setText(QDir::toNativeSeparators(freePath(parent, folderNameFor(project.projectName()))));
}

void DownloadDialog::updateWarning()
{
    const QFileInfo info(folder());
    const bool isFile = info.exists() && !info.isDir();
    QString text;
    if (isFile)
        text = tr("This is a file, not a folder.");
    else if (info.isDir() && !QDir(folder()).isEmpty(EVERYTHING))
        text = tr("The folder is not empty. Files of the same name are replaced unless they have the same size, and an "
                  "abort would remove everything in it.");
    showMessage(warning, text);
    downloadButton->setEnabled(!folder().isEmpty() && !isFile);
}

Transfer DownloadDialog::order() const
{
    Transfer order;
    order.kind = Transfer::Kind::Download;
    order.title = project.projectName();
    order.projectId = project.projectId();
    order.folderName = project.projectFolderName();
    order.folder = folder();
    order.simultaneousFiles = simultaneous->value();
    return order;
}

void DownloadDialog::accept()
{
    QSettings().setValue(PARENT_KEY, QFileInfo(folder()).absolutePath());
    QDialog::accept();
}

} // namespace Korvo::Desktop
