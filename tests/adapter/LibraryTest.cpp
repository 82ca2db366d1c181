// Handles, bad arguments, the trace, and the finished library file.
#include "AdapterTest.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <regex>
#include <set>

namespace
{

using Library = AdapterTest;

TEST_F(Library, HandlesAreDistinctAndChecked)
{
    std::set<SDMGT_HANDLE> seen;
    for (int round = 0; round < 1000; ++round) {
        const OpenAdapter adapter(0);
        ASSERT_NE(adapter, 0U);
        ASSERT_TRUE(seen.insert(adapter).second) << "a closed handle came back";
    }
    OpenAdapter one(1);
    const OpenAdapter other(1);
    const SDMGT_HANDLE closed = one;
    one.close();
    EXPECT_EQ(other.count(), 5U) << "closing one handle must not close the other";
    for (const SDMGT_HANDLE bad : {SDMGT_HANDLE{0}, closed, other + 1, ~other}) {
        SD_UINT32 count = 0;
        EXPECT_EQ(SDGetDDBEntryNum(bad, &count), ERR_INVALID_HANDLE);
        EXPECT_EQ(SDCloseDeviceiSCSI(bad), ERR_INVALID_HANDLE);
    }
    for (const SD_UINT32 index : {4U, 31U, 32U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        SDMGT_HANDLE handle = 0x1234;
        EXPECT_EQ(SDOpenDeviceiSCSI(index, &handle), ERR_NO_SUCH_ADAPTER);
        EXPECT_EQ(handle, 0x1234U);
    }
}

// The status of an operation with null for its pointers and 0 for its numbers.
template <typename... Arguments>
SD_UINT32 withNull(SDMGT_HANDLE handle, SD_UINT32 (*operation)(SDMGT_HANDLE, Arguments...))
{
    return operation(handle, Arguments{}...);
}

TEST_F(Library, NullPointersAndBadNumbersAreRefused)
{
    const OpenAdapter adapter(0);
    const auto statusesOf = [](SDMGT_HANDLE handle, auto... operations) {
        return std::vector{withNull(handle, operations)...};
    };
    const auto statuses = [&](SDMGT_HANDLE handle) {
        return statusesOf(handle, SDGetHbaDeviceNodePropertyiSCSI, SDGetHbaDevicePortalPropertyiSCSI,
                          SDGetHbaDeviceDriverPropertyiSCSI, SDGetHbaDeviceChipPropertyiSCSI, SDGetDDBEntryNum,
                          SDGetDDBEntry, SDGetDefaultDDBEntry, SDGetInitialDDBEntry, SDSetDDBEntry, SDSendiSCSILogout,
                          SDGetDiscPortalPropertyiSCSI, SDGetDiscNodePropertyiSCSI, SDGetInitFW, SDSetInitFW,
                          SDGetFWDefaults, SDSetFWDefaults, SDUpdateiSCSIFW, SDResetHBA, SDGetCrashRecord, SDDiagPing,
                          SDSendScsiReportLunsCmdiSCSI, SDSendScsiInquiryCmdiSCSI, SDSendScsiReadCapacityCmdiSCSI,
                          SDGetStatisticsiSCSI, SDGetLogs, SDGetCHAPEntryNum, SDGetCHAPTable, SDSetCHAPTable,
                          SDGet_iSNSDiscoveryConfig, SDGetAlliSNSDiscoveredTargets);
    };
    EXPECT_EQ(statuses(adapter), std::vector<SD_UINT32>(30, ERR_INVALID_PARAMETER));
    EXPECT_EQ(statuses(0), std::vector<SD_UINT32>(30, ERR_INVALID_HANDLE));

    SDMGT_HANDLE handle = adapter;
    SD_UINT32 count = 1;
    HBAISCSIPORTAL portal{};
    TARGETINFORMATION target{};
    DISCISCSIPORTAL discovered{};
    DISCISCSINODE node{};
    CHAPTABLE record{};
    char text[4];
    const std::vector<SD_UINT32> others{
        SDOpenDeviceiSCSI(0, nullptr),
        SDGetVersioniSCSI(nullptr, 31),
        SDGetVersioniSCSI(text, 0),
        SDEnableDebugTraceiSCSI(nullptr, "trace", 1),
        SDEnableDebugTraceiSCSI(&handle, nullptr, 1),
        SDGetHbaDevicePortalPropertyiSCSI(handle, 1, &portal),
        SDGetDiscPortalPropertyiSCSI(handle, 1, 0, 0, &discovered),
        SDGetDiscNodePropertyiSCSI(handle, 1, 0, 0, &node),
        SDResetStatisticsiSCSI(handle, 1),
        SDSendScsiReportLunsCmdiSCSI(handle, &target, nullptr, 264, nullptr, 0),
        SDSendScsiInquiryCmdiSCSI(handle, &target, text, 4, nullptr, 18),
        SDGetLogs(handle, LOG_ARP, nullptr, text),
        SDGetLogs(handle, LOG_ARP, &count, nullptr),
        SDGetLogs(handle, 3, &count, text),
        SDGetCHAPTable(handle, nullptr, &count),
        SDGetCHAPTable(handle, &record, nullptr),
        SDSetCHAPTable(handle, nullptr, &count),
        SDSetCHAPTable(handle, &record, nullptr),
    };
    EXPECT_EQ(others, std::vector<SD_UINT32>(others.size(), ERR_INVALID_PARAMETER));
    EXPECT_TRUE(std::filesystem::is_empty(folder)) << "what was refused left something on disk";
}

TEST_F(Library, TraceNamesEveryOperation)
{
    const OpenAdapter adapter(0);
    SDMGT_HANDLE handle = adapter;
    SDMGT_HANDLE bad = 0;
    const std::string file = writeFile(folder / "trace.txt", "before\n");
    EXPECT_EQ(SDEnableDebugTraceiSCSI(&bad, file.c_str(), 0xFFFFFFFF), ERR_INVALID_HANDLE);
    EXPECT_EQ(SDEnableDebugTraceiSCSI(&handle, folder.c_str(), 0xFFFFFFFF), ERR_OUTPUT_FILE);
    EXPECT_EQ(SDEnableDebugTraceiSCSI(&handle, (folder / "none" / "trace").c_str(), 0xFFFFFFFF), ERR_OUTPUT_FILE);
    ASSERT_EQ(SDEnableDebugTraceiSCSI(&handle, file.c_str(), 0xFFFFFFFF), 0U);
    EXPECT_FALSE(adapter.chapTable().empty());
    DEVICEENTRYISCSI entry{};
    EXPECT_EQ(SDGetDDBEntry(handle, &entry, 512), ERR_INVALID_PARAMETER);
    SD_UINT32 count = 0;
    EXPECT_EQ(SDGetDDBEntryNum(0x99, &count), ERR_INVALID_HANDLE);
    ASSERT_EQ(SDEnableDebugTraceiSCSI(&handle, file.c_str(), 0), 0U); // ends it
    EXPECT_EQ(adapter.count(), 8U);

    char number[9];
    (void)std::snprintf(number, sizeof number, "%08x", static_cast<unsigned>(handle));
    const std::string expected = "before\n"
                                 "TIME SDEnableDebugTraceiSCSI handle=HANDLE status=00000000\n"
                                 "TIME SDGetCHAPTable handle=HANDLE status=00000000\n"
                                 "TIME SDGetDDBEntry handle=HANDLE status=20000064\n"
                                 "TIME SDGetDDBEntryNum handle=00000099 status=20000101\n";
    std::string trace = std::regex_replace(readFile(file), std::regex("\n\\d+\\.\\d{3} \\d+ "), "\nTIME ");
    EXPECT_EQ(std::regex_replace(trace, std::regex(number), "HANDLE"), expected);
}

#ifdef TAVO_ADAPTER_LIBRARY
// The finished file: the 36 operations and nothing else, the name that the bridge asks for, the C library and SQLite
// needed.
TEST_F(Library, FileHasItsExportsNameAndNeeds)
{
    const auto outputOf = [&](const std::string &command) {
        EXPECT_EQ(std::system((command + " >'" + (folder / "output").string() + "'").c_str()), 0) << command;
        return readFile(folder / "output");
    };
    const std::string library = "'" TAVO_ADAPTER_LIBRARY "'";
    const std::string header = "'" TAVO_OPERATIONS_HEADER "'";
    const std::string exported =
        outputOf("nm -D --defined-only " + library + " | awk '$2 != \"A\" { print $3 }' | sort");
    EXPECT_EQ(exported, outputOf("sed -n 's/^SD_UINT32 \\(SD[A-Za-z_]*\\)(.*/\\1/p' " + header + " | sort"));
    EXPECT_EQ(std::ranges::count(exported, '\n'), 36);
    EXPECT_EQ(outputOf("readelf -d " + library + " | awk '/SONAME/ { print $5 }'"), "[./libvdsdm.so]\n");
    EXPECT_EQ(outputOf("readelf -d " + library + " | awk '/NEEDED/ && !/\\[(libc|libm|libsqlite3|ld-linux.*)\\.so/'"),
              "");
}

// Has a copy of the library write an entry.
void writeWith(const std::filesystem::path &copy)
{
    void *library = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto openAdapter = reinterpret_cast<decltype(&SDOpenDeviceiSCSI)>(dlsym(library, "SDOpenDeviceiSCSI"));
    const auto setEntry = reinterpret_cast<decltype(&SDSetDDBEntry)>(dlsym(library, "SDSetDDBEntry"));
    SDMGT_HANDLE handle = 0;
    ASSERT_EQ(openAdapter(3, &handle), 0U);
    DEVICEENTRYISCSI entry = sampleEntry(1);
    ASSERT_EQ(setEntry(handle, &entry, 1), 0U);
}

TEST_F(Library, SettingsLieBesideTheLibraryOfABuildTreeElseInAFolderOfTheUser)
{
    const auto copy = folder / "lib" / "vdsdm" / "libvdsdm.so";
    std::filesystem::create_directories(copy.parent_path());
    std::filesystem::copy_file(TAVO_ADAPTER_LIBRARY, copy);
    unsetenv("TAVO_ADAPTER_FLASH");
    inChild([&] { return becomeNobody(folder); },
            [&] {
                setenv("XDG_STATE_HOME", (folder / "state").c_str(), 1);
                writeWith(copy);
                const auto own = folder / "state" / "tavoiscsi";
                EXPECT_TRUE(std::filesystem::exists(own / "settings.db"));
                EXPECT_EQ(std::filesystem::status(own).permissions(), std::filesystem::perms::owner_all);
            });
    writeFile(folder / "CMakeCache.txt", "");
    writeWith(copy);
    EXPECT_TRUE(std::filesystem::exists(copy.parent_path() / "settings.db"));
}
#endif

} // namespace
