#pragma once

#include "ProjectListModel.h"

#include <NQKorvoWeb/KorvoWebApi.h>

#include <QtCore/QObject>
#include <QtCore/QUrl>

namespace Korvo::Qml {

/// What QML cannot do by itself: the rest of the user interface talks to the facade, api, directly.
class Host : public QObject
{
    Q_OBJECT
    Q_PROPERTY(Korvo::Web::KorvoWebApi *api READ api CONSTANT)
    Q_PROPERTY(Korvo::Qml::ProjectListModel *projects READ projects CONSTANT)
    /// True once the platform has confirmed the newest upload.
    Q_PROPERTY(bool uploadConfirmed READ isUploadConfirmed NOTIFY uploadConfirmedChanged)

public:
    explicit Host(QObject *parent = nullptr);

    /// Makes the facade and its enumerations known to QML, as KorvoWebApi in the module Korvo.Web 1.0, and the window too.
    static void registerTypes();

    Web::KorvoWebApi *api() { return &facade; }
    ProjectListModel *projects() { return &projectModel; }
    bool isUploadConfirmed() const { return uploadConfirmed; }

    /// Sends the code of the second factor, and keeps it as long as the library needs it.
    Q_INVOKABLE void sendCode(const QString &newCode);
    /// Uploads a folder as a new project; its id, 0 when it is no folder.
    Q_INVOKABLE int uploadFolder(const QUrl &folder);
    /// The address of a local path as a user types it.
    Q_INVOKABLE static QUrl addressOf(const QString &path) { return QUrl::fromLocalFile(path); }
    /// A failure in words.
    Q_INVOKABLE static QString errorText(int error);

Q_SIGNALS:
    void uploadConfirmedChanged();

private:
    void askForConfirmation(unsigned int id);
    void takeStatuses(const QList<Web::UploadStatusInfo> &statuses);
    void setUploadConfirmed(bool confirmed);

    Web::KorvoWebApi facade;
    ProjectListModel projectModel;
    QString code;
    QString uploadedProject;
    bool uploadConfirmed = false;
};

} // namespace Korvo::Qml
