// Many entries of the device database at once, through the operations: discovery, and targets that are gone.
#include "Fields.h"
#include "PortTest.h"
#include "Settings.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <thread>

namespace
{

using namespace std::chrono_literals;

class Entries : public testing::Test
{
protected:
    Entries()
    {
        setenv("TAVO_ADAPTER_FLASH", folder_.path.c_str(), 1);
        setenv("TAVO_ADAPTER_INTERFACES", "lo", 1);
        EXPECT_EQ(SDOpenDeviceiSCSI(0, &handle_), 0U);
    }
    ~Entries() override
    {
        SDCloseDeviceiSCSI(handle_);
        unsetenv("TAVO_ADAPTER_FLASH");
    }
    // An entry for a target at a port of 127.0.0.1, with a deadline of a second.
    void write(SD_UINT32 index, SD_UINT16 port, const std::string &name) const
    {
        DEVICEENTRYISCSI entry{};
        ASSERT_EQ(SDGetInitialDDBEntry(handle_, &entry, index), 0U);
        entry.DeviceState = ENTRY_CONFIGURED;
        entry.EntryInfo.IPAddr = makeAddress("127.0.0.1");
        entry.DeviceInfo.portNumber = port;
        entry.DeviceInfo.taskMngmntTimeout = 1;
        setText(entry.EntryInfo.iSCSIName, name);
        ASSERT_EQ(SDSetDDBEntry(handle_, &entry, index), 0U);
    }
    DEVICEENTRYISCSI read(SD_UINT32 index) const
    {
        DEVICEENTRYISCSI entry{};
        EXPECT_EQ(SDGetDDBEntry(handle_, &entry, index), 0U);
        return entry;
    }
    SD_UINT32 count() const
    {
        SD_UINT32 entries = 0;
        EXPECT_EQ(SDGetDDBEntryNum(handle_, &entries), 0U);
        return entries;
    }

    TemporaryFolder folder_;
    SDMGT_HANDLE handle_ = 0;
};

TEST_F(Entries, DiscoveryOfManyTargetsIsQuick)
{
    constexpr SD_UINT32 targets = 250;
    const auto nameOf = [](SD_UINT32 number) {
        return "iqn.2024-01.example:many." + std::to_string(number);
    };
    std::atomic<SD_UINT32> logins{0};
    std::atomic<bool> told{false};
    const ScriptedTarget target([&](ScriptedConnection &to) {
        if (told) {
            Pdu refusal = answerTo(to.receive(), 0x23);
            refusal.header[36] = 2;
            refusal.header[37] = 3; // not found
            ++logins;
            to.send(refusal);
            return;
        }
        to.acceptLogin();
        Pdu answer = answerTo(to.receive(), 0x24);
        std::fill_n(answer.header.begin() + 20, 4, SD_UINT8{0xFF});
        const auto add = [&](const std::string &text) {
            answer.data.insert(answer.data.end(), text.begin(), text.end());
            answer.data.push_back(0);
        };
        for (SD_UINT32 number = 0; number < targets; ++number) {
            add("TargetName=" + nameOf(number));
        }
        add("TargetAddress=127.0.0.2:1,1"); // of the last one, which is not offered here
        add("TargetAddress=127.0.0.3:1,1");
        told = true;
        to.send(answer);
        to.receive(); // the logout
    });
    const auto start = std::chrono::steady_clock::now();
    write(100, target.port(), "");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
    EXPECT_EQ(count(), targets);
    for (SD_UINT32 number = 0; number < targets; ++number) {
        const DEVICEENTRYISCSI entry = read(100 + number);
        ASSERT_EQ(getText(entry.EntryInfo.iSCSIName), nameOf(number)) << "in the order offered";
        const bool elsewhere = number == targets - 1;
        ASSERT_EQ(toText(entry.EntryInfo.IPAddr), elsewhere ? "127.0.0.2" : "127.0.0.1");
        ASSERT_EQ(entry.DeviceInfo.portNumber, elsewhere ? 1 : target.port());
    }
    for (int tries = 0; logins < targets - 1 && tries < 1000; ++tries) {
        std::this_thread::sleep_for(10ms);
    }
    EXPECT_EQ(logins, targets - 1) << "each is logged in to, once";
}

TEST_F(Entries, TargetsThatAreGoneHoldNobodyUp)
{
    constexpr SD_UINT32 last = 511;
    const ScriptedTarget frozen([](ScriptedConnection &to) { to.stayUntilClosed(); });
    auto start = std::chrono::steady_clock::now();
    for (SD_UINT32 index = 1; index <= last; ++index) {
        write(index, frozen.port(), "iqn.2024-01.example:gone." + std::to_string(index));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 20s) << "a write waits for the network";
    EXPECT_EQ(count(), last);
    start = std::chrono::steady_clock::now();
    HBARESET request{};
    EXPECT_EQ(SDResetHBA(handle_, &request), 0U);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 3s + 1s) << "three deadlines, and a busy machine";
    EXPECT_EQ(read(last).DeviceState, ENTRY_CONFIGURED);
    start = std::chrono::steady_clock::now();
    EXPECT_EQ(SDCloseDeviceiSCSI(handle_), 0U);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 3s);
}

} // namespace
