#include "Folder.h"

#include "Failure.h"

#include <dlfcn.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <vector>

static_assert(sizeof(off_t) == 8 && sizeof(ino_t) == 8 && sizeof(time_t) == 8,
              "files may be large, have any inode number, and be dated after 2038, in 32 bit too");

namespace
{

constexpr const char *VARIABLE = "TAVO_ADAPTER_FLASH";

bool isFolder(const std::string &path)
{
    struct stat properties {
    };
    return stat(path.c_str(), &properties) == 0 && S_ISDIR(properties.st_mode);
}

// The path without symbolic links; as it is when there is nothing yet.
std::string resolved(const std::string &path)
{
    char real[PATH_MAX];
    return realpath(path.c_str(), real) == nullptr ? path : real;
}

std::string folderOfLibrary()
{
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void *>(&folderOfLibrary), &info) == 0 || info.dli_fname == nullptr) {
        return "";
    }
    const std::string file = resolved(info.dli_fname);
    return file.substr(0, file.rfind('/'));
}

std::string home()
{
    const char *named = std::getenv("HOME");
    if (named != nullptr && *named == '/') {
        return named;
    }
    passwd entry{};
    passwd *found = nullptr;
    std::vector<char> buffer(16384);
    return getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr ? found->pw_dir
                                                                                                        : "";
}

} // namespace

std::string folderOfUser(uid_t user, const std::string &stateHome, const std::string &home)
{
    if (user == 0) {
        return "/var/lib/tavoiscsi";
    }
    return (stateHome.starts_with('/') ? stateHome : home + "/.local/state") + "/tavoiscsi";
}

void say(const std::string &line)
{
    (void)std::fprintf(stderr, "libvdsdm: %s\n", line.c_str());
}

Folder settingsFolder()
{
    const char *named = std::getenv(VARIABLE);
    if (named != nullptr && *named != '\0') {
        if (*named != '/' || !isFolder(named)) {
            say(std::string(VARIABLE) + " names no folder by its whole path: " + named);
            throw Failure{ERR_FLASH_READ};
        }
        return {resolved(named), false};
    }
    // In a build tree libraries lie in lib/NAME below the folder with CMake's cache.
    const std::string own = folderOfLibrary();
    if (!own.empty() && access((own + "/../../CMakeCache.txt").c_str(), F_OK) == 0) {
        return {own, false};
    }
    const char *stateHome = std::getenv("XDG_STATE_HOME");
    return {resolved(folderOfUser(geteuid(), stateHome == nullptr ? "" : stateHome, home())), true};
}

bool makeFolder(const std::string &path)
{
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1)) {
        if (mkdir(path.substr(0, slash).c_str(), 0700) != 0 && errno != EEXIST) {
            return false;
        }
    }
    return mkdir(path.c_str(), 0700) == 0 || errno == EEXIST;
}
