#include "ProjectDatabase.h"

#include <QtCore/QVariant>
#include <QtCore/QVariantList>

#include <memory>

#include <sqlite3.h>

namespace Korvo::Sample {

namespace {

// The journal stays in memory, so that no second file ever appears next to the database.
constexpr char SCHEMA[] = R"sql(
PRAGMA page_size = 4096;
PRAGMA journal_mode = MEMORY;
PRAGMA synchronous = OFF;
PRAGMA user_version = 7;
CREATE TABLE project (id INTEGER PRIMARY KEY, name TEXT NOT NULL, client TEXT, started TEXT);
CREATE TABLE node (
  id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE, street TEXT,
  easting REAL, northing REAL, cover_level REAL, depth REAL);
CREATE TABLE section (
  id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE, street TEXT, material TEXT, diameter INTEGER, length REAL,
  from_node INTEGER NOT NULL REFERENCES node(id), to_node INTEGER NOT NULL REFERENCES node(id));
CREATE TABLE video (
  id INTEGER PRIMARY KEY, file_name TEXT NOT NULL UNIQUE,
  section_id INTEGER REFERENCES section(id), node_id INTEGER REFERENCES node(id));
CREATE TABLE observation (
  id INTEGER PRIMARY KEY, section_id INTEGER REFERENCES section(id), node_id INTEGER REFERENCES node(id),
  position REAL, code TEXT NOT NULL, description TEXT, clock_from INTEGER, clock_to INTEGER, picture TEXT);
CREATE INDEX observation_by_section ON observation(section_id, position);
CREATE INDEX observation_by_node ON observation(node_id, position);
)sql";

class Database
{
public:
    bool open(const QString &path)
    {
        sqlite3 *opened = nullptr;
        const int result = sqlite3_open(path.toUtf8().constData(), &opened);
        handle.reset(opened);
        return result == SQLITE_OK;
    }

    bool execute(const char *statements)
    {
        return sqlite3_exec(handle.get(), statements, nullptr, nullptr, nullptr) == SQLITE_OK;
    }

    bool insert(const QString &table, const QVariantList &values)
    {
        QStringList places;
        for (int index = 0; index < values.size(); ++index)
            places.append(QStringLiteral("?"));
        const QString text = QStringLiteral("INSERT INTO ") + table + QStringLiteral(" VALUES (")
            + places.join(QStringLiteral(", ")) + QLatin1Char(')');

        sqlite3_stmt *prepared = nullptr;
        if (sqlite3_prepare_v2(handle.get(), text.toUtf8().constData(), -1, &prepared, nullptr) != SQLITE_OK)
            return false;
        const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt *)> statement(prepared, sqlite3_finalize);
        for (int index = 0; index < values.size(); ++index)
            bind(prepared, index + 1, values.at(index));
        return sqlite3_step(prepared) == SQLITE_DONE;
    }

    QString errorString() const { return QString::fromUtf8(sqlite3_errmsg(handle.get())); }

private:
    static void bind(sqlite3_stmt *statement, int place, const QVariant &value)
    {
        if (!value.isValid()) {
            sqlite3_bind_null(statement, place);
        } else if (value.type() == QVariant::Double) {
            sqlite3_bind_double(statement, place, value.toDouble());
        } else if (value.type() == QVariant::String) {
            const QByteArray text = value.toString().toUtf8();
            sqlite3_bind_text(statement, place, text.constData(), text.size(), SQLITE_TRANSIENT);
        } else {
            sqlite3_bind_int64(statement, place, value.toLongLong());
        }
    }

    std::unique_ptr<sqlite3, int (*)(sqlite3 *)> handle{nullptr, sqlite3_close};
};

qlonglong rowId(std::size_t index)
{
    return static_cast<qlonglong>(index) + 1;
}

QVariant reference(bool present, std::size_t index)
{
    return present ? QVariant(rowId(index)) : QVariant();
}

QVariant textOrNull(const QString &text)
{
    return text.isEmpty() ? QVariant() : QVariant(text);
}

bool insertNetwork(Database &database, const ProjectPlan &plan)
{
    bool good = database.insert(QStringLiteral("project"),
                                {1, plan.name, QStringLiteral("Müller & Söhne Kanaltechnik"), QStringLiteral("2024-03-18")});
    for (std::size_t index = 0; good && index < plan.nodes.size(); ++index) {
        const Node &node = plan.nodes[index];
        good = database.insert(QStringLiteral("node"), {rowId(index), node.name, node.street, node.easting, node.northing,
                                                        node.coverLevel, node.depth});
    }
    for (std::size_t index = 0; good && index < plan.sections.size(); ++index) {
        const Section &section = plan.sections[index];
        good = database.insert(QStringLiteral("section"),
                               {rowId(index), section.name, section.street, section.material, section.diameter,
                                section.length, rowId(section.fromNode), rowId(section.toNode)});
    }
    return good;
}

bool insertInspections(Database &database, const ProjectPlan &plan)
{
    bool good = true;
    for (std::size_t index = 0; good && index < plan.videos.size(); ++index) {
        const Media &video = plan.videos[index];
        good = database.insert(QStringLiteral("video"), {rowId(index), video.path.section(QLatin1Char('/'), -1),
                                                         reference(video.owner == Owner::Section, video.ownerIndex),
                                                         reference(video.owner == Owner::Node, video.ownerIndex)});
    }
    for (std::size_t index = 0; good && index < plan.observations.size(); ++index) {
        const Observation &seen = plan.observations[index];
        good = database.insert(QStringLiteral("observation"),
                               {rowId(index), reference(seen.owner == Owner::Section, seen.ownerIndex),
                                reference(seen.owner == Owner::Node, seen.ownerIndex), seen.position, seen.code, seen.text,
                                seen.clockFrom, seen.clockTo, textOrNull(seen.picture)});
    }
    return good;
}

} // namespace

bool writeDatabase(ProjectFolder &folder, const QString &relativePath, const ProjectPlan &plan)
{
    const QString path = folder.makeRoomFor(relativePath);
    if (path.isEmpty())
        return false;
    Database database;
    const bool good = database.open(path) && database.execute(SCHEMA) && database.execute("BEGIN")
        && insertNetwork(database, plan) && insertInspections(database, plan) && database.execute("COMMIT");
    return good || folder.fail(QStringLiteral("cannot write ") + path + QStringLiteral(": ") + database.errorString());
}

} // namespace Korvo::Sample
