// The firmware's initialisation block, and the requests of adapter maintenance.
#pragma once

#include "DeviceParameters.h"
#include "NodeInfo.h"
#include "Types.h"

// The adapter firmware's initialisation block. Text that fills its field has no terminator.
struct INITFWISCSI {
    SD_UINT8 Reserved1;
    SD_UINT8 Version;       // block version
    SD_UINT16 FWOptions;    // firmware option bits
    SD_UINT16 addFWOptions; // additional firmware option bits
    SD_UINT16 wakeupThreshold;
    ISCSIIPADDR IPAddr; // the adapter's address
    ISCSIIPADDR SecondaryIPAddr;
    ISCSIIPADDR SubnetMask;
    ISCSIIPADDR Gateway;
    DNS PrimaryDNS;
    DNS SecondaryDNS;
    ISCSIIPADDR SLPDAAddr;   // SLP directory agent
    SD_UINT8 Alias[32];      // the adapter's alias, text
    SD_UINT8 iSCSIName[256]; // the adapter's iSCSI name, text
    ISCSIDEVICE DeviceInfo;  // default session parameters
    SD_UINT8 Reserved[16];
};
static_assert(sizeof(INITFWISCSI) == 780);
static_assert(offsetof(INITFWISCSI, Version) == 1);
static_assert(offsetof(INITFWISCSI, FWOptions) == 2);
static_assert(offsetof(INITFWISCSI, addFWOptions) == 4);
static_assert(offsetof(INITFWISCSI, wakeupThreshold) == 6);
static_assert(offsetof(INITFWISCSI, IPAddr) == 8);
static_assert(offsetof(INITFWISCSI, SecondaryIPAddr) == 28);
static_assert(offsetof(INITFWISCSI, SubnetMask) == 48);
static_assert(offsetof(INITFWISCSI, Gateway) == 68);
static_assert(offsetof(INITFWISCSI, PrimaryDNS) == 88);
static_assert(offsetof(INITFWISCSI, SecondaryDNS) == 240);
static_assert(offsetof(INITFWISCSI, SLPDAAddr) == 392);
static_assert(offsetof(INITFWISCSI, Alias) == 412);
static_assert(offsetof(INITFWISCSI, iSCSIName) == 444);
static_assert(offsetof(INITFWISCSI, DeviceInfo) == 700);
static_assert(offsetof(INITFWISCSI, Reserved) == 764);

// A request to reset the adapter.
struct HBARESET {
    SD_UINT32 ResetOptions; // 0
    SD_UINT32 Reserved;     // 0
};
static_assert(sizeof(HBARESET) == 8);
static_assert(offsetof(HBARESET, Reserved) == 4);

// A request to ping an address.
struct PING {
    ISCSIIPADDR IPAddr;    // the address to ping; Type and Reserved are 0
    SD_UINT16 packetCount; // number of packets
    SD_UINT16 Reserved;    // 0
};
static_assert(sizeof(PING) == 24);
static_assert(offsetof(PING, packetCount) == 20);
static_assert(offsetof(PING, Reserved) == 22);
