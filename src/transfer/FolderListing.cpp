#include "transfer/FolderListing.h"

#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#if defined(Q_OS_UNIX) && !defined(Q_OS_DARWIN)
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#endif

namespace Korvo::Web {

bool listFolderByQt(const QString &absoluteFolder, const EntryTaker &take)
{
    const QFileInfo folder(absoluteFolder);
    if (!folder.isReadable())
        return !folder.exists();
    QDirIterator entries(absoluteFolder, QDir::AllEntries | QDir::NoDotAndDotDot);
    while (entries.hasNext()) {
        entries.next();
        const QFileInfo entry = entries.fileInfo();
        if (entry.isDir())
            take({entry.fileName(), true, 0});
        else if (entry.isFile()) // a link to a pipe is none, and yet among the entries
            take({entry.fileName(), false, quint64(entry.size())});
    }
    return true;
}

#if defined(Q_OS_UNIX) && !defined(Q_OS_DARWIN)

namespace {

namespace fs = std::filesystem;

/// The last part of a path.
std::string_view nameIn(std::string_view path)
{
    return path.substr(path.rfind('/') + 1);
}

// Without an early end, so that the compiler takes many letters at a time.
bool isAscii(std::string_view text)
{
    unsigned char bits = 0;
    for (const char letter : text)
        bits |= static_cast<unsigned char>(letter);
    return bits < 0x80;
}

/// As QFile::decodeName(), which copies first. Null when Qt would not find the way back from the text to the name.
/// @param name  the last part of @p path
QString decoded(const std::string &path, std::string_view name)
{
    if (isAscii(name))
        return QString::fromLatin1(name.data(), int(name.size()));
    // With the slash before it: at the beginning of a text, some letters would be signs of its encoding.
    const char *const withSlash = path.data() + (path.size() - name.size() - 1);
    const QString text = QString::fromLocal8Bit(withSlash, int(name.size() + 1));
    return QFile::encodeName(text) == withSlash ? text.mid(1) : QString();
}

quint64 sizeOf(const fs::directory_entry &file)
{
    std::error_code failure;
    const auto size = file.file_size(failure);
    return failure ? 0 : size;
}

bool isNothingThere(const std::error_code &failure)
{
    return failure == std::errc::no_such_file_or_directory || failure == std::errc::not_a_directory
           || failure == std::errc::too_many_symbolic_link_levels;
}

/// False when the entry is lost.
bool takeEntry(const fs::directory_entry &entry, const EntryTaker &take)
{
    const std::string &path = entry.path().native();
    const std::string_view encodedName = nameIn(path);
    if (encodedName.front() == '.')
        return true;
    std::error_code failure;
    const bool isFolder = entry.is_directory(failure);
    if (!isFolder && !entry.is_regular_file(failure))
        return !failure || isNothingThere(failure);
    const QString name = decoded(path, encodedName);
    if (name.isNull())
        return false;
    take({name, isFolder, isFolder ? 0 : sizeOf(entry)});
    return true;
}

} // namespace

bool listFolderByStandardLibrary(const QString &absoluteFolder, const EntryTaker &take)
{
    std::error_code failure;
    bool isWhole = true;
    fs::directory_iterator entry(fs::path(QFile::encodeName(absoluteFolder).toStdString()), failure);
    for (; entry != fs::directory_iterator(); entry.increment(failure))
        isWhole = takeEntry(*entry, take) && isWhole;
    return isWhole && (!failure || isNothingThere(failure));
}

#endif

bool listFolder(const QString &absoluteFolder, const EntryTaker &take)
{
#if defined(Q_OS_UNIX) && !defined(Q_OS_DARWIN)
    return listFolderByStandardLibrary(absoluteFolder, take);
#else
    // The system gives size and attributes along with each name.
    return listFolderByQt(absoluteFolder, take);
#endif
}

} // namespace Korvo::Web
