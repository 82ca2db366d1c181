// One call of a native method as the table describes it, laid out event by event: what has to happen, what is printed
// and answered when nothing fails, and when one event does. The values that cross are made from a seed.
#pragma once

#include "MethodTable.h"
#include "ScriptedLibrary.h"
#include "Vm.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

struct ExpectedEvent {
    std::string text;
    bool canFail = false;
    std::vector<SD_UINT32> statuses; // that a management operation is made to fail with
};

struct Expectation {
    std::vector<ExpectedEvent> events;
    std::string printed; // a line NULL* stands for any line that begins with NULL
    std::string result;
    bool ignored = false; // a failure did not end the method
};

// The event that fails, and the status when it is a management operation.
struct Fault {
    long event = -1;
    SD_UINT32 status = 0;
};

// The values of one case: what the library answers, and what the Java objects hold.
struct Values {
    Statement oneCase; // of the table
    std::string seed;
    bool full = false; // every text fills its field
    std::map<std::string, std::vector<Answer>> answers;
    std::vector<std::pair<std::string, std::string>> given; // in order
    std::map<std::string, std::string> held;                // by the path of the setter
};

class Expansion
{
public:
    // A case of the table, with texts that fill their fields or do not.
    Expansion(const Statement &oneCase, bool full);

    const std::string &method() const
    {
        return method_;
    }
    // What adapter `dev` has to see, when argument n is null where nulls has bit n - 1.
    Expectation expect(jint dev, unsigned nulls, const Fault &fault = {});
    // Lays down answers and values for the real call; everything that expect() has asked for so far.
    void prepare(World &world) const;

private:
    std::string method_;
    Values values_;
};
