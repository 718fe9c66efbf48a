#include "CommandTable.h"

#include <algorithm>

namespace Korvo::Cli {

namespace {

const OptionInfo JOBS{QStringLiteral("jobs"), QStringLiteral("N"),
                      QStringLiteral("files on their way at once, 1 to 6 (default 3; 1 for qz and quickview)")};

CommandInfo loginCommand()
{
    return {QStringLiteral("login"), {}, QStringLiteral("check the credentials; print user, company and role"), {}, {},
            QStringLiteral("korvoweb login --user inspector@korvo.example")};
}

CommandInfo projectsCommand()
{
    return {QStringLiteral("projects"), {}, QStringLiteral("list the projects of the user's company"),
            QStringLiteral("Columns: id, creation date, size, folder name (BUCKET of \"download\"), name."), {},
            QStringLiteral("korvoweb projects --json")};
}

CommandInfo uploadCommand()
{
    return {QStringLiteral("upload"), {QStringLiteral("FOLDER")}, QStringLiteral("upload a project folder"),
            QStringLiteral("Hidden files and \"*.xml_bak*\" are left out. Any failure ends the whole upload."),
            {{QStringLiteral("id"), QStringLiteral("ID"),
              QStringLiteral("id of the project, new or known (a UUID for quickview; qz makes its own)")},
             {QStringLiteral("name"), QStringLiteral("NAME"), QStringLiteral("name shown to users")},
             {QStringLiteral("created"), QStringLiteral("DATE"),
              QStringLiteral("creation date, 2026-11-21 or 2026-11-21T10:30:00, taken for UTC")},
             {QStringLiteral("kind"), QStringLiteral("KIND"), QStringLiteral("standard (default), qz or quickview")},
             JOBS,
             {QStringLiteral("manhole-media"), QStringLiteral("FILE"),
              QStringLiteral("quickview: relative paths of the media of manholes, one a line")}},
            QStringLiteral("korvoweb upload ./Nordstadt --id 6f9d0c52-7a6a-4f7e-9a57-0d2f1f2b8f11 --name Nordstadt "
                           "--created 2026-11-21")};
}

CommandInfo downloadCommand()
{
    return {QStringLiteral("download"), {QStringLiteral("ID"), QStringLiteral("BUCKET"), QStringLiteral("FOLDER")},
            QStringLiteral("download a project into a new or empty folder"),
            QStringLiteral("ID and BUCKET as listed by \"projects\". A download that is interrupted removes FOLDER again."),
            {{QStringLiteral("jobs"), QStringLiteral("N"), QStringLiteral("files on their way at once, 1 to 6 (default 3)")}},
            QStringLiteral("korvoweb download 6f9d0c52-7a6a-4f7e-9a57-0d2f1f2b8f11 Nordstadt ./Nordstadt-copy")};
}

CommandInfo statusCommand()
{
    return {QStringLiteral("status"), {QStringLiteral("ID...")},
            QStringLiteral("show what has become of earlier uploads, as the server numbers it"), {}, {},
            QStringLiteral("korvoweb status 6f9d0c52-7a6a-4f7e-9a57-0d2f1f2b8f11")};
}

CommandInfo quickviewCommand()
{
    return {QStringLiteral("quickview"),
            {QStringLiteral("project|survey|manhole"), QStringLiteral("ID"), QStringLiteral("FILE")},
            QStringLiteral("fetch Quickview data into a file"),
            QStringLiteral("FILE is replaced once all of it has arrived."), {},
            QStringLiteral("korvoweb quickview survey 6f9d0c52-7a6a-4f7e-9a57-0d2f1f2b8f11 survey.json")};
}

CommandInfo linkCommand()
{
    return {QStringLiteral("link"), {QStringLiteral("ID"), QStringLiteral("NAME")},
            QStringLiteral("print the link of one media file of a Quickview project"), {}, {},
            QStringLiteral("korvoweb link 6f9d0c52-7a6a-4f7e-9a57-0d2f1f2b8f11 S01.mp4")};
}

CommandInfo linksCommand()
{
    return {QStringLiteral("links"), {QStringLiteral("ID")}, QStringLiteral("print the links of all media of a project"),
            QStringLiteral("Columns: kind, name, link."), {},
            QStringLiteral("korvoweb links 6f9d0c52-7a6a-4f7e-9a57-0d2f1f2b8f11")};
}

CommandInfo getCommand()
{
    return {QStringLiteral("get"), {QStringLiteral("URL"), QStringLiteral("FILE")},
            QStringLiteral("fetch the file behind a link, without logging in"),
            QStringLiteral("FILE is replaced once all of it has arrived."), {},
            QStringLiteral("korvoweb get \"$(korvoweb link 6f9d0c52-7a6a-4f7e-9a57-0d2f1f2b8f11 S01.mp4)\" S01.mp4")};
}

CommandInfo resetPasswordCommand()
{
    return {QStringLiteral("reset-password"), {QStringLiteral("USER")},
            QStringLiteral("ask the platform to send a user a new password"),
            QStringLiteral("The platform does not confirm it; only a failure is reported."), {},
            QStringLiteral("korvoweb reset-password inspector@korvo.example")};
}

} // namespace

bool CommandInfo::takesMore() const
{
    return !arguments.isEmpty() && arguments.last().endsWith(QLatin1String("..."));
}

const QVector<CommandInfo> &commands()
{
    static const QVector<CommandInfo> COMMANDS
        = {loginCommand(),     projectsCommand(), uploadCommand(), downloadCommand(), statusCommand(),
           quickviewCommand(), linkCommand(),     linksCommand(),  getCommand(),      resetPasswordCommand()};
    return COMMANDS;
}

const CommandInfo *findCommand(const QString &name)
{
    const auto &all = commands();
    const auto found = std::find_if(all.begin(), all.end(), [&name](const CommandInfo &c) { return c.name == name; });
    return found == all.end() ? nullptr : &*found;
}

const QVector<OptionInfo> &commonOptions()
{
    static const QVector<OptionInfo> OPTIONS = {
        {QStringLiteral("user"), QStringLiteral("NAME"), QStringLiteral("user name (or KORVOWEB_USER)")},
        {QStringLiteral("password-stdin"), {}, QStringLiteral("read the password, one line, from standard input")},
        {QStringLiteral("code-stdin"), {},
         QStringLiteral("read the second factor, one line, from standard input, after the password")},
        {QStringLiteral("proxy"), QStringLiteral("HOST:PORT"), QStringLiteral("HTTP proxy; without it, the system's")},
        {QStringLiteral("ca"), QStringLiteral("FILE"), QStringLiteral("trust the authorities in FILE (PEM) as well")},
        {QStringLiteral("stall-timeout"), QStringLiteral("SECONDS"),
         QStringLiteral("give up after so long without progress (default 300; 0: never)")},
        {QStringLiteral("json"), {}, QStringLiteral("one JSON object a line for every event, the last with the result")},
        {QStringLiteral("quiet"), {}, QStringLiteral("no progress; results and failures only")},
        {QStringLiteral("verbose"), {}, QStringLiteral("the library's log on standard error")},
        {QStringLiteral("help"), {}, QStringLiteral("this text; after a command, more about it")},
        {QStringLiteral("version"), {}, QStringLiteral("the version")},
    };
    return OPTIONS;
}

} // namespace Korvo::Cli
