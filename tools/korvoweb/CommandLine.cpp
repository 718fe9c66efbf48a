#include "CommandLine.h"

#include "CommandTable.h"
#include "Text.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QUrl>
#include <QtCore/QUuid>

#include <optional>

namespace Korvo::Cli {

namespace {

// As many connections go to one server.
constexpr int MOST_JOBS = 6;
constexpr int LONGEST_STALL = 7 * 24 * 3600;

QString quoted(const QString &text)
{
    return QLatin1Char('"') + shownName(text) + QLatin1Char('"');
}

void addOptions(QCommandLineParser &parser, const QVector<OptionInfo> &options)
{
    for (const OptionInfo &option : options) {
        QStringList names{option.name};
        if (option.name == QLatin1String("help"))
            names.append(QStringLiteral("h"));
        parser.addOption(QCommandLineOption(names, option.text, option.value));
    }
}

// The command is the first word that is no option and no option's value, so all options have to be known to find it.
const CommandInfo *commandIn(const QStringList &words, QString &name)
{
    QCommandLineParser parser;
    addOptions(parser, commonOptions());
    QStringList known;
    for (const CommandInfo &command : commands()) {
        for (const OptionInfo &option : command.options) {
            if (!known.contains(option.name))
                addOptions(parser, {option});
            known.append(option.name);
        }
    }
    parser.parse(words);
    name = parser.positionalArguments().value(0);
    return findCommand(name);
}

std::optional<int> numberIn(const QString &text, int lowest, int highest)
{
    bool good = false;
    const int number = text.toInt(&good);
    if (!good || number < lowest || number > highest)
        return std::nullopt;
    return number;
}

bool takeProxy(const QString &text, CommonOptions &options)
{
    const QUrl url(QLatin1String("proxy://") + text, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty() || url.port() < 1 || !url.userInfo().isEmpty() || !url.path().isEmpty())
        return false;
    options.proxyHost = url.host();
    options.proxyPort = static_cast<quint16>(url.port());
    return true;
}

QString takeCommon(const QCommandLineParser &parser, CommonOptions &options)
{
    const auto isSet = [&parser](const char *name) { return parser.isSet(QLatin1String(name)); };
    const auto value = [&parser](const char *name) { return parser.value(QLatin1String(name)); };
    options.user = isSet("user") ? value("user") : qEnvironmentVariable("KORVOWEB_USER");
    options.passwordFromInput = isSet("password-stdin");
    options.codeFromInput = isSet("code-stdin");
    options.authorityFile = value("ca");
    options.json = isSet("json");
    options.quiet = isSet("quiet");
    options.verbose = isSet("verbose");
    if (isSet("ca") && value("ca").isEmpty())
        return QStringLiteral("--ca needs the name of a file");
    // What it holds is not repeated: somebody may have put a password into it.
    if (isSet("proxy") && !takeProxy(value("proxy"), options))
        return QStringLiteral("--proxy takes HOST:PORT; its user and password come from KORVOWEB_PROXY_USER and "
                              "KORVOWEB_PROXY_PASSWORD");
    if (isSet("stall-timeout")) {
        const auto seconds = numberIn(value("stall-timeout"), 0, LONGEST_STALL);
        if (!seconds)
            return QStringLiteral("--stall-timeout takes seconds, 0 to %1").arg(LONGEST_STALL);
        options.stallTimeout = std::chrono::seconds(*seconds);
    }
    return {};
}

QString takeJobs(const QCommandLineParser &parser, Invocation &invocation)
{
    if (!parser.isSet(QStringLiteral("jobs")))
        return {};
    const auto jobs = numberIn(parser.value(QStringLiteral("jobs")), 1, MOST_JOBS);
    if (!jobs)
        return QStringLiteral("--jobs takes a number from 1 to %1: no more connections go to one server").arg(MOST_JOBS);
    invocation.jobs = *jobs;
    return {};
}

std::optional<UploadKind> kindIn(const QString &text)
{
    if (text.isEmpty() || text == QLatin1String("standard"))
        return UploadKind::Standard;
    if (text == QLatin1String("qz"))
        return UploadKind::Qz;
    if (text == QLatin1String("quickview"))
        return UploadKind::Quickview;
    return std::nullopt;
}

// The platform takes the clock reading for UTC, so a reading with an offset is converted and one without is kept.
QDateTime dateIn(const QString &text)
{
    QDateTime date = QDateTime::fromString(text, Qt::ISODate);
    if (!date.isValid() || text.size() < 10)
        return {};
    if (date.timeSpec() == Qt::LocalTime)
        date.setTimeSpec(Qt::UTC);
    return date.toUTC();
}

QString checkUpload(const QCommandLineParser &parser, const Invocation &invocation)
{
    const UploadOptions &options = invocation.upload;
    const bool isQz = options.kind == UploadKind::Qz;
    const bool isStandard = options.kind == UploadKind::Standard;
    if (isQz && parser.isSet(QStringLiteral("id")))
        return QStringLiteral("--id does not go with --kind qz: the id is made from the name");
    if (!isQz && options.id.isEmpty())
        return QStringLiteral("--id is missing: the id of the project");
    if (options.kind == UploadKind::Quickview && QUuid(options.id).isNull())
        return quoted(options.id) + QStringLiteral(" is no UUID, which --kind quickview needs as --id");
    if (!isStandard && parser.isSet(QStringLiteral("jobs")) && invocation.jobs != 1)
        return QStringLiteral("--jobs goes with --kind standard only: the others send one file at a time");
    if (options.kind != UploadKind::Quickview && parser.isSet(QStringLiteral("manhole-media")))
        return QStringLiteral("--manhole-media goes with --kind quickview only");
    return {};
}

QString takeUpload(const QCommandLineParser &parser, Invocation &invocation)
{
    UploadOptions &options = invocation.upload;
    const auto kind = kindIn(parser.value(QStringLiteral("kind")));
    if (!kind)
        return quoted(parser.value(QStringLiteral("kind"))) + QStringLiteral(" is no kind: standard, qz or quickview");
    options.kind = *kind;
    options.id = parser.value(QStringLiteral("id"));
    options.name = parser.value(QStringLiteral("name"));
    options.manholeMediaFile = parser.value(QStringLiteral("manhole-media"));
    if (options.name.isEmpty())
        return QStringLiteral("--name is missing: the name shown to users");
    if (!parser.isSet(QStringLiteral("created")))
        return QStringLiteral("--created is missing: the creation date, 2026-11-21 or 2026-11-21T10:30:00");
    options.created = dateIn(parser.value(QStringLiteral("created")));
    if (!options.created.isValid())
        return quoted(parser.value(QStringLiteral("created")))
            + QStringLiteral(" is no date; write 2026-11-21 or 2026-11-21T10:30:00");
    return checkUpload(parser, invocation);
}

QString checkCount(const Invocation &invocation)
{
    const QStringList &expected = invocation.command->arguments;
    const QStringList &given = invocation.arguments;
    if (given.size() < expected.size())
        return expected.at(given.size()) + QStringLiteral(" is missing; see korvoweb ") + invocation.command->name
            + QStringLiteral(" --help");
    if (given.size() > expected.size() && !invocation.command->takesMore())
        return QStringLiteral("one word too many: ") + quoted(given.at(expected.size()));
    const int empty = given.indexOf(QString());
    return empty < 0 ? QString() : expected.value(empty, expected.last()) + QStringLiteral(" is empty");
}

QString checkWords(const Invocation &invocation)
{
    const QString name = invocation.command->name;
    const QString first = invocation.arguments.value(0);
    static const QStringList SETS{QStringLiteral("project"), QStringLiteral("survey"), QStringLiteral("manhole")};
    if (name == QLatin1String("quickview") && !SETS.contains(first))
        return quoted(first) + QStringLiteral(" is no Quickview data: project, survey or manhole");
    if (name == QLatin1String("link") && QUuid(first).isNull())
        return quoted(first) + QStringLiteral(" is no UUID; \"korvoweb projects\" lists the ids");
    if (name != QLatin1String("get"))
        return {};
    const QUrl url(first);
    const bool isLink = (url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http")) && !url.host().isEmpty();
    return isLink ? QString() : QStringLiteral("the URL has to begin with https:// or http://, as \"korvoweb link\" prints it");
}

QString parserComplaint(const QCommandLineParser &parser)
{
    const QStringList unknown = parser.unknownOptionNames();
    if (unknown.isEmpty())
        return shownName(parser.errorText());
    if (unknown.first() == QLatin1String("password"))
        return QStringLiteral("a password is never an argument, since others could see it; use the prompt, "
                              "KORVOWEB_PASSWORD or --password-stdin");
    const QString dashes = unknown.first().size() == 1 ? QStringLiteral("-") : QStringLiteral("--");
    return QStringLiteral("unknown option ") + dashes + shownName(unknown.first())
        + QStringLiteral("; see korvoweb --help");
}

QString takeCommand(const QCommandLineParser &parser, Invocation &invocation)
{
    invocation.arguments = parser.positionalArguments().mid(1);
    QString complaint = checkCount(invocation);
    if (complaint.isEmpty())
        complaint = checkWords(invocation);
    const bool isUpload = invocation.command->name == QLatin1String("upload");
    if (complaint.isEmpty() && (isUpload || invocation.command->name == QLatin1String("download")))
        complaint = takeJobs(parser, invocation);
    if (complaint.isEmpty() && isUpload)
        complaint = takeUpload(parser, invocation);
    return complaint;
}

} // namespace

Invocation parseCommandLine(const QStringList &words)
{
    Invocation invocation;
    QString name;
    invocation.command = commandIn(words, name);
    QCommandLineParser parser;
    addOptions(parser, commonOptions());
    if (invocation.command)
        addOptions(parser, invocation.command->options);
    const bool parsed = parser.parse(words);
    invocation.common.json = parser.isSet(QStringLiteral("json"));
    if (parser.isSet(QStringLiteral("help")) && (invocation.command || name.isEmpty()))
        invocation.task = Invocation::Task::Help;
    else if (parser.isSet(QStringLiteral("version")))
        invocation.task = Invocation::Task::Version;
    else if (!name.isEmpty() && !invocation.command)
        invocation.complaint = quoted(name) + QStringLiteral(" is no command; see korvoweb --help");
    else if (!parsed)
        invocation.complaint = parserComplaint(parser);
    else if (!invocation.command)
        invocation.complaint = QStringLiteral("a command is missing; see korvoweb --help");
    else
        invocation.complaint = takeCommon(parser, invocation.common);
    if (invocation.command && invocation.isGood() && invocation.task == Invocation::Task::Run)
        invocation.complaint = takeCommand(parser, invocation);
    return invocation;
}

} // namespace Korvo::Cli
