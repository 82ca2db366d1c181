#include "AdapterInformation.h"

#include "DeviceDatabaseEntry.h"
#include "JavaAccess.h"
#include "NodeInfo.h"
#include "Records.h"
#include "com_varden_tavo_iscsi_jni_ApiWrapper.h"
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
    return withClassOf(env, jObj, [&](JavaObject &hba) {
        HBAISCSIPORTAL portal;
        clear(portal);
        hba.status = SDGetHbaDevicePortalPropertyiSCSI(handle, 0, &portal);
        return !failed(hba.status, "SDGetHbaDevicePortalPropertyiSCSI call failed! %x\n")
               && setInt(hba, "setFirmwareAttribute", portal.FWAttr, anonymous)
               && setText(hba, "setiSCSIVersion", portal.iscsiVersion, anonymous, "NULL iSCSI version!\n")
               && setText(hba, "setOptRomVersion", portal.OptRomVersion, anonymous, "NULL OptROM version!\n")
               && setText(hba, "setFirmwareVersion", portal.FWVersion, anonymous, "NULL FW version!\n")
               && setText(hba, "setModel", portal.Model, anonymous, "NULL Model version!\n");
    });
}

SD_UINT32 readDriverInfo(JNIEnv *env, SDMGT_HANDLE handle, jobject jObj)
{
    DRIVERINFO driver;
    clear(driver);
    const SD_UINT32 status = SDGetHbaDeviceDriverPropertyiSCSI(handle, &driver);
    if (failed(status, "SDGetHbaDeviceDriverPropertyiSCSI call failed! %x\n")) {
        return status;
    }
    return withClassOf(env, jObj, [&](JavaObject &hba) {
        return setText(hba, "setDriverVersion", driver.Version, anonymous, "NULL Driver String!\n")
               && setInt(hba, "setDriverAttribute", driver.Attributes, anonymous);
    });
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
    convertAndCarryOn(env, jObj, "NULL javaChipInfoObject!2\n", [&](JavaObject &hba) {
        return setText(hba, "setBoardType", chip.BoardType, anonymous, "NULL Board Type !\n")
               && setInt(hba, "setChipVersion", chip.ChipVersion, namedObj);
    });
}

SD_UINT32 readHBAState(JNIEnv *env, SDMGT_HANDLE handle, jobject jHBA)
{
    HBAISCSIPORTAL portal;
    clear(portal);
    const SD_UINT32 status = SDGetHbaDevicePortalPropertyiSCSI(handle, 0, &portal);
    if (failed(status, "SDGetHbaDevicePortalPropertyiSCSI call failed!\n")) {
        return status;
    }
    return withClassOf(env, jHBA, [&](JavaObject &hba) {
        return setInt(hba, "setState", portal.State, anonymous)
               && setInt(hba, "setDhcpState", portal.dhcpState, anonymous)
               && setInt(hba, "setLinkStatus", portal.linkStatus, anonymous);
    });
}

static bool setPortal(JavaObject &hba, const HBAISCSIPORTAL &portal)
{
    return setInt(hba, "setNumberDiskTargets", portal.DiscTargetCount, anonymous)
           && setShorts(hba, "setMACAddress", portal.MacAddr, named) //
           && setInt(hba, "setState", portal.State, anonymous)
           && setInt(hba, "setDhcpState", portal.dhcpState, anonymous)
           && setInt(hba, "setLinkStatus", portal.linkStatus, anonymous)
           && setInt(hba, "setType", portal.Type, anonymous)
           && setInt(hba, "setDriverAttribute", portal.DriverAttr, anonymous)
           && setInt(hba, "setFirmwareAttribute", portal.FWAttr, anonymous)
           && setText(hba, "setDriverVersion", portal.DriverVersion, anonymous, "NULL driver version!\n")
           && setText(hba, "setFirmwareVersion", portal.FWVersion, anonymous, "NULL FW version!\n")
           && setText(hba, "setManufacturer", portal.Manufacturer, anonymous, "NULL Manufacture version!\n")
           && setText(hba, "setModel", portal.Model, anonymous, "NULL model version!\n")
           && setText(hba, "setOptRomVersion", portal.OptRomVersion, anonymous, "NULL ROM version!\n")
           && setText(hba, "setSerialNumberStr", portal.SerialNum, anonymous, "NULL Serial Number!\n");
}

// Makes a DevDBEntry of a record and adds it to the HBA object. Whatever code the conversion fails with becomes
// ERR_JNI_NULL.
static SD_UINT32 addEntry(JavaObject &hba, jclass devDBEntryClass, const DEVICEENTRYISCSI &ddb, SD_UINT32 index)
{
    return withNew(hba.env, devDBEntryClass, "New Device Object failed!\n", [&](JavaObject &entry) {
        if (failed(setiSCSIDevDDBEntry(hba.env, entry.object, ddb, index, false), "setiSCSIDevDDBEntry() failed!\n")) {
            entry.status = ERR_JNI_NULL;
        } else if (!setObject(hba, "addDeviceDataBaseEntry", TAKES_DEV_DB_ENTRY, entry.object, namedObj)) {
            entry.status = hba.status;
        }
    });
}

// Walks the device database and adds every entry in use, until numEntries are found. lastStatus becomes that of the
// last read. NextValid shortens the way but only forwards, so that a library that links in circles cannot hold us up.
static SD_UINT32 addEntries(JavaObject &hba, SDMGT_HANDLE handle, SD_UINT32 numEntries, SD_UINT32 &lastStatus)
{
    constexpr const char *noClass = "Find Device class call failed!\n";
    return withClassNamed(hba.env, DEV_DB_ENTRY_CLASS, noClass, [&](jclass devDBEntryClass) {
        SD_UINT32 numEntriesFound = 0;
        SD_UINT32 ddbIndex = 0;
        while (ddbIndex < DDB_SLOTS && numEntriesFound != numEntries) {
            DEVICEENTRYISCSI ddb;
            clear(ddb);
            lastStatus = SDGetDDBEntry(handle, &ddb, ddbIndex);
            failed(lastStatus, "SDGetDDBEntry call failed! %x\n");
            if (ddb.DeviceState != 0) {
                const SD_UINT32 added = addEntry(hba, devDBEntryClass, ddb, numEntriesFound);
                if (added != 0) {
                    return added;
                }
                numEntriesFound++;
            }
            ddbIndex = ddb.NextValid > ddbIndex && ddb.NextValid < DDB_SLOTS ? ddb.NextValid : ddbIndex + 1;
        }
        return SD_UINT32{0};
    });
}

SD_UINT32 readHBAData(JNIEnv *env, jobject self, jint dev, SDMGT_HANDLE handle, jobject jObj)
{
    HBAISCSIPORTAL portal;
    clear(portal);
    SD_UINT32 lastStatus = SDGetHbaDevicePortalPropertyiSCSI(handle, 0, &portal);
    if (failed(lastStatus, "SDGetHbaDevicePortalPropertyiSCSI call failed!\n")) {
        return lastStatus;
    }
    const SD_UINT32 converted = withClassOf(env, jObj, [&](JavaObject &hba) {
        if (!setPortal(hba, portal)) {
            return;
        }
        SD_UINT32 numEntries = 0;
        lastStatus = SDGetDDBEntryNum(handle, &numEntries);
        failed(lastStatus, "SDGetDDB call failed!\n");
        if (numEntries != 0) {
            hba.status = addEntries(hba, handle, numEntries, lastStatus);
        }
    });
    if (converted != 0) {
        return converted;
    }
    Java_com_varden_tavo_iscsi_jni_ApiWrapper_getFWData(env, self, dev, jObj);
    return lastStatus;
}
