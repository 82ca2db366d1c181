// What is written is read back: device database, firmware block, CHAP table, iSNS settings, images; inventory.
#include "AdapterTest.h"

#include <algorithm>
#include <set>

namespace
{

using Settings = AdapterTest;

TEST_F(Settings, EntriesAreReadBackAndLinkedAnew)
{
    const OpenAdapter adapter(1);
    std::set<SD_UINT32> used{2, 3, 64, 65, 300};
    const auto expectUsed = [&] {
        EXPECT_EQ(adapter.walk(), std::vector(used.begin(), used.end()));
    };
    for (const SD_UINT32 index : {511U, 0U, 63U, 64U, 65U}) {
        DEVICEENTRYISCSI entry = sampleEntry(index);
        ASSERT_EQ(adapter.write(index, entry), 0U);
        used.insert(index);
        expectUsed();
        const DEVICEENTRYISCSI back = adapter.entry(index);
        entry.TargetID = index;
        entry.NextValid = back.NextValid;
        entry.DeviceState = 2; // logged in, whatever was written
        EXPECT_TRUE(same(back, entry)) << index;
    }
    for (const SD_UINT32 index : {0U, 64U, 511U, 511U}) {
        ASSERT_EQ(adapter.write(index, {}), 0U);
        used.erase(index);
        expectUsed();
    }
    DEVICEENTRYISCSI entry = sampleEntry(1);
    for (const SD_UINT32 index : {512U, 65536U, 0xFFFFFFFFU}) {
        EXPECT_EQ(adapter.write(index, entry), ERR_INVALID_PARAMETER);
        EXPECT_EQ(SDGetDDBEntry(adapter, &entry, index), ERR_INVALID_PARAMETER);
        EXPECT_EQ(SDGetInitialDDBEntry(adapter, &entry, index), ERR_INVALID_PARAMETER);
    }
    expectUsed();

    DEVICEENTRYISCSI initial{};
    ASSERT_EQ(SDGetInitialDDBEntry(adapter, &initial, 0x123), 0U);
    EXPECT_EQ(initial.TargetID, 0x123U);
    EXPECT_EQ(initial.InitiatorSessID[4], 0x01);
    EXPECT_EQ(initial.InitiatorSessID[5], 0x23);
    EXPECT_TRUE(same(initial.DeviceInfo, adapter.read(SDGetDefaultDDBEntry).DeviceInfo));
}

TEST_F(Settings, ChapTableIsReplacedAsAWhole)
{
    const OpenAdapter adapter(0);
    ChapTable table(CHAP_CAPACITY + 1);
    for (std::size_t number = 1; number < table.size(); ++number) {
        table[number].Link = static_cast<SD_UINT16>(number * 257);
        table[number].ChapSecretLength = 100;
        std::ranges::fill(table[number].ChapSecret, static_cast<SD_UINT8>(number));
        std::ranges::fill(table[number].ChapName, static_cast<SD_UINT8>('a' + number % 26));
    }
    SD_UINT32 count = 0;
    for (const std::ptrdiff_t records : {128, 2, 1, 127}) {
        const ChapTable written(table.begin(), table.begin() + records);
        ASSERT_EQ(adapter.write(written), 0U);
        EXPECT_EQ(adapter.read(SDGetCHAPEntryNum), written.size());
        for (const SD_UINT32 room : {3U, 128U, 1000U}) { // the last is more than there can be
            ChapTable back(CHAP_CAPACITY + 1);
            count = room;
            EXPECT_EQ(SDGetCHAPTable(adapter, back.data(), &count), 0U);
            ASSERT_EQ(count, std::min<std::size_t>(room, written.size()));
            EXPECT_TRUE(std::equal(back.begin(), back.begin() + count, written.begin(), same<CHAPTABLE>));
            EXPECT_TRUE(same(back[count], {})) << "more records than the caller has room for";
        }
    }
    EXPECT_EQ(adapter.write(table), ERR_INVALID_PARAMETER) << "129 records";
    count = 0;
    EXPECT_EQ(SDSetCHAPTable(adapter, table.data(), &count), ERR_INVALID_PARAMETER);
    EXPECT_EQ(adapter.chapTable().size(), 127U);
}

TEST_F(Settings, IsnsTargetsFollowTheSettings)
{
    std::vector<SDM_ISNS_DISCOVERED_TARGET> targets;
    SD_UINT32 count = 0;
    const auto ask = [&](SDMGT_HANDLE handle, SD_UINT32 room) {
        targets.assign(room + 1, {});
        count = 0;
        const auto size = room * static_cast<SD_UINT32>(sizeof targets[0]);
        const SD_UINT32 status = SDGetAlliSNSDiscoveredTargets(handle, &count, targets.data(), size);
        EXPECT_TRUE(same(targets[room], {})) << "written beyond the buffer";
        return status;
    };
    SDM_ISNS_CONFIG config{};
    const OpenAdapter without(3);
    EXPECT_EQ(ask(without, 30), ERR_ISNS_NOT_SUPPORTED);
    EXPECT_EQ(SDGet_iSNSDiscoveryConfig(without, &config), ERR_ISNS_NOT_SUPPORTED);
    EXPECT_EQ(SDSet_iSNSDiscoveryConfig(without, config), ERR_ISNS_NOT_SUPPORTED);

    const OpenAdapter adapter(0);
    EXPECT_EQ(ask(adapter, 30), ERR_NOT_SUPPORTED) << "discovery is off";
    config.performiSNSDiscovery = 1;
    config.AutomaticiSNSDiscovery = 1;
    std::ranges::fill(config.initiatorName, 'i');
    struct {
        const char *server;
        SD_UINT32 room, status, count;
    } const cases[] = {
        {"10.20.0.53", 30, 0, 12},   {"10.22.0.53", 47, ERR_BUFFER_TOO_SMALL, 48}, {"10.22.0.53", 48, 0, 48},
        {"10.22.0.54", 600, 0, 600}, {"10.22.0.54", 0, ERR_BUFFER_TOO_SMALL, 600}, {"10.9.9.9", 30, ERR_UNREACHABLE, 0},
    };
    for (const auto &each : cases) {
        config.ipAddr = makeAddress(each.server);
        ASSERT_EQ(SDSet_iSNSDiscoveryConfig(adapter, config), 0U);
        EXPECT_TRUE(same(adapter.read(SDGet_iSNSDiscoveryConfig), config));
        EXPECT_EQ(ask(adapter, each.room), each.status) << each.server << " " << each.room;
        EXPECT_EQ(count, each.count) << each.server;
        for (SD_UINT32 number = 0; number < std::min(count, each.room); ++number) {
            ASSERT_EQ(getText(targets[number].targetName), targetName(shelfLabel(number)));
        }
    }
}

TEST_F(Settings, ImagesComeIntoForceWithTheReset)
{
    const OpenAdapter adapter(0);
    const std::string before = getText(adapter.portal().FWVersion);
    for (const std::string &bad :
         {(folder / "missing").string(), folder.string(), writeFile(folder / "empty", ""),
          writeFile(folder / "unnamed", "TAVOFW \nx"), writeFile(folder / "binary", "TAVOFW 1\x01\n"),
          writeFile(folder / "long", "TAVOFW " + std::string(128, '9') + "\n")}) {
        EXPECT_EQ(SDUpdateiSCSIFW(adapter, bad.c_str(), 0), ERR_IMAGE_FILE) << bad;
    }
    const std::string good = writeFile(folder / "good", "TAVOFW 9.8.7-beta\nrest");
    EXPECT_EQ(SDUpdateiSCSIFW(adapter, good.c_str(), 2), ERR_INVALID_PARAMETER);
    EXPECT_EQ(adapter.reset(), 0U);
    EXPECT_EQ(getText(adapter.portal().FWVersion), before);
    ASSERT_EQ(SDUpdateiSCSIFW(adapter, good.c_str(), 0), 0U);
    ASSERT_EQ(SDUpdateiSCSIFW(adapter, writeFile(folder / "rom", std::string("\x7F\0ROM", 5)).c_str(), 1), 0U);
    EXPECT_EQ(getText(adapter.portal().FWVersion), before);
    EXPECT_EQ(adapter.portal().State, 3);
    EXPECT_EQ(adapter.reset(), 0U);
    const HBAISCSIPORTAL portal = adapter.portal();
    EXPECT_EQ(getText(portal.FWVersion), "9.8.7-beta");
    EXPECT_TRUE(getText(portal.OptRomVersion).starts_with("image-")) << getText(portal.OptRomVersion);
    EXPECT_EQ(portal.State, 1);
}

} // namespace
