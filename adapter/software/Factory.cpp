// The factory: the four software adapters, their settings and what they have counted, as they leave it.
#include "Factory.h"

#include "Fields.h"
#include "StorageNetwork.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace
{

constexpr const char *DRIVER_VERSION = "2.6.4-tavo";
constexpr SD_UINT16 VENDOR_ID = 0x1F7A;

// What the adapters differ in.
struct Make {
    const char *deviceName;
    const char *serialNumber;
    const char *model;
    const char *optionRomVersion;
    const char *firmwareVersion;
    const char *boardType;
    MacAddress mac;
    SD_UINT16 type;
    SD_UINT16 chipVersion;
    SD_UINT16 deviceId;
    SD_UINT32 driverAttributes;
    SD_UINT32 firmwareAttributes;
};

constexpr std::array<Make, 4> MAKES{{
    {
        .deviceName = "tavo0",
        .serialNumber = "TV2040A000117",
        .model = "Tavo 2040 iSCSI host adapter, copper",
        .optionRomVersion = "1.14",
        .firmwareVersion = "3.0.1.27",
        .boardType = "2040-C",
        .mac = {0x02, 0x54, 0x56, 0x00, 0x01, 0x17},
        .type = 1,
        .chipVersion = 0x0103,
        .deviceId = 0x2040,
        .driverAttributes = 0x0000001F,
        .firmwareAttributes = 0x00000107,
    },
    {
        .deviceName = "tavo1",
        .serialNumber = "TV2060B000342",
        .model = "Tavo 2060 iSCSI host adapter, fibre, IPv6",
        .optionRomVersion = "2.02",
        .firmwareVersion = "4.1.0.9",
        .boardType = "2060-F",
        .mac = {0x02, 0x54, 0x56, 0x00, 0x03, 0x42},
        .type = 2,
        .chipVersion = 0x0201,
        .deviceId = 0x2060,
        .driverAttributes = 0x8000003F,
        .firmwareAttributes = 0x8000010F,
    },
    {
        .deviceName = "tavo2",
        .serialNumber = "TV2060B000343-XL", // fills its field of 16 bytes
        .model = "Tavo 2060 iSCSI host adapter, fibre, large table",
        .optionRomVersion = "2.02",
        .firmwareVersion = "4.1.0.9",
        .boardType = "2060-F",
        .mac = {0x02, 0x54, 0x56, 0x00, 0x03, 0x43},
        .type = 2,
        .chipVersion = 0x0201,
        .deviceId = 0x2060,
        .driverAttributes = 0x0000003F,
        .firmwareAttributes = 0x0000010F,
    },
    {
        .deviceName = "tavo3",
        .serialNumber = "TV2010C000009",
        .model = "Tavo 2010 iSCSI host adapter, entry level",
        .optionRomVersion = "1.02",
        .firmwareVersion = "2.7.3.1",
        .boardType = "2010-E",
        .mac = {0x02, 0x54, 0x56, 0x00, 0x00, 0x09},
        .type = 1,
        .chipVersion = 0x0100,
        .deviceId = 0x2010,
        .driverAttributes = 0x00000003,
        .firmwareAttributes = 0x00000001,
    },
}};

// The addresses and the iSNS server of an adapter that is connected.
struct Cabling {
    const char *address;
    const char *secondary;
    const char *mask;
    const char *gateway;
    const char *dns;
    const char *secondaryDns;
    const char *directoryAgent;
    const char *isnsServer;
    const char *alias;
    bool isnsOn;
};

constexpr std::array<Cabling, 3> CABLINGS{{
    {
        .address = "10.20.0.5",
        .secondary = "10.20.0.6",
        .mask = "255.255.255.0",
        .gateway = "10.20.0.1",
        .dns = "10.20.0.2",
        .secondaryDns = "10.20.0.3",
        .directoryAgent = "10.20.0.4",
        .isnsServer = "10.20.0.53",
        .alias = "tavo adapter a",
        .isnsOn = false,
    },
    {
        .address = "fd00:20::5",
        .secondary = "fd00:20::6",
        .mask = "ffff:ffff:ffff:ffff::",
        .gateway = "fd00:20::1",
        .dns = "fd00:20::2",
        .secondaryDns = "fd00:20::3",
        .directoryAgent = "fd00:20::4",
        .isnsServer = "fd00:20::53",
        .alias = "tavo adapter b",
        .isnsOn = true,
    },
    {
        .address = "10.22.0.5",
        .secondary = "",
        .mask = "255.255.0.0",
        .gateway = "10.22.0.1",
        .dns = "10.22.0.2",
        .secondaryDns = "",
        .directoryAgent = "",
        .isnsServer = "10.22.0.53",
        .alias = "tavo adapter c",
        .isnsOn = true,
    },
}};

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

DEVICEENTRYISCSI makeEntry(const AdapterModel &model, SD_UINT32 index, std::string_view label,
                           const ISCSIIPADDR &address, std::string_view alias)
{
    DEVICEENTRYISCSI entry = defaultEntry(model);
    entry.TargetID = index;
    entry.DeviceState = ENTRY_SESSION;
    entry.exeCount = static_cast<SD_UINT16>(index % 7);
    entry.TargetSessID = static_cast<SD_UINT16>(0x0100 + index);
    entry.InitiatorSessID[4] = static_cast<SD_UINT8>(index >> 8);
    entry.InitiatorSessID[5] = static_cast<SD_UINT8>(index);
    entry.TargetPortalGroupID = static_cast<SD_UINT16>(1 + index % 4);
    entry.EntryInfo.IPAddr = address;
    setText(entry.EntryInfo.iSCSIName, targetName(label));
    setText(entry.EntryInfo.Alias, alias);
    setText(entry.DeviceInfo.targetAddr, toText(address));
    return entry;
}

void placeEntries(const AdapterModel &model, Settings &settings)
{
    for (const NamedTarget &target : namedTargets()) {
        if (target.adapter == model.index) {
            DEVICEENTRYISCSI entry =
                makeEntry(model, target.entry, target.label, makeAddress(target.address), target.alias);
            entry.CHAPTableIndex = target.chapIndex;
            if (target.behaviour == Behaviour::offline || target.behaviour == Behaviour::retired) {
                entry.DeviceState = ENTRY_CONFIGURED;
                entry.TargetSessID = 0;
            }
            settings.place(entry);
        }
    }
    if (model.index == FULL_ADAPTER) {
        for (SD_UINT32 disk = 0; disk < DDB_SLOTS; ++disk) {
            settings.place(
                makeEntry(model, disk, poolLabel(disk), poolAddress(disk), "pool disk " + std::to_string(disk)));
        }
    }
}

SharedChap makeChap(const Account &account, SD_UINT8 flags, SD_UINT16 link)
{
    CHAPTABLE record{};
    record.Link = link;
    record.Flags = flags;
    record.ChapSecretLength = static_cast<SD_UINT8>(account.secret.size());
    setText(record.ChapSecret, account.secret);
    setText(record.ChapName, account.name);
    return shareChap(record);
}

// Record 0 is empty, so that an entry's CHAP index of 0 means none.
std::vector<SharedChap> factoryChap(const AdapterModel &model)
{
    switch (model.index) {
    case IPV4_ADAPTER:
        return {
            shareChap({}), makeChap(INITIATOR_A, 0x40, 0),
            makeChap(INITIATOR_B, 0x40, 3), // the target proves itself by record 3
            makeChap(ARRAY2, 0x80, 0x0105), // a link that leads nowhere, and that nobody follows
        };
    case IPV6_ADAPTER:
        return {
            shareChap({}),
            makeChap(INITIATOR_V6, 0xC0, 0),
        };
    default:
        return {};
    }
}

} // namespace

std::string libraryVersion()
{
    return std::string("Tavo software adapter ") + TAVO_VERSION;
}

std::shared_ptr<const AdapterModel> findModel(SD_UINT32 index)
{
    if (index >= MAKES.size()) {
        return nullptr;
    }
    const Make &make = MAKES[index];
    auto model = std::make_shared<AdapterModel>();
    model->index = index;
    model->key = make.serialNumber;
    model->deviceName = make.deviceName;
    model->serialNumber = make.serialNumber;
    model->manufacturer = "Varden Systems";
    model->model = make.model;
    model->optionRomVersion = make.optionRomVersion;
    model->firmwareVersion = make.firmwareVersion;
    model->mac = make.mac;
    model->type = make.type;
    model->driverAttributes = make.driverAttributes;
    model->firmwareAttributes = make.firmwareAttributes;
    model->isnsSupported = index < CABLINGS.size();

    DRIVERINFO &driver = model->driver;
    setText(driver.Version, DRIVER_VERSION);
    driver.NumberOfBus = 1;
    driver.TargetsPerBus = DDB_SLOTS;
    driver.LunsPerTarget = 16384;
    driver.LunsPerTargetOS = 16384;
    driver.MaximumTransferLen = 1048576;
    driver.MaximumDataSegments = 128;
    driver.DmaBitAddresses = 64;
    driver.IoMapType = 1;
    driver.Attributes = make.driverAttributes;

    CHIPINFO &chip = model->chip;
    chip.VendorID = VENDOR_ID;
    chip.DeviceID = make.deviceId;
    chip.SubVendorID = VENDOR_ID;
    chip.SubSystemID = static_cast<SD_UINT16>(0x0100 + index);
    setText(chip.BoardType, make.boardType);
    chip.ChipVersion = make.chipVersion;
    return model;
}

bool hasLink(const AdapterModel &model)
{
    return model.index < CABLINGS.size();
}

INITFWISCSI defaultBlock(const AdapterModel &model)
{
    INITFWISCSI block{};
    block.Version = 2;
    block.FWOptions = 0x0001; // addresses by DHCP
    block.addFWOptions = 0x0002;
    block.wakeupThreshold = 0x0010;
    setText(block.iSCSIName, "iqn.2004-07.com.varden.adapter:" + model.serialNumber);
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
    std::copy(model.mac.begin() + 3, model.mac.end(), entry.InitiatorSessID + 1);
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
    if (model.index < CABLINGS.size()) {
        const Cabling &cabling = CABLINGS[model.index];
        INITFWISCSI &block = settings.block;
        block.FWOptions = static_cast<SD_UINT16>(0x8210 + 0x0100 * model.index);
        block.addFWOptions = static_cast<SD_UINT16>(0x4006 + model.index);
        block.IPAddr = makeAddress(cabling.address);
        block.SecondaryIPAddr = makeAddress(cabling.secondary);
        block.SubnetMask = makeAddress(cabling.mask);
        block.Gateway = makeAddress(cabling.gateway);
        block.PrimaryDNS.IPAddr = makeAddress(cabling.dns);
        block.SecondaryDNS.IPAddr = makeAddress(cabling.secondaryDns);
        block.SLPDAAddr = makeAddress(cabling.directoryAgent);
        block.DeviceInfo = sessionParameters(model);
        setText(block.Alias, cabling.alias);
        settings.isns.performiSNSDiscovery = cabling.isnsOn ? 1 : 0;
        settings.isns.AutomaticiSNSDiscovery = cabling.isnsOn ? 1 : 0;
        settings.isns.ipAddr = makeAddress(cabling.isnsServer);
    }
    setText(settings.isns.initiatorName, getText(settings.block.iSCSIName));
    setText(settings.versions.firmware, model.firmwareVersion);
    setText(settings.versions.optionRom, model.optionRomVersion);
    placeEntries(model, settings);
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
