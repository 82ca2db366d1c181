#include "Database.h"

#include "Failure.h"
#include "Files.h"
#include "StoredRecords.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>
#include <utility>

namespace
{

constexpr std::int64_t FORMAT = 1; // user_version of the files
constexpr std::array BESIDE{"-wal", "-shm", "-journal"};

[[noreturn]] void failSystem()
{
    const int error = errno;
    throw SqliteError{SQLITE_CANTOPEN, error, std::strerror(error)};
}

void removeWithBesides(const std::string &path)
{
    unlink(path.c_str());
    for (const char *suffix : BESIDE) {
        unlink((path + suffix).c_str());
    }
}

// The path as a URI, in which three characters have a meaning of their own.
std::string uriOf(const std::string &path)
{
    std::string uri = "file:";
    for (const char letter : path) {
        if (letter == '%' || letter == '?' || letter == '#') {
            char code[4];
            (void)std::snprintf(code, sizeof code, "%%%02X", static_cast<unsigned>(letter));
            uri += code;
        } else {
            uri += letter;
        }
    }
    return uri + "?immutable=1";
}

// Keeps other processes from making files in the folder at the same time. Where the file system knows no such lock the
// rename alone has to do.
Descriptor lockFolder(const std::string &path)
{
    Descriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder) {
        failSystem();
    }
    const auto end = std::chrono::steady_clock::now() + WRITER_PATIENCE;
    while (flock(folder.number(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) {
        require(std::chrono::steady_clock::now() < end, ERR_BUSY);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return folder;
}

} // namespace

bool isDamage(const SqliteError &error)
{
    switch (error.primaryCode()) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_FORMAT:
    case SQLITE_MISMATCH:
    case SQLITE_ERROR: // a table or column is missing
        return true;
    default:
        return error.code == SQLITE_CANTOPEN_ISDIR || error.code == SQLITE_CANTOPEN_SYMLINK;
    }
}

Database::Database(Folder folder, const DatabaseKind &kind)
    : folder_(std::move(folder)), kind_(kind), path_(folder_.path + "/" + kind.fileName)
{
}

Database::~Database()
{
    dropIfReplaced();
}

void Database::release()
{
    if (connection_) {
        connection_->leaveAlone();
        connection_.reset();
    }
    ++generation_;
}

void Database::setAside()
{
    release();
    (void)std::rename(path_.c_str(), (path_ + ".damaged").c_str());
    removeWithBesides(path_);
}

bool Database::exists() const
{
    struct stat properties {
    };
    if (lstat(path_.c_str(), &properties) != 0) {
        if (errno == ENOENT) {
            return false;
        }
        failSystem();
    }
    if (!S_ISREG(properties.st_mode)) {
        throw Damaged{"it is not a file of this library"};
    }
    return true;
}

void Database::dropIfReplaced()
{
    // Closing a connection writes to the files beside the path: not when they belong to another database by now.
    if (connection_ && (connection_->hasMoved() || (immutable_ && access((path_ + "-wal").c_str(), F_OK) == 0))) {
        release();
    }
}

Connection *Database::forReading()
{
    dropIfReplaced();
    if (!connection_) {
        if (!exists()) {
            return nullptr;
        }
        connect();
    }
    return connection_.get();
}

Connection &Database::forWriting()
{
    dropIfReplaced();
    if (!connection_ || immutable_) {
        release();
        if (!exists()) {
            create();
        }
        open(path_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOFOLLOW);
    }
    return *connection_;
}

void Database::connect()
{
    try {
        open(path_, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOFOLLOW);
    } catch (const SqliteError &error) {
        // Without the right to put files beside it, a database can be read only as long as nobody writes to it.
        const bool unwritable = error.code == SQLITE_CANTOPEN || error.primaryCode() == SQLITE_READONLY;
        if (!unwritable || access((path_ + "-wal").c_str(), F_OK) == 0) {
            throw;
        }
        open(uriOf(path_), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_NOFOLLOW);
        immutable_ = true;
    }
}

// Opens the file and looks whether it is one of ours, before anything else is done with it.
void Database::open(const std::string &name, int flags)
{
    ++generation_;
    immutable_ = false;
    auto opened = std::make_unique<Connection>(name, flags);
    try {
        opened->setPatience(static_cast<int>(WRITER_PATIENCE.count()));
        if (opened->number("PRAGMA application_id") != static_cast<std::int64_t>(kind_.applicationId)) {
            throw Damaged{"it is not a file of this library"};
        }
        if (opened->number("PRAGMA user_version") != FORMAT) {
            throw Damaged{"another version of this library wrote it"};
        }
        opened->run("PRAGMA trusted_schema=OFF; PRAGMA cell_size_check=ON; PRAGMA secure_delete=ON;");
        opened->run(kind_.synchronous);
        opened->watchCommits();
    } catch (...) {
        opened->leaveAlone();
        throw;
    }
    connection_ = std::move(opened);
}

void Database::create()
{
    if (folder_.make && !makeFolder(folder_.path)) {
        failSystem();
    }
    const Descriptor folder = lockFolder(folder_.path);
    if (exists()) {
        return; // another process was faster
    }
    // What a killed process left, or what lay beside a database that somebody removed.
    const std::string next = path_ + ".new";
    removeWithBesides(next);
    removeWithBesides(path_);
    try {
        if (!Descriptor(::open(next.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600))) {
            failSystem();
        }
        {
            Connection made(next, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOFOLLOW);
            made.run("PRAGMA journal_mode=WAL");
            made.run(kind_.synchronous);
            Transaction transaction(made, "BEGIN IMMEDIATE");
            made.run(RECORD_TABLE);
            made.run(kind_.schema);
            made.run(("PRAGMA application_id=" + std::to_string(kind_.applicationId)).c_str());
            made.run(("PRAGMA user_version=" + std::to_string(FORMAT)).c_str());
            transaction.commit();
        }
        if (std::rename(next.c_str(), path_.c_str()) != 0) {
            failSystem();
        }
    } catch (const SqliteError &) {
        removeWithBesides(next);
        throw;
    }
    // The name is durable when the folder is. Some file systems have no such call; then nothing more can be done.
    if (fsync(folder.number()) != 0 && errno == EIO) {
        failSystem();
    }
}
