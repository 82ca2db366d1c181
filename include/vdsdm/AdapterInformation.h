// What the adapter says of itself: identity, portal, driver, chip.
#pragma once

#include "NodeInfo.h"
#include "Types.h"

// Size of the text buffer handed to SDGetVersioniSCSI.
inline constexpr SD_UINT32 VERSION_TEXT_SIZE = 31;

// The adapter's portal properties. Text that fills its field has no terminator.
struct HBAISCSIPORTAL {
    ISCSIIPADDR IPAddr;     // the portal's address
    SD_UINT8 SerialNum[16]; // serial number, text
    SD_UINT8 MacAddr[6];    // MAC address
    SD_UINT8 Manufacturer[128];
    SD_UINT8 Model[128];
    SD_UINT8 DriverVersion[128];
    SD_UINT8 FWVersion[128];
    SD_UINT8 OptRomVersion[128];
    SD_UINT16 State;           // adapter state
    SD_UINT16 Type;            // adapter type
    SD_UINT16 DiscTargetCount; // number of discovered targets
    SD_UINT32 DriverAttr;      // driver attribute bits
    SD_UINT32 FWAttr;          // firmware attribute bits
    SD_UINT8 iscsiVersion[4];  // iSCSI version, text
    SD_UINT16 dhcpState;
    SD_UINT16 linkStatus;
    SD_UINT8 Reserved[14]; // two bytes of alignment follow
};
static_assert(sizeof(HBAISCSIPORTAL) == 720);
static_assert(offsetof(HBAISCSIPORTAL, SerialNum) == 20);
static_assert(offsetof(HBAISCSIPORTAL, MacAddr) == 36);
static_assert(offsetof(HBAISCSIPORTAL, Manufacturer) == 42);
static_assert(offsetof(HBAISCSIPORTAL, Model) == 170);
static_assert(offsetof(HBAISCSIPORTAL, DriverVersion) == 298);
static_assert(offsetof(HBAISCSIPORTAL, FWVersion) == 426);
static_assert(offsetof(HBAISCSIPORTAL, OptRomVersion) == 554);
static_assert(offsetof(HBAISCSIPORTAL, State) == 682);
static_assert(offsetof(HBAISCSIPORTAL, Type) == 684);
static_assert(offsetof(HBAISCSIPORTAL, DiscTargetCount) == 686);
static_assert(offsetof(HBAISCSIPORTAL, DriverAttr) == 688);
static_assert(offsetof(HBAISCSIPORTAL, FWAttr) == 692);
static_assert(offsetof(HBAISCSIPORTAL, iscsiVersion) == 696);
static_assert(offsetof(HBAISCSIPORTAL, dhcpState) == 700);
static_assert(offsetof(HBAISCSIPORTAL, linkStatus) == 702);
static_assert(offsetof(HBAISCSIPORTAL, Reserved) == 704);

// The adapter as an iSCSI node.
struct HBAISCSINODE {
    SD_UINT8 DeviceName[128]; // device name, text
    SD_UINT16 PortNumber;
    NODEINFOISCSI NodeInfoISCSI; // the adapter's identity
    SD_UINT16 Reserved;
};
static_assert(sizeof(HBAISCSINODE) == 452);
static_assert(offsetof(HBAISCSINODE, PortNumber) == 128);
static_assert(offsetof(HBAISCSINODE, NodeInfoISCSI) == 130);
static_assert(offsetof(HBAISCSINODE, Reserved) == 450);

// The driver's properties.
struct DRIVERINFO {
    SD_UINT8 Version[128]; // driver version, text
    SD_UINT16 NumberOfBus;
    SD_UINT16 TargetsPerBus;
    SD_UINT16 LunsPerTarget;
    SD_UINT16 LunsPerTargetOS;
    SD_UINT32 MaximumTransferLen; // bytes
    SD_UINT32 MaximumDataSegments;
    SD_UINT16 DmaBitAddresses; // bits
    SD_UINT16 IoMapType;
    SD_UINT32 Attributes; // driver attribute bits
    SD_UINT32 InternalFlags[4];
    SD_UINT32 Reserved[8];
};
static_assert(sizeof(DRIVERINFO) == 200);
static_assert(offsetof(DRIVERINFO, NumberOfBus) == 128);
static_assert(offsetof(DRIVERINFO, TargetsPerBus) == 130);
static_assert(offsetof(DRIVERINFO, LunsPerTarget) == 132);
static_assert(offsetof(DRIVERINFO, LunsPerTargetOS) == 134);
static_assert(offsetof(DRIVERINFO, MaximumTransferLen) == 136);
static_assert(offsetof(DRIVERINFO, MaximumDataSegments) == 140);
static_assert(offsetof(DRIVERINFO, DmaBitAddresses) == 144);
static_assert(offsetof(DRIVERINFO, IoMapType) == 146);
static_assert(offsetof(DRIVERINFO, Attributes) == 148);
static_assert(offsetof(DRIVERINFO, InternalFlags) == 152);
static_assert(offsetof(DRIVERINFO, Reserved) == 168);

// The adapter's chip.
struct CHIPINFO {
    SD_UINT16 VendorID;     // PCI vendor ID
    SD_UINT16 DeviceID;     // PCI device ID
    SD_UINT16 SubVendorID;  // PCI subsystem vendor ID
    SD_UINT16 SubSystemID;  // PCI subsystem ID
    SD_UINT8 BoardType[64]; // text
    SD_UINT16 ChipVersion;
    SD_UINT16 Reserved[24];
};
static_assert(sizeof(CHIPINFO) == 122);
static_assert(offsetof(CHIPINFO, DeviceID) == 2);
static_assert(offsetof(CHIPINFO, SubVendorID) == 4);
static_assert(offsetof(CHIPINFO, SubSystemID) == 6);
static_assert(offsetof(CHIPINFO, BoardType) == 8);
static_assert(offsetof(CHIPINFO, ChipVersion) == 72);
static_assert(offsetof(CHIPINFO, Reserved) == 74);
