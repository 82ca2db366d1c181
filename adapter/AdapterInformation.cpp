// What the adapter says of itself: node, portal, driver, chip.
#include "Fields.h"
#include "FirmwareConfiguration.h"
#include "Library.h"

namespace
{

constexpr SD_UINT16 STATE_READY = 1;
constexpr SD_UINT16 STATE_NO_LINK = 2;
constexpr SD_UINT16 STATE_RESET_NEEDED = 3; // an image waits for the next reset
constexpr SD_UINT16 FIRMWARE_OPTION_DHCP = 0x0001;

SD_UINT16 stateOf(bool linkUp, const ImageVersions &versions)
{
    if (versions.nextFirmware[0] != 0 || versions.nextOptionRom[0] != 0) {
        return STATE_RESET_NEEDED;
    }
    return linkUp ? STATE_READY : STATE_NO_LINK;
}

} // namespace

extern "C" {

SD_UINT32 SDGetHbaDeviceNodePropertyiSCSI(SDMGT_HANDLE handle, HBAISCSINODE *node)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(node);
        const auto settings = adapter.settings.read();
        *node = {};
        setText(node->DeviceName, adapter.model().deviceName);
        NODEINFOISCSI &identity = node->NodeInfoISCSI;
        identity.IPAddr = blockInForce(adapter).IPAddr;
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
        const AdapterModel &model = adapter.model();
        const auto host = adapter.port().addresses();
        const bool linkUp = adapter.port().linkUp();
        *portal = {};
        portal->IPAddr = blockInForce(adapter).IPAddr;
        setText(portal->SerialNum, model.serialNumber);
        std::copy(std::begin(model.mac), std::end(model.mac), portal->MacAddr);
        setText(portal->Manufacturer, model.manufacturer);
        setText(portal->Model, model.model);
        setText(portal->DriverVersion, getText(model.driver.Version));
        const bool images = adapter.port().takesImages();
        setText(portal->FWVersion, images ? getText(settings->versions.firmware) : model.firmwareVersion);
        setText(portal->OptRomVersion, images ? getText(settings->versions.optionRom) : model.optionRomVersion);
        portal->State = stateOf(linkUp, settings->versions);
        portal->Type = model.type;
        portal->DiscTargetCount = static_cast<SD_UINT16>(settings->entries().size());
        portal->DriverAttr = model.driverAttributes;
        portal->FWAttr = model.firmwareAttributes;
        setText(portal->iscsiVersion, "1.0");
        const bool blockHasDhcp = (settings->block.FWOptions & FIRMWARE_OPTION_DHCP) != 0;
        portal->dhcpState = (host ? host->dhcp : blockHasDhcp) ? 1 : 0;
        portal->linkStatus = linkUp ? 1 : 0;
    });
}

SD_UINT32 SDGetHbaDeviceDriverPropertyiSCSI(SDMGT_HANDLE handle, DRIVERINFO *driver)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(driver);
        *driver = adapter.model().driver;
    });
}

SD_UINT32 SDGetHbaDeviceChipPropertyiSCSI(SDMGT_HANDLE handle, CHIPINFO *chip)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(chip);
        *chip = adapter.model().chip;
    });
}
}
