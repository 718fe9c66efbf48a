#include "ProjectFolder.h"
#include "ProjectPlan.h"
#include "SampleProject.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QTextCodec>
#include <QtCore/QTextStream>

#include <cstdio>
#include <optional>

using namespace Korvo::Sample;

namespace {

constexpr int EXIT_FAILED = 1;
constexpr int EXIT_USAGE = 2;
constexpr qint64 KIBIBYTE = 1024;
constexpr qint64 MEBIBYTE = KIBIBYTE * KIBIBYTE;
constexpr qint64 LARGEST_FILE = 1900 * MEBIBYTE; // the video format counts in 31 bits

const QCommandLineOption SEED(
    QStringLiteral("seed"), QStringLiteral("The same seed gives the same bytes (default 1)."),
    QStringLiteral("N"), QStringLiteral("1"));
const QCommandLineOption SECTIONS(
    QStringLiteral("sections"), QStringLiteral("Pipes of the network (default 12)."), QStringLiteral("N"),
    QStringLiteral("12"));
const QCommandLineOption PICTURES(
    QStringLiteral("pictures"), QStringLiteral("Pictures; every third is of a node (default 45)."),
    QStringLiteral("N"), QStringLiteral("45"));
const QCommandLineOption VIDEOS(
    QStringLiteral("videos"), QStringLiteral("Videos; every third is of a node (default 7)."),
    QStringLiteral("N"), QStringLiteral("7"));
const QCommandLineOption VIDEO_SIZE(
    QStringLiteral("video-size"),
    QStringLiteral("Size of the first and longest video in bytes, or with K or M (default 10M)."),
    QStringLiteral("SIZE"), QStringLiteral("10M"));
const QCommandLineOption SCAN_SIZE(
    QStringLiteral("scan-size"), QStringLiteral("Size of a large document; 0 leaves it out (default 5M)."),
    QStringLiteral("SIZE"), QStringLiteral("5M"));
const QCommandLineOption LIST_NODE_MEDIA(
    QStringLiteral("list-node-media"),
    QStringLiteral("Print the relative path of each picture and video of a node, one a line."));
const QCommandLineOption FORCE(
    QStringLiteral("force"), QStringLiteral("Write into DIR even if it is not empty."));

std::optional<qint64> bytesOf(QString text)
{
    qint64 unit = 1;
    if (text.endsWith(QLatin1Char('K')))
        unit = KIBIBYTE;
    if (text.endsWith(QLatin1Char('M')))
        unit = MEBIBYTE;
    if (unit > 1)
        text.chop(1);
    bool good = false;
    const qint64 count = text.toLongLong(&good);
    if (!good || count < 0 || count > LARGEST_FILE / unit)
        return std::nullopt;
    return count * unit;
}

std::optional<int> countOf(const QString &text, int lowest)
{
    constexpr int HIGHEST = 10000;
    bool good = false;
    const int count = text.toInt(&good);
    if (!good || count < lowest || count > HIGHEST)
        return std::nullopt;
    return count;
}

std::optional<ProjectSize> sizeFrom(const QCommandLineParser &parser)
{
    bool seedGood = false;
    const quint64 seed = parser.value(SEED).toULongLong(&seedGood);
    const auto sections = countOf(parser.value(SECTIONS), 1);
    const auto pictures = countOf(parser.value(PICTURES), 0);
    const auto videos = countOf(parser.value(VIDEOS), 0);
    const auto videoBytes = bytesOf(parser.value(VIDEO_SIZE));
    const auto scanBytes = bytesOf(parser.value(SCAN_SIZE));
    if (!seedGood || !sections || !pictures || !videos || !videoBytes || !scanBytes)
        return std::nullopt;
    return ProjectSize{seed, *sections, *videos, *videoBytes, *pictures, *scanBytes};
}

void printNodeMedia(QTextStream &out, const ProjectPlan &plan)
{
    for (const std::vector<Media> &list : {plan.pictures, plan.videos}) {
        for (const Media &media : list) {
            if (media.owner == Owner::Node)
                out << media.path << '\n';
        }
    }
}

void printSummary(QTextStream &out, const QString &path, const ProjectPlan &plan)
{
    out << "Wrote \"" << plan.name << "\" into " << QDir::toNativeSeparators(path) << ": " << plan.sections.size()
        << " sections, " << plan.nodes.size() << " nodes, " << plan.observations.size() << " observations, "
        << plan.pictures.size() << " pictures, " << plan.videos.size() << " videos.\n";
}

int refuse(const QString &reason, int exitCode)
{
    QTextStream err(stderr);
    err.setCodec("UTF-8");
    err << "korvo-sample-project: " << reason << '\n';
    return exitCode;
}

} // namespace

int main(int argc, char *argv[])
{
#ifdef Q_OS_UNIX
    // The names are the same everywhere; a bare "C" locale would turn each umlaut into a question mark.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("korvo-sample-project"));
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Writes a believable project folder of a sewer inspection: a database, a description, pictures, videos\n"
                       "that play, documents, empty files, and names with blanks, umlauts, \"&\", \"+\", \"#\" and \"%20\".\n"
                       "File names of pictures and videos occur once in the whole folder."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("DIR"), QStringLiteral("Folder to write into, new or empty."));
    parser.addOptions({SEED, SECTIONS, PICTURES, VIDEOS, VIDEO_SIZE, SCAN_SIZE, LIST_NODE_MEDIA, FORCE});
    parser.process(application);

    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() != 1 || arguments.first().isEmpty())
        return refuse(QStringLiteral("one folder is needed; --help tells more"), EXIT_USAGE);
    const std::optional<ProjectSize> size = sizeFrom(parser);
    if (!size)
        return refuse(QStringLiteral("a number or a size is out of range; --help tells more"), EXIT_USAGE);

    ProjectFolder folder(arguments.first());
    const ProjectPlan plan = planProject(*size);
    if (!folder.prepare(!parser.isSet(FORCE)) || !writeProject(folder, plan, *size))
        return refuse(folder.failure(), EXIT_FAILED);

    QTextStream out(stdout);
    out.setCodec("UTF-8");
    if (parser.isSet(LIST_NODE_MEDIA))
        printNodeMedia(out, plan);
    else
        printSummary(out, arguments.first(), plan);
    return 0;
}
