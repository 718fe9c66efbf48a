#pragma once

#include "FolderSummary.h"
#include "Transfer.h"

#include <NQKorvoWeb/ProjectInfo.h>

#include <QtCore/QFutureWatcher>
#include <QtWidgets/QDialog>

class QComboBox;
class QDateTimeEdit;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace Korvo::Desktop {

/// Asks what is to be known before a folder is uploaded.
class UploadDialog : public QDialog
{
    Q_OBJECT
public:
    UploadDialog(const QString &folder, const QList<Web::ProjectInfo> &projects, QWidget *parent = nullptr);
    ~UploadDialog() override;

    /// The order for Transfers::startUpload().
    Transfer order() const;

private:
    QWidget *form();
    void suggest();
    void look();
    void showSummary();
    void updateButtons();
    void takeTarget();
    void takeContent();
    void chooseManholeMedia();
    void updateManholeMedia();
    Transfer::Content content() const;
    QString projectId() const;

    const QString folder;
    const QList<Web::ProjectInfo> projects;
    QLineEdit *const name;
    QComboBox *const contentChoice;
    QComboBox *const target;
    QDateTimeEdit *const created;
    QSpinBox *const simultaneous;
    QPushButton *const manholeButton;
    QLabel *const summaryLabel;
    QLabel *const warnings;
    QPushButton *const uploadButton;
    Web::MediaNamesList manholeMedia;
    QFutureWatcher<FolderSummary> watcher;
    CancelFlag cancelled;
};

} // namespace Korvo::Desktop
