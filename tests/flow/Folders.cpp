#include "flow/Folders.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QRandomGenerator>
#include <QtCore/QStringList>
#include <QtCore/QVector>

namespace Korvo::Web::TestSupport {

namespace {

const QString EMPTY_FILE = QStringLiteral("0 ") + sha256({});
constexpr int DIFFERENCES_SHOWN = 10;

QString line(const QByteArray &bytes)
{
    return QString::number(bytes.size()) + QLatin1Char(' ') + sha256(bytes);
}

QString mediaFolder(const QString &relativePath)
{
    const QString extension = relativePath.section(QLatin1Char('.'), -1).toLower();
    if (extension == QLatin1String("mp4") || extension == QLatin1String("mpg") || extension == QLatin1String("avi"))
        return QStringLiteral("Video/Sec/");
    return extension == QLatin1String("jpg") || extension == QLatin1String("png") ? QStringLiteral("Picture/Sec/")
                                                                                : QString();
}

template<typename List>
auto oneOf(const List &choices, QRandomGenerator &random)
{
    return choices.at(int(random.bounded(choices.size())));
}

} // namespace

QByteArray randomBytes(qint64 size, quint32 seed)
{
    QRandomGenerator random(seed);
    QVector<quint32> words(int((size + 3) / 4));
    random.fillRange(words.data(), words.size());
    return QByteArray(reinterpret_cast<const char *>(words.constData()), int(size));
}

bool writeFile(const QString &root, const QString &relativePath, const QByteArray &bytes)
{
    const QString path = root + QLatin1Char('/') + relativePath;
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).absolutePath()) && file.open(QIODevice::WriteOnly)
        && file.write(bytes) == bytes.size() && file.flush();
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString sha256(const QByteArray &bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

Tree treeOf(const QString &root)
{
    Tree tree;
    QDirIterator files(root, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        tree.insert(QDir(root).relativeFilePath(path), line(readFile(path)));
    }
    return tree;
}

Tree treeAfterRoundTrip(const Tree &tree)
{
    Tree expected;
    for (auto file = tree.cbegin(); file != tree.cend(); ++file) {
        if (file.value() == EMPTY_FILE)
            continue;
        const QString folder = mediaFolder(file.key());
        const QString name = file.key().section(QLatin1Char('/'), -1);
        expected.insert(folder.isEmpty() ? file.key() : folder + name, file.value());
    }
    return expected;
}

QString difference(const Tree &expected, const Tree &actual)
{
    QStringList lines;
    for (auto file = expected.cbegin(); file != expected.cend(); ++file) {
        if (!actual.contains(file.key()))
            lines.append(QStringLiteral("missing: ") + file.key());
        else if (actual.value(file.key()) != file.value())
            lines.append(QStringLiteral("other content: ") + file.key());
    }
    for (auto file = actual.cbegin(); file != actual.cend(); ++file) {
        if (!expected.contains(file.key()))
            lines.append(QStringLiteral("too many: ") + file.key());
    }
    return lines.mid(0, DIFFERENCES_SHOWN).join(QLatin1Char('\n'));
}

bool makeRandomTree(const QString &root, quint32 seed, int files)
{
    const QStringList folders { QString(), QStringLiteral("Docs/"), QString::fromUtf8("Pläne & Skizzen/"),
                                QStringLiteral("a b/c#d/e%20f/"), QString::fromUtf8("tief/sehr tief/äußerst tief/") };
    const QStringList stems { QStringLiteral("report"), QString::fromUtf8("Übersicht Süd"), QStringLiteral("50% done #1"),
                              QStringLiteral("a&b=c"), QStringLiteral("x+y ~z"), QStringLiteral("two  blanks") };
    const QStringList extensions { QStringLiteral(".txt"), QStringLiteral(".pdf"), QStringLiteral(".jpg"),
                                   QStringLiteral(".MP4"), QStringLiteral(".db3"), QString() };
    const QVector<int> sizes { 0, 1, 15, 1000, 70000, 300000 };
    QRandomGenerator random(seed);
    for (int i = 0; i < files; ++i) {
        const QString path = oneOf(folders, random) + QString::number(i) + QLatin1Char(' ') + oneOf(stems, random)
            + oneOf(extensions, random);
        if (!writeFile(root, path, randomBytes(oneOf(sizes, random), random.generate())))
            return false;
    }
    return true;
}

} // namespace Korvo::Web::TestSupport
