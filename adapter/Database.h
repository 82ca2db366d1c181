// One of the library's database files: found, recognised, made when it is missing, opened.
#pragma once

#include "Folder.h"
#include "Sqlite.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>

// How long a writer waits for another one.
inline constexpr std::chrono::milliseconds WRITER_PATIENCE{5000};

// The contents are not what this library writes. The reason completes the sentence "FILE is refused: ...".
struct Damaged {
    std::string reason;
};

struct DatabaseKind {
    const char *fileName;
    SD_UINT32 applicationId; // in the file's header, where it tells whose file this is
    const char *schema;      // tables beside the table of records
    const char *synchronous; // what a commit waits for
};

// A database and one connection to it. One thread uses it at a time.
//
// The file is made whole under another name and renamed, so that there is never half of one. It and what SQLite puts
// beside it (-wal, -shm) are for their owner alone (0600). A file that is refused is left as it is.
class Database
{
public:
    Database(Folder folder, const DatabaseKind &kind);
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;
    ~Database();

    const std::string &path() const
    {
        return path_;
    }
    // A connection to the file that lies there now; null when none does. Throws SqliteError or Damaged.
    Connection *forReading();
    // The same, with the file made when it is missing. Throws ERR_BUSY too.
    Connection &forWriting();
    // The mark of the last commit to the file that was met last; none when commits are not marked.
    std::optional<CommitMark> commitMark() const
    {
        return connection_ ? connection_->commitMark() : std::nullopt;
    }
    // A number that changes whenever another file, or none, was met.
    unsigned generation() const
    {
        return generation_;
    }
    // Lets the file go as it is.
    void release();
    // Puts a damaged file out of the way, under a name that ends in .damaged.
    void setAside();

private:
    void dropIfReplaced();
    bool exists() const;
    void connect();
    void open(const std::string &name, int flags);
    void create();

    Folder folder_;
    const DatabaseKind &kind_;
    std::string path_;
    std::unique_ptr<Connection> connection_;
    bool immutable_ = false; // in a folder where nothing can be written: read without locks, as it was when opened
    unsigned generation_ = 0;
};

// Whether an error means that the file's contents are wrong.
bool isDamage(const SqliteError &error);
