// Many entries of the device database at once, through the operations: discovery, and targets that are gone.
#include "OpenAdapter.h"
#include "OpenPort.h"
#include "Sandbox.h"
#include "ScriptedTarget.h"
#include "Settings.h"

#include <algorithm>
#include <atomic>

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
    }
    // Writes an entry for a target at a port of 127.0.0.1, with a deadline of a second.
    static void write(const OpenAdapter &adapter, SD_UINT32 index, SD_UINT16 port, const std::string &name)
    {
        DEVICEENTRYISCSI entry{};
        ASSERT_EQ(SDGetInitialDDBEntry(adapter, &entry, index), 0U);
        entry.EntryInfo.IPAddr = makeAddress("127.0.0.1");
        entry.DeviceInfo.portNumber = port;
        entry.DeviceInfo.taskMngmntTimeout = 1;
        setText(entry.EntryInfo.iSCSIName, name);
        ASSERT_EQ(adapter.write(index, entry), 0U);
    }

private:
    const TemporaryFolder folder_;
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
            ++logins;
            to.send(loginAnswer(to.receive(), 0x0203));
            return;
        }
        to.acceptLogin();
        Pdu answer = answerTo(to.receive(), TEXT_RESPONSE);
        std::fill_n(answer.header.begin() + 20, 4, SD_UINT8{0xFF});
        std::string text;
        for (SD_UINT32 number = 0; number < targets; ++number) {
            text += "TargetName=" + nameOf(number) + '\0';
        }
        // Of the last one, which is not offered here.
        text += std::string("TargetAddress=127.0.0.2:1,1") + '\0' + "TargetAddress=127.0.0.3:1,1" + '\0';
        answer.data.assign(text.begin(), text.end());
        told = true;
        to.send(answer);
        to.receive(); // the logout
    });
    const OpenAdapter adapter(0);
    EXPECT_LT(timeOf([&] { write(adapter, 100, target.port(), ""); }), 5s);
    EXPECT_EQ(adapter.count(), targets);
    for (SD_UINT32 number = 0; number < targets; ++number) {
        const DEVICEENTRYISCSI entry = adapter.entry(100 + number);
        ASSERT_EQ(getText(entry.EntryInfo.iSCSIName), nameOf(number)) << "in the order offered";
        const bool elsewhere = number == targets - 1;
        ASSERT_EQ(toText(entry.EntryInfo.IPAddr), elsewhere ? "127.0.0.2" : "127.0.0.1");
        ASSERT_EQ(entry.DeviceInfo.portNumber, elsewhere ? 1 : target.port());
    }
    awaitUntil([&] { return logins >= targets - 1; });
    EXPECT_EQ(logins, targets - 1) << "each is logged in to, once";
}

TEST_F(Entries, TargetsThatAreGoneHoldNobodyUp)
{
    constexpr SD_UINT32 last = 511;
    const ScriptedTarget frozen([](ScriptedConnection &to) { to.stayUntilClosed(); });
    OpenAdapter adapter(0);
    const auto writeAll = [&] {
        for (SD_UINT32 index = 1; index <= last; ++index) {
            write(adapter, index, frozen.port(), "iqn.2024-01.example:gone." + std::to_string(index));
        }
    };
    EXPECT_LT(timeOf(writeAll), 20s) << "a write waits for the network";
    EXPECT_EQ(adapter.count(), last);
    EXPECT_LT(timeOf([&] { EXPECT_EQ(adapter.reset(), 0U); }), 3s + 3s) << "three deadlines, and a busy machine";
    EXPECT_EQ(adapter.entry(last).DeviceState, ENTRY_CONFIGURED);
    EXPECT_LT(timeOf([&] { adapter.close(); }), 3s);
}

} // namespace
