#include "Sqlite.h"

#include "SqliteStat.h"

#include <algorithm>
#include <utility>

namespace
{

[[noreturn]] void fail(sqlite3 *database)
{
    throw SqliteError{sqlite3_extended_errcode(database), sqlite3_system_errno(database), sqlite3_errmsg(database)};
}

} // namespace

Statement::Statement(sqlite3 *database, const char *sql) : database_(database)
{
    sqlite3_stmt *prepared = nullptr;
    const int code = sqlite3_prepare_v3(database, sql, -1, SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
    statement_.reset(prepared);
    check(code);
}

void Statement::check(int code) const
{
    if (code != SQLITE_OK) {
        fail(database_);
    }
}

Statement &Statement::bind(int place, std::int64_t value)
{
    check(sqlite3_bind_int64(statement_.get(), place, value));
    return *this;
}

Statement &Statement::bind(int place, std::string_view text)
{
    check(sqlite3_bind_text(statement_.get(), place, text.data(), static_cast<int>(text.size()), SQLITE_STATIC));
    return *this;
}

Statement &Statement::bind(int place, std::span<const SD_UINT8> bytes)
{
    if (bytes.empty()) { // without an address it would be taken for NULL
        check(sqlite3_bind_zeroblob(statement_.get(), place, 0));
        return *this;
    }
    check(sqlite3_bind_blob(statement_.get(), place, bytes.data(), static_cast<int>(bytes.size()), SQLITE_STATIC));
    return *this;
}

bool Statement::step()
{
    const int code = sqlite3_step(statement_.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        fail(database_);
    }
    return code == SQLITE_ROW;
}

void Statement::run()
{
    while (step()) {
    }
}

void Statement::reset()
{
    sqlite3_reset(statement_.get());
    sqlite3_clear_bindings(statement_.get());
}

std::optional<std::int64_t> Statement::number(int column) const
{
    if (sqlite3_column_type(statement_.get(), column) != SQLITE_INTEGER) {
        return std::nullopt;
    }
    return sqlite3_column_int64(statement_.get(), column);
}

std::optional<std::string_view> Statement::text(int column) const
{
    if (sqlite3_column_type(statement_.get(), column) != SQLITE_TEXT) {
        return std::nullopt;
    }
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(statement_.get(), column));
    return std::string_view(text, static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column)));
}

std::optional<std::span<const SD_UINT8>> Statement::bytes(int column) const
{
    if (sqlite3_column_type(statement_.get(), column) != SQLITE_BLOB) {
        return std::nullopt;
    }
    const auto *bytes = static_cast<const SD_UINT8 *>(sqlite3_column_blob(statement_.get(), column));
    return std::span(bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column)));
}

Connection::Connection(const std::string &name, int flags)
{
    acceptLateDates();
    const int code = sqlite3_open_v2(name.c_str(), &database_, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    if (code != SQLITE_OK) {
        const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> closed(database_, &sqlite3_close);
        throw SqliteError{sqlite3_extended_errcode(database_), sqlite3_system_errno(database_),
                          sqlite3_errmsg(database_)};
    }
    sqlite3_extended_result_codes(database_, 1);
}

Connection::~Connection()
{
    statements_.clear();
    sqlite3_close(database_);
}

void Connection::run(const char *sql)
{
    if (sqlite3_exec(database_, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail(database_);
    }
}

std::int64_t Connection::number(const char *sql)
{
    const Use query = statement(sql);
    return query->step() ? query->number(0).value_or(0) : 0;
}

Use Connection::statement(const char *sql)
{
    auto known = statements_.find(sql);
    if (known == statements_.end()) {
        known = statements_.emplace(sql, Statement(database_, sql)).first;
    }
    return Use(known->second);
}

void Connection::setPatience(int milliseconds)
{
    sqlite3_busy_timeout(database_, milliseconds);
}

bool Connection::hasMoved()
{
    int moved = 0;
    return sqlite3_file_control(database_, "main", SQLITE_FCNTL_HAS_MOVED, &moved) == SQLITE_OK && moved != 0;
}

void Connection::watchCommits()
{
    constexpr int sharedMemoryVersion = 2;
    constexpr int segmentSize = 32768; // of the index
    const Use mode = statement("PRAGMA journal_mode");
    sqlite3_file *file = nullptr;
    if (!mode->step() || mode->text(0) != "wal"
        || sqlite3_file_control(database_, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK || file == nullptr
        || file->pMethods->iVersion < sharedMemoryVersion) {
        return;
    }
    volatile void *segment = nullptr; // SQLite has mapped it already, and keeps it until the connection is closed
    if (file->pMethods->xShmMap(file, 0, segmentSize, 0, &segment) == SQLITE_OK) {
        logIndex_ = static_cast<const volatile std::uint32_t *>(segment);
    }
}

std::optional<CommitMark> Connection::commitMark() const
{
    if (logIndex_ == nullptr) {
        return std::nullopt;
    }
    CommitMark mark{};
    std::copy_n(logIndex_, mark.size(), mark.begin());
    return mark;
}

void Connection::leaveAlone()
{
    sqlite3_db_config(database_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

Transaction::Transaction(Connection &connection, const char *begin) : connection_(connection)
{
    connection_.run(begin);
}

Transaction::~Transaction()
{
    if (open_) {
        try {
            connection_.run("ROLLBACK");
        } catch (...) {
            return; // rolled back already by the error that brought us here
        }
    }
}

void Transaction::commit()
{
    connection_.run("COMMIT");
    open_ = false;
}
