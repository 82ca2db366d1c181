// The disk under the settings: full, failing, for reading only, of somebody else; and which folder it is.
#include "AdapterTest.h"
#include "Folder.h"

#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>

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
    const OpenAdapter adapter(0);
    writeFile(settings.string() + ".new", "left by a killed process, or put there by somebody");
    EXPECT_EQ(adapter.write(3, sampleEntry(3)), 0U);
    EXPECT_EQ(SDResetStatisticsiSCSI(adapter, 0), 0U);
    umask(before);
    int files = 0;
    for (const auto &file : std::filesystem::directory_iterator(folder)) {
        constexpr auto ownersAlone = std::filesystem::perms::owner_read | std::filesystem::perms::owner_write;
        EXPECT_EQ(file.status().permissions(), ownersAlone) << file.path();
        ++files;
    }
    EXPECT_EQ(files, 6) << "two databases, each with its -wal and -shm";
}

// Runs work while no file can grow beyond a number of bytes.
void withLimit(rlim_t bytes, const std::function<void()> &work)
{
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    (void)std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    work();
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
}

TEST_F(Disk, FullDiskLeavesTheOldSettings)
{
    const OpenAdapter adapter(0);
    ASSERT_EQ(adapter.write(17, sampleEntry(17)), 0U);
    const auto written = std::filesystem::file_size(settings.string() + "-wal");
    const std::string said = saidDuring([&] {
        for (const rlim_t room : {rlim_t{0}, rlim_t{100}, rlim_t{written - 1}, rlim_t{written + 400}}) {
            SD_UINT32 status = 0;
            withLimit(room, [&] { status = adapter.write(33, sampleEntry(33)); });
            EXPECT_EQ(status, ERR_FLASH_WRITE) << room;
            EXPECT_EQ(adapter.entry(33).DeviceState, 0U) << "what could not be written is not shown either";
            EXPECT_EQ(adapter.entry(17).ReservedFlags, 17U);
        }
    });
    EXPECT_NE(said.find("cannot write " + settings.string()), std::string::npos);
    EXPECT_EQ(adapter.write(33, sampleEntry(33)), 0U) << "with room again the write succeeds";
}

TEST_F(Disk, ASyncThatFailsLeavesTheOutcomeOpen)
{
    const OpenAdapter adapter(0);
    ASSERT_EQ(adapter.write(17, sampleEntry(17)), 0U);
    const std::string said = saidDuring([&] {
        syncFails = true;
        EXPECT_EQ(adapter.write(33, sampleEntry(33)), ERR_FLASH_WRITE);
        syncFails = false;
    });
    EXPECT_NE(said.find("whether the change will last is not known"), std::string::npos);
    EXPECT_EQ(adapter.write(33, sampleEntry(33)), 0U) << "the next write is as good as any";
    EXPECT_EQ(adapter.entry(33).ReservedFlags, 33U);
}

TEST_F(Disk, ATraceThatTheDiskCannotTakeIsReportedAtTheEnd)
{
    const OpenAdapter adapter(0);
    SDMGT_HANDLE handle = adapter;
    const std::string file = folder / "trace";
    ASSERT_EQ(SDEnableDebugTraceiSCSI(&handle, file.c_str(), 1), 0U);
    withLimit(0, [&] { EXPECT_EQ(adapter.count(), 8U) << "the operation itself is not concerned"; });
    EXPECT_EQ(saidDuring([] { OpenAdapter(1).close(); }),
              "libvdsdm: the trace " + file + " is not complete: File too large\n");
    ASSERT_EQ(SDEnableDebugTraceiSCSI(&handle, file.c_str(), 0), 0U);
}

TEST_F(Disk, FullAndReadOnlyFileSystems)
{
    const auto ownDisk = [&] {
        return unshare(CLONE_NEWNS) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0
               && mount("none", folder.c_str(), "tmpfs", 0, "size=256k") == 0;
    };
    inChild(ownDisk, [&] {
        OpenAdapter adapter(0);
        EXPECT_EQ(adapter.write(100, sampleEntry(1)), 0U);
        OpenAdapter large(2);
        EXPECT_EQ(large.write(200, sampleEntry(1)), ERR_FLASH_WRITE) << "512 entries have no room";
        EXPECT_EQ(large.entry(200).ReservedFlags, 0U);
        EXPECT_EQ(adapter.entry(100).ReservedFlags, 1U);
        adapter.close();
        large.close();
        EXPECT_EQ(mount("none", folder.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
        const OpenAdapter again(0);
        EXPECT_EQ(again.entry(100).ReservedFlags, 1U) << "reading goes on";
        EXPECT_EQ(again.write(300, sampleEntry(1)), ERR_FLASH_WRITE);
        EXPECT_EQ(again.entry(300).DeviceState, 0U);
    });
}

TEST_F(Disk, ReadOnlyFolderLeavesTheOldSettings)
{
    using std::filesystem::perms;
    inChild([&] { return becomeNobody(folder); },
            [&] {
                writeSettings();
                std::filesystem::permissions(folder, perms::owner_read | perms::owner_exec);
                const OpenAdapter adapter(3);
                EXPECT_EQ(adapter.entry(17).ReservedFlags, 17U);
                EXPECT_EQ(adapter.write(33, sampleEntry(33)), ERR_FLASH_WRITE);
                EXPECT_EQ(OpenAdapter(1).write(33, sampleEntry(33)), ERR_FLASH_WRITE);
                EXPECT_EQ(adapter.entry(33).DeviceState, 0U);
                std::filesystem::permissions(folder, perms::owner_all);
                EXPECT_EQ(adapter.write(33, sampleEntry(33)), 0U);
                EXPECT_EQ(adapter.entry(33).ReservedFlags, 33U);
            });
}

TEST_F(Disk, SettingsOfSomebodyElseAreNotRead)
{
    if (geteuid() != 0) {
        GTEST_SKIP() << "takes two users";
    }
    writeSettings();
    inChild([&] { return becomeNobody(folder); },
            [&] {
                const std::string said = saidDuring([] {
                    SD_UINT32 entries = 0;
                    EXPECT_EQ(SDGetDDBEntryNum(OpenAdapter(3), &entries), ERR_FLASH_READ);
                });
                EXPECT_NE(said.find("cannot read " + settings.string() + ": Permission denied"), std::string::npos)
                    << said;
            });
}

TEST_F(Disk, UnusableFoldersAreRefusedAtOnce)
{
    const std::string said = saidDuring([&] {
        for (const std::string &name :
             {writeFile(folder / "file", ""), (folder / "missing").string(), std::string("relative")}) {
            setenv("TAVO_ADAPTER_FLASH", name.c_str(), 1);
            SDMGT_HANDLE handle = 0;
            EXPECT_EQ(SDOpenDeviceiSCSI(0, &handle), ERR_FLASH_READ) << name;
        }
    });
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
