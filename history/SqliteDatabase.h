#pragma once

#include <QString>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace tallowmere {

// What one step of a statement gave: a row to read, the end, or a failure (the connection's
// error code and message say which).
enum class SqliteStep { row, done, error };

// One prepared statement; finalized with the object.
class SqliteStatement {
public:
    SqliteStatement() = default;
    explicit SqliteStatement(sqlite3_stmt* statement) : statement_(statement) {}
    ~SqliteStatement();
    SqliteStatement(SqliteStatement&& other) noexcept;
    SqliteStatement& operator=(SqliteStatement&& other) noexcept;
    SqliteStatement(const SqliteStatement&) = delete;
    SqliteStatement& operator=(const SqliteStatement&) = delete;

    bool valid() const { return statement_ != nullptr; }
    explicit operator bool() const { return valid(); }

    // Parameters count from 1. Text is copied by SQLite, so a temporary is safe to pass.
    void bind(int index, std::int64_t value);
    void bind(int index, std::string_view text);
    void bind(int index, const QString& text);

    SqliteStep step();
    // Resets for the next execution; the bindings are replaced by the next bind calls.
    void reset();

    // Columns count from 0.
    std::int64_t columnInt64(int column) const;
    // None for NULL.
    std::optional<QString> columnText(int column) const;

private:
    sqlite3_stmt* statement_ = nullptr;
};

// One connection; closed with the object.
class SqliteDatabase {
public:
    SqliteDatabase() = default;
    ~SqliteDatabase();
    SqliteDatabase(SqliteDatabase&& other) noexcept;
    SqliteDatabase& operator=(SqliteDatabase&& other) noexcept;
    SqliteDatabase(const SqliteDatabase&) = delete;
    SqliteDatabase& operator=(const SqliteDatabase&) = delete;

    // Opens (creating if missing) the file at `path`; on failure `error` says why.
    static std::optional<SqliteDatabase> open(const QString& path, QString* error = nullptr);

    bool exec(const char* sql);
    bool exec(const std::string& sql) { return exec(sql.c_str()); }
    // An invalid statement when `sql` does not compile.
    SqliteStatement prepare(std::string_view sql);

    // Opens an existing file for reading only; none when it is missing.
    static std::optional<SqliteDatabase> openReadOnly(const QString& path, QString* error = nullptr);

    bool tableExists(std::string_view name);

    bool isReadOnly() const;
    QString lastError() const;
    // The primary result code of the last failure (SQLITE_FULL, SQLITE_IOERR, ...).
    int lastErrorCode() const;
    sqlite3* handle() const { return db_; }

private:
    explicit SqliteDatabase(sqlite3* db) : db_(db) {}
    sqlite3* db_ = nullptr;
};

struct SqliteFailure {
    int code = 0;  // primary result code
    QString message;
};

// BEGIN on creation; ROLLBACK on destruction unless commit() was called.
class SqliteTransaction {
public:
    explicit SqliteTransaction(SqliteDatabase& db);
    ~SqliteTransaction();
    SqliteTransaction(const SqliteTransaction&) = delete;
    SqliteTransaction& operator=(const SqliteTransaction&) = delete;

    bool isOpen() const { return open_; }
    // False when the commit failed; the transaction is then rolled back and failure() says why.
    bool commit();
    const std::optional<SqliteFailure>& failure() const { return failure_; }

private:
    SqliteDatabase& db_;
    bool open_ = false;
    std::optional<SqliteFailure> failure_;
};

} // namespace tallowmere
