#pragma once

#include <NQKorvoWeb/KorvoWebApi.h>

#include <QtCore/QStringList>

namespace Korvo::Web::TestSupport {

/// A facade that writes down its orders and carries out none: tests emit its signals themselves, in the order they want.
class FakeApi : public KorvoWebApi
{
public:
    QStringList orders;

    unsigned int uploadProject(const QString &projectId, const QString &projectName, const QString &projectPath,
                               const QDateTime &created, int maxSimultaneousUploads) override
    {
        orders.append(QStringList{QStringLiteral("upload"), projectId, projectName, projectPath,
                                  created.toString(Qt::ISODate), QString::number(maxSimultaneousUploads)}
                          .join(QLatin1Char('|')));
        return ++lastUpload;
    }

    unsigned int uploadQZProject(const QString &projectName, const QString &projectPath,
                                 const QDateTime &created) override
    {
        orders.append(
            QStringList{QStringLiteral("uploadQZ"), projectName, projectPath, created.toString(Qt::ISODate)}.join(
                QLatin1Char('|')));
        return ++lastUpload;
    }

    unsigned int uploadQuickviewProject(const QUuid &projectId, const QString &projectName, const QString &projectPath,
                                        const QDateTime &created, MediaNamesList manholesMedia) override
    {
        orders.append(QStringList{QStringLiteral("uploadQuickview"), projectId.toString(QUuid::WithoutBraces),
                                  projectName, projectPath, created.toString(Qt::ISODate),
                                  manholesMedia.values().join(QLatin1Char(','))}
                          .join(QLatin1Char('|')));
        return ++lastUpload;
    }

    unsigned int downloadProject(const QString &projectId, const QString &folderName, const QString &path,
                                 int maxSimultaneousDownloads) override
    {
        orders.append(QStringList{QStringLiteral("download"), projectId, folderName, path,
                                  QString::number(maxSimultaneousDownloads)}
                          .join(QLatin1Char('|')));
        return ++lastDownload;
    }

    void pauseUpload(unsigned int id) override { note("pauseUpload", id); }
    void resumeUpload(unsigned int id) override { note("resumeUpload", id); }
    void abortUpload(unsigned int id) override { note("abortUpload", id); }
    void pauseDownload(unsigned int id) override { note("pauseDownload", id); }
    void resumeDownload(unsigned int id) override { note("resumeDownload", id); }
    void abortDownload(unsigned int id) override { note("abortDownload", id); }

    void queryRemoteProjects() override { orders.append(QStringLiteral("projects")); }

    void queryUploadProjectStatus(const QList<QString> &projectIds) override
    {
        orders.append(QStringLiteral("status ") + QStringList(projectIds).join(QLatin1Char(',')));
    }

private:
    void note(const char *order, unsigned int id)
    {
        orders.append(QStringLiteral("%1 %2").arg(QString::fromLatin1(order)).arg(id));
    }

    unsigned int lastUpload = 0;
    unsigned int lastDownload = 0;
};

} // namespace Korvo::Web::TestSupport
