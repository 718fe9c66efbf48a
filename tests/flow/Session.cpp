#include "flow/Session.h"

#include <NQKorvoWeb/KorvoWebLibrary.h>

#include <QtCore/QElapsedTimer>

namespace Korvo::Web::TestSupport {

const QString USER = QStringLiteral("inspector@korvo.example");
const QString PASSWORD = QStringLiteral("Camera 12%1+Kanal");
const QString SECURE_USER = QStringLiteral("secure@korvo.example");
const QString SECURE_PASSWORD = QStringLiteral("Second-Factor-1");
const QString SECURE_CODE = QStringLiteral("123456");
const QString EXPIRING_USER = QStringLiteral("expiring@korvo.example");
const QString EXPIRING_PASSWORD = QStringLiteral("Short-Lived-1");
const QDateTime PROJECT_DATE(QDate(2026, 3, 3), QTime(14, 5, 9), Qt::UTC);

Session::Session()
{
    KorvoWebLibrary::initialize();
    facade.reset(new KorvoWebApi);
    recorder.reset(new SignalRecorder(facade.data()));
}

bool Session::logIn(const QString &user, const QString &password)
{
    const int before = recorder->count("loginResult");
    facade->login(user, password);
    if (!recorder->waitFor("loginResult", before + 1))
        return false;
    const auto result = recorder->all("loginResult").last().at(1).value<KorvoWebApi::LoginResult>();
    recorder->clear();
    return result == KorvoWebApi::LoginResult::LoginResultSuccess;
}

// The answer to a question that changes nothing comes behind everything that was asked for before.
bool Session::settle()
{
    const int before = recorder->count("uploadStatusInfoReceived");
    facade->queryUploadProjectStatus({});
    return recorder->waitFor("uploadStatusInfoReceived", before + 1);
}

qint64 Session::close()
{
    QElapsedTimer timer;
    timer.start();
    facade.reset();
    return timer.elapsed();
}

} // namespace Korvo::Web::TestSupport
