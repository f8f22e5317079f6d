#include "history/SqliteDatabase.h"

#include <sqlite3.h>

#include <utility>

namespace tallowmere {

SqliteStatement::~SqliteStatement()
{
    sqlite3_finalize(statement_);
}

SqliteStatement::SqliteStatement(SqliteStatement&& other) noexcept
    : statement_(std::exchange(other.statement_, nullptr))
{
}

SqliteStatement& SqliteStatement::operator=(SqliteStatement&& other) noexcept
{
    if (this != &other) {
        sqlite3_finalize(statement_);
        statement_ = std::exchange(other.statement_, nullptr);
    }
    return *this;
}

void SqliteStatement::bind(int index, std::int64_t value)
{
    sqlite3_bind_int64(statement_, index, value);
}

void SqliteStatement::bind(int index, std::string_view text)
{
    sqlite3_bind_text64(statement_, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

void SqliteStatement::bind(int index, const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    bind(index, std::string_view(utf8.constData(), static_cast<std::size_t>(utf8.size())));
}

SqliteStep SqliteStatement::step()
{
    switch (sqlite3_step(statement_)) {
    case SQLITE_ROW:
        return SqliteStep::row;
    case SQLITE_DONE:
        return SqliteStep::done;
    default:
        return SqliteStep::error;
    }
}

void SqliteStatement::reset()
{
    sqlite3_reset(statement_);
}

std::int64_t SqliteStatement::columnInt64(int column) const
{
    return sqlite3_column_int64(statement_, column);
}

std::optional<QString> SqliteStatement::columnText(int column) const
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    if (!text)
        return std::nullopt;
    return QString::fromUtf8(text, sqlite3_column_bytes(statement_, column));
}

SqliteDatabase::~SqliteDatabase()
{
    sqlite3_close(db_);
}

SqliteDatabase::SqliteDatabase(SqliteDatabase&& other) noexcept
    : db_(std::exchange(other.db_, nullptr))
{
}

SqliteDatabase& SqliteDatabase::operator=(SqliteDatabase&& other) noexcept
{
    if (this != &other) {
        sqlite3_close(db_);
        db_ = std::exchange(other.db_, nullptr);
    }
    return *this;
}

namespace {

std::optional<sqlite3*> openWith(const QString& path, int flags, QString* error)
{
    sqlite3* db = nullptr;
    const int result = sqlite3_open_v2(path.toUtf8().constData(), &db, flags, nullptr);
    if (result != SQLITE_OK) {
        if (error)
            *error = QString::fromUtf8(db ? sqlite3_errmsg(db) : sqlite3_errstr(result));
        sqlite3_close(db);
        return std::nullopt;
    }
    return db;
}

} // namespace

std::optional<SqliteDatabase> SqliteDatabase::open(const QString& path, QString* error)
{
    if (auto db = openWith(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, error))
        return SqliteDatabase(*db);
    return std::nullopt;
}

std::optional<SqliteDatabase> SqliteDatabase::openReadOnly(const QString& path, QString* error)
{
    if (auto db = openWith(path, SQLITE_OPEN_READONLY, error))
        return SqliteDatabase(*db);
    return std::nullopt;
}

bool SqliteDatabase::tableExists(std::string_view name)
{
    SqliteStatement query = prepare("SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?");
    if (!query)
        return false;
    query.bind(1, name);
    return query.step() == SqliteStep::row;
}

int SqliteDatabase::lastErrorCode() const
{
    return sqlite3_errcode(db_) & 0xff;
}

bool SqliteDatabase::exec(const char* sql)
{
    return sqlite3_exec(db_, sql, nullptr, nullptr, nullptr) == SQLITE_OK;
}

SqliteStatement SqliteDatabase::prepare(std::string_view sql)
{
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(db_, sql.data(), static_cast<int>(sql.size()), &statement, nullptr) != SQLITE_OK) {
        sqlite3_finalize(statement);
        return {};
    }
    return SqliteStatement(statement);
}

bool SqliteDatabase::isReadOnly() const
{
    return sqlite3_db_readonly(db_, "main") == 1;
}

QString SqliteDatabase::lastError() const
{
    return QString::fromUtf8(sqlite3_errmsg(db_));
}

SqliteTransaction::SqliteTransaction(SqliteDatabase& db)
    : db_(db)
    , open_(db.exec("BEGIN"))
{
}

SqliteTransaction::~SqliteTransaction()
{
    if (open_)
        db_.exec("ROLLBACK");
}

bool SqliteTransaction::commit()
{
    if (!open_)
        return false;
    open_ = false;
    if (db_.exec("COMMIT"))
        return true;
    // A failed commit (full disk, I/O error) may leave the transaction open; what went wrong
    // is kept before the rollback replaces it.
    failure_ = SqliteFailure{db_.lastErrorCode(), db_.lastError()};
    if (!sqlite3_get_autocommit(db_.handle()))
        db_.exec("ROLLBACK");
    return false;
}

} // namespace tallowmere
