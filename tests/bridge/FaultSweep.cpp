// Beyond what the table lays down: every single call of the VM leaves a Java error pending, also those that answer
// nothing. All functions of the VM but those that clear up fail from then on. Whatever the method does, it leaves
// nothing behind, and what Java code threw reaches its caller.
#include "Expansion.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <set>

// The number of faults must not shrink unnoticed.
constexpr long FAULT_FLOOR = 2000;

namespace
{
TEST(FaultSweep, leavesNothingBehind)
{
    library().faultStatus = ScriptedLibrary::FAULT;
    long faults = 0;
    std::set<std::string> methods;
    for (const Statement &one : methodTable().cases) {
        if (!methods.insert(one.word(2)).second) {
            continue; // the first case of a method will do
        }
        Expansion expansion(one, false);
        expansion.expect(17, 0);
        bool met = true;
        for (long n = 1; met; ++n) {
            World world(nativeMethod(expansion.method()));
            expansion.prepare(world);
            const Outcome outcome = call(world, [&](JniWatch &watch) {
                watch.recording = false;
                watch.failNth = n;
                watch.leavePending = true;
            });
            met = outcome.failed;
            faults += met ? 1 : 0;
            SCOPED_TRACE(expansion.method() + ", fault " + std::to_string(n) + ": " + outcome.failedAt);
            EXPECT_EQ(outcome.left, "");
            EXPECT_TRUE(outcome.pending || !outcome.failedAt.starts_with("call ")) << "the caller's exception is lost";
            if (HasFailure()) {
                return; // one is enough to read
            }
        }
    }
    std::printf("%ld faults injected into %zu methods\n", faults, methods.size());
    EXPECT_EQ(methods.size(), nativeMethods().size());
    EXPECT_GE(faults, FAULT_FLOOR);
}
} // namespace
