// The adapter's logs.
#pragma once

#include "NodeInfo.h"
#include "Types.h"

inline constexpr SD_UINT32 LOG_CONNECTION_ERRORS = 1; // log type of CONNERRTABLE entries
inline constexpr SD_UINT32 LOG_ARP = 2;               // log type of ARPTABLE entries
inline constexpr SD_UINT32 LOG_CAPACITY = 128;        // entries that a log buffer holds

// A time stamp.
struct TIMESTRUCT {
    SD_UINT32 seconds;
    SD_UINT32 milliseconds;
};
static_assert(sizeof(TIMESTRUCT) == 8);
static_assert(offsetof(TIMESTRUCT, milliseconds) == 4);

// One entry of the connection-error log. The codes are the adapter's.
struct CONNERRTABLE {
    TIMESTRUCT timeStamp;  // when the error was logged
    SD_UINT16 deviceIndex; // device index of the connection
    SD_UINT16 connState;   // connection state
    SD_UINT8 entryType;
    SD_UINT8 errorType;
    SD_UINT16 errorDetail;
    SD_UINT8 dupErrorCnt; // how often the same error came again
    SD_UINT8 reserved[3];
};
static_assert(sizeof(CONNERRTABLE) == 20);
static_assert(offsetof(CONNERRTABLE, deviceIndex) == 8);
static_assert(offsetof(CONNERRTABLE, connState) == 10);
static_assert(offsetof(CONNERRTABLE, entryType) == 12);
static_assert(offsetof(CONNERRTABLE, errorType) == 13);
static_assert(offsetof(CONNERRTABLE, errorDetail) == 14);
static_assert(offsetof(CONNERRTABLE, dupErrorCnt) == 16);
static_assert(offsetof(CONNERRTABLE, reserved) == 17);

// One entry of the ARP table.
struct ARPTABLE {
    ISCSIIPADDR ipAddr;
    SD_UINT8 macAddr[6]; // the hardware address
    SD_UINT8 valid;      // validity flag
    SD_UINT8 time_in;    // time value
};
static_assert(sizeof(ARPTABLE) == 28);
static_assert(offsetof(ARPTABLE, macAddr) == 20);
static_assert(offsetof(ARPTABLE, valid) == 26);
static_assert(offsetof(ARPTABLE, time_in) == 27);
