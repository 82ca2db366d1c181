#include "Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>

namespace
{

// Whether others than this user and root can put files beside this one.
bool isSharedFolderOf(const std::string &path)
{
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    struct stat properties {
    };
    return stat(folder.c_str(), &properties) == 0
           && ((properties.st_mode & (S_IWGRP | S_IWOTH)) != 0
               || (properties.st_uid != 0 && properties.st_uid != geteuid()));
}

} // namespace

Descriptor::~Descriptor()
{
    if (number_ >= 0) {
        close(number_);
    }
}

bool readAll(int descriptor, std::span<SD_UINT8> bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = read(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

bool writeAll(int descriptor, std::span<const SD_UINT8> bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return false;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

Descriptor openForLines(const std::string &path)
{
    const bool shared = isSharedFolderOf(path);
    Descriptor file(
        open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK | (shared ? O_NOFOLLOW : 0), 0666));
    struct stat properties {
    };
    if (shared && file && (fstat(file.number(), &properties) != 0 || properties.st_uid != geteuid())) {
        return {};
    }
    return file;
}

bool replaceFile(const std::string &path, std::string_view text)
{
    static std::atomic<unsigned> number{0};
    char real[PATH_MAX];
    const bool shared = isSharedFolderOf(path);
    const std::string file = shared || realpath(path.c_str(), real) == nullptr ? path : real;
    struct stat properties {
    };
    const bool present = lstat(file.c_str(), &properties) == 0;
    if (present ? !S_ISREG(properties.st_mode) || (shared && properties.st_uid != geteuid()) : errno != ENOENT) {
        return false;
    }
    const std::string next = file + "." + std::to_string(getpid()) + "." + std::to_string(++number) + ".new";
    const Descriptor written(open(next.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!written) {
        return false;
    }
    const std::span bytes(reinterpret_cast<const SD_UINT8 *>(text.data()), text.size());
    if ((present && fchmod(written.number(), properties.st_mode & 07777) != 0) || !writeAll(written.number(), bytes)
        || fdatasync(written.number()) != 0 || rename(next.c_str(), file.c_str()) != 0) {
        unlink(next.c_str());
        return false;
    }
    return true;
}
