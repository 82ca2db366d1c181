// The host adapter's inventory: an adapter is a network interface of this machine.
#include "HostInventory.h"

#include "Device.h"
#include "Fields.h"
#include "Netlink.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <ranges>
#include <sstream>

namespace
{

constexpr const char *NAME_PREFIX = "iqn.2004-07.com.varden.tavo:host-";
constexpr SD_UINT16 HALF_KIBIBYTES_256K =
    512; // the segment and burst sizes that libiscsi offers, in units of 512 bytes
constexpr SD_UINT32 LIBISCSI_TRANSFER = 0xFFFFFF;

// The interfaces that are adapters: those that TAVO_ADAPTER_INTERFACES names, in its order, else those with an address
// other than loopback, in the kernel's.
std::vector<KernelLink> adapterLinks()
{
    std::vector<KernelLink> links = readLinks();
    const char *named = std::getenv("TAVO_ADAPTER_INTERFACES");
    if (named == nullptr || *named == '\0') {
        std::erase_if(links, [](const KernelLink &link) { return link.loopback || readAddresses(link.index).empty(); });
        return links;
    }
    std::vector<KernelLink> chosen;
    std::istringstream names(named);
    for (std::string name; std::getline(names, name, ',');) {
        const auto found = std::ranges::find(links, name, &KernelLink::name);
        if (found != links.end()) {
            chosen.push_back(*found);
        }
    }
    return chosen;
}

std::string macText(const MacAddress &mac)
{
    std::array<char, 13> text{};
    (void)std::snprintf(text.data(), text.size(), "%02x%02x%02x%02x%02x%02x", mac[0], mac[1], mac[2], mac[3], mac[4],
                        mac[5]);
    return text.data();
}

std::string speedText(unsigned speed)
{
    if (speed == 0) {
        return "";
    }
    return speed % 1000 == 0 ? ", " + std::to_string(speed / 1000) + " Gb/s" : ", " + std::to_string(speed) + " Mb/s";
}

std::string hostName()
{
    std::array<char, 256> name{};
    return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

// 64 bits that follow from a text (FNV-1a), so that the machine's ID itself is shown to nobody.
SD_UINT64 digestOf(const std::string &text)
{
    SD_UINT64 digest = 0xCBF29CE484222325;
    for (const char letter : text) {
        digest = (digest ^ static_cast<SD_UINT8>(letter)) * 0x100000001B3;
    }
    return digest;
}

// The value of a line "InitiatorName=iqn...", or nothing.
std::string configuredName()
{
    constexpr std::string_view mark = "InitiatorName=";
    std::ifstream file("/etc/iscsi/initiatorname.iscsi");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(mark)) {
            return line.substr(mark.size(), line.find_last_not_of(" \t\r") + 1 - mark.size());
        }
    }
    return "";
}

ISCSIDEVICE sessionParameters()
{
    ISCSIDEVICE parameters{};
    parameters.deviceType = 1;
    parameters.exeThrottle = 1;
    parameters.MaxRxDataSegmentLen = HALF_KIBIBYTES_256K;
    parameters.firstBurstSize = HALF_KIBIBYTES_256K;
    parameters.maxBurstSize = HALF_KIBIBYTES_256K;
    parameters.DefaultTime2Wait = 2;
    parameters.maxOutstandingR2T = 1;
    parameters.keepAliveTimeout = 30;
    parameters.portNumber = 3260;
    parameters.taskMngmntTimeout = 10;
    return parameters;
}

} // namespace

std::string hostInitiatorName()
{
    static const std::string name = [] {
        std::string configured = configuredName();
        if (!configured.empty()) {
            return configured;
        }
        std::string machine;
        std::ifstream("/etc/machine-id") >> machine;
        if (machine.empty()) {
            machine = hostName();
            for (const KernelLink &link : readLinks()) {
                machine += macText(link.mac);
            }
        }
        std::array<char, 17> digest{};
        (void)std::snprintf(digest.data(), digest.size(), "%016llx",
                            static_cast<unsigned long long>(digestOf(machine)));
        return std::string(NAME_PREFIX) + digest.data();
    }();
    return name;
}

std::string libraryVersion()
{
    return "Tavo host adapter " TAVO_VERSION;
}

std::shared_ptr<const AdapterModel> findModel(SD_UINT32 index)
{
    const std::vector<KernelLink> links = adapterLinks();
    if (index >= links.size()) {
        return nullptr;
    }
    const KernelLink &link = links[index];
    const Device device = describeDevice(link.name);
    auto model = std::make_shared<AdapterModel>();
    model->index = index;
    model->key = link.name;
    model->deviceName = link.name;
    model->serialNumber = link.mac == MacAddress{} ? link.name : macText(link.mac);
    model->manufacturer = device.maker;
    model->model = device.model + speedText(device.speed);
    model->firmwareVersion = device.firmware;
    model->mac = link.mac;
    model->type = 1;
    model->isnsSupported = true;
    DRIVERINFO &driver = model->driver;
    setText(driver.Version, device.driverVersion.empty() ? device.driver : device.driver + " " + device.driverVersion);
    driver.NumberOfBus = 1;
    driver.TargetsPerBus = DDB_SLOTS;
    driver.LunsPerTarget = 16384;
    driver.LunsPerTargetOS = 16384;
    driver.MaximumTransferLen = LIBISCSI_TRANSFER;
    driver.DmaBitAddresses = 64;
    CHIPINFO &chip = model->chip;
    chip.VendorID = device.vendorId;
    chip.DeviceID = device.deviceId;
    chip.SubVendorID = device.subVendorId;
    chip.SubSystemID = device.subSystemId;
    chip.ChipVersion = device.revision;
    setText(chip.BoardType, device.busAddress);
    return model;
}

Settings factorySettings(const AdapterModel &model)
{
    Settings settings;
    settings.block = defaultBlock(model);
    setText(settings.isns.initiatorName, hostInitiatorName());
    setText(settings.versions.firmware, model.firmwareVersion);
    return settings;
}

Activity factoryActivity(const AdapterModel & /*model*/)
{
    return {};
}

INITFWISCSI defaultBlock(const AdapterModel & /*model*/)
{
    INITFWISCSI block{};
    block.Version = 2;
    setText(block.iSCSIName, hostInitiatorName());
    setText(block.Alias, hostName());
    block.DeviceInfo = sessionParameters();
    return block;
}

DEVICEENTRYISCSI defaultEntry(const AdapterModel & /*model*/)
{
    DEVICEENTRYISCSI entry{};
    entry.DeviceInfo = sessionParameters();
    entry.EntryInfo.PortalCount = 1;
    entry.DeviceState = ENTRY_CONFIGURED;
    entry.MaxTxDataSegmentLen = HALF_KIBIBYTES_256K;
    entry.TargetPortalGroupID = 1;
    return entry;
}
