// Status codes. Every operation returns one as SD_UINT32: 0 is success, anything else a failure.
#pragma once

#include "Types.h"

// The bridge's own codes: what went wrong on the Java side of a call.
inline constexpr SD_UINT32 ERR_JNI_METHOD = 0x1001; // a Java method lookup failed
inline constexpr SD_UINT32 ERR_JNI_CLASS = 0x1002;  // a Java class lookup failed
inline constexpr SD_UINT32 ERR_JNI_NULL = 0x1003;   // a Java object, array or string that was needed is null

// Codes that the bridge and the management library share.
inline constexpr SD_UINT32 ERR_NO_MEMORY = 0x2000001f;         // a heap buffer could not be allocated
inline constexpr SD_UINT32 ERR_INVALID_PARAMETER = 0x20000064; // the adapter index or another argument is out of range
inline constexpr SD_UINT32 ERR_BAD_DATA = 0x20000075;          // a target reported an impossible number of LUNs

// Codes of the management library that the bridge recognises.
inline constexpr SD_UINT32 ERR_NOT_SUPPORTED = 0x2000001c;      // the operation is not supported on this platform
inline constexpr SD_UINT32 ERR_ISNS_NOT_SUPPORTED = 0x2000002d; // iSNS discovery is not supported on this platform
inline constexpr SD_UINT32 ERR_BUFFER_TOO_SMALL = 0x20000072;   // the caller's buffer does not hold the whole list
inline constexpr SD_UINT32 ERR_SCSI_TOLERATED = 0x20000077;     // Report LUNs data is usable all the same

// Codes of our own management libraries. Another library may answer with others: treat every unknown value as a failure
// and show it in hexadecimal.
inline constexpr SD_UINT32 ERR_INVALID_HANDLE = 0x20000101;       // the handle names no open adapter
inline constexpr SD_UINT32 ERR_NO_SUCH_ADAPTER = 0x20000102;      // no adapter has this index
inline constexpr SD_UINT32 ERR_NO_SUCH_ENTRY = 0x20000103;        // the device database or table has no such entry
inline constexpr SD_UINT32 ERR_NO_SUCH_TARGET = 0x20000104;       // no target answers under this ID or name
inline constexpr SD_UINT32 ERR_SCSI_CHECK_CONDITION = 0x20000105; // the unit refused the command: see the sense data
inline constexpr SD_UINT32 ERR_FLASH_DAMAGED = 0x20000106;        // the stored settings are damaged or foreign
inline constexpr SD_UINT32 ERR_FLASH_READ = 0x20000107;           // the stored settings cannot be read
inline constexpr SD_UINT32 ERR_FLASH_WRITE = 0x20000108;          // the settings cannot be written; the old ones stand
inline constexpr SD_UINT32 ERR_IMAGE_FILE = 0x20000109;           // the firmware image is missing, empty or unreadable
inline constexpr SD_UINT32 ERR_OUTPUT_FILE = 0x2000010a;          // the crash record or trace file cannot be written
inline constexpr SD_UINT32 ERR_UNREACHABLE = 0x2000010b;          // no route, connection refused, or no answer
inline constexpr SD_UINT32 ERR_TIMEOUT = 0x2000010c;              // connected, then silence until the deadline
inline constexpr SD_UINT32 ERR_AUTHENTICATION = 0x2000010d;       // CHAP failed on one side or the other
inline constexpr SD_UINT32 ERR_LOGIN_REFUSED = 0x2000010e;        // the target refused the login for another reason
inline constexpr SD_UINT32 ERR_BUSY = 0x2000010f;                 // another writer holds the settings for too long
inline constexpr SD_UINT32 ERR_DATABASE_FULL = 0x20000110;        // the device database has no free slot
