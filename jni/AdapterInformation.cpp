#include "AdapterInformation.h"

#include "DeviceDatabaseEntry.h"
#include "FirmwareConfiguration.h"
#include "Handles.h"
#include "JavaAccess.h"
#include "NodeInfo.h"
#include "RecordMemory.h"
#include "vdsdm/Operations.h"
#include "vdsdm/Status.h"

SD_UINT32 readAdapterInfo(JNIEnv *env, SDMGT_HANDLE handle, jobject jObj)
{
    HBAISCSINODE node;
    clear(node);
    const SD_UINT32 status = SDGetHbaDeviceNodePropertyiSCSI(handle, &node);
    if (!failed(status, "SDGetHbaDeviceNodePropertyiSCSI call failed! %x\n")) {
        setNodeInfo(env, jObj, node.NodeInfoISCSI);
    }
    return status;
}

SD_UINT32 readFWInfo(JNIEnv *env, SDMGT_HANDLE handle, jobject jObj)
{
    JavaObject hba = objectOf(env, jObj);
    if (hba.status != 0) {
        return hba.status;
    }
    HBAISCSIPORTAL portal;
    clear(portal);
    hba.status = SDGetHbaDevicePortalPropertyiSCSI(handle, 0, &portal);
    report(hba.status, "SDGetHbaDevicePortalPropertyiSCSI call failed! %x\n");
    setInt(hba, "setFirmwareAttribute", portal.FWAttr, anonymous);
    setText(hba, "setiSCSIVersion", portal.iscsiVersion, anonymous, "NULL iSCSI version!\n");
    setText(hba, "setOptRomVersion", portal.OptRomVersion, anonymous, "NULL OptROM version!\n");
    setText(hba, "setFirmwareVersion", portal.FWVersion, anonymous, "NULL FW version!\n");
    setText(hba, "setModel", portal.Model, anonymous, "NULL Model version!\n");
    return hba.status;
}

SD_UINT32 readDriverInfo(JNIEnv *env, SDMGT_HANDLE handle, jobject jObj)
{
    DRIVERINFO driver;
    clear(driver);
    const SD_UINT32 status = SDGetHbaDeviceDriverPropertyiSCSI(handle, &driver);
    if (failed(status, "SDGetHbaDeviceDriverPropertyiSCSI call failed! %x\n")) {
        return status;
    }
    JavaObject hba = objectOf(env, jObj);
    setText(hba, "setDriverVersion", driver.Version, anonymous, "NULL Driver String!\n");
    setInt(hba, "setDriverAttribute", driver.Attributes, anonymous);
    return hba.status;
}

SD_UINT32 readChipInfo(JNIEnv *env, SDMGT_HANDLE handle, jobject jHba)
{
    CHIPINFO chip;
    clear(chip);
    const SD_UINT32 status = SDGetHbaDeviceChipPropertyiSCSI(handle, &chip);
    if (!failed(status, "SDGetHbaDeviceChipPropertyiSCSI call failed!\n")) {
        setChipInfo(env, jHba, chip);
    }
    return status;
}

void setChipInfo(JNIEnv *env, jobject jObj, const CHIPINFO &chip)
{
    JavaObject hba = objectOrNull(env, jObj, "NULL javaChipInfoObject!2\n");
    setText(hba, "setBoardType", chip.BoardType, anonymous, "NULL Board Type !\n");
    setInt(hba, "setChipVersion", chip.ChipVersion, namedObj);
    carryOn(hba);
}

SD_UINT32 readHBAState(JNIEnv *env, SDMGT_HANDLE handle, jobject jHBA)
{
    HBAISCSIPORTAL portal;
    clear(portal);
    const SD_UINT32 status = SDGetHbaDevicePortalPropertyiSCSI(handle, 0, &portal);
    if (failed(status, "SDGetHbaDevicePortalPropertyiSCSI call failed!\n")) {
        return status;
    }
    JavaObject hba = objectOf(env, jHBA);
    setInt(hba, "setState", portal.State, anonymous);
    setInt(hba, "setDhcpState", portal.dhcpState, anonymous);
    setInt(hba, "setLinkStatus", portal.linkStatus, anonymous);
    return hba.status;
}

static void setPortal(JavaObject &hba, const HBAISCSIPORTAL &portal)
{
    setInt(hba, "setNumberDiskTargets", portal.DiscTargetCount, anonymous);
    setShorts(hba, "setMACAddress", portal.MacAddr, named);
    setInt(hba, "setState", portal.State, anonymous);
    setInt(hba, "setDhcpState", portal.dhcpState, anonymous);
    setInt(hba, "setLinkStatus", portal.linkStatus, anonymous);
    setInt(hba, "setType", portal.Type, anonymous);
    setInt(hba, "setDriverAttribute", portal.DriverAttr, anonymous);
    setInt(hba, "setFirmwareAttribute", portal.FWAttr, anonymous);
    setText(hba, "setDriverVersion", portal.DriverVersion, anonymous, "NULL driver version!\n");
    setText(hba, "setFirmwareVersion", portal.FWVersion, anonymous, "NULL FW version!\n");
    setText(hba, "setManufacturer", portal.Manufacturer, anonymous, "NULL Manufacture version!\n");
    setText(hba, "setModel", portal.Model, anonymous, "NULL model version!\n");
    setText(hba, "setOptRomVersion", portal.OptRomVersion, anonymous, "NULL ROM version!\n");
    setText(hba, "setSerialNumberStr", portal.SerialNum, anonymous, "NULL Serial Number!\n");
}

// Makes a DevDBEntry of a record and adds it to the HBA object. Whatever code the conversion fails with becomes
// ERR_JNI_NULL.
static void addEntry(JavaObject &hba, jclass entryClass, const DEVICEENTRYISCSI &ddb, SD_UINT32 index)
{
    const auto entry = newObject(hba.env, entryClass, "New Device Object failed!\n");
    if (entry == nullptr
        || failed(setiSCSIDevDDBEntry(hba.env, entry.get(), ddb, index, false), "setiSCSIDevDDBEntry() failed!\n")) {
        hba.status = ERR_JNI_NULL;
    }
    setObject(hba, "addDeviceDataBaseEntry", TAKES_DEV_DB_ENTRY, entry.get(), namedObj);
}

// Walks the device database and adds every entry in use, until numEntries are found. lastStatus becomes that of the
// last read. NextValid shortens the way but only forwards, so that a library that links in circles cannot hold us up.
static void addEntries(JavaObject &hba, SDMGT_HANDLE handle, SD_UINT32 numEntries, SD_UINT32 &lastStatus)
{
    const auto entryClass = findClass(hba.env, DEV_DB_ENTRY_CLASS, "Find Device class call failed!\n");
    if (entryClass == nullptr) {
        hba.status = ERR_JNI_CLASS;
        return;
    }
    SD_UINT32 numEntriesFound = 0;
    SD_UINT32 ddbIndex = 0;
    while (ddbIndex < DDB_SLOTS && numEntriesFound != numEntries && hba.status == 0) {
        DEVICEENTRYISCSI ddb;
        clear(ddb);
        lastStatus = SDGetDDBEntry(handle, &ddb, ddbIndex);
        report(lastStatus, "SDGetDDBEntry call failed! %x\n");
        if (ddb.DeviceState != 0) {
            addEntry(hba, entryClass.get(), ddb, numEntriesFound);
            ++numEntriesFound;
        }
        ddbIndex = ddb.NextValid > ddbIndex && ddb.NextValid < DDB_SLOTS ? ddb.NextValid : ddbIndex + 1;
    }
}

SD_UINT32 readHBAData(JNIEnv *env, jint dev, jobject jObj)
{
    const SDMGT_HANDLE handle = hbaHandle(dev);
    HBAISCSIPORTAL portal;
    clear(portal);
    SD_UINT32 lastStatus = SDGetHbaDevicePortalPropertyiSCSI(handle, 0, &portal);
    if (failed(lastStatus, "SDGetHbaDevicePortalPropertyiSCSI call failed!\n")) {
        return lastStatus;
    }
    JavaObject hba = objectOf(env, jObj);
    setPortal(hba, portal);
    if (hba.status != 0) {
        return hba.status;
    }
    SD_UINT32 numEntries = 0;
    lastStatus = SDGetDDBEntryNum(handle, &numEntries);
    report(lastStatus, "SDGetDDB call failed!\n");
    if (numEntries != 0) {
        addEntries(hba, handle, numEntries, lastStatus);
    }
    if (hba.status != 0) {
        return hba.status;
    }
    // Its status does not count.
    if (readFWData(env, hbaHandle(dev), jObj) != 0) {
        forgetOwnError(env);
    }
    return lastStatus;
}
