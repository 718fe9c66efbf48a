#pragma once

#include "CommandRunner.h"
#include "PlatformProcess.h"

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>

namespace Korvo::Cli::Test {

/// A platform, a user and a folder to play in.
class Stage
{
public:
    /// Accounts of the local platform.
    static const QString USER;
    static const QString PASSWORD;
    static const QString SECURE_USER;
    static const QString SECURE_PASSWORD;
    static const QString CODE;

    bool start(const QStringList &options = {});

    /// As the user without second factor.
    Result run(const QStringList &arguments, const QByteArray &input = {});
    QStringList withNetwork(const QStringList &arguments) const;
    QProcessEnvironment environment(const QString &user = USER, const QString &password = PASSWORD) const;

    QString folder() const { return temporary.path(); }
    QString path(const QString &name) const { return temporary.path() + QLatin1Char('/') + name; }
    /// A project folder with some of everything; its path.
    QString makeProject(const QString &name);
    /// One file of @p megabytes in a folder.
    QString makeLargeProject(const QString &name, int megabytes);
    static QStringList uploadArguments(const QString &folder, const QString &id);
    static QString newId();

    /// Makes a project with objects on the platform.
    void addProject(const QString &id, const QString &name, const nlohmann::json &objects);
    /// Routes of the requests that were answered well since the last call.
    QStringList newRequests();
    /// As the platform numbers it; -1 when it does not know the project.
    int statusOf(const QString &id);
    /// Waits until @p route has been asked for since the last newRequests().
    bool waitForRequest(const QString &route);

    PlatformTest::PlatformProcess platform;

private:
    nlohmann::json entriesSince() const;

    QTemporaryDir temporary;
    std::int64_t seenEntries = 0;
};

} // namespace Korvo::Cli::Test
