// The logical units of an imagined target, and what they answer: the bytes of the SCSI standards.
#pragma once

#include "ScsiStandard.h"
#include "StorageNetwork.h"

#include <span>
#include <vector>

struct ScsiAnswer {
    SD_UINT8 status = SCSI_GOOD;
    std::vector<SD_UINT8> data;
    std::vector<SD_UINT8> sense; // fixed format, empty with GOOD
};

// lun is the first two bytes of the unit's number, big-endian.
ScsiAnswer answer(const ImaginedTarget &target, SD_UINT16 lun, std::span<const SD_UINT8> command);
