// IP addresses and node identities.
#pragma once

#include "Types.h"

// One IP address.
struct ISCSIIPADDR {
    SD_UINT8 IPAddress[16]; // the address in the order in which it is written; IPv4 takes bytes 0 to 3
    SD_UINT16 Type;         // address type, set by the management library
    SD_UINT16 Reserved;
};
static_assert(sizeof(ISCSIIPADDR) == 20);
static_assert(offsetof(ISCSIIPADDR, Type) == 16);
static_assert(offsetof(ISCSIIPADDR, Reserved) == 18);

// One DNS server.
struct DNS {
    ISCSIIPADDR IPAddr; // the server's address
    SD_UINT8 Reserved[132];
};
static_assert(sizeof(DNS) == 152);
static_assert(offsetof(DNS, Reserved) == 20);

// Identity of an iSCSI node: the adapter itself or a target. Text that fills its field has no terminator.
struct NODEINFOISCSI {
    ISCSIIPADDR IPAddr;      // the node's address
    SD_UINT8 iSCSIName[256]; // iSCSI name, text
    SD_UINT8 Alias[32];      // alias, text
    SD_UINT16 PortalCount;   // number of portals
    SD_UINT8 Reserved[10];
};
static_assert(sizeof(NODEINFOISCSI) == 320);
static_assert(offsetof(NODEINFOISCSI, iSCSIName) == 20);
static_assert(offsetof(NODEINFOISCSI, Alias) == 276);
static_assert(offsetof(NODEINFOISCSI, PortalCount) == 308);
static_assert(offsetof(NODEINFOISCSI, Reserved) == 310);
