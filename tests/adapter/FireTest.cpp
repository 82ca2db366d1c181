// Under fire: writers that are killed, many processes and many threads at once. TAVO_ROUNDS sets how long it takes.
#include "AdapterTest.h"

#include <sys/mman.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <map>
#include <random>
#include <thread>

namespace
{

using Fire = AdapterTest;

SD_UINT32 rounds(SD_UINT32 usual)
{
    const char *text = std::getenv("TAVO_ROUNDS");
    return text == nullptr ? usual : static_cast<SD_UINT32>(std::stoul(text));
}

// Write number n: an even number replaces the CHAP table, an odd one writes an entry. Everything written follows from
// n.
SD_UINT32 entryOf(SD_UINT32 n)
{
    return (n / 2) % 40;
}

ChapTable tableOf(SD_UINT32 n)
{
    ChapTable table(1 + n % CHAP_CAPACITY);
    for (CHAPTABLE &record : table) {
        std::memcpy(record.ChapName, &n, sizeof n);
        std::memset(record.ChapSecret, static_cast<int>(n), sizeof record.ChapSecret);
    }
    return table;
}

SD_UINT32 write(const OpenAdapter &adapter, SD_UINT32 n)
{
    return n % 2 == 0 ? adapter.write(tableOf(n)) : adapter.write(entryOf(n), sampleEntry(n));
}

// Whether the adapter holds exactly what writes 1 to n left behind.
bool holds(const OpenAdapter &adapter, SD_UINT32 n)
{
    std::map<SD_UINT32, SD_UINT32> entries;
    for (SD_UINT32 each = 1; each <= n; each += 2) {
        entries[entryOf(each)] = each;
    }
    bool all = adapter.count() == entries.size() && same(adapter.chapTable(), n < 2 ? ChapTable() : tableOf(n - n % 2));
    for (const auto &[index, each] : entries) {
        const DEVICEENTRYISCSI entry = adapter.entry(index);
        DEVICEENTRYISCSI expected = sampleEntry(each);
        expected.TargetID = index;
        expected.NextValid = entry.NextValid;
        expected.DeviceState = entry.DeviceState; // of a killed process the outcome of the login may be missing
        all = all && same(entry, expected);
    }
    return all;
}

TEST_F(Fire, KilledWritersLoseNothingButTheWriteUnderWay)
{
    const SD_UINT32 kills = rounds(25);
    // The number of the last write that returned, shared with the writer.
    auto *done = static_cast<std::atomic<SD_UINT32> *>(
        mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(done, MAP_FAILED);
    std::mt19937 random(20040719);
    SD_UINT32 reached = 0;
    for (SD_UINT32 round = 0; round < kills; ++round) {
        *done = reached;
        (void)std::fflush(stdout);
        const pid_t writer = fork();
        if (writer == 0) {
            const OpenAdapter own(3);
            for (SD_UINT32 n = reached + 1; write(own, n) == 0; ++n) {
                *done = n;
            }
            _exit(1);
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
        const OpenAdapter adapter(3); // a database is not carried over into a child process
        const SD_UINT32 last = *done;
        reached = holds(adapter, last) ? last : last + 1;
        ASSERT_TRUE(holds(adapter, reached)) << "after kill " << round << ", write " << last;
    }
    const OpenAdapter adapter(3);
    ASSERT_EQ(write(adapter, reached + 1), 0U);
    EXPECT_TRUE(holds(adapter, reached + 1));
    (void)std::printf("%u writers killed, %u writes, none lost\n", kills, reached);
    munmap(done, 4096);
}

constexpr SD_UINT32 WORKERS = 8;

// What one of many workers does: its entries and its CHAP tables are written and read back.
void work(SD_UINT32 worker, SD_UINT32 writes)
{
    for (SD_UINT32 each = 0; each < writes; ++each) {
        const OpenAdapter adapter(3);
        const SD_UINT32 index = each * WORKERS + worker;
        EXPECT_EQ(adapter.write(index, sampleEntry(index)), 0U);
        EXPECT_EQ(adapter.entry(index).ReservedFlags, index);
        EXPECT_EQ(adapter.write(tableOf(index)), 0U);
        // Another worker's table is fine, a mixture is not.
        const ChapTable table = adapter.chapTable();
        SD_UINT32 writer = 0;
        std::memcpy(&writer, table.at(0).ChapName, sizeof writer);
        EXPECT_TRUE(same(table, tableOf(writer)));
        adapter.counters();
        EXPECT_EQ(adapter.ping("10.20.0.11", 1), ERR_UNREACHABLE);
    }
}

// What all workers together leave behind. Each write tried to log in without a link: this and each ping are counted.
void expectAll(SD_UINT32 writes)
{
    const OpenAdapter adapter(3);
    for (SD_UINT32 index = 0; index < writes; ++index) {
        EXPECT_EQ(getText(adapter.entry(index).EntryInfo.Alias), "sample " + std::to_string(index));
    }
    EXPECT_EQ(adapter.count(), writes);
    EXPECT_EQ(adapter.counters().TCPTimerExpiredCount, writes);
    EXPECT_EQ(adapter.counters().IPTxPacketsCount, writes);
}

TEST_F(Fire, EightProcessesLoseNoRecord)
{
    const SD_UINT32 writes = rounds(12);
    ASSERT_LE(writes * WORKERS, DDB_SLOTS);
    (void)std::fflush(stdout);
    for (SD_UINT32 worker = 0; worker < WORKERS; ++worker) {
        if (fork() == 0) {
            work(worker, writes);
            _exit(HasFailure() ? 1 : 0);
        }
    }
    for (SD_UINT32 worker = 0; worker < WORKERS; ++worker) {
        int status = -1;
        ASSERT_GT(wait(&status), 0);
        EXPECT_EQ(status, 0);
    }
    expectAll(writes * WORKERS);
}

TEST_F(Fire, EightThreadsKeepTheirRecords)
{
    const SD_UINT32 writes = rounds(12);
    ASSERT_LE(writes * WORKERS, DDB_SLOTS);
    const OpenAdapter shared(3);
    std::vector<std::thread> workers;
    for (SD_UINT32 worker = 0; worker < WORKERS; ++worker) {
        workers.emplace_back(work, worker, writes);
    }
    for (std::thread &worker : workers) {
        worker.join();
    }
    expectAll(writes * WORKERS);
}

} // namespace
