#pragma once

#include "NetworkSettings.h"

#include <QtWidgets/QDialog>

class QComboBox;
class QLabel;
class QLineEdit;
class QSpinBox;

namespace Korvo::Desktop {

/// Lets the user say how the platform is reached; what is accepted is in force and saved.
class NetworkDialog : public QDialog
{
    Q_OBJECT
public:
    explicit NetworkDialog(const NetworkSettings &current, QWidget *parent = nullptr);

    NetworkSettings settings() const;
    void accept() override;

private:
    QWidget *proxyFields();
    QWidget *authorityField();
    void show(const NetworkSettings &current);
    void updateFields();
    void chooseAuthority();

    QComboBox *const kind;
    QLineEdit *const host;
    QSpinBox *const port;
    QLineEdit *const user;
    QLineEdit *const password;
    QLineEdit *const authority;
    QLabel *const complaint;
};

} // namespace Korvo::Desktop
