// Notes in what order a program syncs and renames files. Preloaded; WRITE_ORDER_LOG names the file to note it in.
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

static void note(const std::string &line)
{
    const char *name = std::getenv("WRITE_ORDER_LOG");
    const int log = open(name == nullptr ? "" : name, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    [[maybe_unused]] const ssize_t written = write(log, line.data(), line.size());
    close(log);
}

extern "C" int fsync(int file)
{
    char name[4096] = {};
    const std::string link = "/proc/self/fd/" + std::to_string(file);
    if (readlink(link.c_str(), name, sizeof name - 1) > 0) {
        note(std::string("sync ") + name + "\n");
    }
    return reinterpret_cast<int (*)(int)>(dlsym(RTLD_NEXT, "fsync"))(file);
}

extern "C" int rename(const char *from, const char *to) noexcept
{
    note(std::string("rename ") + from + " to " + to + "\n");
    return reinterpret_cast<int (*)(const char *, const char *)>(dlsym(RTLD_NEXT, "rename"))(from, to);
}
