#include "transfer/LocalUploadFile.h"

#include <QtTest/QTest>

using namespace Korvo::Web;

namespace {

LocalUploadFile fileAt(const QString &relativePath)
{
    return LocalUploadFile(QStringLiteral("/project/") + relativePath, relativePath, 7, QDateTime());
}

enum Kind { Neither, Picture, Video };

Kind kindOf(const LocalUploadFile &file)
{
    if (file.isVideo && file.isPicture)
        qFatal("A file cannot be both");
    return file.isVideo ? Video : file.isPicture ? Picture : Neither;
}

} // namespace

class tst_LocalUploadFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsWhatItIsGiven();
    void placeAndNameMakeTheSameFile_data();
    void placeAndNameMakeTheSameFile();
    void relativePathNeedNotEndTheAbsoluteOne();
    void extensionDecidesTheKind_data();
    void extensionDecidesTheKind();
    void lettersOfAnExtensionCountInLowerCase();
    void keyOfAFile_data();
    void keyOfAFile();
    void picturesOfTheSameNameShareAKey();
};

void tst_LocalUploadFile::keepsWhatItIsGiven()
{
    const QDateTime time(QDate(2024, 2, 29), QTime(23, 59, 58));
    const LocalUploadFile file(QStringLiteral("/p/Köln #1/a b.txt"), QStringLiteral("/Köln #1/a b.txt"),
                               Q_UINT64_C(18446744073709551615), time);
    QCOMPARE(file.absolutePath(), QStringLiteral("/p/Köln #1/a b.txt"));
    QCOMPARE(file.relativePath(), QStringLiteral("/Köln #1/a b.txt"));
    QCOMPARE(file.size, Q_UINT64_C(18446744073709551615));
    QCOMPARE(file.lastModified(), time);
    QVERIFY(!file.isVideo);
    QVERIFY(!file.isPicture);
}

void tst_LocalUploadFile::placeAndNameMakeTheSameFile_data()
{
    QTest::addColumn<QString>("place");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("lengthBefore");
    QTest::addColumn<QString>("key");
    QTest::newRow("in the project folder")
        << QStringLiteral("/p/") << QStringLiteral("a.jpg") << 3 << QStringLiteral("Picture/Sec/a.jpg");
    QTest::newRow("leading separator") << QStringLiteral("/p/") << QStringLiteral("a.jpg") << 2
                                       << QStringLiteral("Picture/Sec/a.jpg");
    QTest::newRow("deeper") << QStringLiteral("/p/Köln #1/b/") << QStringLiteral("Clip.MP4") << 3
                            << QStringLiteral("Video/Sec/Clip.MP4");
    QTest::newRow("no dot in the name, one in a folder")
        << QStringLiteral("/p/x.mov/") << QStringLiteral("README") << 3 << QStringLiteral("x.mov/README");
    QTest::newRow("a dot before the project's end alone")
        << QStringLiteral("/p.mov/") << QStringLiteral("mov") << 7 << QStringLiteral("Video/Sec/mov");
    QTest::newRow("ends with a dot") << QStringLiteral("/p/b.jpg/") << QStringLiteral("a.") << 3
                                     << QStringLiteral("b.jpg/a.");
    QTest::newRow("relative path amid the name")
        << QStringLiteral("/p/") << QStringLiteral("x.ajpg") << 6 << QStringLiteral("Picture/Sec/jpg");
    QTest::newRow("at the root") << QStringLiteral("/") << QStringLiteral("a.png") << 1
                                 << QStringLiteral("Picture/Sec/a.png");
}

void tst_LocalUploadFile::placeAndNameMakeTheSameFile()
{
    QFETCH(QString, place);
    QFETCH(QString, name);
    QFETCH(int, lengthBefore);
    const QString path = place + name;
    const LocalUploadFile expected(path, path.mid(lengthBefore), 7);
    const LocalUploadFile file(place, name, lengthBefore, 7);
    QCOMPARE(file.absolutePath(), path);
    QCOMPARE(file.relativePath(), path.mid(lengthBefore));
    QCOMPARE(file.relativePath(), expected.relativePath());
    QCOMPARE(file.size, quint64(7));
    QCOMPARE(file.isVideo, expected.isVideo);
    QCOMPARE(file.isPicture, expected.isPicture);
    QTEST(file.remoteKey({}), "key");
    QTEST(expected.remoteKey({}), "key");
}

void tst_LocalUploadFile::relativePathNeedNotEndTheAbsoluteOne()
{
    const LocalUploadFile file(QStringLiteral("/p/a.txt"), QStringLiteral("other/Clip.MPG"), 1);
    QCOMPARE(file.relativePath(), QStringLiteral("other/Clip.MPG"));
    QVERIFY(file.isVideo);
    QCOMPARE(file.remoteKey({}), QStringLiteral("Video/Sec/Clip.MPG"));
    const LocalUploadFile copy = file;
    QCOMPARE(copy.relativePath(), QStringLiteral("other/Clip.MPG"));
    QCOMPARE(LocalUploadFile(QStringLiteral("/p"), QString(), 1).relativePath(), QString());
}

void tst_LocalUploadFile::extensionDecidesTheKind_data()
{
    QTest::addColumn<QString>("relativePath");
    QTest::addColumn<int>("kind");
    for (const char *extension : {"mpg", "avi", "mp2", "wmv", "mp4", "mov"})
        QTest::newRow(extension) << QStringLiteral("a.") + QLatin1String(extension) << int(Video);
    for (const char *extension : {"bmp", "jpg", "jpeg", "tiff", "emf", "exif", "png", "wmf"})
        QTest::newRow(extension) << QStringLiteral("a.") + QLatin1String(extension) << int(Picture);
    for (const char *extension : {"mpeg", "mkv", "mp3", "webm", "gif", "tif", "svg", "pdf", "db3", "xml", "txt", "jpg_"})
        QTest::newRow(extension) << QStringLiteral("a.") + QLatin1String(extension) << int(Neither);
    QTest::newRow("upper case video") << "Clip.MP4" << int(Video);
    QTest::newRow("mixed case picture") << "Photo.JpEg" << int(Picture);
    QTest::newRow("several dots") << "archive.tar.mp4" << int(Video);
    QTest::newRow("only the last extension counts") << "a.mp4.txt" << int(Neither);
    QTest::newRow("no dot") << "README" << int(Neither);
    QTest::newRow("no dot, the whole path is the extension") << "MOV" << int(Video);
    QTest::newRow("no dot, but a folder before it") << "sub/jpg" << int(Neither);
    QTest::newRow("leading separator and no dot") << "/mp4" << int(Neither);
    QTest::newRow("ends with a dot") << "a.mp4." << int(Neither);
    QTest::newRow("starts with the dot") << ".png" << int(Picture);
    QTest::newRow("dot in a folder alone") << "a.b/README" << int(Neither);
    QTest::newRow("dot in a folder, name with blank") << "a.b/c d.avi" << int(Video);
    QTest::newRow("blank behind the extension") << "a.mp4 " << int(Neither);
    QTest::newRow("empty path") << "" << int(Neither);
}

void tst_LocalUploadFile::extensionDecidesTheKind()
{
    QFETCH(QString, relativePath);
    QFETCH(int, kind);
    QCOMPARE(int(kindOf(fileAt(relativePath))), kind);
}

// Whatever stands in place of one of its letters: "ı", the sign for kelvin, half a surrogate pair ...
void tst_LocalUploadFile::lettersOfAnExtensionCountInLowerCase()
{
    const QStringList extensions{QStringLiteral("avi"), QStringLiteral("mp4"), QStringLiteral("tiff")};
    const QStringList known
        = QStringLiteral("mpg avi mp2 wmv mp4 mov bmp jpg jpeg tiff emf exif png wmf").split(QLatin1Char(' '));
    for (const QString &extension : extensions) {
        for (int i = 0; i < extension.size(); ++i) {
            for (int unit = 1; unit <= 0xffff; ++unit) {
                if (unit == '.') // begins an extension of its own
                    continue;
                QString spoilt = extension;
                spoilt[i] = QChar(unit);
                const bool isMedia = kindOf(fileAt(QStringLiteral("a.") + spoilt)) != Neither;
                QVERIFY2(isMedia == known.contains(spoilt.toLower()), qPrintable(spoilt));
            }
        }
    }
}

void tst_LocalUploadFile::keyOfAFile_data()
{
    QTest::addColumn<QString>("relativePath");
    QTest::addColumn<QString>("key");
    QTest::newRow("picture of a section") << "a.jpg" << "Picture/Sec/a.jpg";
    QTest::newRow("picture of a section, flattened") << "x/y/z/a.jpg" << "Picture/Sec/a.jpg";
    QTest::newRow("picture of a section, leading separator") << "/x/a.jpg" << "Picture/Sec/a.jpg";
    QTest::newRow("picture of a node") << "sub/dir/a.jpg" << "Picture/Nod/a.jpg";
    QTest::newRow("picture of a node, leading separator on disk alone") << "/sub/dir/a.jpg" << "Picture/Nod/a.jpg";
    QTest::newRow("picture of a node, leading separator in both") << "/led/b.png" << "Picture/Nod/b.png";
    QTest::newRow("picture of a node, leading separator in the set alone") << "led/b.png" << "Picture/Sec/b.png";
    QTest::newRow("picture of a node has its case") << "Sub/dir/a.jpg" << "Picture/Sec/a.jpg";
    QTest::newRow("file name of a node picture elsewhere") << "other/a.jpg" << "Picture/Sec/a.jpg";
    QTest::newRow("video of a section") << "v/clip.MP4" << "Video/Sec/clip.MP4";
    QTest::newRow("video of a node") << "v/node.mov" << "Video/Nod/node.mov";
    QTest::newRow("video of a node, leading separator") << "/v/node.mov" << "Video/Nod/node.mov";
    QTest::newRow("two leading separators are not one") << "//v/node.mov" << "Video/Sec/node.mov";
    QTest::newRow("backslashes are part of a name") << "x\\a.jpg" << "Picture/Sec/x\\a.jpg";
    QTest::newRow("other file") << "sub/data.db3" << "sub/data.db3";
    QTest::newRow("other file keeps its leading separator") << "/project.xml" << "/project.xml";
    QTest::newRow("other file in the set of node media") << "notes/node.txt" << "notes/node.txt";
    QTest::newRow("umlauts and blanks") << QStringLiteral("Übersicht/a b.JPG") << QStringLiteral("Picture/Sec/a b.JPG");
    QTest::newRow("media folder name") << "Misc/Docu/film.mp4" << "Video/Sec/film.mp4";
}

void tst_LocalUploadFile::keyOfAFile()
{
    const MediaNamesList nodeMedia{QStringLiteral("sub/dir/a.jpg"), QStringLiteral("/led/b.png"),
                                   QStringLiteral("v/node.mov"), QStringLiteral("notes/node.txt")};
    QFETCH(QString, relativePath);
    QTEST(fileAt(relativePath).remoteKey(nodeMedia), "key");
}

void tst_LocalUploadFile::picturesOfTheSameNameShareAKey()
{
    QCOMPARE(fileAt(QStringLiteral("one/a.jpg")).remoteKey({}), fileAt(QStringLiteral("two/a.jpg")).remoteKey({}));
}

QTEST_APPLESS_MAIN(tst_LocalUploadFile)

#include "tst_LocalUploadFile.moc"
