#include "Golden.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>

namespace Korvo::Cli::Test {

QString steady(QString text, const QString &folder)
{
    if (!folder.isEmpty())
        text.replace(folder, QStringLiteral("<FOLDER>"));
    text.replace(QRegularExpression(QStringLiteral("\\([0-9.]+ [kMG]?B/s\\)")), QStringLiteral("(<RATE>)"));
    text.replace(QRegularExpression(QStringLiteral("\\b[0-9]+\\.[0-9] s\\b")), QStringLiteral("<TIME>"));
    text.replace(QRegularExpression(QStringLiteral("\"milliseconds\":[0-9]+")), QStringLiteral("\"milliseconds\":<TIME>"));
    text.replace(QRegularExpression(QStringLiteral("ticket=[0-9a-f]+")), QStringLiteral("ticket=<TICKET>"));
    return text;
}

QString differenceToGolden(const QString &name, const QString &text)
{
    QFile file(QStringLiteral(KORVOWEB_GOLDEN "/") + name);
    if (qEnvironmentVariableIsSet("KORVOWEB_UPDATE_GOLDEN")) {
        const QByteArray bytes = text.toUtf8();
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() ? QString() : file.errorString();
    }
    if (!file.open(QIODevice::ReadOnly))
        return file.fileName() + QStringLiteral(": ") + file.errorString();
    const QString golden = QString::fromUtf8(file.readAll());
    return golden == text ? QString() : QStringLiteral("%1: expected\n%2\nbut got\n%3").arg(name, golden, text);
}

} // namespace Korvo::Cli::Test
