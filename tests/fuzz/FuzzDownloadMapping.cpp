// A listing of hostile keys against a download folder that has links in it.
//
// Input: one line per entry, "type size key"; a line "windows" at the beginning chooses the other rules.
#include "FuzzTarget.h"

#include "handles/BucketResponses.h"
#include "support/LogCapture.h"
#include "transfer/DownloadPlan.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QSet>
#include <QtCore/QTemporaryDir>

#include <filesystem>

namespace Korvo::Web::Fuzz {

namespace {

using PathRules = DownloadTarget::PathRules;

void write(const QString &path)
{
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) && file.write("held") == 4, "the scene can be set up");
}

/// A download folder with files, folders and links of every kind, and something beside it that nobody may reach.
class Scene
{
public:
    Scene()
    {
        QDir top(folder.path());
        require(top.mkpath(QStringLiteral("project/Picture/Sec")) && top.mkpath(QStringLiteral("project-2"))
                    && top.mkpath(QStringLiteral("outside/deep")),
                "the scene can be set up");
        write(root() + QStringLiteral("/Picture/Sec/held.jpg"));
        write(folder.filePath(QStringLiteral("outside/held.jpg")));
        link("../outside", "out");
        link("../outside/held.jpg", "out.jpg");
        link("../outside/missing", "broken");
        link("Picture", "inside");
        link("loop", "loop");
        link("../..", "up");
    }

    QString root() const { return folder.filePath(QStringLiteral("project")); }

private:
    void link(const char *target, const char *name)
    {
        // Qt makes the target absolute, which serves as well.
        const QDir dir(root());
        require(QFile::link(dir.filePath(QLatin1String(target)), dir.filePath(QLatin1String(name))),
                "the scene can be set up");
    }

    QTemporaryDir folder;
};

bool isBelow(const QString &folder, const QString &path)
{
    return path.startsWith(folder + QLatin1Char('/')) && path.size() > folder.size() + 1;
}

/// Where the file system would put a file of this path: the folders that are there, links followed, and the rest. Empty
/// when it would not find a place.
QString whereItWouldLand(const QString &path)
{
    std::error_code error;
    const auto place = std::filesystem::weakly_canonical(path.toStdString(), error);
    return error ? QString() : QString::fromStdString(place.string());
}

bool isLinkToNothing(const QString &path)
{
    const QFileInfo info(path);
    return info.isSymLink() && !info.exists();
}

bool isDeviceName(const QString &part)
{
    static const QStringList devices{QStringLiteral("con"), QStringLiteral("prn"),    QStringLiteral("aux"),
                                     QStringLiteral("nul"), QStringLiteral("conin$"), QStringLiteral("conout$")};
    QString stem = part.section(QLatin1Char('.'), 0, 0).toLower();
    while (stem.endsWith(QLatin1Char(' ')))
        stem.chop(1);
    const bool isPort = stem.size() == 4 && stem.at(3).isDigit() && stem.at(3) > QLatin1Char('0')
                        && stem.at(3) <= QLatin1Char('9')
                        && (stem.startsWith(QLatin1String("com")) || stem.startsWith(QLatin1String("lpt")));
    return isPort || devices.contains(stem);
}

void requireFitForWindows(const QString &relative)
{
    require(!relative.contains(QLatin1Char(':')), "neither drive nor stream");
    require(!relative.contains(QLatin1Char('\\')), "no separator in disguise");
    const QStringList parts = relative.split(QLatin1Char('/'));
    for (const QString &part : parts) {
        require(!part.endsWith(QLatin1Char('.')) && !part.endsWith(QLatin1Char(' ')),
                "nothing that Windows would cut off");
        require(!isDeviceName(part), "no device");
    }
}

void requireInside(const QString &root, const QString &path, PathRules rules)
{
    require(isBelow(root, path), "a path lies below the download folder");
    const QString relative = path.mid(root.size() + 1);
    require(!relative.split(QLatin1Char('/')).contains(QStringLiteral("..")), "no parent segment is left");
    require(!path.contains(QChar(QChar::Null)), "no path with an end of its own");
    const QString place = whereItWouldLand(path);
    require(place.isEmpty() || isBelow(QFileInfo(root).canonicalFilePath(), place), "no link leads a file out");
    require(place.isEmpty() || !isLinkToNothing(path), "no file is made where a broken link points to");
    if (rules == PathRules::Windows)
        requireFitForWindows(relative);
}

RemoteFileEntry entryFrom(const QByteArray &line)
{
    RemoteFileEntry entry;
    const QList<QByteArray> words = line.split(' ');
    entry.type = QString::fromUtf8(words.value(0));
    entry.size = words.value(1).toLongLong();
    entry.key = QString::fromUtf8(line.mid(words.value(0).size() + words.value(1).size() + 2));
    return entry;
}

struct Listing
{
    PathRules rules = PathRules::Posix;
    QList<RemoteFileEntry> entries;
};

Listing listingFrom(const QByteArray &input)
{
    Listing listing;
    QList<QByteArray> lines = input.split('\n');
    if (lines.first() == "windows") {
        listing.rules = PathRules::Windows;
        lines.removeFirst();
    }
    for (const QByteArray &line : qAsConst(lines))
        listing.entries.append(entryFrom(line));
    return listing;
}

void checkKey(const DownloadTarget &target, const QString &root, const RemoteFileEntry &entry, PathRules rules)
{
    const QString path = target.localPath(entry.key);
    if (!path.isEmpty())
        requireInside(root, path, rules);
    const QString held = target.heldPath(entry.key, entry.size);
    require(held.isEmpty() || (isBelow(root, held) && QFileInfo(held).isFile() && QFileInfo(held).size() == entry.size),
            "what is held lies in the folder and has the size");
}

void checkPlan(const DownloadTarget &target, const QString &root, const Listing &listing)
{
    DownloadPlan plan(target);
    int fetched = 0;
    for (const RemoteFileEntry &entry : listing.entries) {
        const DownloadPlan::Verdict verdict = plan.add(entry);
        fetched += verdict == DownloadPlan::Verdict::Fetch ? 1 : 0;
        require(verdict != DownloadPlan::Verdict::Refuse || target.localPath(entry.key).isEmpty(),
                "only unsafe keys are refused");
        require((verdict == DownloadPlan::Verdict::Unknown)
                    == (entry.type != QLatin1String("0") && entry.type != QLatin1String("1")),
                "only odd entries are unknown");
    }
    const QList<RemoteFile> files = plan.files();
    require(files.size() == fetched - plan.replacedCopies(), "what was taken in is fetched, but for replaced copies");
    QSet<QString> places;
    for (const RemoteFile &file : files) {
        requireInside(root, file.localPath, listing.rules);
        require(file.size != 0 && !DownloadTarget::isVideoWebCopy(file.key), "nothing unwanted is fetched");
        places.insert(target.identity(file.localPath));
    }
    require(places.size() == files.size(), "each file has a place of its own");
}

} // namespace

void runTarget(const QByteArray &input)
{
    static const Scene scene;
    const TestSupport::LogCapture log(TestSupport::LogCapture::Watch::Nothing);
    const Listing listing = listingFrom(input);
    const DownloadTarget target(scene.root(), listing.rules);
    for (const RemoteFileEntry &entry : listing.entries)
        checkKey(target, scene.root(), entry, listing.rules);
    checkPlan(target, scene.root(), listing);
}

} // namespace Korvo::Web::Fuzz
