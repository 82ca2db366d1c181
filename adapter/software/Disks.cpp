#include "Disks.h"

#include "Checksum.h"

#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>

namespace
{

constexpr SD_UINT32 FIRST_FLAT_LUN = 256; // below, units are addressed as peripherals

struct Unit {
    SD_UINT32 lun;
    SD_UINT32 blockSize; // bytes
    SD_UINT64 blocks;
};

void putBigEndian(SD_UINT8 *place, SD_UINT64 value, int bytes)
{
    for (int byte = bytes - 1; byte >= 0; --byte) {
        place[byte] = static_cast<SD_UINT8>(value);
        value >>= 8;
    }
}

ScsiAnswer check(SD_UINT8 key, SD_UINT16 code)
{
    return {SCSI_CHECK_CONDITION, {}, senseData(key, code)};
}

// The unit that a first-level number means: peripheral addressing on bus 0 for 0 to 255, flat addressing for all. The
// flat form of a low number means the same unit.
std::optional<Unit> findUnit(const ImaginedTarget &target, SD_UINT16 lun)
{
    const SD_UINT32 method = lun >> 14;
    const SD_UINT32 number = lun & 0x3FFFU;
    if (method > 1 || (method == 0 && lun > 0xFF)) {
        return std::nullopt;
    }
    for (const UnitRange &range : target.units) {
        if (number >= range.first && number < range.first + range.count) {
            return Unit{number, range.blockSize, range.blocks};
        }
    }
    return std::nullopt;
}

// The list's header tells its full length, also when the list is cut off at the allocation length.
ScsiAnswer reportLuns(const ImaginedTarget &target, std::span<const SD_UINT8> command)
{
    const SD_UINT32 allocation =
        (SD_UINT32{command[6]} << 24) | (SD_UINT32{command[7]} << 16) | (SD_UINT32{command[8]} << 8) | command[9];
    if (allocation < 16) {
        return check(SENSE_ILLEGAL_REQUEST, ASC_INVALID_FIELD);
    }
    std::vector<SD_UINT8> list(8);
    for (const UnitRange &range : target.units) {
        for (SD_UINT32 lun = range.first; lun < range.first + range.count; ++lun) {
            list.resize(list.size() + 8);
            putBigEndian(&list[list.size() - 8], lun < FIRST_FLAT_LUN ? lun : 0x4000 | lun, 2);
        }
    }
    putBigEndian(list.data(), list.size() - 8, 4);
    list.resize(std::min<std::size_t>(list.size(), allocation));
    return {SCSI_GOOD, std::move(list), {}};
}

// Standard INQUIRY data, 96 bytes. A unit that does not exist has data too: it says so in its first byte.
ScsiAnswer inquiry(const std::optional<Unit> &unit, const std::string &name, std::span<const SD_UINT8> command)
{
    if (command[1] != 0 || command[2] != 0) {
        return check(SENSE_ILLEGAL_REQUEST, ASC_INVALID_FIELD); // no vital product data here
    }
    constexpr std::size_t size = 96;
    std::vector<SD_UINT8> data(size);
    data[0] = !unit ? INQUIRY_NO_UNIT : 0x00; // a connected direct access device
    data[2] = 0x06;                           // SPC-4
    data[3] = 0x12;                           // LUNs are reported, response format 2
    data[4] = size - 5;                       // bytes that follow this one
    data[7] = 0x02;                           // command queuing
    const std::span letters(reinterpret_cast<const SD_UINT8 *>(name.data()), name.size());
    const auto serial = static_cast<unsigned>(unit ? checksum(letters, unit->lun) & 0xFFFFFFFF : 0);
    const char *product = "";
    if (unit) {
        product = unit->blockSize == 512 ? "TAVO DISK 512" : "TAVO DISK 4096";
    }
    char text[45];
    (void)std::snprintf(text, sizeof text, "%-8.8s%-16.16s%-4.4s%08X", "VARDEN", product, "0104", serial);
    std::copy_n(text, 36, data.begin() + 8);
    const SD_UINT16 standards[] = {0x00A0, 0x0960, 0x0460, 0x04C0}; // SAM-5, iSCSI, SPC-4, SBC-3
    for (std::size_t standard = 0; standard < std::size(standards); ++standard) {
        putBigEndian(&data[58 + 2 * standard], standards[standard], 2);
    }
    data.resize(std::min<std::size_t>(size, command[3] * 256U + command[4]));
    return {SCSI_GOOD, std::move(data), {}};
}

ScsiAnswer readCapacity(const Unit &unit)
{
    std::vector<SD_UINT8> data(8);
    putBigEndian(data.data(), std::min<SD_UINT64>(unit.blocks - 1, 0xFFFFFFFF), 4);
    putBigEndian(data.data() + 4, unit.blockSize, 4);
    return {SCSI_GOOD, std::move(data), {}};
}

} // namespace

ScsiAnswer answer(const ImaginedTarget &target, SD_UINT16 lun, std::span<const SD_UINT8> command)
{
    const auto unit = findUnit(target, lun);
    if (command.size() == 12 && command[0] == SCSI_REPORT_LUNS) {
        return reportLuns(target, command); // also when the unit addressed does not exist
    }
    if (command.size() == 6 && command[0] == SCSI_INQUIRY) {
        return inquiry(unit, target.name, command);
    }
    if (!unit) {
        return check(SENSE_ILLEGAL_REQUEST, ASC_UNIT_NOT_SUPPORTED);
    }
    if (command.size() == 10 && command[0] == SCSI_READ_CAPACITY_10) {
        return readCapacity(*unit);
    }
    return check(SENSE_ILLEGAL_REQUEST, ASC_INVALID_OPERATION_CODE);
}
