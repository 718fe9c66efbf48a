#include "Database.h"

#include <sqlite3.h>

#include <stdexcept>

namespace LocalPlatform {
namespace {

constexpr int BUSY_MILLISECONDS = 5000;

constexpr const char *SCHEMA = R"(
PRAGMA journal_mode = WAL;
PRAGMA synchronous = NORMAL;
CREATE TABLE IF NOT EXISTS meta(name TEXT PRIMARY KEY, value TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS companies(id TEXT PRIMARY KEY, name TEXT NOT NULL, client_id TEXT NOT NULL UNIQUE, secret_key TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS accounts(email TEXT PRIMARY KEY COLLATE NOCASE, salt BLOB NOT NULL, hash BLOB NOT NULL,
    first_name TEXT NOT NULL, last_name TEXT NOT NULL, company_id TEXT NOT NULL, roles TEXT NOT NULL,
    second_factor TEXT NOT NULL, token_lifetime INTEGER NOT NULL);
CREATE TABLE IF NOT EXISTS tokens(token_hash BLOB PRIMARY KEY, email TEXT NOT NULL, expires INTEGER NOT NULL);
CREATE TABLE IF NOT EXISTS resets(id INTEGER PRIMARY KEY, user TEXT NOT NULL, known INTEGER NOT NULL, at TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS projects(company_id TEXT NOT NULL, project_id TEXT NOT NULL, name TEXT NOT NULL, folder TEXT NOT NULL,
    creation_date TEXT NOT NULL, bucket TEXT NOT NULL, owner TEXT NOT NULL, state INTEGER NOT NULL, import_type TEXT NOT NULL,
    ever_uploaded INTEGER NOT NULL, PRIMARY KEY(company_id, project_id));
CREATE TABLE IF NOT EXISTS buckets(name TEXT PRIMARY KEY, company_id TEXT NOT NULL, created TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS objects(id INTEGER PRIMARY KEY, bucket TEXT NOT NULL, key TEXT NOT NULL, size INTEGER NOT NULL,
    modified TEXT NOT NULL, UNIQUE(bucket, key));
CREATE TABLE IF NOT EXISTS chunks(object_id INTEGER NOT NULL, position INTEGER NOT NULL, file TEXT NOT NULL, size INTEGER NOT NULL,
    PRIMARY KEY(object_id, position)) WITHOUT ROWID;
CREATE INDEX IF NOT EXISTS chunks_by_file ON chunks(file);
CREATE TABLE IF NOT EXISTS uploads(id TEXT PRIMARY KEY, bucket TEXT NOT NULL, key TEXT NOT NULL, company_id TEXT NOT NULL,
    state TEXT NOT NULL, started TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS parts(upload_id TEXT NOT NULL, number INTEGER NOT NULL, file TEXT NOT NULL, size INTEGER NOT NULL,
    PRIMARY KEY(upload_id, number)) WITHOUT ROWID;
CREATE INDEX IF NOT EXISTS parts_by_file ON parts(file);
CREATE TABLE IF NOT EXISTS jobs(id INTEGER PRIMARY KEY, bucket TEXT NOT NULL, key TEXT NOT NULL, output_key TEXT NOT NULL,
    state TEXT NOT NULL, created TEXT NOT NULL);
)";

} // namespace

Database::Database(const std::string &path)
{
    if (sqlite3_open_v2(path.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX, nullptr) != SQLITE_OK)
        throw std::runtime_error("cannot open the database " + path);
    sqlite3_busy_timeout(handle, BUSY_MILLISECONDS);
    execute(SCHEMA);
}

Database::~Database()
{
    sqlite3_close_v2(handle);
}

void Database::execute(const char *sql)
{
    const auto guard = lock();
    char *message = nullptr;
    if (sqlite3_exec(handle, sql, nullptr, nullptr, &message) == SQLITE_OK)
        return;
    const std::string text = message ? message : "unknown";
    sqlite3_free(message);
    throw std::runtime_error("database: " + text);
}

std::int64_t Database::lastRowId() const
{
    return sqlite3_last_insert_rowid(handle);
}

int Database::changes() const
{
    return sqlite3_changes(handle);
}

Statement::Statement(Database &database, std::string_view sql) : connection(database.handle)
{
    check(sqlite3_prepare_v2(connection, sql.data(), static_cast<int>(sql.size()), &handle, nullptr));
}

Statement::~Statement()
{
    sqlite3_finalize(handle);
}

Statement &Statement::bind(std::string_view text)
{
    check(sqlite3_bind_text(handle, nextParameter++, text.empty() ? "" : text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT));
    return *this;
}

Statement &Statement::bind(std::int64_t number)
{
    check(sqlite3_bind_int64(handle, nextParameter++, number));
    return *this;
}

Statement &Statement::bindBlob(std::string_view bytes)
{
    check(sqlite3_bind_blob(handle, nextParameter++, bytes.empty() ? "" : bytes.data(), static_cast<int>(bytes.size()), SQLITE_TRANSIENT));
    return *this;
}

bool Statement::step()
{
    const int result = sqlite3_step(handle);
    if (result == SQLITE_ROW)
        return true;
    if (result != SQLITE_DONE)
        check(result);
    return false;
}

void Statement::run()
{
    while (step()) {
    }
}

std::string Statement::text(int column) const
{
    const auto *bytes = static_cast<const char *>(sqlite3_column_blob(handle, column));
    return bytes ? std::string(bytes, static_cast<std::size_t>(sqlite3_column_bytes(handle, column))) : std::string();
}

std::int64_t Statement::integer(int column) const
{
    return sqlite3_column_int64(handle, column);
}

void Statement::check(int result) const
{
    if (result != SQLITE_OK)
        throw std::runtime_error(std::string("database: ") + sqlite3_errmsg(connection));
}

Transaction::Transaction(Database &target) : database(target), guard(target.lock())
{
    database.execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction()
{
    if (!open)
        return;
    try {
        database.execute("ROLLBACK");
    } catch (const std::exception &) {
        // The failure that led here is the one to report.
        open = false;
    }
}

void Transaction::commit()
{
    database.execute("COMMIT");
    open = false;
}

} // namespace LocalPlatform
