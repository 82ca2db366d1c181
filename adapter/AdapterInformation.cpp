// What the adapter says of itself: node, portal, driver, chip.
#include "Library.h"
#include "Fields.h"

namespace
{

constexpr SD_UINT16 STATE_READY = 1;
constexpr SD_UINT16 STATE_NO_LINK = 2;
constexpr SD_UINT16 STATE_RESET_NEEDED = 3; // an image waits for the next reset
constexpr SD_UINT16 FIRMWARE_OPTION_DHCP = 0x0001;
constexpr const char *DRIVER_VERSION = "2.6.4-tavo";

SD_UINT16 stateOf(const AdapterModel &model, const ImageVersions &versions)
{
    if (versions.nextFirmware[0] != 0 || versions.nextOptionRom[0] != 0) {
        return STATE_RESET_NEEDED;
    }
    return model.linkUp ? STATE_READY : STATE_NO_LINK;
}

} // namespace

extern "C" {

SD_UINT32 SDGetHbaDeviceNodePropertyiSCSI(SDMGT_HANDLE handle, HBAISCSINODE *node)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(node);
        const auto settings = adapter.settings.read();
        *node = {};
        setText(node->DeviceName, adapter.model.deviceName);
        NODEINFOISCSI &identity = node->NodeInfoISCSI;
        identity.IPAddr = settings->block.IPAddr;
        std::copy(std::begin(settings->block.iSCSIName), std::end(settings->block.iSCSIName), identity.iSCSIName);
        std::copy(std::begin(settings->block.Alias), std::end(settings->block.Alias), identity.Alias);
        identity.PortalCount = 1;
    });
}

SD_UINT32 SDGetHbaDevicePortalPropertyiSCSI(SDMGT_HANDLE handle, SD_UINT32 port, HBAISCSIPORTAL *portal)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(portal);
        require(port == 0, ERR_INVALID_PARAMETER);
        const auto settings = adapter.settings.read();
        const AdapterModel &model = adapter.model;
        *portal = {};
        portal->IPAddr = settings->block.IPAddr;
        setText(portal->SerialNum, model.serialNumber);
        std::copy(std::begin(model.mac), std::end(model.mac), portal->MacAddr);
        setText(portal->Manufacturer, model.manufacturer);
        setText(portal->Model, model.model);
        setText(portal->DriverVersion, DRIVER_VERSION);
        setText(portal->FWVersion, getText(settings->versions.firmware));
        setText(portal->OptRomVersion, getText(settings->versions.optionRom));
        portal->State = stateOf(model, settings->versions);
        portal->Type = model.type;
        portal->DiscTargetCount = static_cast<SD_UINT16>(settings->entries.size());
        portal->DriverAttr = model.driverAttributes;
        portal->FWAttr = model.firmwareAttributes;
        setText(portal->iscsiVersion, "1.0");
        portal->dhcpState = (settings->block.FWOptions & FIRMWARE_OPTION_DHCP) != 0 ? 1 : 0;
        portal->linkStatus = model.linkUp ? 1 : 0;
    });
}

SD_UINT32 SDGetHbaDeviceDriverPropertyiSCSI(SDMGT_HANDLE handle, DRIVERINFO *driver)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(driver);
        *driver = {};
        setText(driver->Version, DRIVER_VERSION);
        driver->NumberOfBus = 1;
        driver->TargetsPerBus = DDB_SLOTS;
        driver->LunsPerTarget = 16384;
        driver->LunsPerTargetOS = 16384;
        driver->MaximumTransferLen = 1048576;
        driver->MaximumDataSegments = 128;
        driver->DmaBitAddresses = 64;
        driver->IoMapType = 1;
        driver->Attributes = adapter.model.driverAttributes;
    });
}

SD_UINT32 SDGetHbaDeviceChipPropertyiSCSI(SDMGT_HANDLE handle, CHIPINFO *chip)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(chip);
        const AdapterModel &model = adapter.model;
        *chip = {};
        chip->VendorID = 0x1F7A;
        chip->DeviceID = model.deviceId;
        chip->SubVendorID = 0x1F7A;
        chip->SubSystemID = static_cast<SD_UINT16>(0x0100 + model.index);
        setText(chip->BoardType, model.boardType);
        chip->ChipVersion = model.chipVersion;
    });
}
}
