// Handles, bad arguments, the trace, and the finished library file.
#include "AdapterTest.h"

#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <set>
#include <sstream>

namespace
{

using Library = AdapterTest;

TEST_F(Library, HandlesAreDistinctAndChecked)
{
    std::set<SDMGT_HANDLE> seen;
    for (int round = 0; round < 1000; ++round) {
        SDMGT_HANDLE handle = 0;
        ASSERT_EQ(SDOpenDeviceiSCSI(0, &handle), 0U);
        ASSERT_NE(handle, 0U);
        ASSERT_TRUE(seen.insert(handle).second) << "a closed handle came back";
        ASSERT_EQ(SDCloseDeviceiSCSI(handle), 0U);
    }
    const SDMGT_HANDLE one = open(1);
    const SDMGT_HANDLE other = open(1);
    SD_UINT32 count = 0;
    EXPECT_EQ(SDCloseDeviceiSCSI(one), 0U);
    EXPECT_EQ(SDGetDDBEntryNum(other, &count), 0U) << "closing one handle must not close the other";
    for (const SDMGT_HANDLE bad : {SDMGT_HANDLE{0}, one, other + 1, ~other}) {
        EXPECT_EQ(SDGetDDBEntryNum(bad, &count), ERR_INVALID_HANDLE);
        EXPECT_EQ(SDCloseDeviceiSCSI(bad), ERR_INVALID_HANDLE);
    }
    for (const SD_UINT32 index : {4U, 31U, 32U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        SDMGT_HANDLE handle = 0x1234;
        EXPECT_EQ(SDOpenDeviceiSCSI(index, &handle), ERR_NO_SUCH_ADAPTER);
        EXPECT_EQ(handle, 0x1234U);
    }
}

TEST_F(Library, NullPointersAndBadNumbersAreRefused)
{
    const SDMGT_HANDLE handle = open(0);
    const SD_UINT32 bad = ERR_INVALID_PARAMETER;
    SD_UINT32 count = 0;
    HBAISCSIPORTAL portal{};
    TARGETINFORMATION target{};
    DISCISCSIPORTAL discovered{};
    DISCISCSINODE node{};
    SDMGT_HANDLE copy = handle;
    char text[4];
    const SD_UINT32 statuses[] = {
        SDOpenDeviceiSCSI(0, nullptr),
        SDGetVersioniSCSI(nullptr, 31),
        SDGetVersioniSCSI(text, 0),
        SDEnableDebugTraceiSCSI(nullptr, "trace", 1),
        SDEnableDebugTraceiSCSI(&copy, nullptr, 1),
        SDGetHbaDeviceNodePropertyiSCSI(handle, nullptr),
        SDGetHbaDevicePortalPropertyiSCSI(handle, 0, nullptr),
        SDGetHbaDevicePortalPropertyiSCSI(handle, 1, &portal),
        SDGetHbaDeviceDriverPropertyiSCSI(handle, nullptr),
        SDGetHbaDeviceChipPropertyiSCSI(handle, nullptr),
        SDGetDDBEntryNum(handle, nullptr),
        SDGetDDBEntry(handle, nullptr, 0),
        SDGetDefaultDDBEntry(handle, nullptr),
        SDGetInitialDDBEntry(handle, nullptr, 0),
        SDSetDDBEntry(handle, nullptr, 0),
        SDSendiSCSILogout(handle, nullptr),
        SDGetDiscPortalPropertyiSCSI(handle, 0, 0, 0, nullptr),
        SDGetDiscPortalPropertyiSCSI(handle, 1, 0, 0, &discovered),
        SDGetDiscNodePropertyiSCSI(handle, 0, 0, 0, nullptr),
        SDGetDiscNodePropertyiSCSI(handle, 1, 0, 0, &node),
        SDGetInitFW(handle, nullptr),
        SDSetInitFW(handle, nullptr),
        SDGetFWDefaults(handle, nullptr),
        SDSetFWDefaults(handle, nullptr),
        SDUpdateiSCSIFW(handle, nullptr, 0),
        SDResetHBA(handle, nullptr),
        SDResetStatisticsiSCSI(handle, 1),
        SDGetCrashRecord(handle, nullptr),
        SDDiagPing(handle, nullptr),
        SDSendScsiReportLunsCmdiSCSI(handle, nullptr, text, 4, nullptr, 0),
        SDSendScsiReportLunsCmdiSCSI(handle, &target, nullptr, 264, nullptr, 0),
        SDSendScsiInquiryCmdiSCSI(handle, &target, text, 4, nullptr, 18),
        SDSendScsiReadCapacityCmdiSCSI(handle, &target, nullptr, 8, nullptr, 0),
        SDGetStatisticsiSCSI(handle, nullptr),
        SDGetLogs(handle, LOG_ARP, nullptr, text),
        SDGetLogs(handle, LOG_ARP, &count, nullptr),
        SDGetLogs(handle, 3, &count, text),
        SDGetCHAPEntryNum(handle, nullptr),
        SDGetCHAPTable(handle, nullptr, &count),
        SDSetCHAPTable(handle, nullptr, &count),
        SDGet_iSNSDiscoveryConfig(handle, nullptr),
        SDGetAlliSNSDiscoveredTargets(handle, nullptr, nullptr, 0),
    };
    for (std::size_t call = 0; call < std::size(statuses); ++call) {
        EXPECT_EQ(statuses[call], bad) << "call " << call;
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder)) << "what was refused left something on disk";
}

TEST_F(Library, TraceNamesEveryOperation)
{
    SDMGT_HANDLE handle = open(0);
    const std::filesystem::path file = folder / "trace.txt";
    writeFile(file, "before\n");
    SDMGT_HANDLE bad = 0;
    EXPECT_EQ(SDEnableDebugTraceiSCSI(&bad, file.c_str(), 0xFFFFFFFF), ERR_INVALID_HANDLE);
    EXPECT_EQ(SDEnableDebugTraceiSCSI(&handle, folder.c_str(), 0xFFFFFFFF), ERR_OUTPUT_FILE);
    EXPECT_EQ(SDEnableDebugTraceiSCSI(&handle, (folder / "none" / "trace").c_str(), 0xFFFFFFFF), ERR_OUTPUT_FILE);
    ASSERT_EQ(SDEnableDebugTraceiSCSI(&handle, file.c_str(), 0xFFFFFFFF), 0U);
    SD_UINT32 count = 4;
    std::vector<CHAPTABLE> table(CHAP_CAPACITY);
    EXPECT_EQ(SDGetCHAPTable(handle, table.data(), &count), 0U);
    DEVICEENTRYISCSI entry{};
    EXPECT_EQ(SDGetDDBEntry(handle, &entry, 512), ERR_INVALID_PARAMETER);
    EXPECT_EQ(SDGetDDBEntryNum(99, &count), ERR_INVALID_HANDLE);
    ASSERT_EQ(SDEnableDebugTraceiSCSI(&handle, file.c_str(), 0), 0U); // ends it
    EXPECT_EQ(SDGetDDBEntryNum(handle, &count), 0U);

    std::istringstream lines(readFile(file));
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, "before");
    char expected[80];
    const std::pair<const char *, std::pair<SDMGT_HANDLE, SD_UINT32>> calls[] = {
        {"SDEnableDebugTraceiSCSI", {handle, 0}},
        {"SDGetCHAPTable", {handle, 0}},
        {"SDGetDDBEntry", {handle, ERR_INVALID_PARAMETER}},
        {"SDGetDDBEntryNum", {99, ERR_INVALID_HANDLE}},
    };
    for (const auto &[name, values] : calls) {
        ASSERT_TRUE(std::getline(lines, line)) << name;
        (void)std::snprintf(expected, sizeof expected, " %s handle=%08x status=%08x", name, values.first,
                            values.second);
        EXPECT_TRUE(line.ends_with(expected)) << line;
    }
    EXPECT_FALSE(std::getline(lines, line)) << line;
    EXPECT_EQ(readFile(file).find("sample-secret"), std::string::npos);
}

#ifdef TAVO_ADAPTER_LIBRARY
std::set<std::string> wordsOf(const std::string &command, int column)
{
    std::set<std::string> words;
    FILE *output = popen(command.c_str(), "r");
    char line[1000];
    while (std::fgets(line, sizeof line, output) != nullptr) {
        std::istringstream stream(line);
        std::string word;
        for (int number = 0; number < column && stream >> word; ++number) {
        }
        words.insert(word);
    }
    EXPECT_EQ(pclose(output), 0) << command;
    return words;
}

// The finished file: the 36 operations and nothing else, the name that the bridge asks for, the C library and SQLite
// needed.
TEST(LibraryFile, ExportsNameAndNeeds)
{
    const std::string library = TAVO_ADAPTER_LIBRARY;
    const auto exported = wordsOf("nm -D --defined-only '" + library + "' | grep -v ' A '", 3);
    std::set<std::string> operations;
    std::ifstream header(TAVO_OPERATIONS_HEADER);
    for (std::string line; std::getline(header, line);) {
        if (line.starts_with("SD_UINT32 SD")) {
            operations.insert(line.substr(10, line.find('(') - 10));
        }
    }
    EXPECT_EQ(operations.size(), 36U);
    EXPECT_EQ(exported, operations);
    const auto names = wordsOf("readelf -d '" + library + "' | grep -E 'SONAME'", 5);
    EXPECT_EQ(names, std::set<std::string>{"[./libvdsdm.so]"});
    for (const std::string &needed : wordsOf("readelf -d '" + library + "' | grep -E 'NEEDED'", 5)) {
        EXPECT_TRUE(needed == "[libc.so.6]" || needed == "[libsqlite3.so.0]" || needed == "[libm.so.6]"
                    || needed.starts_with("[ld-linux"))
            << needed;
    }
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
    const pid_t child = fork();
    if (child == 0) {
        constexpr uid_t nobody = 65534;
        const bool ready = geteuid() != 0 || (chown(folder.c_str(), nobody, nobody) == 0 && setuid(nobody) == 0);
        unsetenv("TAVO_ADAPTER_FLASH");
        setenv("XDG_STATE_HOME", (folder / "state").c_str(), 1);
        writeWith(copy);
        const auto own = folder / "state" / "tavoiscsi";
        EXPECT_TRUE(std::filesystem::exists(own / "settings.db"));
        EXPECT_EQ(std::filesystem::status(own).permissions(), std::filesystem::perms::owner_all);
        _exit(ready && !HasFailure() ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);

    writeFile(folder / "CMakeCache.txt", "");
    unsetenv("TAVO_ADAPTER_FLASH");
    writeWith(copy);
    EXPECT_TRUE(std::filesystem::exists(copy.parent_path() / "settings.db"));
}
#endif

} // namespace
