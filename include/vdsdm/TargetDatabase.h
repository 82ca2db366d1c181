// Discovered targets: how a target is addressed, where it was found and how it is connected.
#pragma once

#include "NodeInfo.h"
#include "Types.h"

// The SCSI address of a target's logical unit.
struct TARGETINFORMATION {
    SD_UINT16 BusNumber;
    SD_UINT16 TargetID;
    SD_UINT16 LUN; // two bytes of alignment follow
    SD_UINT32 Reserved[32];
};
static_assert(sizeof(TARGETINFORMATION) == 136);
static_assert(offsetof(TARGETINFORMATION, TargetID) == 2);
static_assert(offsetof(TARGETINFORMATION, LUN) == 4);
static_assert(offsetof(TARGETINFORMATION, Reserved) == 8);

// The portal at which a target was discovered.
struct DISCISCSIPORTAL {
    ISCSIIPADDR IPAddr;     // the portal's address
    SD_UINT16 NodeCount;    // number of nodes behind it
    SD_UINT8 hostName[128]; // host name, text; no terminator when it fills the field
    SD_UINT16 portNumber;   // TCP port
    TARGETINFORMATION TargetInfo;
    SD_UINT16 Reserved; // two bytes of alignment follow
};
static_assert(sizeof(DISCISCSIPORTAL) == 292);
static_assert(offsetof(DISCISCSIPORTAL, NodeCount) == 20);
static_assert(offsetof(DISCISCSIPORTAL, hostName) == 22);
static_assert(offsetof(DISCISCSIPORTAL, portNumber) == 150);
static_assert(offsetof(DISCISCSIPORTAL, TargetInfo) == 152);
static_assert(offsetof(DISCISCSIPORTAL, Reserved) == 288);

// The node behind a discovered portal, and its session.
struct DISCISCSINODE {
    SD_UINT16 SessionID;
    SD_UINT16 ConnectionID;
    SD_UINT16 PortalGroupID;
    NODEINFOISCSI NodeInfo;       // two bytes of alignment follow
    TARGETINFORMATION TargetInfo; // how the host addresses the target
    SD_UINT16 Reserved;           // two bytes of alignment follow
};
static_assert(sizeof(DISCISCSINODE) == 468);
static_assert(offsetof(DISCISCSINODE, ConnectionID) == 2);
static_assert(offsetof(DISCISCSINODE, PortalGroupID) == 4);
static_assert(offsetof(DISCISCSINODE, NodeInfo) == 6);
static_assert(offsetof(DISCISCSINODE, TargetInfo) == 328);
static_assert(offsetof(DISCISCSINODE, Reserved) == 464);
