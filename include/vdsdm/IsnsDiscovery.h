// iSNS: the discovery settings, and the targets that discovery found.
#pragma once

#include "NodeInfo.h"
#include "Types.h"

inline constexpr SD_UINT32 ISNS_TARGETS_SMALL = 30;  // targets in the buffer of the first call
inline constexpr SD_UINT32 ISNS_TARGETS_LARGE = 512; // targets in the buffer of the second call

// The adapter's iSNS settings.
struct SDM_ISNS_CONFIG {
    SD_UINT8 performiSNSDiscovery;   // 1 when iSNS discovery is enabled, else 0
    SD_UINT8 AutomaticiSNSDiscovery; // 1 when automatic discovery is selected, else 0
    SD_UINT8 Reserved1[2];
    SD_UINT8 initiatorName[256]; // the adapter's iSCSI name, text; no terminator when it fills the field
    ISCSIIPADDR ipAddr;          // the iSNS server's address
    SD_UINT8 Reserved2[4];
};
static_assert(sizeof(SDM_ISNS_CONFIG) == 284);
static_assert(offsetof(SDM_ISNS_CONFIG, AutomaticiSNSDiscovery) == 1);
static_assert(offsetof(SDM_ISNS_CONFIG, Reserved1) == 2);
static_assert(offsetof(SDM_ISNS_CONFIG, initiatorName) == 4);
static_assert(offsetof(SDM_ISNS_CONFIG, ipAddr) == 260);
static_assert(offsetof(SDM_ISNS_CONFIG, Reserved2) == 280);

// One portal of a discovered target.
struct SDM_DISCOVERED_TARGET_PORTAL {
    ISCSIIPADDR ipAddr;
    SD_UINT16 port; // TCP port
    SD_UINT16 reserved;
};
static_assert(sizeof(SDM_DISCOVERED_TARGET_PORTAL) == 24);
static_assert(offsetof(SDM_DISCOVERED_TARGET_PORTAL, port) == 20);
static_assert(offsetof(SDM_DISCOVERED_TARGET_PORTAL, reserved) == 22);

// One target that iSNS discovery found.
struct SDM_ISNS_DISCOVERED_TARGET {
    SD_UINT32 numPortals; // number of valid portals, 0 to 4
    SDM_DISCOVERED_TARGET_PORTAL targetPortal[4];
    SD_UINT32 DDID;           // discovery domain identifier
    SD_UINT8 targetName[256]; // iSCSI name, text
    SD_UINT8 targetAlias[32]; // alias, text
};
static_assert(sizeof(SDM_ISNS_DISCOVERED_TARGET) == 392);
static_assert(offsetof(SDM_ISNS_DISCOVERED_TARGET, targetPortal) == 4);
static_assert(offsetof(SDM_ISNS_DISCOVERED_TARGET, DDID) == 100);
static_assert(offsetof(SDM_ISNS_DISCOVERED_TARGET, targetName) == 104);
static_assert(offsetof(SDM_ISNS_DISCOVERED_TARGET, targetAlias) == 360);
