#pragma once

#include "Transfer.h"

#include <NQKorvoWeb/ProjectInfo.h>

#include <QtWidgets/QDialog>

class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace Korvo::Desktop {

/// Asks where a project is to be downloaded to; proposes a folder of its own, since an abort removes it.
class DownloadDialog : public QDialog
{
    Q_OBJECT
public:
    explicit DownloadDialog(const Web::ProjectInfo &downloadedProject, QWidget *parent = nullptr);

    /// The order for Transfers::startDownload().
    Transfer order() const;
    void accept() override;

private:
    QString folder() const;
    void browse();
    void updateWarning();

    const Web::ProjectInfo project;
    QLineEdit *const folderField;
    QSpinBox *const simultaneous;
    QLabel *const warning;
    QPushButton *const downloadButton;
};

} // namespace Korvo::Desktop
