#include "Stage.h"

#include "flow/Folders.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QUuid>

namespace Korvo::Cli::Test {

using Web::TestSupport::randomBytes;
using Web::TestSupport::writeFile;

namespace {

constexpr int LIMIT_MILLISECONDS = 20000;
constexpr int MEGABYTE = 1000 * 1000;

} // namespace

const QString Stage::USER = QStringLiteral("inspector@korvo.example");
const QString Stage::PASSWORD = QStringLiteral("Camera 12%1+Kanal");
const QString Stage::SECURE_USER = QStringLiteral("secure@korvo.example");
const QString Stage::SECURE_PASSWORD = QStringLiteral("Second-Factor-1");
const QString Stage::CODE = QStringLiteral("123456");

bool Stage::start(const QStringList &options)
{
    return platform.start(QStringList{QStringLiteral("--no-sync")} + options);
}

Result Stage::run(const QStringList &arguments, const QByteArray &input)
{
    return Test::run(withNetwork(arguments), environment(), input);
}

QStringList Stage::withNetwork(const QStringList &arguments) const
{
    return arguments
        + QStringList{QStringLiteral("--proxy"), QStringLiteral("127.0.0.1:%1").arg(platform.proxyPort()),
                      QStringLiteral("--ca"), QString::fromStdString(platform.authority())};
}

QProcessEnvironment Stage::environment(const QString &user, const QString &password) const
{
    QProcessEnvironment environment = plainEnvironment();
    environment.insert(QStringLiteral("KORVOWEB_USER"), user);
    environment.insert(QStringLiteral("KORVOWEB_PASSWORD"), password);
    return environment;
}

QString Stage::makeProject(const QString &name)
{
    const QString root = path(name);
    const bool written = writeFile(root, QStringLiteral("project.xml"), "<Project/>")
        && writeFile(root, QStringLiteral("Nürnberg Süd.db3"), randomBytes(30000, 1))
        && writeFile(root, QStringLiteral("Dokumente/Lage & Plan 100%.txt"), "Plan")
        && writeFile(root, QStringLiteral("Bilder/S01.jpg"), randomBytes(20000, 2))
        && writeFile(root, QStringLiteral("Filme/S01.mp4"), randomBytes(5 * MEGABYTE, 3));
    return written ? root : QString();
}

QString Stage::makeLargeProject(const QString &name, int megabytes)
{
    const QString root = path(name);
    const bool written = writeFile(root, QStringLiteral("Filme/S01.mp4"), randomBytes(megabytes * MEGABYTE, 4));
    return written ? root : QString();
}

QStringList Stage::uploadArguments(const QString &folder, const QString &id)
{
    return {QStringLiteral("upload"), folder, QStringLiteral("--id"), id, QStringLiteral("--name"),
            QStringLiteral("Nordstadt"), QStringLiteral("--created"), QStringLiteral("2026-11-21")};
}

QString Stage::newId()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces);
}

void Stage::addProject(const QString &id, const QString &name, const nlohmann::json &objects)
{
    platform.control("POST", "projects", {{"projectId", id.toStdString()}, {"name", name.toStdString()}, {"objects", objects}});
}

nlohmann::json Stage::entriesSince() const
{
    return platform.control("GET", "journal?since=" + std::to_string(seenEntries));
}

QStringList Stage::newRequests()
{
    QStringList routes;
    for (const auto &entry : entriesSince()) {
        seenEntries = entry["number"].get<std::int64_t>();
        if (entry["status"].get<int>() < 300)
            routes.append(QString::fromStdString(entry["route"].get<std::string>()));
    }
    return routes;
}

int Stage::statusOf(const QString &id)
{
    const auto state = platform.control("GET", "state");
    for (const auto &project : state["projects"]) {
        if (project["projectId"].get<std::string>() == id.toStdString())
            return project["status"].get<int>();
    }
    return -1;
}

bool Stage::waitForRequest(const QString &route)
{
    const QDeadlineTimer deadline(LIMIT_MILLISECONDS);
    while (!deadline.hasExpired()) {
        for (const auto &entry : entriesSince()) {
            if (entry["route"].get<std::string>() == route.toStdString())
                return true;
        }
    }
    return false;
}

} // namespace Korvo::Cli::Test
