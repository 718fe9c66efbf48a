#pragma once

#include "handles/Response.h"

#include <NQKorvoWeb/ProjectInfo.h>
#include <NQKorvoWeb/SingleMediaFileLinkData.h>
#include <NQKorvoWeb/UploadStatusInfo.h>

#include <QtCore/QList>
#include <QtCore/QString>

namespace Korvo::Web {

struct BeginUploadProjectValues
{
    QString bucketName;
};

/// Answer to the announcement of an upload.
class BeginUploadProjectResponse : public ResponseOf<BeginUploadProjectValues>
{
public:
    QString bucketName() const { return values().bucketName; }

    void parse(const QString &text);
};

struct UserProjectsValues
{
    QList<ProjectInfo> projects;
};

/// The projects of the user's company, in the server's order.
class UserProjectsResponse : public ResponseOf<UserProjectsValues>
{
public:
    QList<ProjectInfo> projects() const { return values().projects; }

    void parse(const QString &text);
    /// The same from the reply's UTF-8, which is quicker for a long list.
    void parse(const QByteArray &utf8);
};

struct UploadProjectsStatusValues
{
    QList<UploadStatusInfo> statuses;
};

/// What has become of earlier uploads.
class UploadProjectsStatusResponse : public ResponseOf<UploadProjectsStatusValues>
{
public:
    QList<UploadStatusInfo> statuses() const { return values().statuses; }

    void parse(const QString &text);
};

struct SingleProjectFileDownloadValues
{
    QList<SingleMediaFileLinkData> links;
};

/// Links to media files: one, or all of a project.
class SingleProjectFileDownloadResponse : public ResponseOf<SingleProjectFileDownloadValues>
{
public:
    QList<SingleMediaFileLinkData> links() const { return values().links; }

    void parse(const QString &text);
};

} // namespace Korvo::Web

Q_DECLARE_METATYPE(Korvo::Web::BeginUploadProjectResponse)
Q_DECLARE_METATYPE(Korvo::Web::UserProjectsResponse)
Q_DECLARE_METATYPE(Korvo::Web::UploadProjectsStatusResponse)
Q_DECLARE_METATYPE(Korvo::Web::SingleProjectFileDownloadResponse)
