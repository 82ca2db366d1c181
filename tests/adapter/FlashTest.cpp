// The flash file: damage is refused and left alone, failed writes leave the old contents, reading is cheap.
#include "Flash.h"
#include "AdapterTest.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>

namespace
{

class FlashFileTest : public AdapterTest
{
protected:
    // Puts a file in the flash file's place, as a new file.
    void place(SD_UINT32 index, const std::string &bytes) const
    {
        writeFile(folder / "placed", bytes);
        std::filesystem::rename(folder / "placed", flash(index));
    }
    // The adapter refuses what lies there: reading and writing, and leaves it as it is.
    void expectRefused(SDMGT_HANDLE handle, SD_UINT32 index, const std::string &bytes, const std::string &what) const
    {
        place(index, bytes);
        SD_UINT32 count = 0;
        DEVICEENTRYISCSI entry = sampleEntry(9);
        ASSERT_EQ(SDGetDDBEntryNum(handle, &count), ERR_FLASH_DAMAGED) << what;
        ASSERT_EQ(SDSetDDBEntry(handle, &entry, 9), ERR_FLASH_DAMAGED) << what;
        ASSERT_EQ(readFile(flash(index)), bytes) << what;
    }
    // Writes a few settings to an adapter and returns its file.
    std::string writeSettings(SDMGT_HANDLE handle, SD_UINT32 index) const
    {
        DEVICEENTRYISCSI entry = sampleEntry(17);
        SD_UINT32 count = 2;
        CHAPTABLE table[2] = {};
        setText(table[1].ChapSecret, "a secret");
        EXPECT_EQ(SDSetDDBEntry(handle, &entry, 17), 0U);
        EXPECT_EQ(SDSetCHAPTable(handle, table, &count), 0U);
        return readFile(flash(index));
    }
    static std::string withChecksum(std::string bytes)
    {
        const SD_UINT32 sum =
            checksum({reinterpret_cast<const SD_UINT8 *>(bytes.data()), bytes.size() - sizeof(SD_UINT32)});
        bytes.replace(bytes.size() - sizeof sum, sizeof sum, reinterpret_cast<const char *>(&sum), sizeof sum);
        return bytes;
    }
};

TEST_F(FlashFileTest, EveryFlippedByteAndEveryTruncationIsRefused)
{
    const SDMGT_HANDLE handle = open(3);
    const std::string good = writeSettings(handle, 3);
    ASSERT_GT(good.size(), 1000U);
    testing::internal::CaptureStderr();
    for (std::size_t byte = 0; byte < good.size(); ++byte) {
        for (const char flip : {'\x01', '\x80', '\xFF'}) {
            std::string bad = good;
            bad[byte] = static_cast<char>(bad[byte] ^ flip);
            ASSERT_NO_FATAL_FAILURE(expectRefused(handle, 3, bad, "byte " + std::to_string(byte)));
        }
        ASSERT_NO_FATAL_FAILURE(expectRefused(handle, 3, good.substr(0, byte), "length " + std::to_string(byte)));
    }
    ASSERT_NO_FATAL_FAILURE(expectRefused(handle, 3, good + '\0', "one byte more"));
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("libvdsdm: " + flash(3).string() + " is refused: "), std::string::npos) << said;
    EXPECT_NE(said.find("remove it to return to the factory settings"), std::string::npos);
    EXPECT_EQ(said.find("a secret"), std::string::npos);

    place(3, good);
    EXPECT_EQ(walk(handle), std::vector<SD_UINT32>{17}) << "a good copy in its place is taken at once";
    std::filesystem::remove(flash(3));
    EXPECT_TRUE(walk(handle).empty()) << "without its file the adapter is factory-fresh";
}

TEST_F(FlashFileTest, ForeignFilesAreRefused)
{
    const SDMGT_HANDLE handle = open(3);
    const std::string good = writeSettings(handle, 3);
    const std::string other = writeSettings(open(0), 0);
    testing::internal::CaptureStderr();
    const auto changed = [&](std::size_t place, SD_UINT32 value) {
        std::string bytes = good;
        bytes.replace(place, sizeof value, reinterpret_cast<const char *>(&value), sizeof value);
        return withChecksum(bytes);
    };
    // The first entry lies at the end but for the CHAP table and the checksum.
    const std::size_t entry = good.size() - 4 - (8 + 2 * sizeof(CHAPTABLE)) - sizeof(DEVICEENTRYISCSI);
    const std::pair<std::string, std::string> files[] = {
        {other, "another adapter's"},
        {std::string(5000, 'x'), "text"},
        {changed(8, 2), "another version's"},
        {changed(36, 4), "records of another size"},
        {changed(entry - 8, 513), "too many entries"},
        {changed(entry + offsetof(DEVICEENTRYISCSI, TargetID), 512), "an entry that cannot be"},
    };
    for (const auto &[bytes, what] : files) {
        ASSERT_NO_FATAL_FAILURE(expectRefused(handle, 3, bytes, what));
    }
    std::filesystem::remove(flash(3));
    std::filesystem::create_directory(flash(3));
    SD_UINT32 count = 0;
    EXPECT_EQ(SDGetDDBEntryNum(handle, &count), ERR_FLASH_DAMAGED);
    std::filesystem::remove(flash(3));
    ASSERT_EQ(mkfifo(flash(3).c_str(), 0600), 0);
    EXPECT_EQ(SDGetDDBEntryNum(handle, &count), ERR_FLASH_DAMAGED) << "a pipe must not hold us up";
    testing::internal::GetCapturedStderr();
}

TEST_F(FlashFileTest, DamagedCountersStartAfresh)
{
    const SDMGT_HANDLE handle = open(0);
    const SD_UINT64 factory = statistics(handle).IPTxPacketsCount;
    ASSERT_EQ(ping(handle, "10.20.0.1", 9), 0U);
    EXPECT_EQ(statistics(handle).IPTxPacketsCount, factory + 9);
    writeFile(folder / "placed", "nonsense");
    std::filesystem::rename(folder / "placed", folder / "adapter0.counters");
    testing::internal::CaptureStderr();
    EXPECT_EQ(statistics(handle).IPTxPacketsCount, factory);
    ASSERT_EQ(ping(handle, "10.20.0.1", 2), 0U);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("adapter0.counters is refused"), std::string::npos);
    EXPECT_EQ(statistics(handle).IPTxPacketsCount, factory + 2);
}

TEST_F(FlashFileTest, FullDiskLeavesTheOldSettings)
{
    const SDMGT_HANDLE handle = open(0);
    const std::string good = writeSettings(handle, 0);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    testing::internal::CaptureStderr();
    DEVICEENTRYISCSI entry = sampleEntry(33);
    for (const rlim_t room : {rlim_t{0}, rlim_t{100}, rlim_t{good.size() - 1}, rlim_t{good.size() + 400}}) {
        const rlimit limit{room, before.rlim_max};
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
        const SD_UINT32 status = SDSetDDBEntry(handle, &entry, 33);
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
        EXPECT_EQ(status, ERR_FLASH_WRITE) << room;
        EXPECT_EQ(readFile(flash(0)), good) << room;
        EXPECT_EQ(entryAt(handle, 33).DeviceState, 0U) << "what could not be written is not shown either";
        EXPECT_FALSE(std::filesystem::exists(flash(0).string() + ".new"));
    }
    EXPECT_NE(std::signal(SIGXFSZ, handler), SIG_ERR);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("cannot write " + flash(0).string()), std::string::npos);
    EXPECT_EQ(SDSetDDBEntry(handle, &entry, 33), 0U) << "with room again the write succeeds";
}

// Exit status of a child process that runs in a file system of its own, mounted on the flash folder: 77 when this
// machine does not allow that.
template <class Work>
int onOwnDisk(const std::filesystem::path &folder, Work work)
{
    const pid_t child = fork();
    if (child == 0) {
        if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0
            || mount("none", folder.c_str(), "tmpfs", 0, "size=384k") != 0) {
            _exit(77);
        }
        _exit(work() ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 100 + WTERMSIG(status);
}

TEST_F(FlashFileTest, FullAndReadOnlyFileSystems)
{
    const int status = onOwnDisk(folder, [&] {
        // One file of adapter 2 takes 250 of the 384 KiB: the second one has no room beside it.
        testing::internal::CaptureStderr();
        const SDMGT_HANDLE handle = open(2);
        DEVICEENTRYISCSI entry = sampleEntry(1);
        EXPECT_EQ(SDSetDDBEntry(handle, &entry, 100), 0U);
        const std::string good = readFile(flash(2));
        EXPECT_EQ(SDSetDDBEntry(handle, &entry, 200), ERR_FLASH_WRITE);
        EXPECT_EQ(readFile(flash(2)), good);
        EXPECT_EQ(mount("none", folder.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
        EXPECT_EQ(SDSetDDBEntry(handle, &entry, 300), ERR_FLASH_WRITE);
        EXPECT_EQ(SDSetDDBEntry(open(0), &entry, 300), ERR_FLASH_WRITE) << "no file yet";
        EXPECT_EQ(readFile(flash(2)), good);
        EXPECT_EQ(entryAt(handle, 100).ReservedFlags, 1U) << "reading goes on";
        EXPECT_EQ(entryAt(handle, 200).ReservedFlags, 0U);
        testing::internal::GetCapturedStderr();
        return !testing::Test::HasFailure();
    });
    if (status == 77) {
        GTEST_SKIP() << "this user may not mount a small disk";
    }
    EXPECT_EQ(status, 0);
}

TEST_F(FlashFileTest, ReadOnlyFolderLeavesTheOldSettings)
{
    constexpr uid_t nobody = 65534;
    const pid_t child = fork();
    if (child == 0) {
        // Root may write in any folder and becomes somebody else here.
        const bool ready = geteuid() != 0 || (chown(folder.c_str(), nobody, nobody) == 0 && setuid(nobody) == 0);
        testing::internal::CaptureStderr();
        const SDMGT_HANDLE handle = open(0);
        const std::string good = writeSettings(handle, 0);
        std::filesystem::permissions(folder, std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
        DEVICEENTRYISCSI entry = sampleEntry(33);
        EXPECT_EQ(SDSetDDBEntry(handle, &entry, 33), ERR_FLASH_WRITE);
        EXPECT_EQ(SDSetDDBEntry(open(1), &entry, 33), ERR_FLASH_WRITE);
        EXPECT_EQ(readFile(flash(0)), good);
        EXPECT_EQ(entryAt(handle, 17).ReservedFlags, 17U);
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
        EXPECT_EQ(SDSetDDBEntry(handle, &entry, 33), 0U);
        testing::internal::GetCapturedStderr();
        _exit(ready && !HasFailure() ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST_F(FlashFileTest, UnusableFoldersGiveAStatus)
{
    writeFile(folder / "file", "");
    testing::internal::CaptureStderr();
    setenv("TAVO_ADAPTER_FLASH", (folder / "file").c_str(), 1);
    SD_UINT32 count = 0;
    EXPECT_EQ(SDGetDDBEntryNum(open(0), &count), ERR_FLASH_READ);
    setenv("TAVO_ADAPTER_FLASH", (folder / "missing").c_str(), 1);
    DEVICEENTRYISCSI entry = sampleEntry(1);
    EXPECT_EQ(SDGetDDBEntryNum(open(0), &count), 0U);
    EXPECT_EQ(SDSetDDBEntry(open(0), &entry, 1), ERR_FLASH_WRITE);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("cannot read " + (folder / "file/adapter0.flash").string()), std::string::npos) << said;
    EXPECT_NE(said.find("cannot write " + (folder / "missing/adapter0.flash.lock").string()), std::string::npos)
        << said;
}

SD_UINT64 bytesRead()
{
    std::ifstream file("/proc/self/io");
    std::string name;
    SD_UINT64 bytes = 0;
    file >> name >> bytes;
    return bytes;
}

TEST_F(FlashFileTest, UnchangedFilesAreReadOnce)
{
    DEVICEENTRYISCSI entry = sampleEntry(5);
    ASSERT_EQ(SDSetDDBEntry(open(2), &entry, 5), 0U);
    const std::string bytes = readFile(flash(2));
    place(2, bytes); // as if another process had written it
    const SDMGT_HANDLE handle = open(2);
    const SD_UINT64 before = bytesRead();
    EXPECT_EQ(walk(handle).size(), DDB_SLOTS);
    const SD_UINT64 read = bytesRead() - before;
    EXPECT_GE(read, bytes.size());
    EXPECT_LT(read, bytes.size() + 4096);
}

TEST_F(FlashFileTest, LeftoversOfAKilledWriterDoNoHarm)
{
    const SDMGT_HANDLE handle = open(0);
    writeSettings(handle, 0);
    writeFile(flash(0).string() + ".new", std::string(100000, 'z'));
    DEVICEENTRYISCSI entry = sampleEntry(34);
    ASSERT_EQ(SDSetDDBEntry(handle, &entry, 34), 0U);
    EXPECT_FALSE(std::filesystem::exists(flash(0).string() + ".new"));
    EXPECT_EQ(entryAt(open(0), 34).ReservedFlags, 34U);
    EXPECT_EQ(entryAt(open(0), 17).ReservedFlags, 17U);
}

} // namespace
