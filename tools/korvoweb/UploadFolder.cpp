#include "UploadFolder.h"

#include "Text.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <filesystem>
#include <system_error>

namespace Korvo::Cli {

namespace {

bool isBackup(const QString &name)
{
    return name.contains(QLatin1String(".xml_bak")) && !name.contains(QLatin1String(".db3"));
}

Outcome refuse(const QString &message)
{
    return {ExitCode::LocalFile, message, {}};
}

} // namespace

UploadFolder::UploadFolder(const QString &path)
    : givenPath(path)
{
}

Outcome UploadFolder::scan()
{
    const QFileInfo info(givenPath);
    const QString shown = shownName(givenPath);
    if (!info.exists())
        return refuse(QStringLiteral("there is no folder ") + shown);
    if (!info.isDir())
        return refuse(shown + QStringLiteral(" is not a folder; give the project's folder, not a file in it"));
    root = QDir::cleanPath(info.absoluteFilePath());
    if (!root.endsWith(QLatin1Char('/')))
        root += QLatin1Char('/');
    scanFolder(root);
    if (!objections.isEmpty()) {
        const QString more = objections.size() == 1 ? QString()
                                                    : QStringLiteral(" (and %1 more)").arg(objections.size() - 1);
        return refuse(objections.first() + more + QStringLiteral("; nothing was sent"));
    }
    if (sizesByPath.isEmpty())
        return refuse(shown + QStringLiteral(" holds no file to upload"));
    return {};
}

qint64 UploadFolder::bytes() const
{
    qint64 sum = 0;
    for (const qint64 size : sizesByPath)
        sum += size;
    return sum;
}

void UploadFolder::scanFolder(const QString &folder)
{
    const QDir dir(folder);
    const QString canonical = dir.canonicalPath();
    if (enteredFolders.contains(canonical)) // a link that leads back up
        return;
    if (!dir.isReadable()) {
        object(QFileInfo(folder), QStringLiteral("cannot be listed; check its rights"));
        return;
    }
    enteredFolders.append(canonical);
    findUnnameable(folder);
    const auto entries = dir.entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
    for (const QFileInfo &entry : entries)
        take(entry);
    enteredFolders.removeLast();
}

// Qt does not list names that are no valid text, so they would be lost in silence.
void UploadFolder::findUnnameable(const QString &folder)
{
    namespace fs = std::filesystem;
    std::error_code error;
    for (fs::directory_iterator entry(fs::u8path(folder.toStdString()), error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        const QString name = QString::fromStdString(entry->path().filename().u8string());
        if (name.contains(QChar(QChar::ReplacementCharacter)))
            object(QFileInfo(folder, name), QStringLiteral("has a name that is no valid text; rename it"));
    }
}

void UploadFolder::take(const QFileInfo &entry)
{
    if (entry.isDir())
        scanFolder(entry.absoluteFilePath());
    else if (!entry.isFile())
        leftOutPaths.append(entry.absoluteFilePath());
    else if (!isBackup(entry.fileName()) && !QFile(entry.filePath()).open(QIODevice::ReadOnly))
        object(entry, QStringLiteral("cannot be read; check its rights"));
    else if (!isBackup(entry.fileName()))
        sizesByPath.insert(entry.absoluteFilePath(), entry.size());
}

void UploadFolder::object(const QFileInfo &entry, const QString &reason)
{
    objections.append(shownName(entry.absoluteFilePath()) + QLatin1Char(' ') + reason);
}

} // namespace Korvo::Cli
