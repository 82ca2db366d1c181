// Transcripts: what a native method has to do, event by event, and what it has to say and answer when one of the events
// fails. They lie in golden/transcripts, one file per method and case; the first word of the file's name, up to a blank
// or a dot, is the method.
//
//   given PATH VALUE        sets a value of a Java object beforehand
//   nulls MASK  dev N       arguments
//   EVENT                   an event, as the watch writes it
//     < DIGITS              bytes of the record that the management library hands out at this event
//     < count N             the count or handle it hands out (hexadecimal)
//     < status S            the status it answers with (hexadecimal), 0 when not said
//     ! "TEXT" => RESULT    when this event fails: the printed text, nothing more happens, the result
//     ! "TEXT" -> LABEL     when this event fails: the printed text, and the method goes on at the label
//       A label may be followed by @OFFSET:DIGITS, bytes that differ in the next record handed to the library, and by
//       ~ EVENT, an event that comes first.
//     !S "TEXT" => RESULT   the same for an operation that fails with status S
//   @LABEL
//   says TEXT               printed text, also when nothing is made to fail
//   = RESULT
//   then PATH VALUE         a value of a Java object afterwards
//   # comment
#pragma once

#include "JniWatch.h"
#include "ScriptedLibrary.h"
#include "Vm.h"

#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

struct ExpectedFailure {
    std::optional<SD_UINT32> status; // of the management operation
    std::string printed;
    std::string result; // empty: goes on at the label
    std::string label;
    std::vector<std::pair<std::size_t, std::string>> patches; // bytes of the next record handed in, by offset
    std::string extraEvent;                                   // an event that comes before those at the label
    int line = 0;
};

struct ExpectedEvent {
    std::string text;
    std::optional<Answer> answer;
    std::vector<ExpectedFailure> failures;
};

struct Transcript {
    std::string file;
    std::string method;
    jint dev = 17;
    unsigned nulls = 0;
    std::vector<std::pair<std::string, std::string>> given, then;
    std::vector<ExpectedEvent> events;
    std::map<std::string, std::size_t> labels;
    std::vector<std::pair<std::size_t, std::string>> says; // with the number of events before
    std::string result;

    // What is printed by the events from one number to before another.
    std::string printed(std::size_t from, std::size_t to) const;
    // Lays down the library's answers and the objects' values.
    void prepare(World &world) const;
    // The event texts from one place on.
    std::vector<std::string> texts(std::size_t from, std::size_t to) const;
};

// For the tests' own reports.
inline void PrintTo(const Transcript &transcript, std::ostream *out)
{
    *out << transcript.file;
}

// What came of one call.
struct Outcome {
    std::string result;
    std::vector<std::string> events;
    std::string printed, breaches;
    bool pending = false;
    std::size_t loans = 0;
    long heapBlocks = 0;
    unsigned unwiped = 0;
    unsigned createdAlive = 0;
    bool failed = false;
    Counts counts;
    std::string failedAt;
};

// Calls the world's method under a watch that `arrange` may set up.
Outcome call(World &world, const std::function<void(JniWatch &)> &arrange = {});

// All transcripts of golden/, in order of their names; read once.
const std::vector<Transcript> &transcripts();
// The first transcript of a method.
const Transcript &transcriptOf(const std::string &method);
std::string goldenFile(const std::string &name);
