// The management library of the tests: all 36 operations, each answering as the test has laid down. Every call is
// written into the journal of the thread's watch with its arguments and the bytes of what the bridge hands in.
#pragma once

#include <vdsdm.h>

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>

// What an operation answers.
struct Answer {
    SD_UINT32 status = 0;
    std::string bytes;              // copied to the front of the out record
    std::optional<SD_UINT32> count; // stored in the count, the length or the handle
};

// One call, as the answering function sees it.
struct Operation {
    std::string name;
    SDMGT_HANDLE handle = 0; // the adapter's index when it is opened
    std::string arguments;   // for the journal
    void *out = nullptr;
    std::size_t outSize = 0;
    SD_UINT32 *count = nullptr;
    SD_UINT32 number = 0; // the last one handed in
    bool cleared = true;  // the out record is expected to arrive as zeros
};

class ScriptedLibrary
{
public:
    // The statuses that a fault of an operation answers with.
    static constexpr SD_UINT32 FAULT = 0x20000101;

    // Answers by operation, used up in order; the last one stays.
    std::map<std::string, std::deque<Answer>> answers;
    // Asked first, when set; must be safe for threads if threads call. An empty result means: use the answers.
    std::function<std::optional<Answer>(const Operation &)> responder;
    // The status that the operation which is made to fail answers with.
    SD_UINT32 faultStatus = FAULT;

    SD_UINT32 run(const Operation &operation);
};

// The one library of the test program.
ScriptedLibrary &library();

// Ends the program: the test data or the machine is not what a test can work with.
[[noreturn]] void giveUp(const std::string &why);

// Bytes as hexadecimal digits, and back.
std::string hex(const void *bytes, std::size_t size);
std::string unhex(const std::string &digits);
std::string hex(SD_UINT32 number);
SD_UINT32 unhexNumber(const std::string &digits);
