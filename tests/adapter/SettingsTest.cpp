// What is written is read back: device database, firmware block, CHAP table, iSNS settings, images; inventory.
#include "AdapterTest.h"

#include <algorithm>

namespace
{

using Settings = AdapterTest;

template <typename Record>
bool same(const Record &one, const Record &other)
{
    return std::memcmp(&one, &other, sizeof one) == 0;
}

TEST_F(Settings, EntriesAreReadBackAndLinkedAnew)
{
    const SDMGT_HANDLE handle = open(1);
    std::vector<SD_UINT32> expected{2, 3, 64, 65, 300};
    for (const SD_UINT32 index : {511U, 0U, 63U, 64U, 65U}) {
        DEVICEENTRYISCSI entry = sampleEntry(index);
        ASSERT_EQ(SDSetDDBEntry(handle, &entry, index), 0U);
        if (std::ranges::find(expected, index) == expected.end()) {
            expected.insert(std::ranges::upper_bound(expected, index), index);
        }
        EXPECT_EQ(walk(handle), expected);
        DEVICEENTRYISCSI back = entryAt(handle, index);
        entry.TargetID = index;
        entry.NextValid = back.NextValid;
        entry.DeviceState = 2; // logged in, whatever was written
        EXPECT_TRUE(same(back, entry)) << index;
    }
    DEVICEENTRYISCSI free{};
    for (const SD_UINT32 index : {0U, 64U, 511U, 511U}) {
        ASSERT_EQ(SDSetDDBEntry(handle, &free, index), 0U);
        std::erase(expected, index);
        EXPECT_EQ(walk(handle), expected);
    }
    DEVICEENTRYISCSI entry = sampleEntry(1);
    for (const SD_UINT32 index : {512U, 65536U, 0xFFFFFFFFU}) {
        EXPECT_EQ(SDSetDDBEntry(handle, &entry, index), ERR_INVALID_PARAMETER);
        EXPECT_EQ(SDGetDDBEntry(handle, &entry, index), ERR_INVALID_PARAMETER);
        EXPECT_EQ(SDGetInitialDDBEntry(handle, &entry, index), ERR_INVALID_PARAMETER);
    }
    EXPECT_EQ(walk(handle), expected);

    DEVICEENTRYISCSI initial{};
    ASSERT_EQ(SDGetInitialDDBEntry(handle, &initial, 0x123), 0U);
    ASSERT_EQ(SDGetDefaultDDBEntry(handle, &entry), 0U);
    EXPECT_EQ(initial.TargetID, 0x123U);
    EXPECT_EQ(initial.InitiatorSessID[4], 0x01);
    EXPECT_EQ(initial.InitiatorSessID[5], 0x23);
    EXPECT_TRUE(same(initial.DeviceInfo, entry.DeviceInfo));
}

TEST_F(Settings, ChapTableIsReplacedAsAWhole)
{
    const SDMGT_HANDLE handle = open(0);
    std::vector<CHAPTABLE> table(CHAP_CAPACITY);
    for (std::size_t number = 1; number < table.size(); ++number) {
        table[number].Link = static_cast<SD_UINT16>(number * 257);
        table[number].ChapSecretLength = 100;
        std::memset(table[number].ChapSecret, static_cast<int>(number), sizeof table[number].ChapSecret);
        std::memset(table[number].ChapName, 'a' + static_cast<int>(number % 26), sizeof table[number].ChapName);
    }
    for (const SD_UINT32 records : {128U, 2U, 1U, 127U}) {
        SD_UINT32 count = records;
        ASSERT_EQ(SDSetCHAPTable(handle, table.data(), &count), 0U);
        ASSERT_EQ(SDGetCHAPEntryNum(handle, &count), 0U);
        EXPECT_EQ(count, records);
        std::vector<CHAPTABLE> back(CHAP_CAPACITY + 1);
        std::memset(&back.back(), 0x77, sizeof back.back());
        count = 1000; // more than there can be
        ASSERT_EQ(SDGetCHAPTable(handle, back.data(), &count), 0U);
        EXPECT_EQ(count, records);
        EXPECT_EQ(std::memcmp(back.data(), table.data(), records * sizeof(CHAPTABLE)), 0);
        EXPECT_EQ(back.back().Flags, 0x77);
    }
    SD_UINT32 count = 3;
    std::vector<CHAPTABLE> part(4);
    part[3].Flags = 0x77;
    EXPECT_EQ(SDGetCHAPTable(handle, part.data(), &count), 0U);
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(part[3].Flags, 0x77) << "no more records than the caller has room for";
    for (const SD_UINT32 bad : {0U, 129U, 0xFFFFFFFFU}) {
        count = bad;
        EXPECT_EQ(SDSetCHAPTable(handle, table.data(), &count), ERR_INVALID_PARAMETER);
    }
    EXPECT_EQ(SDGetCHAPEntryNum(handle, &count), 0U);
    EXPECT_EQ(count, 127U);
}

std::vector<SDM_ISNS_DISCOVERED_TARGET> isnsTargets(SDMGT_HANDLE handle, SD_UINT32 room, SD_UINT32 *status,
                                                    SD_UINT32 *count)
{
    std::vector<SDM_ISNS_DISCOVERED_TARGET> targets(room + 1);
    targets[room].numPortals = 0x7777;
    *count = 0;
    *status =
        SDGetAlliSNSDiscoveredTargets(handle, count, targets.data(), room * static_cast<SD_UINT32>(sizeof targets[0]));
    EXPECT_EQ(targets[room].numPortals, 0x7777U) << "written beyond the buffer";
    targets.pop_back();
    return targets;
}

TEST_F(Settings, IsnsTargetsFollowTheSettings)
{
    SD_UINT32 status = 0;
    SD_UINT32 count = 0;
    SDM_ISNS_CONFIG config{};
    isnsTargets(open(3), 30, &status, &count);
    EXPECT_EQ(status, ERR_ISNS_NOT_SUPPORTED);
    EXPECT_EQ(SDGet_iSNSDiscoveryConfig(open(3), &config), ERR_ISNS_NOT_SUPPORTED);
    EXPECT_EQ(SDSet_iSNSDiscoveryConfig(open(3), config), ERR_ISNS_NOT_SUPPORTED);

    const SDMGT_HANDLE handle = open(0);
    isnsTargets(handle, 30, &status, &count);
    EXPECT_EQ(status, ERR_NOT_SUPPORTED) << "discovery is off";
    config.performiSNSDiscovery = 1;
    config.AutomaticiSNSDiscovery = 1;
    std::memset(config.initiatorName, 'i', sizeof config.initiatorName);
    struct {
        const char *server;
        SD_UINT32 room, status, count;
    } const cases[] = {
        {"10.20.0.53", 30, 0, 12},
        {"10.22.0.53", 30, ERR_BUFFER_TOO_SMALL, 48},
        {"10.22.0.53", 512, 0, 48},
        {"10.22.0.54", 512, ERR_BUFFER_TOO_SMALL, 600},
        {"10.22.0.54", 600, 0, 600},
        {"10.22.0.54", 0, ERR_BUFFER_TOO_SMALL, 600},
        {"10.9.9.9", 30, ERR_UNREACHABLE, 0},
    };
    for (const auto &each : cases) {
        config.ipAddr = makeAddress(each.server);
        ASSERT_EQ(SDSet_iSNSDiscoveryConfig(handle, config), 0U);
        SDM_ISNS_CONFIG back{};
        ASSERT_EQ(SDGet_iSNSDiscoveryConfig(handle, &back), 0U);
        EXPECT_TRUE(same(back, config));
        const auto targets = isnsTargets(handle, each.room, &status, &count);
        EXPECT_EQ(status, each.status) << each.server << " " << each.room;
        EXPECT_EQ(count, each.count) << each.server;
        for (SD_UINT32 number = 0; number < std::min(count, each.room); ++number) {
            ASSERT_EQ(getText(targets[number].targetName), targetName(shelfLabel(number)));
        }
    }
}

TEST_F(Settings, ImagesComeIntoForceWithTheReset)
{
    const SDMGT_HANDLE handle = open(0);
    const auto image = [&](const char *name, const std::string &bytes) {
        writeFile(folder / name, bytes);
        return (folder / name).string();
    };
    HBARESET reset{};
    const std::string before = firmwareVersion(handle);
    for (const std::string &bad :
         {(folder / "missing").string(), folder.string(), image("empty", ""), image("unnamed", "TAVOFW \nx"),
          image("binary", "TAVOFW 1\x01\n"), image("long", "TAVOFW " + std::string(128, '9') + "\n")}) {
        EXPECT_EQ(SDUpdateiSCSIFW(handle, bad.c_str(), 0), ERR_IMAGE_FILE) << bad;
    }
    EXPECT_EQ(SDUpdateiSCSIFW(handle, image("good", "TAVOFW 9.8.7-beta\nrest").c_str(), 2), ERR_INVALID_PARAMETER);
    EXPECT_EQ(SDResetHBA(handle, &reset), 0U);
    EXPECT_EQ(firmwareVersion(handle), before);
    ASSERT_EQ(SDUpdateiSCSIFW(handle, image("good", "TAVOFW 9.8.7-beta\nrest").c_str(), 0), 0U);
    ASSERT_EQ(SDUpdateiSCSIFW(handle, image("rom", std::string("\x7F\0ROM", 5)).c_str(), 1), 0U);
    HBAISCSIPORTAL portal{};
    ASSERT_EQ(SDGetHbaDevicePortalPropertyiSCSI(handle, 0, &portal), 0U);
    EXPECT_EQ(getText(portal.FWVersion), before);
    EXPECT_EQ(portal.State, 3);
    EXPECT_EQ(SDResetHBA(handle, &reset), 0U);
    ASSERT_EQ(SDGetHbaDevicePortalPropertyiSCSI(handle, 0, &portal), 0U);
    EXPECT_EQ(getText(portal.FWVersion), "9.8.7-beta");
    EXPECT_TRUE(getText(portal.OptRomVersion).starts_with("image-")) << getText(portal.OptRomVersion);
    EXPECT_EQ(portal.State, 1);
}

} // namespace
