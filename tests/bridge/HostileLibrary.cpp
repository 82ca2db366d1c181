// A management library that means no good: counts and lengths of every kind, text without an end, pointers that lead
// nowhere, statuses of every kind and random bytes. Nothing may be read or written beyond a record (the sanitizers
// watch), nothing may stay borrowed, and what reaches Java is checked where the contract says what it is.
#include "ScriptedLibrary.h"
#include "Vm.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <random>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace
{
using Responder = std::function<std::optional<Answer>(const Operation &)>;

// Calls a method, answered by the responder, and checks what holds for every call.
Outcome hostile(World &world, const Responder &responder, bool recording = false)
{
    library().responder = responder;
    Outcome outcome = call(world, [&](JniWatch &watch) { watch.recording = recording; });
    library().responder = nullptr;
    EXPECT_EQ(outcome.left, "");
    return outcome;
}

Answer filled(const Operation &operation, char with, std::optional<SD_UINT32> count = {})
{
    return {0, std::string(operation.outSize, with), count};
}

// A list that the library counts: the Java method that takes its entries, one by one or so many values of each at once,
// and the name that it is called by when it is cut.
struct List {
    const char *method, *taker, *name;
    SD_UINT32 capacity, values;
};

std::size_t entriesTaken(const List &list, const Outcome &outcome)
{
    std::size_t calls = 0, values = 0;
    for (const std::string &event : outcome.events) {
        if (event.starts_with("call ") && event.find(std::string(" ") + list.taker + " ") != std::string::npos) {
            ++calls;
            values = event.ends_with("[]") ? 0 : 1 + std::size_t(std::count(event.begin(), event.end(), ' ')) - 3;
        }
    }
    return list.values == 0 ? calls : values / list.values;
}

// Every count, at every border: never more than the buffer holds reaches Java, all of it up to there, and a line says
// when it was not all.
TEST(HostileLibrary, countsBeyondTheBuffer)
{
    for (const List &list : {List{"getCHAPTableData", "addCHAPTableEntry", "CHAP table", 128, 0},
                             List{"getiSNSTargets", "addiSNSTarget", "iSNS targets", 512, 0},
                             List{"getiSCSIHBAData", "addDeviceDataBaseEntry", nullptr, 512, 0},
                             List{"getConnectErrorLog", "setConnectErrorLogEntries", "Connection error log", 128, 11},
                             List{"getARPLog", "setARPLogEntries", "ARP log", 128, 26}}) {
        for (SD_UINT32 count : {0U, 1U, list.capacity - 1, list.capacity, list.capacity + 1, 30U, 31U, 0x7fffffffU,
                                0x80000000U, 0xffffffffU}) {
            SCOPED_TRACE(std::string(list.method) + " with a count of " + std::to_string(count));
            World world(nativeMethod(list.method));
            const auto answer = [&](const Operation &operation) {
                EXPECT_LE(operation.name == "SDGetCHAPTable" ? *operation.count : 0, list.capacity) << "too much room";
                // Entries that point to themselves, nowhere or backwards: the walk has to come to its end.
                return filled(operation, '3', count);
            };
            const Outcome outcome = hostile(world, answer, true);
            EXPECT_EQ(outcome.result, "0");
            EXPECT_EQ(entriesTaken(list, outcome), std::min(count, list.capacity));
            const std::string cut = " cut: " + std::to_string(count) + " reported, " + std::to_string(list.capacity);
            EXPECT_EQ(outcome.printed,
                      count > list.capacity && list.name != nullptr ? list.name + cut + " read\n" : "");
        }
    }
}

// The library that minds the room says 128 of 129; a table may also have shrunk between the two calls.
TEST(HostileLibrary, chapTableThatFillsItsRoom)
{
    for (SD_UINT32 second : {128U, 127U}) {
        World world(nativeMethod("getCHAPTableData"));
        const Outcome outcome = hostile(world, [&](const Operation &operation) {
            return Answer{0, "", operation.name == "SDGetCHAPEntryNum" ? 129 : second};
        });
        EXPECT_EQ(outcome.printed, second == 128 ? "CHAP table cut: 129 reported, 128 read\n" : "");
    }
}

// Array writes at their borders: what is handed over, and what is quietly not.
TEST(HostileLibrary, arraysAtTheirBorders)
{
    struct Row {
        const char *method, *operation;
        jsize most;
    };
    for (const Row &row : {Row{"setDDBsData", "SDSetDDBEntry", 511}, Row{"setCHAPTableData", "SDSetCHAPTable", 127}}) {
        for (jsize length : {0, 1, row.most, row.most + 1, 5000}) {
            SCOPED_TRACE(std::string(row.method) + " with " + std::to_string(length) + " elements");
            World world(nativeMethod(row.method));
            world.array =
                world.env->NewObjectArray(length, world.env->FindClass("java/lang/Object"), world.objects[0].second);
            SD_UINT32 records = 0;
            jint calls = 0;
            Outcome outcome = hostile(world, [&](const Operation &operation) {
                ++calls;
                records = operation.number;
                return Answer{};
            });
            EXPECT_EQ(outcome.result, "0");
            EXPECT_EQ(outcome.printed, "");
            bool written = length >= 1 && length <= row.most;
            bool table = std::string(row.method) == "setCHAPTableData";
            EXPECT_EQ(calls, written ? (table ? 1 : length) : 0);
            EXPECT_EQ(table && written ? records : 0U, table && written ? SD_UINT32(length) + 1 : 0U);
        }
    }
}

// The LUN list: the lengths at the borders of both areas, the same in both responses and grown from a short one.
TEST(HostileLibrary, lengthsOfTheLunList)
{
    for (bool grown : {false, true}) {
        for (SD_UINT32 length = 0; length <= 2100; length += length == 40 ? 200 : length == 280 ? 1750 : 1) {
            SCOPED_TRACE("length " + std::to_string(length) + (grown ? " grown from 16" : ""));
            World world(nativeMethod("getScsiReportLUNsData"));
            int commands = 0;
            const auto answer = [&](const Operation &operation) {
                const SD_UINT32 said = grown && ++commands == 1 ? 16 : length;
                EXPECT_TRUE(operation.outSize == 264U || (!grown && length > 264));
                std::string bytes = {0, 0, char(said >> 8), char(said), 1, 2, 3, 4};
                for (SD_UINT32 lun = 0x4000; bytes.size() < operation.outSize; lun += 3) {
                    bytes += {char(lun >> 8), char(lun), 9, 8, 7, 6, 5, 4};
                }
                return Answer{0, bytes, {}};
            };
            const Outcome outcome = hostile(world, answer, true);
            const SD_UINT32 held = grown || length <= 264 ? 32 : 255; // whole entries that the area holds
            const SD_UINT32 units = length > 2048 ? 0 : std::min(held, (length + 7) / 8);
            EXPECT_EQ(outcome.result, length > 2048 ? "20000075" : "0");
            EXPECT_EQ(entriesTaken({"", "addLUN", "", 0, 0}, outcome), length == 0 ? 1 : units);
            EXPECT_TRUE(units == 0 || outcome.events.back().ends_with(" " + std::to_string(0x4000 + 3 * (units - 1))));
            EXPECT_EQ(outcome.printed.starts_with("LUN list cut: "), length > 8 * held && length <= 2048);
        }
    }
}

// Random bytes for what the fuzz target makes of them, seeded. TAVO_RANDOM_ROUNDS and TAVO_RANDOM_SEED choose others.
// What is left behind ends the program.
TEST(HostileLibrary, randomRecords)
{
    const char *rounds = std::getenv("TAVO_RANDOM_ROUNDS"), *given = std::getenv("TAVO_RANDOM_SEED");
    const unsigned seed = given != nullptr ? unsigned(std::strtoul(given, nullptr, 0)) : 20240917U;
    std::printf("random records: seed %u\n", seed);
    std::mt19937 random(seed);
    std::vector<std::uint8_t> input(8192);
    for (long round = rounds != nullptr ? std::strtol(rounds, nullptr, 0) : 40; round > 0; --round) {
        for (std::size_t method = 0; method < nativeMethods().size(); ++method) {
            const unsigned mask = round % 2 == 0 ? 0x7fU : 0xffU; // no UTF-8 in half of the records
            std::ranges::generate(input, [&] { return std::uint8_t(random() & mask); });
            input[0] = std::uint8_t(method);
            EXPECT_EQ(LLVMFuzzerTestOneInput(input.data(), input.size()), 0);
        }
    }
}
} // namespace
