// The 36 operations of the management library. Each returns a status (Status.h), 0 for success. "out" is filled by the
// library; "in/out" is read and then filled. Every argument travels as a 32-bit word (a pointer as a pointer): 16-bit
// values are zero-extended by the caller, which is why they are declared as SD_UINT32 here.
#pragma once

#include "AdapterInformation.h"
#include "ChapTable.h"
#include "DeviceDatabaseEntry.h"
#include "FirmwareConfiguration.h"
#include "IsnsDiscovery.h"
#include "Logs.h"
#include "ScsiPassThrough.h"
#include "Statistics.h"
#include "TargetDatabase.h"
#include "Types.h"

extern "C" {

// Opens the adapter with this index; out: its handle.
SD_UINT32 SDOpenDeviceiSCSI(SD_UINT32 adapterIndex, SDMGT_HANDLE *handle);
// Closes a handle.
SD_UINT32 SDCloseDeviceiSCSI(SDMGT_HANDLE handle);
// Out: the library's version as terminated text; size is that of the buffer in bytes.
SD_UINT32 SDGetVersioniSCSI(char *versionText, SD_UINT32 size);
// Has every operation traced to the named file. The handle crosses by address; mask is 0xFFFFFFFF.
SD_UINT32 SDEnableDebugTraceiSCSI(SDMGT_HANDLE *handle, const char *fileName, SD_UINT32 mask);

// Out: the adapter's node identity.
SD_UINT32 SDGetHbaDeviceNodePropertyiSCSI(SDMGT_HANDLE handle, HBAISCSINODE *node);
// Out: the adapter's portal properties. port is 0.
SD_UINT32 SDGetHbaDevicePortalPropertyiSCSI(SDMGT_HANDLE handle, SD_UINT32 port, HBAISCSIPORTAL *portal);
// Out: the driver's properties.
SD_UINT32 SDGetHbaDeviceDriverPropertyiSCSI(SDMGT_HANDLE handle, DRIVERINFO *driver);
// Out: the chip's properties.
SD_UINT32 SDGetHbaDeviceChipPropertyiSCSI(SDMGT_HANDLE handle, CHIPINFO *chip);

// Out: the number of device database entries.
SD_UINT32 SDGetDDBEntryNum(SDMGT_HANDLE handle, SD_UINT32 *count);
// Out: the entry with this index, 0 to 511.
SD_UINT32 SDGetDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index);
// Out: the default entry.
SD_UINT32 SDGetDefaultDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry);
// Out: the contents proposed for a new entry with this index.
SD_UINT32 SDGetInitialDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index);
// Writes the entry with this index.
SD_UINT32 SDSetDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index);
// Logs out of a target.
SD_UINT32 SDSendiSCSILogout(SDMGT_HANDLE handle, LOGOUTISCSI *logout);

// Out: the portal at which a target was discovered. port is 0, target an instance number or a target ID, reserved is 0.
SD_UINT32 SDGetDiscPortalPropertyiSCSI(SDMGT_HANDLE handle, SD_UINT32 port, SD_UINT32 target, SD_UINT32 reserved,
                                       DISCISCSIPORTAL *portal);
// Out: the node of the target with this ID (16 bits). bus and reserved are 0.
SD_UINT32 SDGetDiscNodePropertyiSCSI(SDMGT_HANDLE handle, SD_UINT32 bus, SD_UINT32 targetId, SD_UINT32 reserved,
                                     DISCISCSINODE *node);

// Out: the firmware block in force.
SD_UINT32 SDGetInitFW(SDMGT_HANDLE handle, INITFWISCSI *block);
// Writes the firmware block.
SD_UINT32 SDSetInitFW(SDMGT_HANDLE handle, INITFWISCSI *block);
// Out: the firmware's default block.
SD_UINT32 SDGetFWDefaults(SDMGT_HANDLE handle, INITFWISCSI *block);
// Restores the default block. block is all zero.
SD_UINT32 SDSetFWDefaults(SDMGT_HANDLE handle, INITFWISCSI *block);

// Flashes a firmware image from a file. imageType has 16 bits.
SD_UINT32 SDUpdateiSCSIFW(SDMGT_HANDLE handle, const char *fileName, SD_UINT32 imageType);
// Resets the adapter.
SD_UINT32 SDResetHBA(SDMGT_HANDLE handle, HBARESET *request);
// Clears the counters of a port. port has 16 bits.
SD_UINT32 SDResetStatisticsiSCSI(SDMGT_HANDLE handle, SD_UINT32 port);
// Writes the crash record to the named file.
SD_UINT32 SDGetCrashRecord(SDMGT_HANDLE handle, const char *fileName);
// Pings an address.
SD_UINT32 SDDiagPing(SDMGT_HANDLE handle, PING *request);

// Sends REPORT LUNS to a target; out: response and sense data, sizes in bytes.
SD_UINT32 SDSendScsiReportLunsCmdiSCSI(SDMGT_HANDLE handle, TARGETINFORMATION *target, void *response,
                                       SD_UINT32 responseSize, void *sense, SD_UINT32 senseSize);
// Sends INQUIRY to a unit; out: response and sense data, sizes in bytes.
SD_UINT32 SDSendScsiInquiryCmdiSCSI(SDMGT_HANDLE handle, TARGETINFORMATION *target, void *response,
                                    SD_UINT32 responseSize, void *sense, SD_UINT32 senseSize);
// Sends READ CAPACITY(10) to a unit; out: response and sense data, sizes in bytes.
SD_UINT32 SDSendScsiReadCapacityCmdiSCSI(SDMGT_HANDLE handle, TARGETINFORMATION *target, READ_CAPACITY_DATA *response,
                                         SD_UINT32 responseSize, void *sense, SD_UINT32 senseSize);

// Out: the port's counters.
SD_UINT32 SDGetStatisticsiSCSI(SDMGT_HANDLE handle, HBAPORTSTATISCSI *statistics);
// Out: a log (LOG_CONNECTION_ERRORS, LOG_ARP). in/out count: 0, then the entries filled. entries has room for 128.
SD_UINT32 SDGetLogs(SDMGT_HANDLE handle, SD_UINT32 logType, SD_UINT32 *count, void *entries);

// Out: the number of CHAP entries.
SD_UINT32 SDGetCHAPEntryNum(SDMGT_HANDLE handle, SD_UINT32 *count);
// Out: the CHAP table; room for 128 records. in/out: their count.
SD_UINT32 SDGetCHAPTable(SDMGT_HANDLE handle, CHAPTABLE *table, SD_UINT32 *count);
// Replaces the CHAP table with count records.
SD_UINT32 SDSetCHAPTable(SDMGT_HANDLE handle, CHAPTABLE *table, SD_UINT32 *count);

// Out: the iSNS settings.
SD_UINT32 SDGet_iSNSDiscoveryConfig(SDMGT_HANDLE handle, SDM_ISNS_CONFIG *config);
// Writes the iSNS settings. The record crosses by value.
SD_UINT32 SDSet_iSNSDiscoveryConfig(SDMGT_HANDLE handle, SDM_ISNS_CONFIG config);
// Out: the targets that iSNS discovered. in/out count: 0, then the number of targets the adapter holds. size is that of
// the buffer in bytes.
SD_UINT32 SDGetAlliSNSDiscoveredTargets(SDMGT_HANDLE handle, SD_UINT32 *count, SDM_ISNS_DISCOVERED_TARGET *targets,
                                        SD_UINT32 size);
}
