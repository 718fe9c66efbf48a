#include "LoginDialog.h"

#include "ErrorText.h"
#include "Widgets.h"

#include <QtCore/QSettings>
#include <QtCore/QTimer>
#include <QtWidgets/QFormLayout>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QProgressBar>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QStackedWidget>
#include <QtWidgets/QVBoxLayout>

#include <chrono>

namespace Korvo::Desktop {

using namespace std::chrono_literals;
using Web::KorvoWebApi;

namespace {

const QString USER_KEY = QStringLiteral("login/user");

// A password reset has no answer but a failure: when none has come for so long, it went well.
constexpr auto RESET_WAIT = 5s;

QHBoxLayout *buttonRow(std::initializer_list<QPushButton *> left, std::initializer_list<QPushButton *> right)
{
    auto *const row = new QHBoxLayout;
    for (QPushButton *const button : left)
        row->addWidget(button);
    row->addStretch();
    for (QPushButton *const button : right)
        row->addWidget(button);
    return row;
}

} // namespace

LoginDialog::LoginDialog(KorvoWebApi &usedApi, QWidget *parent)
    : QDialog(parent)
    , api(usedApi)
    , pages(new QStackedWidget)
    , reasonLabel(named(plainLabel(), "loginReason"))
    , complaint(messageLabel("loginComplaint"))
    , notice(named(quietLabel(), "loginNotice"))
    , waitingFor(plainLabel())
    , codeComplaint(messageLabel("codeComplaint"))
    , userField(named(new QLineEdit, "userName"))
    , passwordField(named(new QLineEdit, "password"))
    , codeField(named(new QLineEdit, "code"))
    , loginButton(named(new QPushButton(tr("&Log in")), "loginButton"))
    , forgottenButton(named(new QPushButton(tr("&Forgotten password")), "forgottenPassword"))
    , codeButton(named(new QPushButton(tr("&Log in")), "codeButton"))
{
    setObjectName(QStringLiteral("loginDialog"));
    setWindowTitle(tr("Log in"));
    pages->addWidget(credentialsPage());
    pages->addWidget(waitingPage());
    pages->addWidget(codePage());
    auto *const layout = new QVBoxLayout(this);
    layout->addWidget(pages);
    layout->setContentsMargins(20, 16, 20, 16);
    setMinimumWidth(430);
    connectApi();
    userField->setText(QSettings().value(USER_KEY).toString());
    goTo(Step::Credentials);
}

QWidget *LoginDialog::credentialsPage()
{
    passwordField->setEchoMode(QLineEdit::Password);
    loginButton->setDefault(true);
    forgottenButton->setAutoDefault(false);
    auto *const network = named(new QPushButton(tr("&Network…")), "loginNetwork");
    network->setAutoDefault(false);
    reasonLabel->setWordWrap(true);
    reasonLabel->hide();
    notice->hide();
    auto *const form = new QFormLayout;
    form->addRow(tr("&User name:"), userField);
    form->addRow(tr("&Password:"), passwordField);
    auto *const page = new QWidget;
    auto *const layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(headingLabel(tr("Log in to the platform")));
    layout->addWidget(reasonLabel);
    layout->addSpacing(6);
    layout->addLayout(form);
    layout->addWidget(complaint);
    layout->addWidget(notice);
    layout->addStretch();
    layout->addSpacing(10);
    layout->addLayout(buttonRow({forgottenButton, network}, {loginButton}));
    connect(network, &QPushButton::clicked, this, &LoginDialog::networkSettingsWanted);
    connect(loginButton, &QPushButton::clicked, this, &LoginDialog::logIn);
    connect(forgottenButton, &QPushButton::clicked, this, &LoginDialog::resetPassword);
    for (const QLineEdit *const field : {userField, passwordField})
        connect(field, &QLineEdit::textChanged, this, &LoginDialog::updateButtons);
    return page;
}

QWidget *LoginDialog::waitingPage()
{
    auto *const bar = new QProgressBar;
    bar->setRange(0, 0);
    bar->setTextVisible(false);
    auto *const cancel = named(new QPushButton(tr("&Cancel")), "cancelLogin");
    cancel->setAutoDefault(false);
    connect(cancel, &QPushButton::clicked, this, &LoginDialog::stopWaiting);
    auto *const page = new QWidget;
    auto *const layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addStretch();
    layout->addWidget(waitingFor);
    layout->addWidget(bar);
    layout->addStretch();
    layout->addLayout(buttonRow({}, {cancel}));
    return page;
}

QWidget *LoginDialog::codePage()
{
    auto *const hint = plainLabel(tr("This account asks for a second factor. Type the code that you have received."));
    hint->setWordWrap(true);
    auto *const back = named(new QPushButton(tr("&Back")), "codeBack");
    back->setAutoDefault(false);
    codeField->setInputMethodHints(Qt::ImhDigitsOnly | Qt::ImhSensitiveData | Qt::ImhNoPredictiveText);
    auto *const form = new QFormLayout;
    form->addRow(tr("&Code:"), codeField);
    auto *const page = new QWidget;
    auto *const layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(headingLabel(tr("Second factor")));
    layout->addWidget(hint);
    layout->addSpacing(6);
    layout->addLayout(form);
    layout->addWidget(codeComplaint);
    layout->addStretch();
    layout->addLayout(buttonRow({back}, {codeButton}));
    connect(back, &QPushButton::clicked, this, [this] { goTo(Step::Credentials); });
    connect(codeButton, &QPushButton::clicked, this, &LoginDialog::sendCode);
    connect(codeField, &QLineEdit::textChanged, this, &LoginDialog::updateButtons);
    return page;
}

void LoginDialog::connectApi()
{
    connect(&api, &KorvoWebApi::tokenAuthenticationNeeded, this, &LoginDialog::askForCode);
    connect(&api, &KorvoWebApi::loginResult, this,
            [this](const QString &, KorvoWebApi::LoginResult result) { handleResult(result); });
}

void LoginDialog::askAgain(const QString &user, const QString &reason)
{
    userField->setText(user);
    userField->setReadOnly(true); // what is paused goes on in the name of this user
    reasonLabel->setText(reason);
    reasonLabel->show();
    goTo(Step::Credentials);
}

void LoginDialog::goTo(Step newStep)
{
    step = newStep;
    pages->setCurrentIndex(static_cast<int>(step));
    loginButton->setDefault(step == Step::Credentials);
    codeButton->setDefault(step == Step::Code);
    QLineEdit *const firstField = userField->text().isEmpty() ? userField : passwordField;
    if (step == Step::Credentials)
        firstField->setFocus();
    else if (step == Step::Code)
        codeField->setFocus();
    updateButtons();
}

void LoginDialog::updateButtons()
{
    loginButton->setEnabled(!userField->text().isEmpty() && !passwordField->text().isEmpty());
    forgottenButton->setEnabled(!userField->text().isEmpty());
    codeButton->setEnabled(!codeField->text().isEmpty());
}

void LoginDialog::logIn()
{
    showMessage(complaint, {});
    notice->hide();
    lastError = Web::Error::None;
    codeSent = false;
    givenUp = false;
    waitingFor->setText(tr("Logging in…"));
    goTo(Step::Waiting);
    api.login(userField->text().trimmed(), passwordField->text());
}

void LoginDialog::askForCode()
{
    if (step != Step::Waiting)
        return;
    codeField->clear();
    showMessage(codeComplaint, {});
    goTo(Step::Code);
}

void LoginDialog::sendCode()
{
    code = codeField->text().trimmed();
    codeSent = true;
    lastError = Web::Error::None;
    waitingFor->setText(tr("Checking the code…"));
    goTo(Step::Waiting);
    api.loginWithToken(code);
}

// The library can only cancel a password on its way. While it still asks about the second factor the login goes on, and
// is taken back when it succeeds.
void LoginDialog::stopWaiting()
{
    givenUp = true;
    api.cancelLogin();
    goTo(Step::Credentials);
}

void LoginDialog::handleResult(KorvoWebApi::LoginResult result)
{
    const bool success = result == KorvoWebApi::LoginResult::LoginResultSuccess;
    if (givenUp) {
        givenUp = false;
        if (success)
            api.logout();
        return;
    }
    if (step != Step::Waiting)
        return;
    if (!success) {
        showFailure(result);
        return;
    }
    QSettings().setValue(USER_KEY, userField->text().trimmed());
    passwordField->clear();
    accept();
}

void LoginDialog::showFailure(KorvoWebApi::LoginResult result)
{
    const Explanation explanation = explain(result, lastError);
    const QString text = explanation.title + QLatin1String(". ") + explanation.remedy;
    const bool wrongCode = codeSent && result == KorvoWebApi::LoginResult::LoginResultFalseCredentials;
    goTo(wrongCode ? Step::Code : Step::Credentials);
    showMessage(wrongCode ? codeComplaint : complaint, text);
    if (wrongCode)
        codeField->selectAll();
}

void LoginDialog::takeError(Web::Error error)
{
    lastError = error;
    if (!resetAsked)
        return;
    resetAsked = false;
    notice->hide();
    const Explanation explanation = explain(error);
    showMessage(complaint, explanation.title + QLatin1String(". ") + explanation.remedy);
}

void LoginDialog::resetPassword()
{
    const QString user = userField->text().trimmed();
    showMessage(complaint, {});
    notice->setText(tr("The platform has been asked to send a new password to %1. Look at your mail.").arg(user));
    notice->show();
    resetAsked = true;
    QTimer::singleShot(RESET_WAIT, this, [this] { resetAsked = false; });
    api.resetPassword(user);
}

void LoginDialog::reject()
{
    if (step == Step::Waiting)
        stopWaiting();
    passwordField->clear();
    QDialog::reject();
}

} // namespace Korvo::Desktop
