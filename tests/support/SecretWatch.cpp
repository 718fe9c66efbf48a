#include "support/SecretWatch.h"

#include <QtCore/QByteArray>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QMessageLogContext>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>
#include <QtCore/QUrl>

#include <cstdio>
#include <cstdlib>

namespace Korvo::Web::TestSupport {

namespace {

QtMessageHandler formerHandler = nullptr;

// As they were typed, and as they are spelled in an address.
QStringList passwords()
{
    QStringList all;
    for (const char *password : {"Camera 12%1+Kanal", "Second-Factor-1", "Short-Lived-1"})
        all << QString::fromLatin1(password) << QString::fromLatin1(QUrl::toPercentEncoding(QLatin1String(password)));
    return all;
}

QString passwordIn(const QString &text)
{
    static const QStringList all = passwords();
    for (const QString &password : all) {
        if (text.contains(password))
            return password;
    }
    return {};
}

// The code of the second factor stands alone; digits of a longer number are none, nor is the count of a long journal.
const QRegularExpression &forms()
{
    static const QRegularExpression all(
        QStringLiteral("(?<!\"number\":)\\b123456\\b"            // the code
                       "|(?<![0-9a-f])[0-9a-f]{64}(?![0-9a-f])"  // a token or a client secret
                       "|(?<![\\w+/])[\\w+/]{43}=(?![\\w=])"     // a signature
                       "|\\bBearer +\\S|\\bKorvoService +\\S")); // what carries one
    return all;
}

[[noreturn]] void complain(const QString &secret, const char *place)
{
    std::fprintf(stderr, "A secret stands in %s: %s\n", place, qPrintable(secret));
    std::fflush(stderr);
    std::abort();
}

void watchMessage(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    expectNoSecretIn(text, "a message");
    if (formerHandler)
        formerHandler(type, context, text);
}

QByteArray processFile(const QString &process, const char *name)
{
    QFile file(QStringLiteral("/proc/%1/%2").arg(process, QLatin1String(name)));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The fourth word; the second is the program's name in brackets, which may hold blanks.
QString parentOf(const QString &process)
{
    const QByteArray stat = processFile(process, "stat");
    return QString::fromLatin1(stat.mid(stat.lastIndexOf(')') + 2).split(' ').value(1));
}

bool isOurs(QString process)
{
    const QString own = QString::number(QCoreApplication::applicationPid());
    while (process != own && process.toInt() > 1)
        process = parentOf(process);
    return process == own;
}

} // namespace

QString secretIn(const QString &text)
{
    const QString password = passwordIn(text);
    return password.isEmpty() ? forms().match(text).captured() : password;
}

void expectNoSecretIn(const QString &text, const char *place)
{
    const QString secret = secretIn(text);
    if (!secret.isEmpty())
        complain(secret, place);
}

void expectNoPasswordIn(const QString &text, const char *place)
{
    const QString password = passwordIn(text);
    if (!password.isEmpty())
        complain(password, place);
}

void watchMessages()
{
    const QtMessageHandler former = qInstallMessageHandler(watchMessage);
    if (former != watchMessage)
        formerHandler = former;
}

void expectNoPasswordInProcessList()
{
    const QStringList processes
        = QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")}, QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &process : processes) {
        if (isOurs(process))
            expectNoPasswordIn(QString::fromUtf8(processFile(process, "cmdline").replace('\0', ' ')), "a command line");
    }
}

} // namespace Korvo::Web::TestSupport
