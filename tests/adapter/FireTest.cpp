// Under fire: writers that are killed, many processes and many threads at once. TAVO_ROUNDS sets how long it takes.
#include "AdapterTest.h"

#include <sys/mman.h>
#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <map>
#include <random>
#include <thread>

namespace
{

using Fire = AdapterTest;

int rounds(int usual)
{
    const char *text = std::getenv("TAVO_ROUNDS");
    return text == nullptr ? usual : std::stoi(text);
}

// Write number n: an even number replaces the CHAP table, an odd one writes an entry. Everything written follows from
// n.
SD_UINT32 entryOf(SD_UINT32 n)
{
    return (n / 2) % 40;
}

std::vector<CHAPTABLE> tableOf(SD_UINT32 n)
{
    std::vector<CHAPTABLE> table(1 + n % CHAP_CAPACITY);
    for (CHAPTABLE &record : table) {
        std::memcpy(record.ChapName, &n, sizeof n);
        std::memset(record.ChapSecret, static_cast<int>(n), sizeof record.ChapSecret);
    }
    return table;
}

SD_UINT32 write(SDMGT_HANDLE handle, SD_UINT32 n)
{
    if (n % 2 == 0) {
        auto table = tableOf(n);
        auto count = static_cast<SD_UINT32>(table.size());
        return SDSetCHAPTable(handle, table.data(), &count);
    }
    DEVICEENTRYISCSI entry = sampleEntry(n);
    return SDSetDDBEntry(handle, &entry, entryOf(n));
}

// Whether the adapter holds exactly what writes 1 to n left behind.
bool holds(SDMGT_HANDLE handle, SD_UINT32 n)
{
    std::map<SD_UINT32, SD_UINT32> entries;
    SD_UINT32 lastTable = 0;
    for (SD_UINT32 each = 1; each <= n; ++each) {
        if (each % 2 == 0) {
            lastTable = each;
        } else {
            entries[entryOf(each)] = each;
        }
    }
    SD_UINT32 count = 0;
    if (SDGetDDBEntryNum(handle, &count) != 0 || count != entries.size()) {
        return false;
    }
    for (const auto &[index, each] : entries) {
        DEVICEENTRYISCSI entry{};
        DEVICEENTRYISCSI expected = sampleEntry(each);
        expected.TargetID = index;
        if (SDGetDDBEntry(handle, &entry, index) != 0) {
            return false;
        }
        expected.NextValid = entry.NextValid;
        expected.DeviceState = entry.DeviceState; // of a killed process the outcome of the login may be missing
        if (std::memcmp(&entry, &expected, sizeof entry) != 0) {
            return false;
        }
    }
    std::vector<CHAPTABLE> table(CHAP_CAPACITY);
    count = CHAP_CAPACITY;
    const auto expected = lastTable == 0 ? std::vector<CHAPTABLE>() : tableOf(lastTable);
    const auto sameRecord = [](const CHAPTABLE &one, const CHAPTABLE &other) {
        return std::memcmp(&one, &other, sizeof one) == 0;
    };
    return SDGetCHAPTable(handle, table.data(), &count) == 0
           && std::equal(expected.begin(), expected.end(), table.begin(), table.begin() + count, sameRecord);
}

TEST_F(Fire, KilledWritersLoseNothingButTheWriteUnderWay)
{
    const int kills = rounds(25);
    // The number of the last write that returned, shared with the writer.
    auto *done = static_cast<std::atomic<SD_UINT32> *>(
        mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(done, MAP_FAILED);
    std::mt19937 random(20040719);
    SD_UINT32 reached = 0;
    for (int round = 0; round < kills; ++round) {
        *done = reached;
        (void)std::fflush(stdout);
        const pid_t writer = fork();
        if (writer == 0) {
            SDMGT_HANDLE own = 0;
            SDOpenDeviceiSCSI(3, &own);
            for (SD_UINT32 n = reached + 1;; ++n) {
                if (write(own, n) != 0) {
                    _exit(1);
                }
                *done = n;
            }
        }
        int status = 0;
        while (*done == reached) { // the first write of the round is not disturbed, so that every round gets on
            ASSERT_EQ(waitpid(writer, &status, WNOHANG), 0) << "the writer gave up by itself";
            std::this_thread::sleep_for(std::chrono::microseconds(100));
        }
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 20000));
        ASSERT_EQ(kill(writer, SIGKILL), 0);
        ASSERT_EQ(waitpid(writer, &status, 0), writer);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the writer gave up by itself";
        const SD_UINT32 last = *done;
        const SDMGT_HANDLE handle = open(3); // a database is not carried over into a child process
        const bool before = holds(handle, last);
        ASSERT_TRUE(before || holds(handle, last + 1)) << "after kill " << round << ", write " << last;
        reached = before ? last : last + 1;
        close(handle);
    }
    const SDMGT_HANDLE handle = open(3);
    ASSERT_EQ(write(handle, reached + 1), 0U);
    EXPECT_TRUE(holds(handle, reached + 1));
    (void)std::printf("%d writers killed, %u writes, none lost\n", kills, reached);
    munmap(done, 4096);
}

TEST_F(Fire, EightProcessesLoseNoRecord)
{
    constexpr SD_UINT32 processes = 8;
    const auto writes = static_cast<SD_UINT32>(rounds(12));
    ASSERT_LE(writes * processes, DDB_SLOTS);
    std::vector<pid_t> children;
    (void)std::fflush(stdout);
    for (SD_UINT32 process = 0; process < processes; ++process) {
        children.push_back(fork());
        if (children.back() == 0) {
            SDMGT_HANDLE own = 0;
            SD_UINT32 wrong = SDOpenDeviceiSCSI(3, &own);
            for (SD_UINT32 each = 0; each < writes; ++each) {
                const SD_UINT32 index = each * processes + process;
                DEVICEENTRYISCSI entry = sampleEntry(index);
                wrong |= SDSetDDBEntry(own, &entry, index);
                DEVICEENTRYISCSI back{};
                wrong |= SDGetDDBEntry(own, &back, index);
                wrong |= back.ReservedFlags ^ index;
            }
            wrong |= SDCloseDeviceiSCSI(own);
            _exit(wrong == 0 ? 0 : 1);
        }
    }
    for (const pid_t child : children) {
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0);
    }
    const SDMGT_HANDLE handle = open(3);
    for (SD_UINT32 index = 0; index < writes * processes; ++index) {
        const DEVICEENTRYISCSI entry = entryAt(handle, index);
        EXPECT_EQ(entry.ReservedFlags, index);
        EXPECT_EQ(getText(entry.EntryInfo.Alias), "sample " + std::to_string(index));
    }
    // Each write tried to log in without a link: all of these are counted too.
    EXPECT_EQ(statistics(handle).TCPTimerExpiredCount, writes * processes);
    (void)std::printf("%u processes, %u writes each, none lost\n", processes, writes);
}

TEST_F(Fire, EightThreadsKeepTheirRecords)
{
    constexpr SD_UINT32 threads = 8;
    const auto writes = static_cast<SD_UINT32>(rounds(12));
    ASSERT_LE(writes * threads, DDB_SLOTS);
    const SDMGT_HANDLE shared = open(3);
    std::atomic<SD_UINT32> wrong{0};
    std::vector<std::thread> crew;
    for (SD_UINT32 thread = 0; thread < threads; ++thread) {
        crew.emplace_back([&, thread] {
            for (SD_UINT32 each = 0; each < writes; ++each) {
                SDMGT_HANDLE own = 0;
                SD_UINT32 failed = SDOpenDeviceiSCSI(3, &own);
                const SD_UINT32 index = each * threads + thread;
                DEVICEENTRYISCSI entry = sampleEntry(index);
                failed |= SDSetDDBEntry(each % 2 == 0 ? own : shared, &entry, index);
                DEVICEENTRYISCSI back{};
                failed |= SDGetDDBEntry(shared, &back, index);
                failed |= back.ReservedFlags ^ index;
                auto table = tableOf(index);
                auto count = static_cast<SD_UINT32>(table.size());
                failed |= SDSetCHAPTable(own, table.data(), &count);
                // Another thread's table is fine, a mixture is not.
                std::vector<CHAPTABLE> held(CHAP_CAPACITY);
                count = CHAP_CAPACITY;
                failed |= SDGetCHAPTable(shared, held.data(), &count);
                SD_UINT32 writer = 0;
                std::memcpy(&writer, held[0].ChapName, sizeof writer);
                table = tableOf(writer);
                failed |= table.size() == count ? 0 : 1;
                failed |= std::memcmp(table.data(), held.data(), count * sizeof(CHAPTABLE)) == 0 ? 0 : 1;
                HBAPORTSTATISCSI counters{};
                failed |= SDGetStatisticsiSCSI(own, &counters);
                ping(own, "10.20.0.11", 1);
                failed |= SDCloseDeviceiSCSI(own);
                wrong += failed == 0 ? 0 : 1;
            }
        });
    }
    for (std::thread &thread : crew) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0U);
    EXPECT_EQ(walk(shared).size(), writes * threads);
    EXPECT_EQ(statistics(shared).IPTxPacketsCount, writes * threads) << "a ping that was not counted";
}

} // namespace
