#include "transfer/LocalUploadFile.h"

#include <QtCore/QFileInfo>

#include <algorithm>
#include <iterator>

namespace Korvo::Web {

namespace {

const QLatin1String VIDEO_EXTENSIONS[] = {QLatin1String("mpg"), QLatin1String("avi"), QLatin1String("mp2"),
                                          QLatin1String("wmv"), QLatin1String("mp4"), QLatin1String("mov")};
const QLatin1String PICTURE_EXTENSIONS[]
    = {QLatin1String("bmp"), QLatin1String("jpg"),  QLatin1String("jpeg"), QLatin1String("tiff"),
       QLatin1String("emf"), QLatin1String("exif"), QLatin1String("png"),  QLatin1String("wmf")};

bool isLetter(QChar letter, char lowerCase)
{
    const ushort code = letter.unicode();
    return code == lowerCase || (code >= 'A' && code <= 'Z' && code - 'A' + 'a' == lowerCase);
}

template <std::size_t N>
bool isOneOf(const QStringRef &text, const QLatin1String (&choices)[N])
{
    return std::any_of(std::begin(choices), std::end(choices), [&text](QLatin1String choice) {
        return std::equal(text.begin(), text.end(), choice.begin(), choice.end(), isLetter);
    });
}

QStringRef lastPart(const QStringRef &text, QLatin1Char separator)
{
    return text.mid(text.lastIndexOf(separator) + 1);
}

} // namespace

LocalUploadFile::LocalUploadFile(const QString &absoluteFilePath, QStringView relativeFilePath, quint64 fileSize,
                                 const QDateTime &modificationTime)
    : size(fileSize)
    , folder(absoluteFilePath.left(absoluteFilePath.lastIndexOf(QLatin1Char('/')) + 1))
    , fileName(absoluteFilePath.mid(folder.size()))
    , relativeStart(absoluteFilePath.size() - int(relativeFilePath.size()))
    , knownModificationTime(modificationTime)
{
    if (!QStringView(absoluteFilePath).endsWith(relativeFilePath))
        otherRelativePath = relativeFilePath.toString();
    classify();
}

LocalUploadFile::LocalUploadFile(const QString &place, const QString &name, int lengthBeforeRelative, quint64 fileSize)
    : size(fileSize)
    , folder(place)
    , fileName(name)
    , relativeStart(lengthBeforeRelative)
{
    classify();
}

QString LocalUploadFile::relativePath() const
{
    return otherRelativePath.isEmpty() ? absolutePath().mid(relativeStart) : otherRelativePath;
}

QDateTime LocalUploadFile::lastModified() const
{
    return knownModificationTime.isNull() ? QFileInfo(absolutePath()).lastModified() : knownModificationTime;
}

// What follows the last dot of the whole relative path decides, even if that dot stands in the name of a folder.
void LocalUploadFile::classify()
{
    const bool nameDecides
        = otherRelativePath.isEmpty() && relativeStart <= folder.size() && fileName.contains(QLatin1Char('.'));
    const QString text = nameDecides ? fileName : relativePath();
    const QStringRef extension = lastPart(QStringRef(&text), QLatin1Char('.'));
    isVideo = isOneOf(extension, VIDEO_EXTENSIONS);
    isPicture = !isVideo && isOneOf(extension, PICTURE_EXTENSIONS);
}

bool LocalUploadFile::belongsToNode(const MediaNamesList &nodeMediaFiles) const
{
    const QString path = relativePath();
    if (nodeMediaFiles.contains(path))
        return true;
    return path.startsWith(QLatin1Char('/')) && nodeMediaFiles.contains(path.mid(1));
}

QString LocalUploadFile::remoteKey(const MediaNamesList &nodeMediaFiles) const
{
    if (!isPicture && !isVideo)
        return relativePath();
    const QString kind = isPicture ? QStringLiteral("Picture/") : QStringLiteral("Video/");
    const QString place = belongsToNode(nodeMediaFiles) ? QStringLiteral("Nod/") : QStringLiteral("Sec/");
    const QString path = relativePath();
    return kind + place + lastPart(QStringRef(&path), QLatin1Char('/'));
}

} // namespace Korvo::Web
