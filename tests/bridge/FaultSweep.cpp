// Lets the 1st, 2nd, 3rd ... thing that can fail fail, until a run meets no fault, for the first case of every method.
// What can fail is a JNI call (once with and once without the Java error that it raises left pending), a management
// operation and a heap allocation. Unlike the table, which says what each fault leads to, this also lets calls that
// answer nothing throw.
#include "Expansion.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <sstream>

// The number of faults must not shrink unnoticed.
constexpr long FAULT_FLOOR = 3000;

namespace
{
// The lines and results that the table knows for a case.
struct Documented {
    std::set<std::string> lines, results{"1003"}; // no memory for a Java string or array

    explicit Documented(Expansion &expansion)
    {
        const std::size_t events = expansion.expect(17, 0).events.size();
        for (std::size_t at = 0; at <= events; ++at) {
            const Expectation expected = expansion.expect(17, 0, {long(at), ScriptedLibrary::FAULT});
            results.insert(expected.result);
            std::istringstream in(expected.printed);
            for (std::string line; std::getline(in, line);) {
                lines.insert(line);
            }
        }
    }

    // Whether all lines are known, or name what is null where the wording is left open.
    bool knows(const std::string &printed) const
    {
        std::istringstream in(printed);
        bool all = true;
        for (std::string line; std::getline(in, line);) {
            all = all && (lines.contains(line) || line.starts_with("NULL "));
        }
        return all;
    }
};

TEST(FaultSweep, leavesNothingBehind)
{
    library().faultStatus = ScriptedLibrary::FAULT;
    long faults = 0;
    std::set<std::string> methods;
    for (const Statement &one : methodTable().cases) {
        if (!methods.insert(one.word(2)).second) {
            continue;
        }
        Expansion expansion(one, false);
        const Documented documented(expansion);
        for (bool pending : {false, true}) {
            bool met = true;
            for (long n = 1; met; ++n) {
                World world(nativeMethod(expansion.method()));
                expansion.prepare(world);
                const Outcome outcome = call(world, [&](JniWatch &watch) {
                    watch.recording = false;
                    watch.failNth = n;
                    watch.leavePending = pending;
                });
                met = outcome.failed;
                faults += met ? 1 : 0;
                SCOPED_TRACE(expansion.method() + ", fault " + std::to_string(n) + (pending ? " left pending: " : ": ")
                             + outcome.failedAt);
                EXPECT_EQ(outcome.left, "");
                EXPECT_TRUE(expansion.method() != "setCHAPTableData" || outcome.unwiped == 0)
                    << "secrets left in freed memory";
                EXPECT_TRUE(documented.results.contains(outcome.result)) << outcome.result;
                EXPECT_TRUE(documented.knows(outcome.printed)) << outcome.printed;
                if (HasFailure()) {
                    return; // one is enough to read
                }
            }
        }
    }
    std::printf("%ld faults injected into %zu methods\n", faults, methods.size());
    EXPECT_EQ(methods.size(), nativeMethods().size());
    EXPECT_GE(faults, FAULT_FLOOR);
}
} // namespace
