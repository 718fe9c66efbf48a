#pragma once

#include <NQKorvoWeb/KorvoWebApi.h>

#include <QtWidgets/QDialog>

class QLabel;
class QLineEdit;
class QPushButton;
class QStackedWidget;

namespace Korvo::Desktop {

/// Takes a user through a login: name and password, the code of a second factor where the account asks for one, a new
/// password when the old one is forgotten.
///
/// Accepted when the user is logged in. Nothing but the user name is ever stored.
class LoginDialog : public QDialog
{
    Q_OBJECT
public:
    explicit LoginDialog(Web::KorvoWebApi &usedApi, QWidget *parent = nullptr);

    /// Asks the user who was logged in once more; @p reason says why.
    void askAgain(const QString &user, const QString &reason);

    /// True while the platform is asked something by this dialog: its failures are shown here.
    bool isAsking() const { return step == Step::Waiting || resetAsked; }
    /// A failure that came meanwhile.
    void takeError(Web::Error error);

    void reject() override;

Q_SIGNALS:
    void networkSettingsWanted();

private:
    enum class Step { Credentials, Waiting, Code };

    QWidget *credentialsPage();
    QWidget *waitingPage();
    QWidget *codePage();
    void connectApi();
    void goTo(Step newStep);
    void logIn();
    void sendCode();
    void stopWaiting();
    void askForCode();
    void handleResult(Web::KorvoWebApi::LoginResult result);
    void showFailure(Web::KorvoWebApi::LoginResult result);
    void resetPassword();
    void updateButtons();

    Web::KorvoWebApi &api;
    QStackedWidget *const pages;
    QLabel *const reasonLabel;
    QLabel *const complaint;
    QLabel *const notice;
    QLabel *const waitingFor;
    QLabel *const codeComplaint;
    QLineEdit *const userField;
    QLineEdit *const passwordField;
    QLineEdit *const codeField;
    QPushButton *const loginButton;
    QPushButton *const forgottenButton;
    QPushButton *const codeButton;
    Step step = Step::Credentials;
    QString code; // the library reads it until the login has ended
    Web::Error lastError = Web::Error::None;
    bool codeSent = false;
    bool givenUp = false;
    bool resetAsked = false;
};

} // namespace Korvo::Desktop
