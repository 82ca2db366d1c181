// The databases of the settings and of the counters: damage is refused and left alone, nobody waits for a writer, what
// has not changed is not read again.
#include "ActivityStore.h"
#include "AdapterTest.h"
#include "Sqlite.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <chrono>
#include <memory>

namespace
{

class Store : public AdapterTest
{
protected:
    // Puts a file in the place of the settings, as a new file.
    void place(const std::string &bytes) const
    {
        writeFile(folder / "placed", bytes);
        std::filesystem::remove(settings.string() + "-wal");
        std::filesystem::remove(settings.string() + "-shm");
        std::filesystem::rename(folder / "placed", settings);
    }
    // What the settings from writeSettings look like from outside; "refused" when they are. Nothing else may happen.
    static std::string look()
    {
        const OpenAdapter adapter(3);
        DEVICEENTRYISCSI entry{};
        const SD_UINT32 status = SDGetDDBEntry(adapter, &entry, 17);
        if (status != 0) {
            EXPECT_EQ(status, ERR_FLASH_DAMAGED);
            EXPECT_EQ(adapter.write(9, entry), ERR_FLASH_DAMAGED);
            return "refused";
        }
        const ChapTable table = adapter.chapTable();
        const INITFWISCSI block = adapter.read(SDGetInitFW);
        std::string seen(reinterpret_cast<const char *>(&entry), sizeof entry);
        seen.append(reinterpret_cast<const char *>(table.data()), table.size() * sizeof(CHAPTABLE));
        return seen.append(reinterpret_cast<const char *>(&block), sizeof block);
    }
};

// Runs SQL on a database as somebody else would.
void alter(const std::filesystem::path &file, const char *sql)
{
    Connection(file, SQLITE_OPEN_READWRITE).run(sql);
}

TEST_F(Store, DamagedBytesAndTruncationsAreRefusedOrDoNotMatter)
{
    const std::string good = writeSettings();
    const std::string expected = look();
    ASSERT_NE(expected, "refused");
    std::vector<std::string> attempts;
    for (std::size_t byte = 0; byte < good.size(); byte += byte < 100 ? 3 : 41) {
        attempts.push_back(good);
        char &letter = attempts.back()[byte];
        letter = static_cast<char>(letter ^ (byte % 2 == 0 ? 0x01 : 0xFF));
    }
    for (std::size_t length = 0; length < good.size(); length += 509) {
        attempts.push_back(good.substr(0, length));
    }
    for (const char *part : {"sample 17", "a secret"}) { // each byte of a record counts
        attempts.push_back(good);
        attempts.back().at(good.find(part)) = 'X';
    }
    std::string seen;
    int refused = 0; // other damage is in unused room of the file
    const std::string said = saidDuring([&] {
        for (std::size_t number = 0; number < attempts.size(); ++number) {
            place(attempts[number]);
            seen = look();
            ASSERT_TRUE(seen == "refused" || seen == expected) << number << ": something else was read";
            ASSERT_EQ(readFile(settings), attempts[number]) << number << ": the file was changed";
            refused += seen == "refused" ? 1 : 0;
        }
    });
    EXPECT_GT(refused, 30);
    EXPECT_EQ(said.find("a secret"), std::string::npos);
    for (const char *line : {"settings.db is refused: ", "the checksum of device database entry 17 does not match",
                             "the checksum of CHAP record 1 does not match"}) {
        EXPECT_NE(said.find(line), std::string::npos) << line;
    }

    place(good);
    EXPECT_EQ(look(), expected) << "a good copy in its place is taken at once";
    std::filesystem::remove(settings);
    EXPECT_TRUE(OpenAdapter(3).walk().empty()) << "without its file the adapter is factory-fresh";
}

TEST_F(Store, ForeignFilesAndLostRecordsAreRefused)
{
    const std::string good = writeSettings();
    for (const std::string &foreign : {std::string(5000, 'x'), std::string()}) {
        place(foreign);
        EXPECT_EQ(look(), "refused") << "an empty file is not a fresh adapter";
    }
    constexpr const char *misplaced = "UPDATE record SET bytes = (SELECT bytes FROM record WHERE kind = 'CHAP record'"
                                      " AND number = 0) WHERE kind = 'CHAP record'";
    for (const char *sql : {
             "PRAGMA application_id = 1",
             "PRAGMA user_version = 2",
             "DROP TABLE adapter",
             "DELETE FROM record WHERE number = 17",
             "DELETE FROM record",
             "DELETE FROM adapter",
             "UPDATE record SET number = 18 WHERE number = 17",
             misplaced,
             "UPDATE record SET bytes = 'text' WHERE number = 17",
             "UPDATE record SET adapter = 'TV2040A000117' WHERE kind = 'firmware block'",
             "UPDATE adapter SET census = zeroblob(24)",
             "INSERT INTO record VALUES ('TV2010C000009', 'new kind', 0, x'00', 0)",
         }) {
        place(good);
        alter(settings, sql);
        EXPECT_EQ(look(), "refused") << sql;
    }
    place(good);
    alter(settings, "UPDATE record SET bytes = zeroblob(484) WHERE number = 17");
    EXPECT_EQ(OpenAdapter(0).count(), 8U) << "the settings of other adapters are still good";

    std::filesystem::remove(settings);
    std::filesystem::create_directory(settings);
    EXPECT_EQ(look(), "refused");
    std::filesystem::remove(settings);
    ASSERT_EQ(mkfifo(settings.c_str(), 0600), 0);
    EXPECT_EQ(look(), "refused") << "a pipe must not hold us up";
    std::filesystem::remove(settings);
    std::filesystem::create_symlink(writeFile(folder / "elsewhere", good), settings);
    EXPECT_EQ(look(), "refused") << "a link may lead into somebody else's file";
}

SD_UINT64 packetsSent(SD_UINT32 index)
{
    return OpenAdapter(index).counters().IPTxPacketsCount;
}

TEST_F(Store, DamagedCountersStartAfresh)
{
    const SD_UINT64 factory = packetsSent(0);
    ASSERT_EQ(OpenAdapter(1).ping("fd00:20::1", 9), 0U);
    writeFile(folder / "activity.db", "nonsense");
    const std::string said = saidDuring([&] {
        const OpenAdapter adapter(0);
        EXPECT_EQ(packetsSent(0), factory);
        ASSERT_EQ(adapter.ping("10.20.0.1", 2), 0U);
        EXPECT_EQ(packetsSent(0), factory + 2);
        EXPECT_EQ(SDResetStatisticsiSCSI(adapter, 0), 0U);
        EXPECT_EQ(packetsSent(0), 0U);
    });
    EXPECT_NE(said.find("activity.db is refused"), std::string::npos);
    EXPECT_EQ(readFile(folder / "activity.db.damaged"), "nonsense");
}

TEST_F(Store, AFileDated2040IsAFile)
{
    ASSERT_EQ(SDResetStatisticsiSCSI(OpenAdapter(0), 0), 0U);
    writeSettings();
    timespec late{};
    late.tv_sec = 2'208'988'800;
    const std::array<timespec, 2> dates{late, late};
    for (const char *name : {"settings.db", "activity.db"}) {
        ASSERT_EQ(utimensat(AT_FDCWD, (folder / name).c_str(), dates.data(), 0), 0);
    }
    EXPECT_EQ(OpenAdapter(3).entry(17).ReservedFlags, 17U);
    EXPECT_EQ(packetsSent(0), 0U) << "the counters were reset";
    EXPECT_EQ(OpenAdapter(3).write(18, sampleEntry(18)), 0U);
    EXPECT_EQ(OpenAdapter(3).entry(18).ReservedFlags, 18U);
    EXPECT_FALSE(std::filesystem::exists(folder / "activity.db.damaged"));
}

TEST_F(Store, CountersReachTheFileOnceASecondAtCloseAndAtTheEnd)
{
    const SD_UINT64 before = packetsSent(0);
    {
        const OpenAdapter adapter(0);
        for (int round = 0; round < 20; ++round) {
            ASSERT_EQ(adapter.ping("10.20.0.1", 1), 0U);
        }
        EXPECT_FALSE(std::filesystem::exists(folder / "activity.db"));
        usleep(1'100'000);
        EXPECT_EQ(packetsSent(0), before + 20);
        EXPECT_TRUE(std::filesystem::exists(folder / "activity.db"));
        ASSERT_EQ(adapter.ping("10.20.0.1", 1), 0U);
    }
    EXPECT_EQ(packetsSent(0), before + 21);
    inChild([] { return true; },
            [] {
                const OpenAdapter left(0);
                std::exit(left.ping("10.20.0.1", 1) == 0 ? 0 : 1); // without closing the adapter
            });
    EXPECT_EQ(packetsSent(0), before + 22);
}

TEST_F(Store, CountersThatBeginAnewAreNotBelowZero)
{
    const Folder place{folder, false};
    HBAPORTSTATISCSI kernels{};
    kernels.MACTxBytesCount = 1000;
    kernels.IPTxBytesCount = 1000;
    {
        ActivityStore store(place, "port", {});
        store.resetCounters(kernels);
        kernels.IPTxBytesCount = 1500;
        EXPECT_EQ(store.counters(kernels).MACTxBytesCount, 0U);
        EXPECT_EQ(store.counters(kernels).IPTxBytesCount, 500U);
        kernels.MACTxBytesCount = 10;
        EXPECT_EQ(store.counters(kernels).MACTxBytesCount, 10U);
    }
    kernels.MACTxBytesCount = 2000;
    ActivityStore store(place, "port", {});
    EXPECT_EQ(store.counters(kernels).MACTxBytesCount, 2000U) << "the old baseline is gone for good";
    EXPECT_EQ(store.counters(kernels).IPTxBytesCount, 500U);
}

// How many bytes this process reads from files during work.
SD_UINT64 bytesRead(const std::function<void()> &work)
{
    const auto sum = [] {
        std::ifstream file("/proc/self/io");
        std::string name;
        SD_UINT64 bytes = 0;
        file >> name >> bytes;
        return bytes;
    };
    const SD_UINT64 before = sum();
    work();
    return sum() - before;
}

TEST_F(Store, UnchangedSettingsAreReadOnce)
{
    ASSERT_EQ(OpenAdapter(2).write(5, sampleEntry(5)), 0U);
    const OpenAdapter adapter(2);
    const auto walk = [&] {
        EXPECT_EQ(adapter.walk().size(), DDB_SLOTS);
    };
    walk();
    EXPECT_LT(bytesRead(walk), 4096U);
    // Somebody writes to another adapter, then to this one.
    ASSERT_EQ(OpenAdapter(3).write(5, sampleEntry(5)), 0U);
    EXPECT_LT(bytesRead(walk), 3U * 4096);
    alter(settings, "DELETE FROM record WHERE adapter = 'TV2060B000343-XL';"
                    "DELETE FROM adapter WHERE key = 'TV2060B000343-XL';");
    EXPECT_EQ(adapter.entry(5).ReservedFlags, 0U) << "what others write is seen";
}

TEST_F(Store, CommandsFollowWhatOthersDoToTheSettings)
{
    ASSERT_EQ(OpenAdapter(0).write(33, OpenAdapter(0).entry(0)), 0U);
    const std::string good = readFile(settings);
    const OpenAdapter adapter(0);
    const auto ask = [&] {
        TARGETINFORMATION unit{};
        unit.TargetID = 33;
        std::array<SD_UINT8, 64> area{};
        return SDSendScsiReportLunsCmdiSCSI(adapter, &unit, area.data(), area.size(), nullptr, 0);
    };
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(ask(), 0U);
        EXPECT_EQ(ask(), 0U);
        alter(settings, "DELETE FROM record WHERE adapter = 'TV2040A000117';"
                        "DELETE FROM adapter WHERE key = 'TV2040A000117'");
        EXPECT_EQ(ask(), ERR_NO_SUCH_TARGET) << "what others write is seen at once";
        place(good);
        usleep(100'000);
        EXPECT_EQ(ask(), 0U) << "another file is noticed";
    }
    std::filesystem::remove(settings);
    usleep(100'000);
    EXPECT_EQ(ask(), ERR_NO_SUCH_TARGET) << "so is none";
}

TEST_F(Store, WritersWaitForWritersAndReadersForNobody)
{
    writeSettings();
    const OpenAdapter adapter(3);
    auto other = std::make_unique<Connection>(settings, SQLITE_OPEN_READWRITE);
    other->run("BEGIN IMMEDIATE");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(adapter.count(), 1U);
    EXPECT_EQ(adapter.ping("10.20.0.1", 1), ERR_UNREACHABLE);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
    EXPECT_EQ(adapter.write(9, sampleEntry(9)), ERR_BUSY);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(4500));
    other.reset();
    EXPECT_EQ(adapter.write(9, sampleEntry(9)), 0U);
}

} // namespace
