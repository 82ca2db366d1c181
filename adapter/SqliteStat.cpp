// Files with late dates for SQLite, see SqliteStat.h. This file is compiled without _TIME_BITS=64: here the structure
// stat is that of SQLite's own build, with 64-bit sizes and inode numbers, and in 32 bit with 32-bit dates.
#include "SqliteStat.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <limits>

namespace
{

constexpr bool DATES_ARE_SHORT = sizeof(time_t) == 4;

static_assert(sizeof(off_t) == 8 && sizeof(ino_t) == 8);
static_assert(!DATES_ARE_SHORT || sizeof(struct stat) == 96, "the layout of stat64 in Debian's i386");

timespec shortened(const statx_timestamp &date) noexcept
{
    using Seconds = std::numeric_limits<time_t>;
    timespec time{};
    time.tv_sec = static_cast<time_t>(std::clamp<long long>(date.tv_sec, Seconds::min(), Seconds::max()));
    time.tv_nsec = static_cast<long>(date.tv_nsec);
    return time;
}

int ask(int folder, const char *path, int flags, struct stat *properties) noexcept
{
    struct statx found {
    };
    if (statx(folder, path, flags, STATX_BASIC_STATS, &found) != 0) {
        return -1;
    }
    *properties = {};
    properties->st_dev = makedev(found.stx_dev_major, found.stx_dev_minor);
    properties->st_ino = found.stx_ino;
    properties->st_mode = found.stx_mode;
    properties->st_nlink = found.stx_nlink;
    properties->st_uid = found.stx_uid;
    properties->st_gid = found.stx_gid;
    properties->st_rdev = makedev(found.stx_rdev_major, found.stx_rdev_minor);
    properties->st_size = static_cast<off_t>(found.stx_size);
    properties->st_blksize = static_cast<blksize_t>(found.stx_blksize);
    properties->st_blocks = static_cast<blkcnt_t>(found.stx_blocks);
    properties->st_atim = shortened(found.stx_atime);
    properties->st_mtim = shortened(found.stx_mtime);
    properties->st_ctim = shortened(found.stx_ctime);
    return 0;
}

int statOfName(const char *path, struct stat *properties) noexcept
{
    return ask(AT_FDCWD, path, 0, properties);
}

int statOfLink(const char *path, struct stat *properties) noexcept
{
    return ask(AT_FDCWD, path, AT_SYMLINK_NOFOLLOW, properties);
}

int statOfDescriptor(int descriptor, struct stat *properties) noexcept
{
    return ask(descriptor, "", AT_EMPTY_PATH, properties);
}

// Puts a function in the place of one that SQLite uses, if that is the system's of the very type that is seen here.
template <typename Function>
void replace(sqlite3_vfs &files, const char *name, Function *ofSystem, Function *ours)
{
    if (files.xGetSystemCall(&files, name) == reinterpret_cast<sqlite3_syscall_ptr>(ofSystem)) {
        files.xSetSystemCall(&files, name, reinterpret_cast<sqlite3_syscall_ptr>(ours));
    }
}

bool install()
{
    sqlite3_vfs *files = sqlite3_vfs_find("unix");
    if (files == nullptr || files->iVersion < 3) {
        return false;
    }
    replace(*files, "stat", &stat, &statOfName);
    replace(*files, "lstat", &lstat, &statOfLink);
    replace(*files, "fstat", &fstat, &statOfDescriptor);
    return true;
}

} // namespace

void acceptLateDates()
{
    if constexpr (DATES_ARE_SHORT) {
        [[maybe_unused]] static const bool once = install();
    }
}
