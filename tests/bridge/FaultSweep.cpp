// For every transcript: lets the 1st, 2nd, 3rd ... thing that can fail fail, until a run meets no fault. What can fail
// is a JNI call (once with and once without the Java error that it raises left pending), a management operation and a
// heap allocation.
#include "Transcript.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <sstream>

// The number of faults must not shrink unnoticed.
constexpr long FAULT_FLOOR = 6200;

namespace
{
// The same text with the status that faults of this sweep have.
std::string asFault(std::string text)
{
    std::size_t at = text.find("20000103");
    return at == std::string::npos ? text : text.replace(at, 8, hex(ScriptedLibrary::FAULT));
}

void addLines(std::set<std::string> &lines, const std::string &text)
{
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        lines.insert(line);
    }
}

// Every line that a transcript knows, and the results of one method.
struct Documented {
    std::set<std::string> lines{""};
    std::map<std::string, std::set<std::string>> results;

    Documented()
    {
        results["getVersioniSCSI"].insert("\"\""); // the library left nothing in the buffer
        for (const Transcript &t : transcripts()) {
            results[t.method].insert(asFault(t.result));
            results[t.method].insert(t.result);
            results[t.method].insert("1003"); // no memory for a Java string or array
            addLines(lines, t.printed(0, t.events.size()));
            addLines(lines, asFault(t.printed(0, t.events.size())));
            for (const ExpectedEvent &event : t.events) {
                for (const ExpectedFailure &failure : event.failures) {
                    addLines(lines, failure.printed);
                    results[t.method].insert(failure.result);
                }
            }
        }
    }
};

std::string undocumented(const Documented &documented, const std::string &printed)
{
    std::set<std::string> lines;
    addLines(lines, printed);
    for (const std::string &line : lines) {
        // Where the contract leaves the text open, it names what is null.
        if (!documented.lines.contains(line) && !line.starts_with("NULL ")) {
            return line;
        }
    }
    return "";
}

TEST(FaultSweep, leavesNothingBehind)
{
    Documented documented;
    long faults = 0;
    std::map<std::string, long> byMethod;
    for (const Transcript &t : transcripts()) {
        for (bool pending : {false, true}) {
            bool met = true;
            for (long n = 1; met; n++) {
                World world(nativeMethod(t.method));
                t.prepare(world);
                Outcome outcome = call(world, [&](JniWatch &watch) {
                    watch.recording = false;
                    watch.failNth = n;
                    watch.leavePending = pending;
                });
                met = outcome.failed;
                faults += met ? 1 : 0;
                byMethod[t.method] += met ? 1 : 0;
                SCOPED_TRACE(t.file + ", fault " + std::to_string(n) + (pending ? " left pending: " : ": ")
                             + outcome.failedAt);
                EXPECT_EQ(outcome.breaches, "");
                EXPECT_EQ(outcome.loans, 0U) << "borrowed and not given back";
                EXPECT_EQ(outcome.heapBlocks, 0) << "heap blocks left";
                EXPECT_TRUE(t.method != "setCHAPTableData" || outcome.unwiped == 0) << "secrets left in freed memory";
                EXPECT_EQ(outcome.createdAlive, 0U) << "local references of created objects left";
                // What the contract ignores leaves no error behind, unless Java code threw it.
                EXPECT_FALSE(outcome.result == "0" && outcome.pending && !outcome.failedAt.starts_with("call "));
                EXPECT_TRUE(documented.results[t.method].contains(outcome.result)) << outcome.result;
                EXPECT_EQ(undocumented(documented, outcome.printed), "");
                if (HasFailure()) {
                    return; // one is enough to read
                }
            }
        }
    }
    std::printf("%ld faults injected into %zu methods\n", faults, byMethod.size());
    EXPECT_EQ(byMethod.size(), 39U);
    EXPECT_GE(faults, FAULT_FLOOR);
}
} // namespace
