// The operational parameters of an iSCSI session.
#pragma once

#include "Types.h"

// iSCSI and TCP parameters of a session. The bridge passes the option words on without interpreting them.
struct ISCSIDEVICE {
    SD_UINT16 deviceType;
    SD_UINT16 exeThrottle; // commands outstanding at once
    SD_UINT16 Reserved;
    SD_UINT8 retryCount;    // retries, 0 to 255
    SD_UINT8 retryDelay;    // seconds between retries, 0 to 255
    SD_UINT16 iSCSIOptions; // option bits
    SD_UINT16 TCPOptions;   // option bits
    SD_UINT16 IPOptions;    // option bits
    SD_UINT16 MaxRxDataSegmentLen;
    SD_UINT16 firstBurstSize;
    SD_UINT16 DefaultTime2Wait;   // seconds
    SD_UINT16 DefaultTime2Retain; // seconds
    SD_UINT16 maxOutstandingR2T;
    SD_UINT16 keepAliveTimeout; // seconds
    SD_UINT16 portNumber;       // TCP port
    SD_UINT16 maxBurstSize;
    SD_UINT16 taskMngmntTimeout; // seconds
    SD_UINT8 targetAddr[32];     // the target's address, text; no terminator when it fills the field
};
static_assert(sizeof(ISCSIDEVICE) == 64);
static_assert(offsetof(ISCSIDEVICE, exeThrottle) == 2);
static_assert(offsetof(ISCSIDEVICE, Reserved) == 4);
static_assert(offsetof(ISCSIDEVICE, retryCount) == 6);
static_assert(offsetof(ISCSIDEVICE, retryDelay) == 7);
static_assert(offsetof(ISCSIDEVICE, iSCSIOptions) == 8);
static_assert(offsetof(ISCSIDEVICE, TCPOptions) == 10);
static_assert(offsetof(ISCSIDEVICE, IPOptions) == 12);
static_assert(offsetof(ISCSIDEVICE, MaxRxDataSegmentLen) == 14);
static_assert(offsetof(ISCSIDEVICE, firstBurstSize) == 16);
static_assert(offsetof(ISCSIDEVICE, DefaultTime2Wait) == 18);
static_assert(offsetof(ISCSIDEVICE, DefaultTime2Retain) == 20);
static_assert(offsetof(ISCSIDEVICE, maxOutstandingR2T) == 22);
static_assert(offsetof(ISCSIDEVICE, keepAliveTimeout) == 24);
static_assert(offsetof(ISCSIDEVICE, portNumber) == 26);
static_assert(offsetof(ISCSIDEVICE, maxBurstSize) == 28);
static_assert(offsetof(ISCSIDEVICE, taskMngmntTimeout) == 30);
static_assert(offsetof(ISCSIDEVICE, targetAddr) == 32);
