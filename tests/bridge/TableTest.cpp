// Every native method does exactly what the table says, and fails exactly as it says at every event that can.
#include "Expansion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <sstream>

// For the tests' own reports.
static void PrintTo(const Statement &one, std::ostream *out)
{
    *out << "methods.table:" << one.line;
}

namespace
{
// One event a line, so that a failing comparison shows where they part.
std::string lines(const std::vector<std::string> &events)
{
    std::string out;
    for (const std::string &event : events) {
        out += event + "\n";
    }
    return out;
}

// Where the wording is left open, the line begins as all lines about null objects do.
::testing::AssertionResult sameLines(const std::string &expected, const std::string &actual)
{
    std::istringstream some(expected), others(actual);
    std::string line, other;
    while (std::getline(some, line)) {
        if (!std::getline(others, other) || (line == "NULL*" ? !other.starts_with("NULL ") : line != other)) {
            return ::testing::AssertionFailure() << "expected: " << line << "\n printed: " << actual;
        }
    }
    return std::getline(others, other) ? ::testing::AssertionFailure() << "too much: " << other
                                       : ::testing::AssertionSuccess();
}

void check(const Expectation &expected, const Outcome &outcome)
{
    std::vector<std::string> events;
    std::ranges::transform(expected.events, std::back_inserter(events), &ExpectedEvent::text);
    EXPECT_EQ(lines(outcome.events), lines(events));
    EXPECT_TRUE(sameLines(expected.printed, outcome.printed));
    EXPECT_EQ(outcome.result, expected.result);
    EXPECT_EQ(outcome.left, "");
}

// The call with its values, for adapter dev, with the arguments of the mask null.
Outcome callAs(const Expansion &expansion, jint dev, unsigned nulls,
               const std::function<void(JniWatch &)> &arrange = {})
{
    World world(nativeMethod(expansion.method()));
    expansion.prepare(world);
    world.dev = dev;
    world.nulls = nulls;
    return call(world, arrange);
}

// What happens after an event, but for giving back.
bool goesOn(const Expectation &expected, long event)
{
    return std::any_of(expected.events.begin() + event + 1, expected.events.end(),
                       [](const ExpectedEvent &later) { return !later.text.starts_with("give back"); });
}

// Whether the failing event can also leave a Java error pending. What Java code threw is not for the bridge to clear,
// so that nothing can follow.
bool canStayPending(const Expectation &expected, long event)
{
    const std::string &text = expected.events[std::size_t(event)].text;
    return text.starts_with("call ") ? !goesOn(expected, event)
                                     : !text.starts_with("SD") && !text.starts_with("malloc");
}

// Whether it is its method's first case, which the method's figures are about.
bool isFirst(const Statement &one)
{
    const auto first =
        std::ranges::find_if(methodTable().cases, [&](const Statement &other) { return other.word(2) == one.word(2); });
    return first->line == one.line;
}

class TableCase : public ::testing::TestWithParam<Statement>
{
protected:
    static constexpr jint DEV = 17;
};

TEST_P(TableCase, succeedsAsSaid)
{
    for (bool full : {false, true}) {
        for (jint dev : {0, DEV, 31}) {
            Expansion expansion(GetParam(), full);
            const Expectation expected = expansion.expect(dev, 0);
            const Outcome outcome = callAs(expansion, dev, 0);
            SCOPED_TRACE(full ? "texts that fill their fields" : "texts with an end");
            check(expected, outcome);
            EXPECT_FALSE(outcome.pending);
            EXPECT_FALSE(expected.events.empty() && expansion.method() != "initJNINative");
            const Statement &method = methodTable().methods.at(expansion.method());
            if (isFirst(GetParam())) {
                EXPECT_EQ(std::to_string(outcome.peak), method.has("peak") ? method.after("peak") : "0");
            }
        }
    }
}

// Each event that can fail, alone, with and without the error that the VM leaves pending then.
TEST_P(TableCase, failsAsSaid)
{
    Expansion expansion(GetParam(), false);
    const std::vector<ExpectedEvent> events = expansion.expect(DEV, 0).events;
    for (std::size_t at = 0; at < events.size() && !GetParam().has("unfailed"); ++at) {
        std::vector<SD_UINT32> statuses = events[at].statuses;
        statuses.resize(std::max<std::size_t>(statuses.size(), events[at].canFail ? 1 : 0));
        for (SD_UINT32 status : statuses) {
            const Expectation expected = expansion.expect(DEV, 0, {long(at), status});
            for (bool pending : {false, true}) {
                if (pending && !canStayPending(expected, long(at))) {
                    continue;
                }
                SCOPED_TRACE(events[at].text + (pending ? " fails with the error pending" : " fails"));
                library().faultStatus = status;
                const Outcome outcome = callAs(expansion, DEV, 0, [&](JniWatch &watch) {
                    watch.failEvent = long(at);
                    watch.leavePending = pending;
                });
                check(expected, outcome);
                // What Java code threw reaches the Java caller; the bridge's own error goes where it is ignored.
                const bool stays = events[at].text.starts_with("call ") || !expected.ignored;
                EXPECT_EQ(outcome.pending, pending && stays);
                if (HasFailure()) {
                    return; // one is enough to read
                }
            }
        }
    }
}

// Whatever the application's own methods throw reaches the caller, and nothing is left behind.
TEST_P(TableCase, letsThrowingMethodsThrow)
{
    Expansion expansion(GetParam(), false);
    const std::vector<ExpectedEvent> events = expansion.expect(DEV, 0).events;
    for (std::size_t at = 0; at < events.size() && !HasFailure(); ++at) {
        if (events[at].text.starts_with("call ")) {
            SCOPED_TRACE(events[at].text + " throws");
            const Outcome outcome = callAs(expansion, DEV, 0, [&](JniWatch &watch) {
                watch.failEvent = long(at);
                watch.leavePending = true;
            });
            EXPECT_EQ(outcome.left, "");
            EXPECT_TRUE(outcome.pending) << "the caller's exception is lost";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(all, TableCase, ::testing::ValuesIn(methodTable().cases), [](const auto &info) {
    std::string name = info.param.word(2) + "_" + info.param.word(1);
    std::ranges::replace(name, '-', '_');
    return name;
});

// The checks before the first management call: every combination of null arguments with good and bad adapters.
TEST(Table, checksComeInOrder)
{
    constexpr jint least = std::numeric_limits<jint>::min(), most = std::numeric_limits<jint>::max();
    for (const Statement &one : methodTable().cases) {
        Expansion expansion(one, false);
        expansion.expect(0, 0);
        const unsigned masks = 1U << nativeMethod(expansion.method()).objects.size();
        for (unsigned nulls = 0; nulls < masks; ++nulls) {
            for (jint dev : {17, 32, -1, 40, most, least}) {
                SCOPED_TRACE(expansion.method() + " " + std::to_string(dev) + " nulls " + std::to_string(nulls));
                if (nulls != 0 || dev != 17) {
                    check(expansion.expect(dev, nulls), callAs(expansion, dev, nulls));
                }
            }
        }
    }
}

TEST(Table, isComplete)
{
    std::size_t failures = 0;
    for (const Statement &one : methodTable().cases) {
        for (const ExpectedEvent &event : Expansion(one, false).expect(17, 0).events) {
            failures += one.has("unfailed") ? 0 : std::max<std::size_t>(event.statuses.size(), event.canFail ? 1 : 0);
        }
    }
    EXPECT_EQ(methodTable().methods.size(), nativeMethods().size());
    std::printf("%zu calls, %zu failures laid down\n", methodTable().cases.size(), failures);
    EXPECT_GE(failures, 1300U);
}
} // namespace
