#include "RoundTrip.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTextCodec>
#include <QtCore/QTextStream>

#include <cstdio>

using namespace Korvo::Demo;

namespace {

constexpr int EXIT_NOT_WHOLE = 1;
constexpr int EXIT_USAGE = 2;

const QCommandLineOption PLATFORM(
    QStringLiteral("platform"), QStringLiteral("The program korvo-local-platform."), QStringLiteral("PROGRAM"));
const QCommandLineOption FOLDER(
    QStringLiteral("folder"), QStringLiteral("The project folder to upload."), QStringLiteral("DIR"));
const QCommandLineOption TARGET(
    QStringLiteral("target"), QStringLiteral("The folder to download into, new or empty."),
    QStringLiteral("DIR"));
const QCommandLineOption SIMULTANEOUS(
    QStringLiteral("simultaneous"), QStringLiteral("Files on their way at once, 1 to 6 (default 3)."),
    QStringLiteral("N"), QStringLiteral("3"));
const QCommandLineOption STALL_LIMIT(
    QStringLiteral("stall-limit"),
    QStringLiteral("Seconds without progress that end it as a failure (default 60)."), QStringLiteral("SECONDS"),
    QStringLiteral("60"));
const QCommandLineOption NODE_MEDIA(
    QStringLiteral("node-media"),
    QStringLiteral("Upload as a Quickview project; FILE lists the relative paths of the pictures and videos of nodes, one a line."),
    QStringLiteral("FILE"));

// Why the arguments cannot be used; empty when they can.
QString complaint(const QCommandLineParser &parser)
{
    for (const QCommandLineOption &needed : {PLATFORM, FOLDER, TARGET}) {
        if (parser.value(needed).isEmpty())
            return QStringLiteral("--") + needed.names().first() + QStringLiteral(" is missing; --help tells more");
    }
    if (!parser.positionalArguments().isEmpty())
        return QStringLiteral("do not know what to do with \"") + parser.positionalArguments().first() + QLatin1Char('"');
    if (!QFileInfo(parser.value(PLATFORM)).isExecutable())
        return parser.value(PLATFORM) + QStringLiteral(" is not a program");
    if (!QFileInfo(parser.value(FOLDER)).isDir())
        return parser.value(FOLDER) + QStringLiteral(" is not a folder");
    const QFileInfo target(parser.value(TARGET));
    const QDir::Filters everything = QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System;
    if (target.exists() && (!target.isDir() || !QDir(target.filePath()).isEmpty(everything)))
        return target.filePath() + QStringLiteral(" is not an empty folder");
    const int simultaneous = parser.value(SIMULTANEOUS).toInt();
    if (simultaneous < 1 || simultaneous > 6 || parser.value(STALL_LIMIT).toInt() < 1)
        return QStringLiteral("a number is out of range; --help tells more");
    return {};
}

QString absolute(const QString &path)
{
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

bool readNodeMedia(const QString &path, RoundTripOptions &options)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    options.nodeMedia = QSet<QString>(lines.begin(), lines.end());
    options.isQuickview = true;
    options.simultaneousFiles = 1;
    return true;
}

RoundTripOptions optionsFrom(const QCommandLineParser &parser)
{
    RoundTripOptions options;
    options.platformProgram = absolute(parser.value(PLATFORM));
    options.folder = absolute(parser.value(FOLDER));
    options.target = absolute(parser.value(TARGET));
    options.simultaneousFiles = parser.value(SIMULTANEOUS).toInt();
    options.stallLimit = std::chrono::seconds(parser.value(STALL_LIMIT).toInt());
    return options;
}

int refuse(QTextStream &out, const QString &reason)
{
    out << "korvo-demo: " << reason << '\n';
    return EXIT_USAGE;
}

} // namespace

int main(int argc, char *argv[])
{
#ifdef Q_OS_UNIX
    // File names are UTF-8 whatever the locale; a bare "C" locale would turn each umlaut into a question mark.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("korvo-demo"));
    QTextStream out(stdout);
    out.setCodec("UTF-8");

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Starts the local platform, logs in, uploads a project folder, lists the projects, downloads it into\n"
                       "another folder, compares every file and says what took how long. Exit code 0: all is whole."));
    parser.addHelpOption();
    parser.addOptions({PLATFORM, FOLDER, TARGET, SIMULTANEOUS, STALL_LIMIT, NODE_MEDIA});
    parser.process(application);

    const QString problem = complaint(parser);
    if (!problem.isEmpty())
        return refuse(out, problem);
    RoundTripOptions options = optionsFrom(parser);
    if (parser.isSet(NODE_MEDIA) && !readNodeMedia(parser.value(NODE_MEDIA), options))
        return refuse(out, parser.value(NODE_MEDIA) + QStringLiteral(" cannot be read"));

    RoundTrip roundTrip(options, out);
    const bool whole = roundTrip.run();
    out << (whole ? "All is whole.\n" : "NOT whole.\n");
    return whole ? 0 : EXIT_NOT_WHOLE;
}
