// The device database: the adapter's table of configured targets.
#pragma once

#include "DeviceParameters.h"
#include "NodeInfo.h"
#include "Types.h"

// Number of slots in the device database; indices run from 0 to 511.
inline constexpr SD_UINT32 DDB_SLOTS = 512;

// One entry of the device database, that is one configured iSCSI target.
struct DEVICEENTRYISCSI {
    SD_UINT8 Options;            // entry option bits
    SD_UINT8 Control;            // entry control bits
    SD_UINT16 exeCount;          // execution count
    SD_UINT16 TargetSessID;      // target session identifying handle
    SD_UINT8 InitiatorSessID[6]; // initiator session identifier
    SD_UINT8 Reserved0[64];
    ISCSIDEVICE DeviceInfo;  // the entry's session parameters
    NODEINFOISCSI EntryInfo; // the target's identity
    SD_UINT32 TargetID;      // the target's ID; also the index that a write goes to
    SD_UINT32 DeviceState;   // entry state; 0 means that the slot is not in use
    SD_UINT32 ReservedFlags;
    SD_UINT32 NextValid;      // index of the next entry worth reading
    SD_UINT16 DDBLink;        // link to another entry
    SD_UINT16 CHAPTableIndex; // index into the CHAP table
    SD_UINT16 MaxTxDataSegmentLen;
    SD_UINT16 TargetPortalGroupID;
};
static_assert(sizeof(DEVICEENTRYISCSI) == 484);
static_assert(offsetof(DEVICEENTRYISCSI, Control) == 1);
static_assert(offsetof(DEVICEENTRYISCSI, exeCount) == 2);
static_assert(offsetof(DEVICEENTRYISCSI, TargetSessID) == 4);
static_assert(offsetof(DEVICEENTRYISCSI, InitiatorSessID) == 6);
static_assert(offsetof(DEVICEENTRYISCSI, Reserved0) == 12);
static_assert(offsetof(DEVICEENTRYISCSI, DeviceInfo) == 76);
static_assert(offsetof(DEVICEENTRYISCSI, EntryInfo) == 140);
static_assert(offsetof(DEVICEENTRYISCSI, TargetID) == 460);
static_assert(offsetof(DEVICEENTRYISCSI, DeviceState) == 464);
static_assert(offsetof(DEVICEENTRYISCSI, ReservedFlags) == 468);
static_assert(offsetof(DEVICEENTRYISCSI, NextValid) == 472);
static_assert(offsetof(DEVICEENTRYISCSI, DDBLink) == 476);
static_assert(offsetof(DEVICEENTRYISCSI, CHAPTableIndex) == 478);
static_assert(offsetof(DEVICEENTRYISCSI, MaxTxDataSegmentLen) == 480);
static_assert(offsetof(DEVICEENTRYISCSI, TargetPortalGroupID) == 482);

// A request to log out of a target.
struct LOGOUTISCSI {
    SD_UINT16 TargetID;     // the device database entry to log out
    SD_UINT16 ConnectionID; // 0
    SD_UINT16 Options;      // passed through, meaning is the adapter's
    SD_UINT16 NewTargetID;  // passed through, meaning is the adapter's
    SD_UINT16 Reserved;     // 0
};
static_assert(sizeof(LOGOUTISCSI) == 10);
static_assert(offsetof(LOGOUTISCSI, ConnectionID) == 2);
static_assert(offsetof(LOGOUTISCSI, Options) == 4);
static_assert(offsetof(LOGOUTISCSI, NewTargetID) == 6);
static_assert(offsetof(LOGOUTISCSI, Reserved) == 8);
