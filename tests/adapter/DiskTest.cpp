// The disk under the settings: full, failing, for reading only, of somebody else; and which folder it is.
#include "AdapterTest.h"
#include "Folder.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <functional>

namespace
{

std::atomic<bool> syncFails{false};

} // namespace

// In the place of the system's, for SQLite too.
[[gnu::visibility("default")]] int fdatasync(int descriptor)
{
    if (syncFails) {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(syscall(SYS_fdatasync, descriptor));
}

namespace
{

using Disk = AdapterTest;

TEST_F(Disk, FilesAreForTheirOwnerAlone)
{
    const mode_t before = umask(0);
    const SDMGT_HANDLE handle = open(0);
    writeFile(settings().string() + ".new", "left by a killed process, or put there by somebody");
    DEVICEENTRYISCSI entry = sampleEntry(3);
    EXPECT_EQ(SDSetDDBEntry(handle, &entry, 3), 0U);
    EXPECT_EQ(SDResetStatisticsiSCSI(handle, 0), 0U);
    umask(before);
    int files = 0;
    for (const auto &file : std::filesystem::directory_iterator(folder)) {
        struct stat properties {
        };
        ASSERT_EQ(stat(file.path().c_str(), &properties), 0);
        EXPECT_EQ(properties.st_mode & 0777, 0600U) << file.path();
        ++files;
    }
    EXPECT_EQ(files, 6) << "two databases, each with its -wal and -shm";
}

TEST_F(Disk, FullDiskLeavesTheOldSettings)
{
    const SDMGT_HANDLE handle = open(0);
    DEVICEENTRYISCSI entry = sampleEntry(17);
    ASSERT_EQ(SDSetDDBEntry(handle, &entry, 17), 0U);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    testing::internal::CaptureStderr();
    entry = sampleEntry(33);
    const auto written = std::filesystem::file_size(settings().string() + "-wal");
    for (const rlim_t room : {rlim_t{0}, rlim_t{100}, rlim_t{written - 1}, rlim_t{written + 400}}) {
        const rlimit limit{room, before.rlim_max};
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
        const SD_UINT32 status = SDSetDDBEntry(handle, &entry, 33);
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
        EXPECT_EQ(status, ERR_FLASH_WRITE) << room;
        EXPECT_EQ(entryAt(handle, 33).DeviceState, 0U) << "what could not be written is not shown either";
        EXPECT_EQ(entryAt(handle, 17).ReservedFlags, 17U);
    }
    EXPECT_NE(std::signal(SIGXFSZ, handler), SIG_ERR);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("cannot write " + settings().string()), std::string::npos);
    EXPECT_EQ(SDSetDDBEntry(handle, &entry, 33), 0U) << "with room again the write succeeds";
}

TEST_F(Disk, ASyncThatFailsLeavesTheOutcomeOpen)
{
    const SDMGT_HANDLE handle = open(0);
    DEVICEENTRYISCSI entry = sampleEntry(33);
    ASSERT_EQ(SDSetDDBEntry(handle, &entry, 17), 0U);
    testing::internal::CaptureStderr();
    syncFails = true;
    const SD_UINT32 status = SDSetDDBEntry(handle, &entry, 33);
    syncFails = false;
    EXPECT_EQ(status, ERR_FLASH_WRITE);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("whether the change will last is not known"),
              std::string::npos);
    EXPECT_EQ(SDSetDDBEntry(handle, &entry, 33), 0U) << "the next write is as good as any";
    EXPECT_EQ(entryAt(handle, 33).ReservedFlags, 33U);
}

TEST_F(Disk, ATraceThatTheDiskCannotTakeIsReportedAtTheEnd)
{
    SDMGT_HANDLE handle = open(0);
    const std::string file = folder / "trace";
    ASSERT_EQ(SDEnableDebugTraceiSCSI(&handle, file.c_str(), 1), 0U);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    SD_UINT32 count = 0;
    const SD_UINT32 counted = SDGetDDBEntryNum(handle, &count);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_NE(std::signal(SIGXFSZ, handler), SIG_ERR);
    EXPECT_EQ(counted, 0U) << "the operation itself is not concerned";
    testing::internal::CaptureStderr();
    ASSERT_EQ(SDCloseDeviceiSCSI(open(1)), 0U);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "libvdsdm: the trace " + file + " is not complete: File too large\n");
    ASSERT_EQ(SDEnableDebugTraceiSCSI(&handle, file.c_str(), 0), 0U);
}

// Exit status of a child process that runs work: 1 when an expectation failed, 77 when it could not be begun.
int inChild(const std::function<bool()> &begin, const std::function<void()> &work)
{
    const pid_t child = fork();
    if (child == 0) {
        if (!begin()) {
            _exit(77);
        }
        testing::internal::CaptureStderr();
        work();
        testing::internal::GetCapturedStderr();
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 100 + WTERMSIG(status);
}

TEST_F(Disk, FullAndReadOnlyFileSystems)
{
    const auto ownDisk = [&] {
        return unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0
               && mount("none", folder.c_str(), "tmpfs", 0, "size=256k") == 0;
    };
    const int status = inChild(ownDisk, [&] {
        SDMGT_HANDLE handle = open(0);
        DEVICEENTRYISCSI entry = sampleEntry(1);
        EXPECT_EQ(SDSetDDBEntry(handle, &entry, 100), 0U);
        const SDMGT_HANDLE large = open(2);
        EXPECT_EQ(SDSetDDBEntry(large, &entry, 200), ERR_FLASH_WRITE) << "512 entries have no room";
        EXPECT_EQ(entryAt(large, 200).ReservedFlags, 0U);
        EXPECT_EQ(entryAt(handle, 100).ReservedFlags, 1U);
        close(handle);
        close(large);
        EXPECT_EQ(mount("none", folder.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
        handle = open(0);
        EXPECT_EQ(entryAt(handle, 100).ReservedFlags, 1U) << "reading goes on";
        EXPECT_EQ(SDSetDDBEntry(handle, &entry, 300), ERR_FLASH_WRITE);
        EXPECT_EQ(entryAt(handle, 300).DeviceState, 0U);
    });
    if (status == 77) {
        GTEST_SKIP() << "this user may not mount a small disk";
    }
    EXPECT_EQ(status, 0);
}

constexpr uid_t NOBODY = 65534;

// Root may read and write everything and becomes somebody else, to whom the folder is given.
bool becomeNobody(const std::filesystem::path &folder)
{
    return geteuid() != 0 || (chown(folder.c_str(), NOBODY, NOBODY) == 0 && setuid(NOBODY) == 0);
}

TEST_F(Disk, ReadOnlyFolderLeavesTheOldSettings)
{
    const int status = inChild([&] { return becomeNobody(folder); },
                               [&] {
                                   writeSettings();
                                   std::filesystem::permissions(folder, std::filesystem::perms::owner_read
                                                                            | std::filesystem::perms::owner_exec);
                                   SDMGT_HANDLE handle = open(3);
                                   EXPECT_EQ(entryAt(handle, 17).ReservedFlags, 17U);
                                   DEVICEENTRYISCSI entry = sampleEntry(33);
                                   EXPECT_EQ(SDSetDDBEntry(handle, &entry, 33), ERR_FLASH_WRITE);
                                   EXPECT_EQ(SDSetDDBEntry(open(1), &entry, 33), ERR_FLASH_WRITE);
                                   EXPECT_EQ(entryAt(handle, 33).DeviceState, 0U);
                                   std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
                                   EXPECT_EQ(SDSetDDBEntry(handle, &entry, 33), 0U);
                                   EXPECT_EQ(entryAt(handle, 33).ReservedFlags, 33U);
                               });
    EXPECT_EQ(status, 0);
}

TEST_F(Disk, SettingsOfSomebodyElseAreNotRead)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "takes two users";
    }
    writeSettings();
    std::filesystem::permissions(folder, std::filesystem::perms::all);
    const int status = inChild(
        [] { return setuid(NOBODY) == 0; },
        [&] {
            SD_UINT32 entries = 0;
            testing::internal::GetCapturedStderr();
            testing::internal::CaptureStderr();
            EXPECT_EQ(SDGetDDBEntryNum(open(3), &entries), ERR_FLASH_READ);
            const std::string said = testing::internal::GetCapturedStderr();
            EXPECT_NE(said.find("cannot read " + settings().string() + ": Permission denied"), std::string::npos)
                << said;
            EXPECT_EQ(said.find("make it readable"), std::string::npos);
            testing::internal::CaptureStderr();
        });
    EXPECT_EQ(status, 0);
}

TEST_F(Disk, UnusableFoldersAreRefusedAtOnce)
{
    writeFile(folder / "file", "");
    testing::internal::CaptureStderr();
    for (const std::string &name :
         {(folder / "file").string(), (folder / "missing").string(), std::string("relative")}) {
        setenv("TAVO_ADAPTER_FLASH", name.c_str(), 1);
        SDMGT_HANDLE handle = 0;
        EXPECT_EQ(SDOpenDeviceiSCSI(0, &handle), ERR_FLASH_READ) << name;
    }
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("TAVO_ADAPTER_FLASH names no folder by its whole path: relative"), std::string::npos) << said;
}

TEST(Folders, RootHasOneAndEverybodyElseTheirOwn)
{
    EXPECT_EQ(folderOfUser(0, "/state", "/root"), "/var/lib/tavoiscsi");
    EXPECT_EQ(folderOfUser(1000, "/state", "/home/a"), "/state/tavoiscsi");
    EXPECT_EQ(folderOfUser(1000, "", "/home/a"), "/home/a/.local/state/tavoiscsi");
    EXPECT_EQ(folderOfUser(1000, "relative", "/home/a"), "/home/a/.local/state/tavoiscsi");
}

} // namespace
