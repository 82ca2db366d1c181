// SCSI commands to targets: the command is made here, the target answers it, and its answer goes to the caller.
#include "Initiator.h"
#include "Library.h"
#include "ScsiStandard.h"

#include <algorithm>
#include <array>

namespace
{

// A buffer of the caller.
struct Area {
    void *start;
    SD_UINT32 size;

    // Takes over as many bytes as fit.
    void take(std::span<const SD_UINT8> bytes) const
    {
        std::copy_n(bytes.begin(), std::min<std::size_t>(bytes.size(), size), static_cast<SD_UINT8 *>(start));
    }
};

// Sends a command. Throws ERR_SCSI_CHECK_CONDITION, or the status of a session that could not be had, with sense data;
// a command that succeeded after the target's own retries ends with the status recovered.
void send(Adapter &adapter, const TARGETINFORMATION *unit, std::span<const SD_UINT8> command, Area response, Area sense,
          SD_UINT32 recovered)
{
    requirePointers(unit, response.start);
    require(sense.start != nullptr || sense.size == 0, ERR_INVALID_PARAMETER);
    std::fill_n(static_cast<SD_UINT8 *>(sense.start), sense.size, SD_UINT8{0});

    const auto settings = adapter.settings.readForCommand();
    const SharedEntry entry = unit->BusNumber == 0 ? settings->find(unit->TargetID) : nullptr;
    CommandResult result;
    result.login.reach = Reach::unknownTarget;
    if (entry != nullptr && entry->DeviceState != ENTRY_LOGGED_OUT) {
        result = execute(adapter, *settings, *entry, unit->LUN, command, response.size);
    }
    const Reach reach = result.login.reach;
    if (reach == Reach::unknownTarget) {
        sense.take(senseData(SENSE_ILLEGAL_REQUEST, ASC_UNIT_NOT_SUPPORTED));
    } else if (reach != Reach::session) {
        sense.take(senseData(SENSE_ABORTED_COMMAND, ASC_COMMUNICATION_FAILURE));
    }
    require(reach == Reach::session, statusOf(reach));
    response.take(result.data);
    sense.take(result.sense);
    if (result.status == SCSI_GOOD) {
        return;
    }
    const bool usable = result.sense.size() > 2 && (result.sense[2] & 0x0F) == SENSE_RECOVERED_ERROR;
    require(usable, ERR_SCSI_CHECK_CONDITION);
    require(recovered == 0, recovered);
}

constexpr SD_UINT8 byteOf(SD_UINT32 value, unsigned number)
{
    return static_cast<SD_UINT8>(value >> (8 * number));
}

} // namespace

extern "C" {

SD_UINT32 SDSendScsiReportLunsCmdiSCSI(SDMGT_HANDLE handle, TARGETINFORMATION *target, void *response,
                                       SD_UINT32 responseSize, void *sense, SD_UINT32 senseSize)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        std::array<SD_UINT8, 12> command{SCSI_REPORT_LUNS};
        for (unsigned number = 0; number < 4; ++number) {
            command[9 - number] = byteOf(responseSize, number);
        }
        send(adapter, target, command, {response, responseSize}, {sense, senseSize}, ERR_SCSI_TOLERATED);
    });
}

// INQUIRY has data for units that do not exist as well; the caller gets the data, and the status and sense data of
// other commands to such a unit.
SD_UINT32 SDSendScsiInquiryCmdiSCSI(SDMGT_HANDLE handle, TARGETINFORMATION *target, void *response,
                                    SD_UINT32 responseSize, void *sense, SD_UINT32 senseSize)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        const SD_UINT32 allocation = std::min<SD_UINT32>(responseSize, 0xFFFF);
        const std::array<SD_UINT8, 6> command{SCSI_INQUIRY, 0, 0, byteOf(allocation, 1), byteOf(allocation, 0)};
        send(adapter, target, command, {response, responseSize}, {sense, senseSize}, 0);
        if (responseSize != 0 && *static_cast<const SD_UINT8 *>(response) == INQUIRY_NO_UNIT) {
            Area{sense, senseSize}.take(senseData(SENSE_ILLEGAL_REQUEST, ASC_UNIT_NOT_SUPPORTED));
            throw Failure{ERR_SCSI_CHECK_CONDITION};
        }
    });
}

SD_UINT32 SDSendScsiReadCapacityCmdiSCSI(SDMGT_HANDLE handle, TARGETINFORMATION *target, READ_CAPACITY_DATA *response,
                                         SD_UINT32 responseSize, void *sense, SD_UINT32 senseSize)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        const std::array<SD_UINT8, 10> command{SCSI_READ_CAPACITY_10};
        send(adapter, target, command, {response, responseSize}, {sense, senseSize}, 0);
    });
}
}
