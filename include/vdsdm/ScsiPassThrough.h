// Responses to the SCSI commands that the adapter sends on behalf of an application.
#pragma once

#include "Types.h"

inline constexpr SD_UINT32 SENSE_SIZE = 256;              // bytes of the sense area handed to every command
inline constexpr SD_UINT32 REPORT_LUNS_SMALL_SIZE = 264;  // bytes: the 8-byte header and 32 entries
inline constexpr SD_UINT32 REPORT_LUNS_LARGE_SIZE = 2048; // bytes: the 8-byte header and 255 entries
inline constexpr SD_UINT32 INQUIRY_SIZE = 36;             // bytes asked for: the standard inquiry data

// INQUIRY data with the vendor-specific bytes after the standard 36.
struct SCSI_INQUIRY_DATA_INFO {
    SD_UINT8 cInquiryHeader[8]; // qualifier and device type, removable bit, version, format, additional length, flags
    SD_UINT8 cVendorID[8];      // T10 vendor identification, ASCII, padded with blanks
    SD_UINT8 cProductID[16];    // product identification, ASCII, padded with blanks
    SD_UINT8 cRevision[4];      // product revision level, ASCII, padded with blanks
    SD_UINT8 cSerialNumber[8];  // the first vendor-specific bytes, read as a serial number
    SD_UINT8 cExtraData[211];   // the rest
};
static_assert(sizeof(SCSI_INQUIRY_DATA_INFO) == 255);
static_assert(offsetof(SCSI_INQUIRY_DATA_INFO, cVendorID) == 8);
static_assert(offsetof(SCSI_INQUIRY_DATA_INFO, cProductID) == 16);
static_assert(offsetof(SCSI_INQUIRY_DATA_INFO, cRevision) == 32);
static_assert(offsetof(SCSI_INQUIRY_DATA_INFO, cSerialNumber) == 36);
static_assert(offsetof(SCSI_INQUIRY_DATA_INFO, cExtraData) == 44);

// READ CAPACITY(10) data as the target sends it: both words big-endian.
struct READ_CAPACITY_DATA {
    SD_UINT32 LogicalBlockAddress; // address of the last logical block
    SD_UINT32 BytesPerBlock;       // block length in bytes
};
static_assert(sizeof(READ_CAPACITY_DATA) == 8);
static_assert(offsetof(READ_CAPACITY_DATA, BytesPerBlock) == 4);
