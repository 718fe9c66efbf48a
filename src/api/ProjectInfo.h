#pragma once

#include <NQKorvoWeb/KorvoWebExport.h>

#include <QtCore/QDateTime>
#include <QtCore/QMetaType>
#include <QtCore/QSharedDataPointer>
#include <QtCore/QString>

namespace Korvo::Web {

class ProjectInfoData;

/// One remote project, as listed by KorvoWebApi::queryRemoteProjects().
///
/// An implicitly shared value: copies are cheap, a setter changes its own copy only. Copies may be used on different
/// threads, one and the same object on one thread at a time.
class NQKORVOWEB_EXPORT ProjectInfo
{
public:
    /// Empty texts, no date, 0 bytes. It claims to be imported by the web: hosts rely on that default.
    ProjectInfo();

    /// @param projectName        name shown to users
    /// @param projectId          id to be passed to KorvoWebApi::downloadProject(); name before id
    /// @param projectFolderName  folder name to be passed to KorvoWebApi::downloadProject()
    /// @param creationDate       when the project was created
    /// @param diskUsage          size of the project on the platform, in bytes
    /// @param isImportedByWeb    whether the project came to the platform through the web
    ProjectInfo(const QString &projectName, const QString &projectId, const QString &projectFolderName,
                const QDateTime &creationDate, unsigned long long diskUsage, bool isImportedByWeb);

    // No moves on purpose: a value that was moved from would have no data, and a copy costs one counter.
    /// Shares the data of @p other until one of the two is changed.
    ProjectInfo(const ProjectInfo &other);
    /// Shares the data of @p other until one of the two is changed.
    ProjectInfo &operator=(const ProjectInfo &other);
    ~ProjectInfo();

    /// Name shown to users.
    QString projectName() const;
    /// Id of the project, first argument of KorvoWebApi::downloadProject().
    QString projectId() const;
    /// Name of the project's folder on the platform, second argument of KorvoWebApi::downloadProject().
    QString projectFolderName() const;
    /// When the project was created, as local time. Invalid when it is not known, or when the server writes it with a
    /// fraction of a second or a zone.
    QDateTime creationDate() const;
    /// Size of the project on the platform, in bytes.
    unsigned long long diskUsage() const;
    /// Whether the project came to the platform through the web. True for every listed project: the list does not tell.
    bool isImportedByWeb() const;

    /// Sets the name shown to users.
    void setProjectName(const QString &projectName);

    /// Sets the id.
    void setProjectId(const QString &projectId);
    /// Sets the name of the project's folder.
    void setProjectFolderName(const QString &projectFolderName);
    /// Sets the creation date; the odd name is the published one.
    void setCreationDateName(const QDateTime &creationDate);
    /// Sets the size, in bytes.
    void setDiskUsage(unsigned long long diskUsage);
    /// Sets whether the project came to the platform through the web.
    void setIsImportedByWeb(bool isImportedByWeb);

    /// True when id and origin are the same: name, folder, date and size change while it stays the same project.
    bool operator==(const ProjectInfo &other) const;

private:
    QSharedDataPointer<ProjectInfoData> data;
};

} // namespace Korvo::Web

Q_DECLARE_TYPEINFO(Korvo::Web::ProjectInfo, Q_MOVABLE_TYPE);
Q_DECLARE_METATYPE(Korvo::Web::ProjectInfo)
