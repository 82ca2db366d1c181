// The few numbers of the SCSI standards (SAM, SPC, SBC) that the adapter and its software targets share.
#pragma once

#include "Exported.h"

#include <vector>

inline constexpr SD_UINT8 SCSI_INQUIRY = 0x12;
inline constexpr SD_UINT8 SCSI_READ_CAPACITY_10 = 0x25;
inline constexpr SD_UINT8 SCSI_REPORT_LUNS = 0xA0;

inline constexpr SD_UINT8 SCSI_GOOD = 0x00;
inline constexpr SD_UINT8 SCSI_CHECK_CONDITION = 0x02;

inline constexpr SD_UINT8 SENSE_RECOVERED_ERROR = 0x1;
inline constexpr SD_UINT8 SENSE_ILLEGAL_REQUEST = 0x5;
inline constexpr SD_UINT8 SENSE_ABORTED_COMMAND = 0xB;

// Additional sense codes with their qualifiers, as one number.
inline constexpr SD_UINT16 ASC_COMMUNICATION_FAILURE = 0x0800;
inline constexpr SD_UINT16 ASC_RECOVERED_WITH_RETRIES = 0x1701;
inline constexpr SD_UINT16 ASC_INVALID_OPERATION_CODE = 0x2000;
inline constexpr SD_UINT16 ASC_INVALID_FIELD = 0x2400;
inline constexpr SD_UINT16 ASC_UNIT_NOT_SUPPORTED = 0x2500;

// First byte of INQUIRY data for a unit that does not exist: qualifier 3, device type 1Fh.
inline constexpr SD_UINT8 INQUIRY_NO_UNIT = 0x7F;

// Sense data in fixed format.
inline std::vector<SD_UINT8> senseData(SD_UINT8 key, SD_UINT16 code)
{
    std::vector<SD_UINT8> sense(18);
    sense[0] = 0x70; // current error, fixed format
    sense[2] = key;
    sense[7] = 10; // bytes that follow
    sense[12] = static_cast<SD_UINT8>(code >> 8);
    sense[13] = static_cast<SD_UINT8>(code);
    return sense;
}
