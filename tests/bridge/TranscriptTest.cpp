// Every native method does exactly what its transcripts say, and fails exactly as they say at every event that can.
#include "Transcript.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <set>
#include <sstream>

namespace
{
// Shows where two lists of events part.
::testing::AssertionResult same(const std::vector<std::string> &expected, const std::vector<std::string> &actual)
{
    std::size_t at = 0;
    while (at < expected.size() && at < actual.size() && expected[at] == actual[at]) {
        at++;
    }
    if (at == expected.size() && at == actual.size()) {
        return ::testing::AssertionSuccess();
    }
    auto shown = [&](const std::vector<std::string> &list) {
        return at < list.size() ? list[at] : "nothing";
    };
    return ::testing::AssertionFailure() << "event " << at << " after " << (at > 0 ? expected[at - 1] : "the start")
                                         << "\n  expected: " << shown(expected) << "\n  happened: " << shown(actual);
}

// Objects by their class alone: NodeInfo#2 is a NodeInfo.
std::string withoutNumbers(const std::string &event)
{
    std::string out;
    bool number = false;
    for (char c : event) {
        number = c == '#' || (number && c >= '0' && c <= '9');
        if (!number) {
            out += c;
        }
    }
    return out;
}

// What follows a failure may give back what was borrowed, in whatever place, and counts fewer objects.
std::vector<std::string> afterFailure(std::vector<std::string> events, std::size_t from)
{
    from = std::min(from, events.size());
    std::vector<std::string> out(events.begin(), events.begin() + long(from));
    for (std::size_t i = from; i < events.size(); i++) {
        if (!events[i].starts_with("give back")) {
            out.push_back(withoutNumbers(events[i]));
        }
    }
    return out;
}

// Puts the failure's bytes into the first record that the events hand to the library.
void patch(std::vector<std::string> &events, const ExpectedFailure &failure)
{
    for (std::string &event : events) {
        std::size_t record = event.find('[');
        if (event.starts_with("SD") && record != std::string::npos) {
            for (const auto &[offset, digits] : failure.patches) {
                event.replace(record + 1 + 2 * offset, digits.size(), digits);
            }
            return;
        }
    }
}

// Whether the failure may also leave its error pending. Where the method goes on, it does so only after errors of its
// own, which it clears.
bool maybePending(const std::string &event, const ExpectedFailure &failure)
{
    bool own = event.starts_with("lookup") || event.starts_with("find") || event.starts_with("create")
               || event.starts_with("string");
    return !failure.status && failure.extraEvent.empty() && (own || !failure.result.empty());
}

void expectTidy(const Outcome &outcome)
{
    EXPECT_EQ(outcome.breaches, "");
    EXPECT_EQ(outcome.loans, 0U) << "borrowed and not given back";
    EXPECT_EQ(outcome.heapBlocks, 0) << "heap blocks left";
    EXPECT_EQ(outcome.createdAlive, 0U) << "local references of created objects left";
}

class TranscriptOf : public ::testing::TestWithParam<Transcript>
{
};

TEST_P(TranscriptOf, holds)
{
    const Transcript &t = GetParam();
    World world(nativeMethod(t.method));
    t.prepare(world);
    Outcome outcome = call(world);
    EXPECT_TRUE(same(t.texts(0, t.events.size()), outcome.events));
    EXPECT_EQ(outcome.result, t.result);
    EXPECT_EQ(outcome.printed, t.printed(0, t.events.size()));
    EXPECT_FALSE(outcome.pending);
    expectTidy(outcome);
    if (HasFailure()) {
        return;
    }
    for (const auto &[path, value] : t.then) {
        EXPECT_EQ(world.get(path), value) << path;
    }
}

TEST_P(TranscriptOf, failsAsSaid)
{
    const Transcript &t = GetParam();
    int rows = 0;
    for (std::size_t at = 0; at < t.events.size(); at++) {
        for (const ExpectedFailure &failure : t.events[at].failures) {
            for (bool pending : {false, true}) {
                if (pending && !maybePending(t.events[at].text, failure)) {
                    continue;
                }
                SCOPED_TRACE(t.file + ":" + std::to_string(failure.line) + (pending ? " with the error pending" : ""));
                World world(nativeMethod(t.method));
                t.prepare(world);
                library().faultStatus = failure.status.value_or(0);
                Outcome outcome = call(world, [&](JniWatch &watch) {
                    watch.failEvent = long(at);
                    watch.leavePending = pending;
                });
                std::vector<std::string> expected = t.texts(0, at + 1);
                bool goesOn = failure.result.empty();
                if (goesOn) {
                    std::vector<std::string> rest = t.texts(t.labels.at(failure.label), t.events.size());
                    patch(rest, failure);
                    if (!failure.extraEvent.empty()) {
                        expected.push_back(failure.extraEvent);
                    }
                    expected.insert(expected.end(), rest.begin(), rest.end());
                }
                EXPECT_TRUE(same(afterFailure(expected, at + 1), afterFailure(outcome.events, at + 1)));
                std::string later = goesOn ? t.printed(t.labels.at(failure.label), t.events.size()) : "";
                EXPECT_EQ(outcome.printed, t.printed(0, at) + failure.printed + later);
                EXPECT_EQ(outcome.result, goesOn ? t.result : failure.result);
                // The error of a failed lookup reaches the Java caller, unless the method carries on: then it has to
                // go, since no call is allowed while it is pending. Where nothing follows or all is well, either will
                // do.
                bool own = t.events[at].text.starts_with("lookup") || t.events[at].text.starts_with("find");
                bool well = outcome.result == "0" || outcome.result == "20000077"; // REPORT LUNS tolerates this one
                bool open = goesOn ? t.labels.at(failure.label) == t.events.size() : well;
                if (pending && own && !open) {
                    EXPECT_EQ(outcome.pending, !goesOn) << "the failed lookup's own error";
                }
                expectTidy(outcome);
                rows++;
            }
        }
    }
    EXPECT_TRUE(rows > 0 || t.method == "initJNINative");
}

INSTANTIATE_TEST_SUITE_P(all, TranscriptOf, ::testing::ValuesIn(transcripts()), [](const auto &info) {
    std::string name = info.param.file.substr(0, info.param.file.rfind('.'));
    std::replace_if(
        name.begin(), name.end(), [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
    return name;
});

// Every native method has a transcript, every lookup in a transcript says what its failure does.
TEST(Transcripts, areComplete)
{
    std::set<std::string> methods;
    std::size_t failures = 0;
    for (const Transcript &t : transcripts()) {
        methods.insert(t.method);
        bool first = &transcriptOf(t.method) == &t;
        for (const ExpectedEvent &event : t.events) {
            failures += event.failures.size();
            bool mustSay = event.text.starts_with("lookup") && event.text.find("<init>") == std::string::npos;
            EXPECT_FALSE(first && mustSay && event.failures.empty()) << t.file << ": " << event.text;
        }
    }
    EXPECT_EQ(methods.size(), 39U);
    std::printf("%zu transcripts, %zu failures laid down\n", transcripts().size(), failures);
    EXPECT_GE(failures, 1800U);
}

// The checks before the first management call, in their order: one row per combination of arguments.
//   METHOD dev N nulls MASK => RESULT "TEXT" EVENTS
TEST(Checks, comeInOrder)
{
    std::ifstream in(goldenFile("checks.table"));
    int rows = 0;
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        std::string method, word, result, printed, rest;
        long dev = 0;
        unsigned nulls = 0;
        if (!(words >> method) || method[0] == '#') {
            continue;
        }
        ASSERT_TRUE(words >> word >> dev >> word >> nulls >> word >> result) << line;
        std::getline(words, rest);
        std::size_t quote = rest.find('"'), end = rest.rfind('"');
        ASSERT_NE(quote, end) << line;
        printed = rest.substr(quote + 1, end - quote - 1);
        std::string expected = end + 2 <= rest.size() ? rest.substr(end + 2) : "";
        SCOPED_TRACE(line);
        World world(nativeMethod(method));
        transcriptOf(method).prepare(world);
        world.dev = jint(dev);
        world.nulls = nulls;
        Outcome outcome = call(world);
        std::string events;
        for (const std::string &event : outcome.events) {
            events += (events.empty() ? "" : ", ") + event.substr(0, event.find(' '));
        }
        for (std::size_t at = 0; (at = outcome.printed.find('\n', at)) != std::string::npos; at += 2) {
            outcome.printed.replace(at, 1, "\\n");
        }
        EXPECT_EQ(outcome.result, result);
        // A line that the contract leaves open has to begin as all lines about null objects do.
        EXPECT_EQ(printed == "NULL*" && outcome.printed.starts_with("NULL ") ? "NULL*" : outcome.printed, printed);
        EXPECT_EQ(events, expected);
        expectTidy(outcome);
        rows++;
    }
    EXPECT_GE(rows, 270);
}
} // namespace
