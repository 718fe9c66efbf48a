#include "handles/ProjectResponses.h"

#include "handles/ReplyDate.h"
#include "handles/XmlReply.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QJsonValue>

#include <utility>

namespace Korvo::Web {

namespace {

// Nothing here says who imported the project: the flag keeps its default.
void readField(ProjectInfo &project, const QStringRef &name, QXmlStreamReader &reader)
{
    if (name == QLatin1String("ProjectName")) {
        project.setProjectName(reader.readElementText());
    } else if (name == QLatin1String("ProjectDate")) {
        project.setCreationDateName(projectDateFrom(reader.readElementText()));
    } else if (name == QLatin1String("ProjectId")) {
        project.setProjectId(reader.readElementText());
    } else if (name == QLatin1String("ProjectFolderName")) {
        project.setProjectFolderName(reader.readElementText());
    } else if (name == QLatin1String("DiskUsage")) {
        project.setDiskUsage(reader.readElementText().toULongLong());
    }
}

void readField(SingleMediaFileLinkData &link, const QStringRef &name, QXmlStreamReader &reader)
{
    if (name == QLatin1String("url")) {
        link.url = reader.readElementText();
    } else if (name == QLatin1String("type")) {
        link.type = reader.readElementText();
    } else if (name == QLatin1String("name")) {
        link.name = reader.readElementText();
    }
}

template <typename Entry>
QList<Entry> entriesOf(const QString &reply, QLatin1String entryElement)
{
    QList<Entry> entries;
    forEachElement(reply, [&](const QStringRef &name, QXmlStreamReader &reader) {
        if (name == entryElement) {
            entries.append(Entry());
        } else if (!entries.isEmpty()) {
            readField(entries.last(), name, reader);
        }
    });
    return entries;
}

UploadStatusInfo statusFrom(const QJsonObject &entry)
{
    UploadStatusInfo info;
    info.status = entry.value(QLatin1String("status")).toInt();
    info.projectId = entry.value(QLatin1String("projectId")).toString();
    return info;
}

} // namespace

void BeginUploadProjectResponse::parse(const QString &text)
{
    setValues({lastText(text, QLatin1String("BucketName"))});
}

void UserProjectsResponse::parse(const QString &text)
{
    setValues({entriesOf<ProjectInfo>(text, QLatin1String("ProjectInfo"))});
}

void UploadProjectsStatusResponse::parse(const QString &text)
{
    UploadProjectsStatusValues answer;
    const QJsonArray entries = QJsonDocument::fromJson(text.toUtf8()).array();
    for (const QJsonValue &entry : entries) {
        answer.statuses.append(statusFrom(entry.toObject()));
    }
    setValues(std::move(answer));
}

void SingleProjectFileDownloadResponse::parse(const QString &text)
{
    setValues({entriesOf<SingleMediaFileLinkData>(text, QLatin1String("media-item"))});
}

} // namespace Korvo::Web
