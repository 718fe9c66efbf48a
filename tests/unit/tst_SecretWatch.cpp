#include "support/SecretWatch.h"

#include "support/LogCapture.h"

#include <NQLogging/CLogger.h>

#include <QtCore/QProcess>
#include <QtTest/QtTest>

using namespace Korvo;
using namespace Korvo::Web::TestSupport;

namespace {

const QString TOKEN = QString(64, QLatin1Char('a'));
const QString SIGNATURE = QString(43, QLatin1Char('x')) + QLatin1Char('=');

/// What this program does when it is started again, each of which must end it.
void tellASecret(const QString &where)
{
    if (where == QLatin1String("log")) {
        const LogCapture log;
        Logging::CLogger::logMessage(static_cast<Logging::LogLevel>(1), QStringLiteral("c"), QStringLiteral("m"),
                                     {TOKEN});
    } else if (where == QLatin1String("message")) {
        watchMessages();
        qWarning("%s", qPrintable(SIGNATURE));
    } else {
        expectNoPasswordInProcessList();
    }
}

} // namespace

class tst_SecretWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void secretsAreFound_data();
    void secretsAreFound();
    void otherTextsAreLeftAlone_data();
    void otherTextsAreLeftAlone();
    void foundSecretEndsTheProgram_data();
    void foundSecretEndsTheProgram();
};

void tst_SecretWatch::secretsAreFound_data()
{
    QTest::addColumn<QString>("secret");
    QTest::newRow("password") << QStringLiteral("Second-Factor-1");
    QTest::newRow("password in an address") << QStringLiteral("Camera%2012%251%2BKanal");
    QTest::newRow("code") << QStringLiteral("123456");
    QTest::newRow("token") << TOKEN;
    QTest::newRow("signature") << SIGNATURE;
}

void tst_SecretWatch::secretsAreFound()
{
    QFETCH(QString, secret);
    QCOMPARE(secretIn(secret), secret);
    QCOMPARE(secretIn(QStringLiteral("it is \"") + secret + QStringLiteral("\", is it not?")), secret);
}

void tst_SecretWatch::otherTextsAreLeftAlone_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << QString();
    QTest::newRow("sentence") << QStringLiteral("The password is wrong, the token has expired.");
    QTest::newRow("longer number") << QStringLiteral("1234567 of 0123456 bytes");
    QTest::newRow("entry of a long journal") << QStringLiteral("{\"method\":\"PUT\",\"number\":123456,\"status\":200}");
    QTest::newRow("shorter hexadecimal text") << QString(63, QLatin1Char('a'));
    QTest::newRow("message token") << QStringLiteral("{01234567-89ab-cdef-0123-456789abcdef}");
    QTest::newRow("address") << QStringLiteral(
        "Error transferring https://service.korvo.example/korvoservice/webdav/korvo-com/a.txt?download=true");
}

void tst_SecretWatch::otherTextsAreLeftAlone()
{
    QFETCH(QString, text);
    QCOMPARE(secretIn(text), QString());
}

void tst_SecretWatch::foundSecretEndsTheProgram_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("log") << QStringList{QStringLiteral("log")};
    QTest::newRow("message") << QStringList{QStringLiteral("message")};
    QTest::newRow("command line") << QStringList{QStringLiteral("process list"), QStringLiteral("Short-Lived-1")};
}

void tst_SecretWatch::foundSecretEndsTheProgram()
{
    QFETCH(QStringList, arguments);
    QProcess program;
    program.start(QCoreApplication::applicationFilePath(), QStringList{QStringLiteral("--tell")} + arguments);
    QVERIFY(program.waitForFinished());
    QCOMPARE(program.exitStatus(), QProcess::CrashExit);
    QVERIFY(program.readAllStandardError().contains("A secret stands in "));
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == QLatin1String("--tell")) {
        tellASecret(arguments.value(2));
        return 0;
    }
    tst_SecretWatch test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_SecretWatch.moc"
