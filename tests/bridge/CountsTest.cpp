// What a call costs, exactly: the table golden/counts.table, and the live local references of tables of every size.
#include "Transcript.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>

namespace
{
// METHOD lookups calls classes objects strings arrays deleted peak
TEST(Counts, areThoseOfTheTable)
{
    std::ifstream in(goldenFile("counts.table"));
    std::set<std::string> rows;
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        std::string method;
        if (!(words >> method) || method[0] == '#') {
            continue;
        }
        World world(nativeMethod(method));
        transcriptOf(method).prepare(world);
        Counts c = call(world, [](JniWatch &watch) { watch.recording = false; }).counts;
        std::ostringstream actual;
        actual << method;
        for (unsigned count : {c.lookups, c.calls, c.classes, c.objects, c.strings, c.arrays, c.deleted, c.peak}) {
            actual << ' ' << count;
        }
        EXPECT_EQ(actual.str(), line);
        rows.insert(method);
    }
    EXPECT_EQ(rows.size(), 39U);
}

// Calls a method for a table of `count` entries and returns the counts of the call.
Counts countsFor(const std::string &method, SD_UINT32 count)
{
    World world(nativeMethod(method));
    const Transcript &t = transcriptOf(method);
    t.prepare(world);
    std::string record = unhex(std::string(size_t(2 * 484), '3'));
    library().responder = [=](const Operation &operation) -> std::optional<Answer> {
        if (operation.name == "SDGetDDBEntry") {
            return Answer{0, record, {}};
        }
        if (operation.name == "SDGetInitFW") {
            return {};
        }
        return Answer{0, "", count};
    };
    if (world.array != nullptr) { // the same element over and over
        world.array =
            world.env->NewObjectArray(jsize(count), world.env->FindClass("java/lang/Object"), world.objects[0].second);
    }
    Outcome outcome = call(world, [](JniWatch &watch) { watch.recording = false; });
    EXPECT_EQ(outcome.result, "0");
    EXPECT_EQ(outcome.breaches, "");
    EXPECT_EQ(outcome.createdAlive, 0U);
    return outcome.counts;
}

TEST(Counts, liveReferencesDoNotGrowWithTheTable)
{
    struct Row {
        const char *method;
        SD_UINT32 most;
    };
    for (const Row &row : {Row{"getiSCSIHBAData", 512}, Row{"getCHAPTableData", 128}, Row{"getiSNSTargets", 512},
                           Row{"setDDBsData", 511}, Row{"setCHAPTableData", 127}}) {
        Counts one = countsFor(row.method, 1), some = countsFor(row.method, 64), all = countsFor(row.method, row.most);
        std::printf("live local references of %s: %u for 1, %u for 64, %u for %u entries\n", row.method, one.peak,
                    some.peak, all.peak, row.most);
        EXPECT_EQ(one.peak, some.peak) << row.method;
        EXPECT_EQ(one.peak, all.peak) << row.method;
        EXPECT_GT(all.lookups, 5 * row.most) << row.method << ": not every entry was handled";
        // And nothing but the number of entries makes the calls grow.
        EXPECT_EQ((all.lookups - one.lookups) % (row.most - 1), 0U) << row.method;
        EXPECT_EQ((all.calls - one.calls) % (row.most - 1), 0U) << row.method;
    }
}
} // namespace
