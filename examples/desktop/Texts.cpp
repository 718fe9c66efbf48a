#include "Texts.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QLocale>
#include <QtCore/QRegularExpression>

namespace Korvo::Desktop {

namespace {

constexpr int LONGEST_FOLDER_NAME = 100;

// Names that mean devices on Windows, whatever follows the first dot.
bool isDeviceName(const QString &name)
{
    static const QRegularExpression devices(QStringLiteral("^(con|prn|aux|nul|com[0-9]|lpt[0-9])(\\.|$)"),
                                            QRegularExpression::CaseInsensitiveOption);
    return devices.match(name).hasMatch();
}

} // namespace

QString sizeText(quint64 bytes)
{
    return QLocale().formattedDataSize(static_cast<qint64>(bytes), 1, QLocale::DataSizeSIFormat);
}

QString dateText(const QDateTime &date)
{
    return date.isValid() ? QLocale().toString(date.toLocalTime(), QLocale::ShortFormat) : QString(QChar(0x2013));
}

QString folderNameFor(const QString &projectName)
{
    static const QRegularExpression unwanted(QStringLiteral("[\\x00-\\x1f\\x7f/\\\\:*?\"<>|]"));
    static const QRegularExpression closingDots(QStringLiteral("[. ]+$"));
    QString name = projectName;
    name.replace(unwanted, QStringLiteral("_"));
    name = name.left(LONGEST_FOLDER_NAME).trimmed();
    name.remove(closingDots);
    if (name.isEmpty())
        return QStringLiteral("project");
    return isDeviceName(name) ? QLatin1Char('_') + name : name;
}

QString freePath(const QString &parent, const QString &name)
{
    const QDir folder(parent);
    QString path = folder.filePath(name);
    for (int number = 2; QFileInfo::exists(path); ++number)
        path = folder.filePath(QStringLiteral("%1 (%2)").arg(name).arg(number));
    return path;
}

} // namespace Korvo::Desktop
