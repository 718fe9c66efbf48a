#include "ListCommands.h"

#include "CommandLine.h"
#include "Failure.h"
#include "Output.h"
#include "Text.h"

#include <QtCore/QJsonArray>

#include <algorithm>

namespace Korvo::Cli {

using Web::KorvoWebApi;
using Web::ProjectInfo;
using Web::SingleMediaFileLinkData;
using Web::UploadStatusInfo;

namespace {

// As wide as the widest cell; the last column is left as it is.
QStringList aligned(const QVector<QStringList> &rows)
{
    QVector<int> widths(rows.isEmpty() ? 0 : rows.first().size());
    for (const QStringList &row : rows) {
        for (int column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths.at(column), displayWidth(row.at(column)));
    }
    QStringList lines;
    for (const QStringList &row : rows) {
        QString line;
        for (int column = 0; column + 1 < row.size(); ++column)
            line += fitted(row.at(column), widths.at(column)) + QLatin1String("  ");
        lines.append(line + row.last());
    }
    return lines;
}

QString dateText(const ProjectInfo &project)
{
    return project.creationDate().isValid() ? project.creationDate().toString(Qt::ISODate) : QStringLiteral("-");
}

QJsonObject jsonOf(const ProjectInfo &project)
{
    return {{QStringLiteral("id"), project.projectId()},
            {QStringLiteral("name"), project.projectName()},
            {QStringLiteral("bucket"), project.projectFolderName()},
            {QStringLiteral("created"), project.creationDate().toString(Qt::ISODate)},
            {QStringLiteral("bytes"), static_cast<qint64>(project.diskUsage())},
            {QStringLiteral("importedByWeb"), project.isImportedByWeb()}};
}

QJsonObject jsonOf(const SingleMediaFileLinkData &link)
{
    return {{QStringLiteral("name"), link.name}, {QStringLiteral("type"), link.type}, {QStringLiteral("url"), link.url}};
}

void printTable(Output &output, const QVector<QStringList> &rows)
{
    for (const QString &line : aligned(rows))
        output.print(line);
}

} // namespace

void ProjectsCommand::start()
{
    connect(&api(), &KorvoWebApi::projectInfoReceived, this, &ProjectsCommand::take);
    connect(&api(), &KorvoWebApi::queryRemoteProjectsError, this,
            [this](Web::Error error) { finish(failureOf(error, context.log)); });
    api().queryRemoteProjects();
}

// The server has no order that could be relied on.
void ProjectsCommand::take(QList<ProjectInfo> projects)
{
    std::sort(projects.begin(), projects.end(), [](const ProjectInfo &a, const ProjectInfo &b) {
        return std::make_pair(a.projectName(), a.projectId()) < std::make_pair(b.projectName(), b.projectId());
    });
    QVector<QStringList> rows{{QStringLiteral("ID"), QStringLiteral("CREATED"), QStringLiteral("SIZE"),
                               QStringLiteral("BUCKET"), QStringLiteral("NAME")}};
    QJsonArray list;
    for (const ProjectInfo &project : projects) {
        rows.append({shownName(project.projectId()), dateText(project), sizeText(static_cast<qint64>(project.diskUsage())),
                     shownName(project.projectFolderName()), shownName(project.projectName())});
        list.append(jsonOf(project));
    }
    if (projects.isEmpty())
        context.output.say(QStringLiteral("The company has no projects."));
    else
        printTable(context.output, rows);
    finish({ExitCode::Success, {}, {{QStringLiteral("projects"), list}}});
}

void StatusCommand::start()
{
    connect(&api(), &KorvoWebApi::uploadStatusInfoReceived, this, &StatusCommand::take);
    connect(&api(), &KorvoWebApi::errorOccurred, this,
            [this](Web::Error error) { finish(failureOf(error, context.log)); });
    api().queryUploadProjectStatus(context.invocation.arguments);
}

void StatusCommand::take(const QList<UploadStatusInfo> &statuses)
{
    QVector<QStringList> rows{{QStringLiteral("ID"), QStringLiteral("STATUS")}};
    QJsonArray list;
    for (const UploadStatusInfo &info : statuses) {
        rows.append({shownName(info.projectId), QString::number(info.status)});
        list.append(QJsonObject{{QStringLiteral("id"), info.projectId}, {QStringLiteral("status"), info.status}});
    }
    if (statuses.isEmpty()) {
        finish({ExitCode::NotFound, QStringLiteral("the platform knows nothing of these uploads"), {}});
        return;
    }
    printTable(context.output, rows);
    finish({ExitCode::Success, {}, {{QStringLiteral("statuses"), list}}});
}

void LinkCommand::start()
{
    connect(&api(), &KorvoWebApi::singleFileDownloadLinkReceived, this, &LinkCommand::take);
    connect(&api(), &KorvoWebApi::errorOccurred, this,
            [this](Web::Error error) { finish(failureOf(error, context.log)); });
    api().startSingleProjectFileDownload(QUuid(context.invocation.arguments.at(0)), context.invocation.arguments.at(1));
}

void LinkCommand::take(const SingleMediaFileLinkData &link)
{
    context.output.print(shownName(link.url));
    finish({ExitCode::Success, {}, jsonOf(link)});
}

void LinksCommand::start()
{
    connect(&api(), &KorvoWebApi::allProjectsMediaDownloadLinkReceived, this, &LinksCommand::take);
    connect(&api(), &KorvoWebApi::errorOccurred, this,
            [this](Web::Error error) { finish(failureOf(error, context.log)); });
    api().startAllProjectsMediaDownload(context.invocation.arguments.first());
}

void LinksCommand::take(const QList<SingleMediaFileLinkData> &links)
{
    QVector<QStringList> rows{{QStringLiteral("KIND"), QStringLiteral("NAME"), QStringLiteral("LINK")}};
    QJsonArray list;
    for (const SingleMediaFileLinkData &link : links) {
        rows.append({shownName(link.type), shownName(link.name), shownName(link.url)});
        list.append(jsonOf(link));
    }
    if (links.isEmpty())
        context.output.say(QStringLiteral("The project has no media."));
    else
        printTable(context.output, rows);
    finish({ExitCode::Success, {}, {{QStringLiteral("links"), list}}});
}

} // namespace Korvo::Cli
