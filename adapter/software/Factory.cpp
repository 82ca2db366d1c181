// The adapters as they leave the factory: four models, their settings, and what they have counted at the start.
#include "Adapter.h"
#include "Fields.h"
#include "StorageNetwork.h"

#include <algorithm>
#include <array>
#include <limits>

namespace
{

constexpr SD_UINT32 IPV4_ADAPTER = 0;
constexpr SD_UINT32 IPV6_ADAPTER = 1;
constexpr SD_UINT32 FULL_ADAPTER = 2;
constexpr SD_UINT32 BARE_ADAPTER = 3;

constexpr std::array<AdapterModel, 4> MODELS{{
    {IPV4_ADAPTER,
     "tavo0",
     "TV2040A000117",
     "Varden Systems",
     "Tavo 2040 iSCSI host adapter, copper",
     "1.14",
     "3.0.1.27",
     "2040-C",
     {0x02, 0x54, 0x56, 0x00, 0x01, 0x17},
     1,
     0x0103,
     0x2040,
     0x0000001F,
     0x00000107,
     true,
     true},
    {IPV6_ADAPTER,
     "tavo1",
     "TV2060B000342",
     "Varden Systems",
     "Tavo 2060 iSCSI host adapter, fibre, IPv6",
     "2.02",
     "4.1.0.9",
     "2060-F",
     {0x02, 0x54, 0x56, 0x00, 0x03, 0x42},
     2,
     0x0201,
     0x2060,
     0x8000003F,
     0x8000010F,
     true,
     true},
    // The serial number fills its field of 16 bytes.
    {FULL_ADAPTER,
     "tavo2",
     "TV2060B000343-XL",
     "Varden Systems",
     "Tavo 2060 iSCSI host adapter, fibre, large table",
     "2.02",
     "4.1.0.9",
     "2060-F",
     {0x02, 0x54, 0x56, 0x00, 0x03, 0x43},
     2,
     0x0201,
     0x2060,
     0x0000003F,
     0x0000010F,
     true,
     true},
    {BARE_ADAPTER,
     "tavo3",
     "TV2010C000009",
     "Varden Systems",
     "Tavo 2010 iSCSI host adapter, entry level",
     "1.02",
     "2.7.3.1",
     "2010-E",
     {0x02, 0x54, 0x56, 0x00, 0x00, 0x09},
     1,
     0x0100,
     0x2010,
     0x00000003,
     0x00000001,
     false,
     false},
}};

// An entry of the factory's device database.
struct FactoryTarget {
    SD_UINT16 index;
    SD_UINT16 chapIndex;
    const char *label; // null stands for the longest name
    const char *address;
    const char *alias;
};

constexpr FactoryTarget IPV4_TARGETS[] = {
    {0, 0, "array1.boot", "10.20.0.11", "boot disk"},
    {1, 1, "array1.data", "10.20.0.11", "data disks"},
    {5, 2, "array2.many", "10.20.0.12", "forty disks"},
    {6, 0, "array2.sparse", "10.20.0.12", "disks with flat addresses"},
    {17, 2, "array2.farm", "10.20.0.12", "three hundred disks"},
    {42, 0, "array3.empty", "10.20.0.13", "nothing behind it"},
    {100, 0, "array4.offline", "10.20.0.14", "switched off"},
    {511, 3, nullptr, "10.20.0.13", "an alias of thirty-two characters"},
};

constexpr FactoryTarget IPV6_TARGETS[] = {
    {2, 0, "array6.boot", "fd00:20::11", "boot disk"},
    {3, 1, "array6.data", "fd00:20::11", "data disks"},
    {64, 0, "array6.worn", "fd00:20::12", "recovered errors"},
    {65, 1, "array6.slow", "fd00:20::12", "a slow disk"},
    {300, 0, "array6.retired", "fd00:20::12", "no longer there"},
};

ISCSIDEVICE sessionParameters(const AdapterModel &model)
{
    ISCSIDEVICE parameters{};
    parameters.deviceType = 1;
    parameters.exeThrottle = static_cast<SD_UINT16>(128 + 64 * model.index);
    parameters.retryCount = 5;
    parameters.retryDelay = 2;
    parameters.iSCSIOptions = 0x8104;
    parameters.TCPOptions = 0x0023;
    parameters.IPOptions = 0x0410;
    parameters.MaxRxDataSegmentLen = 128; // in units of 512 bytes, as the burst sizes
    parameters.firstBurstSize = 256;
    parameters.DefaultTime2Wait = 2;
    parameters.DefaultTime2Retain = 20;
    parameters.maxOutstandingR2T = 1;
    parameters.keepAliveTimeout = 30;
    parameters.portNumber = 3260;
    parameters.maxBurstSize = 512;
    parameters.taskMngmntTimeout = 10;
    return parameters;
}

DEVICEENTRYISCSI makeEntry(const AdapterModel &model, SD_UINT32 index, const std::string &label,
                           const ISCSIIPADDR &address, std::string_view alias, SD_UINT16 chapIndex)
{
    DEVICEENTRYISCSI entry = defaultEntry(model);
    entry.TargetID = index;
    entry.DeviceState = ENTRY_SESSION;
    entry.exeCount = static_cast<SD_UINT16>(index % 7);
    entry.TargetSessID = static_cast<SD_UINT16>(0x0100 + index);
    entry.InitiatorSessID[4] = static_cast<SD_UINT8>(index >> 8);
    entry.InitiatorSessID[5] = static_cast<SD_UINT8>(index);
    entry.DDBLink = 0;
    entry.CHAPTableIndex = chapIndex;
    entry.TargetPortalGroupID = static_cast<SD_UINT16>(1 + index % 4);
    entry.EntryInfo.IPAddr = address;
    setText(entry.EntryInfo.iSCSIName, targetName(label));
    setText(entry.EntryInfo.Alias, alias);
    setText(entry.DeviceInfo.targetAddr, toText(address));
    return entry;
}

std::vector<DEVICEENTRYISCSI> factoryEntries(const AdapterModel &model)
{
    std::vector<DEVICEENTRYISCSI> entries;
    const auto add = [&](std::span<const FactoryTarget> targets) {
        for (const FactoryTarget &target : targets) {
            entries.push_back(makeEntry(model, target.index,
                                        target.label == nullptr ? longestLabel() : std::string(target.label),
                                        makeAddress(target.address), target.alias, target.chapIndex));
        }
    };
    if (model.index == IPV4_ADAPTER) {
        add(IPV4_TARGETS);
    } else if (model.index == IPV6_ADAPTER) {
        add(IPV6_TARGETS);
    } else if (model.index == FULL_ADAPTER) {
        for (SD_UINT32 disk = 0; disk < DDB_SLOTS; ++disk) {
            entries.push_back(
                makeEntry(model, disk, poolLabel(disk), poolAddress(disk), "pool disk " + std::to_string(disk), 0));
        }
    }
    return entries;
}

CHAPTABLE makeChap(SD_UINT16 link, SD_UINT8 flags, std::string_view name, std::string_view secret)
{
    CHAPTABLE record{};
    record.Link = link;
    record.Flags = flags;
    record.ChapSecretLength = static_cast<SD_UINT8>(secret.size());
    setText(record.ChapSecret, secret);
    setText(record.ChapName, name);
    return record;
}

// The factory's credentials are samples; record 0 is empty, so that an entry's CHAP index of 0 means none.
std::vector<CHAPTABLE> factoryChap(const AdapterModel &model)
{
    switch (model.index) {
    case IPV4_ADAPTER:
        return {CHAPTABLE{}, makeChap(1, 0x40, "initiator-a", "sample-secret-one"),
                makeChap(2, 0x40, "initiator-b", "sample-secret-two"),
                makeChap(0x0105, 0x80, std::string(256, 'n'), std::string(100, 's'))};
    case IPV6_ADAPTER:
        return {CHAPTABLE{}, makeChap(1, 0xC0, "initiator-v6", "\xC8 raw bytes \x80")};
    default:
        return {};
    }
}

// The addresses and the iSNS server of the three adapters that are connected.
struct Network {
    const char *address, *secondary, *mask, *gateway, *dns, *secondaryDns, *directoryAgent, *isnsServer, *alias;
    bool isnsOn;
};

constexpr Network NETWORKS[] = {
    {"10.20.0.5", "10.20.0.6", "255.255.255.0", "10.20.0.1", "10.20.0.2", "10.20.0.3", "10.20.0.4", "10.20.0.53",
     "tavo adapter a", false},
    {"fd00:20::5", "fd00:20::6", "ffff:ffff:ffff:ffff::", "fd00:20::1", "fd00:20::2", "fd00:20::3", "fd00:20::4",
     "fd00:20::53", "tavo adapter b", true},
    {"10.22.0.5", "", "255.255.0.0", "10.22.0.1", "10.22.0.2", "", "", "10.22.0.53", "tavo adapter c", true},
};

} // namespace

const AdapterModel *findModel(SD_UINT32 index)
{
    return index < MODELS.size() ? &MODELS[index] : nullptr;
}

INITFWISCSI defaultBlock(const AdapterModel &model)
{
    INITFWISCSI block{};
    block.Version = 2;
    block.FWOptions = 0x0001; // addresses by DHCP
    block.addFWOptions = 0x0002;
    block.wakeupThreshold = 0x0010;
    setText(block.iSCSIName, std::string("iqn.2004-07.com.varden.adapter:") + model.serialNumber);
    setText(block.Alias, model.deviceName);
    block.DeviceInfo = sessionParameters(model);
    block.DeviceInfo.exeThrottle = 64;
    return block;
}

DEVICEENTRYISCSI defaultEntry(const AdapterModel &model)
{
    DEVICEENTRYISCSI entry{};
    entry.Options = 0x11;
    entry.Control = 0x02;
    entry.InitiatorSessID[0] = 0x80;
    std::copy(model.mac + 3, model.mac + 6, entry.InitiatorSessID + 1);
    entry.DeviceInfo = sessionParameters(model);
    entry.EntryInfo.PortalCount = 1;
    entry.DeviceState = ENTRY_CONFIGURED;
    entry.MaxTxDataSegmentLen = 128;
    entry.TargetPortalGroupID = 1;
    return entry;
}

Settings factorySettings(const AdapterModel &model)
{
    Settings settings;
    settings.block = defaultBlock(model);
    if (model.index < std::size(NETWORKS)) {
        const Network &network = NETWORKS[model.index];
        INITFWISCSI &block = settings.block;
        block.FWOptions = static_cast<SD_UINT16>(0x8210 + 0x0100 * model.index);
        block.addFWOptions = static_cast<SD_UINT16>(0x4006 + model.index);
        block.IPAddr = makeAddress(network.address);
        block.SecondaryIPAddr = makeAddress(network.secondary);
        block.SubnetMask = makeAddress(network.mask);
        block.Gateway = makeAddress(network.gateway);
        block.PrimaryDNS.IPAddr = makeAddress(network.dns);
        block.SecondaryDNS.IPAddr = makeAddress(network.secondaryDns);
        block.SLPDAAddr = makeAddress(network.directoryAgent);
        block.DeviceInfo = sessionParameters(model);
        setText(block.Alias, network.alias);
        settings.isns.performiSNSDiscovery = network.isnsOn ? 1 : 0;
        settings.isns.AutomaticiSNSDiscovery = network.isnsOn ? 1 : 0;
        settings.isns.ipAddr = makeAddress(network.isnsServer);
    }
    setText(settings.isns.initiatorName, getText(settings.block.iSCSIName));
    setText(settings.versions.firmware, model.firmwareVersion);
    setText(settings.versions.optionRom, model.optionRomVersion);
    settings.entries = factoryEntries(model);
    settings.chap = factoryChap(model);
    return settings;
}

Activity factoryActivity(const AdapterModel &model)
{
    Activity activity;
    HBAPORTSTATISCSI &counters = activity.statistics;
    const SD_UINT64 pdus = 1000 * (SD_UINT64{model.index} + 1);
    if (model.index == BARE_ADAPTER) {
        return activity;
    }
    counters.iSCSITxPDUCount = pdus;
    counters.iSCSIRxPDUCount = pdus - 3;
    counters.iSCSITxBytesCount = pdus * 48;
    counters.iSCSIRxBytesCount = pdus * 560;
    counters.iSCSICompleteIOsCount = pdus / 2;
    counters.TCPTxSegmentsCount = pdus + 17;
    counters.TCPRxSegmentsCount = pdus + 23;
    counters.TCPTxBytesCount = pdus * 49;
    counters.TCPRxBytesCount = pdus * 561;
    counters.IPTxPacketsCount = pdus + 29;
    counters.IPRxPacketsCount = pdus + 31;
    counters.IPTxBytesCount = pdus * 70;
    counters.IPRxBytesCount = pdus * 582;
    counters.MACTxFramesCount = pdus + 37;
    counters.MACRxFramesCount = pdus + 41;
    counters.MACTxBytesCount = pdus * 88;
    counters.MACRxBytesCount = pdus * 600;
    counters.TCPTxACKCount = 11;
    counters.TCPRxACKCount = 13;
    if (model.index == IPV6_ADAPTER) {
        // A port that has been up for very long: counters at the end of their range. They go on from 0, as counters do.
        constexpr SD_UINT64 last = std::numeric_limits<SD_UINT64>::max();
        counters.MACRxBytesCount = last;
        counters.MACTxBytesCount = last - 1;
        counters.IPRxBytesCount = last / 2 + 1;
        counters.MACCRCErrorCount = last;
        counters.iSCSISeqErrorCount = last - 255;
    }
    return activity;
}
