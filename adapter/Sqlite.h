// SQLite as this library uses it: connections, statements, and errors as exceptions.
#pragma once

#include "Exported.h"

#include <sqlite3.h>

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

struct SqliteError {
    int code;        // extended result code
    int systemError; // errno behind it, 0 when there is none
    std::string message;

    int primaryCode() const
    {
        return code & 0xFF;
    }
};

// A prepared statement. Bindings are numbered from 1, columns from 0; what is bound has to live until the reset.
class Statement
{
public:
    Statement(sqlite3 *database, const char *sql);

    Statement &bind(int place, std::int64_t value);
    Statement &bind(int place, std::string_view text);
    Statement &bind(int place, std::span<const SD_UINT8> bytes);
    // Goes on to the next row; false after the last one.
    bool step();
    // Goes through to the end, for statements without rows.
    void run();
    void reset();

    // The value of a column; nothing when it is of another type.
    std::optional<std::int64_t> number(int column) const;
    std::optional<std::string_view> text(int column) const;
    std::optional<std::span<const SD_UINT8>> bytes(int column) const;

private:
    void check(int code) const;

    struct Finalizer {
        void operator()(sqlite3_stmt *statement) const
        {
            sqlite3_finalize(statement);
        }
    };
    sqlite3 *database_;
    std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
};

// Has a statement reset when its user goes.
class Use
{
public:
    explicit Use(Statement &statement) : statement_(statement) {}
    Use(const Use &) = delete;
    Use &operator=(const Use &) = delete;
    ~Use()
    {
        statement_.reset();
    }
    Statement *operator->() const
    {
        return &statement_;
    }

private:
    Statement &statement_;
};

// What differs after each commit to a file, whoever made it: the header of the index of SQLite's log (-wal).
using CommitMark = std::array<std::uint32_t, 12>;

// An open database file. One thread uses it at a time.
class Connection
{
public:
    // flags as for sqlite3_open_v2.
    Connection(const std::string &name, int flags);
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;
    ~Connection();

    // Runs statements without parameters, and forgets their rows.
    void run(const char *sql);
    // The number that a statement answers.
    std::int64_t number(const char *sql);
    // A statement, prepared at its first use and kept. sql is a constant.
    Use statement(const char *sql);
    // How long a lock is waited for.
    void setPatience(int milliseconds);
    // Whether another file, or none, lies where this one was opened.
    bool hasMoved();
    // Has commits marked from now on, if the file has a log that processes share. After the first query.
    void watchCommits();
    // The mark of the last commit, for the price of a look at shared memory; none when commits are not marked.
    std::optional<CommitMark> commitMark() const;
    // Leaves the files as they are when the connection goes: no checkpoint, nothing removed.
    void leaveAlone();

private:
    sqlite3 *database_ = nullptr;
    const volatile std::uint32_t *logIndex_ = nullptr; // SQLite's, which it shares with all processes
    std::map<std::string_view, Statement> statements_;
};

// A transaction that is rolled back unless it is committed.
class Transaction
{
public:
    Transaction(Connection &connection, const char *begin);
    Transaction(const Transaction &) = delete;
    Transaction &operator=(const Transaction &) = delete;
    ~Transaction();
    void commit();

private:
    Connection &connection_;
    bool open_ = true;
};
