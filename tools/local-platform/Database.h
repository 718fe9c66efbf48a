#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace LocalPlatform {

/// One SQLite connection for the whole program; whoever uses it holds its lock.
class Database
{
public:
    explicit Database(const std::string &path);
    ~Database();
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    std::unique_lock<std::recursive_mutex> lock() { return std::unique_lock(mutex); }
    void execute(const char *sql);
    std::int64_t lastRowId() const;
    int changes() const;

private:
    friend class Statement;

    std::recursive_mutex mutex;
    sqlite3 *handle = nullptr;
};

/// A prepared statement; bind() fills the parameters from left to right. Failures throw std::runtime_error.
class Statement
{
public:
    Statement(Database &database, std::string_view sql);
    ~Statement();
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;

    Statement &bind(std::string_view text);
    Statement &bind(std::int64_t number);
    Statement &bindBlob(std::string_view bytes);

    /// True while there is a row.
    bool step();
    void run();

    std::string text(int column) const;
    std::int64_t integer(int column) const;

private:
    void check(int result) const;

    sqlite3 *connection;
    sqlite3_stmt *handle = nullptr;
    int nextParameter = 1;
};

/// Rolls back unless committed. Holds the lock of the database as long as it lives.
class Transaction
{
public:
    explicit Transaction(Database &target);
    ~Transaction();
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;

    void commit();

private:
    Database &database;
    std::unique_lock<std::recursive_mutex> guard;
    bool open = true;
};

} // namespace LocalPlatform
