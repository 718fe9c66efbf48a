#include "NetworkDialog.h"

#include "Widgets.h"

#include <QtWidgets/QComboBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QGroupBox>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>

namespace Korvo::Desktop {

namespace {

constexpr int HIGHEST_PORT = 65535;
constexpr int USUAL_PORT = 8080;

} // namespace

NetworkDialog::NetworkDialog(const NetworkSettings &current, QWidget *parent)
    : QDialog(parent)
    , kind(named(new QComboBox, "proxyKind"))
    , host(named(new QLineEdit, "proxyHost"))
    , port(named(new QSpinBox, "proxyPort"))
    , user(named(new QLineEdit, "proxyUser"))
    , password(named(new QLineEdit, "proxyPassword"))
    , authority(named(new QLineEdit, "authorityFile"))
    , complaint(messageLabel("networkComplaint"))
{
    setObjectName(QStringLiteral("networkDialog"));
    setWindowTitle(tr("Network settings"));
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    connect(buttons, &QDialogButtonBox::accepted, this, &NetworkDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &NetworkDialog::reject);
    auto *const layout = new QVBoxLayout(this);
    layout->addWidget(proxyFields());
    layout->addWidget(authorityField());
    layout->addWidget(quietLabel(tr("New settings hold for connections that are opened from now on.")));
    layout->addWidget(complaint);
    layout->addStretch();
    layout->addWidget(buttons);
    setMinimumWidth(480);
    show(current);
    connect(kind, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &NetworkDialog::updateFields);
    updateFields();
}

QWidget *NetworkDialog::proxyFields()
{
    kind->addItem(tr("As the system is set up"), static_cast<int>(NetworkSettings::ProxyKind::System));
    kind->addItem(tr("No proxy"), static_cast<int>(NetworkSettings::ProxyKind::None));
    kind->addItem(tr("This HTTP proxy"), static_cast<int>(NetworkSettings::ProxyKind::Http));
    port->setRange(1, HIGHEST_PORT);
    password->setEchoMode(QLineEdit::Password);
    password->setPlaceholderText(tr("kept until the program ends"));
    auto *const group = new QGroupBox(tr("Proxy"));
    auto *const form = new QFormLayout(group);
    form->addRow(tr("&Connect through:"), kind);
    form->addRow(tr("&Host:"), host);
    form->addRow(tr("&Port:"), port);
    form->addRow(tr("&User name:"), user);
    form->addRow(tr("Pass&word:"), password);
    return group;
}

QWidget *NetworkDialog::authorityField()
{
    auto *const browse = named(new QPushButton(tr("&Browse…")), "browseAuthority");
    connect(browse, &QPushButton::clicked, this, &NetworkDialog::chooseAuthority);
    authority->setPlaceholderText(tr("only those of the system"));
    authority->setClearButtonEnabled(true);
    auto *const row = new QHBoxLayout;
    row->addWidget(authority);
    row->addWidget(browse);
    auto *const group = new QGroupBox(tr("Trusted authority"));
    auto *const form = new QFormLayout(group);
    form->addRow(tr("PEM &file:"), row);
    setBuddyOf(form, row, authority);
    form->addRow(
        quietLabel(tr("Needed when your company's network replaces certificates, or for a platform of your own.")));
    return group;
}

void NetworkDialog::show(const NetworkSettings &current)
{
    kind->setCurrentIndex(kind->findData(static_cast<int>(current.proxyKind)));
    host->setText(current.proxyHost);
    port->setValue(current.proxyPort == 0 ? USUAL_PORT : current.proxyPort);
    user->setText(current.proxyUser);
    password->setText(current.proxyPassword);
    authority->setText(current.authorityFile);
}

void NetworkDialog::updateFields()
{
    const bool ownProxy = settings().proxyKind == NetworkSettings::ProxyKind::Http;
    for (QWidget *const field : {static_cast<QWidget *>(host), static_cast<QWidget *>(port),
                                 static_cast<QWidget *>(user), static_cast<QWidget *>(password)})
        field->setEnabled(ownProxy);
}

void NetworkDialog::chooseAuthority()
{
    const QString file = QFileDialog::getOpenFileName(this, tr("Trusted authority"), authority->text(),
                                                      tr("Certificates (*.pem *.crt *.cer);;All files (*)"));
    if (!file.isEmpty())
        authority->setText(QDir::toNativeSeparators(file));
}

NetworkSettings NetworkDialog::settings() const
{
    NetworkSettings settings;
    settings.proxyKind = static_cast<NetworkSettings::ProxyKind>(kind->currentData().toInt());
    settings.proxyHost = host->text().trimmed();
    settings.proxyPort = static_cast<quint16>(port->value());
    settings.proxyUser = user->text();
    settings.proxyPassword = password->text();
    settings.authorityFile = QDir::fromNativeSeparators(authority->text().trimmed());
    return settings;
}

void NetworkDialog::accept()
{
    const QString problem = settings().apply();
    showMessage(complaint, problem);
    if (!problem.isEmpty())
        return;
    settings().save();
    QDialog::accept();
}

} // namespace Korvo::Desktop
