#include "api/ProjectInfo.h"

#include <QtCore/QSharedData>

namespace Korvo::Web {

class ProjectInfoData : public QSharedData
{
public:
    QString projectName;
    QString projectId;
    QString projectFolderName;
    QDateTime creationDate;
    unsigned long long diskUsage = 0;
    // True on purpose: hosts count on it where the server does not say.
    bool isImportedByWeb = true;
};

ProjectInfo::ProjectInfo()
    : data(new ProjectInfoData)
{
}

ProjectInfo::ProjectInfo(const QString &projectName, const QString &projectId, const QString &projectFolderName,
                         const QDateTime &creationDate, unsigned long long diskUsage, bool isImportedByWeb)
    : data(new ProjectInfoData)
{
    data->projectName = projectName;
    data->projectId = projectId;
    data->projectFolderName = projectFolderName;
    data->creationDate = creationDate;
    data->diskUsage = diskUsage;
    data->isImportedByWeb = isImportedByWeb;
}

ProjectInfo::ProjectInfo(const ProjectInfo &other) = default;
ProjectInfo &ProjectInfo::operator=(const ProjectInfo &other) = default;
ProjectInfo::~ProjectInfo() = default;

QString ProjectInfo::projectName() const
{
    return data->projectName;
}

QString ProjectInfo::projectId() const
{
    return data->projectId;
}

QString ProjectInfo::projectFolderName() const
{
    return data->projectFolderName;
}

QDateTime ProjectInfo::creationDate() const
{
    return data->creationDate;
}

unsigned long long ProjectInfo::diskUsage() const
{
    return data->diskUsage;
}

bool ProjectInfo::isImportedByWeb() const
{
    return data->isImportedByWeb;
}

void ProjectInfo::setProjectName(const QString &projectName)
{
    data->projectName = projectName;
}

void ProjectInfo::setProjectId(const QString &projectId)
{
    data->projectId = projectId;
}

void ProjectInfo::setProjectFolderName(const QString &projectFolderName)
{
    data->projectFolderName = projectFolderName;
}

void ProjectInfo::setCreationDateName(const QDateTime &creationDate)
{
    data->creationDate = creationDate;
}

void ProjectInfo::setDiskUsage(unsigned long long diskUsage)
{
    data->diskUsage = diskUsage;
}

void ProjectInfo::setIsImportedByWeb(bool isImportedByWeb)
{
    data->isImportedByWeb = isImportedByWeb;
}

bool ProjectInfo::operator==(const ProjectInfo &other) const
{
    return data->projectId == other.data->projectId && data->isImportedByWeb == other.data->isImportedByWeb;
}

} // namespace Korvo::Web
