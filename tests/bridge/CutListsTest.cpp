// Lists longer than their buffer: the management library is never told of more room than there is, what the buffer
// holds reaches Java, and one line says that the list was cut.
#include "ScriptedLibrary.h"
#include "Vm.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{

struct Cut {
    const char *method;
    std::map<std::string, SD_UINT32> counts; // the count that an operation reports
    std::string printed;
};

// Calls the method with a library that takes the count handed in for the room in the table.
void expectCut(const Cut &cut)
{
    SD_UINT32 room = 0;
    World world(nativeMethod(cut.method));
    library().responder = [&](const Operation &operation) -> std::optional<Answer> {
        const auto reported = cut.counts.find(operation.name);
        if (operation.name == "SDGetCHAPTable") {
            room = *operation.count;
        }
        return Answer{0, "", reported == cut.counts.end() ? std::nullopt : std::optional(reported->second)};
    };
    Outcome outcome = call(world);
    library().responder = nullptr;
    EXPECT_EQ(outcome.result, "0");
    EXPECT_EQ(outcome.printed, cut.printed);
    EXPECT_LE(room, 128U);
}

TEST(CutLists, sayThatTheyWereCut)
{
    const Cut cuts[] = {
        // The library that minds the room, the one that counts all the same, and a table that shrank meanwhile.
        {"getCHAPTableData", {{"SDGetCHAPEntryNum", 129}}, "CHAP table cut: 129 reported, 128 read\n"},
        {"getCHAPTableData",
         {{"SDGetCHAPEntryNum", 128}, {"SDGetCHAPTable", 200}},
         "CHAP table cut: 200 reported, 128 read\n"},
        {"getCHAPTableData", {{"SDGetCHAPEntryNum", 129}, {"SDGetCHAPTable", 127}}, ""},
        {"getCHAPTableData", {{"SDGetCHAPEntryNum", 128}}, ""},
        {"getiSNSTargets", {{"SDGetAlliSNSDiscoveredTargets", 513}}, "iSNS targets cut: 513 reported, 512 read\n"},
        {"getiSNSTargets", {{"SDGetAlliSNSDiscoveredTargets", 512}}, ""},
        {"getConnectErrorLog",
         {{"SDGetLogs", 4294967295}},
         "Connection error log cut: 4294967295 reported, 128 read\n"},
        {"getARPLog", {{"SDGetLogs", 129}}, "ARP log cut: 129 reported, 128 read\n"},
        {"getARPLog", {{"SDGetLogs", 128}}, ""},
    };
    for (const Cut &cut : cuts) {
        SCOPED_TRACE(cut.method);
        expectCut(cut);
    }
}

} // namespace
