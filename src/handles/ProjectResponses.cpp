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

const QLatin1String PROJECT_ELEMENT("ProjectInfo");

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

template <typename Reply, typename Entry>
auto readEntries(const Reply &reply, QLatin1String entryElement, QList<Entry> *entries)
{
    return forEachElement(reply, [&](const QStringRef &name, QXmlStreamReader &reader) {
        if (name == entryElement) {
            entries->append(Entry());
        } else if (!entries->isEmpty()) {
            readField(entries->last(), name, reader);
        }
    });
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
    UserProjectsValues list;
    readEntries(text, PROJECT_ELEMENT, &list.projects);
    setValues(std::move(list));
}

void UserProjectsResponse::parse(const QByteArray &utf8)
{
    const QByteArray reply = utf8.left(int(qstrlen(utf8.constData()))); // ends at the first zero byte, as its text does
    UserProjectsValues list;
    if (readEntries(reply, PROJECT_ELEMENT, &list.projects))
        setValues(std::move(list));
    else
        parse(QString::fromUtf8(reply));
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
    SingleProjectFileDownloadValues answer;
    readEntries(text, QLatin1String("media-item"), &answer.links);
    setValues(std::move(answer));
}

} // namespace Korvo::Web
