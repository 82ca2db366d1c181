#include "ScsiPassThrough.h"

#include "JavaAccess.h"
#include "RecordMemory.h"
#include "vdsdm/Operations.h"
#include "vdsdm/Status.h"

#include <cstdio>
#include <cstring>
#include <span>

static constexpr const char *NO_TARGET_INFO = "NULL javaTargetInfoObject!\n";

// Bytes of the header of a REPORT LUNS response, and of each entry after it.
static constexpr SD_UINT32 LUN_HEADER = 8;
static constexpr SD_UINT32 LUN_ENTRY = 8;

static SD_UINT32 bigEndian32(const SD_UINT8 *bytes)
{
    return static_cast<SD_UINT32>(bytes[0]) << 24 | static_cast<SD_UINT32>(bytes[1]) << 16
           | static_cast<SD_UINT32>(bytes[2]) << 8 | static_cast<SD_UINT32>(bytes[3]);
}

static SD_UINT32 bigEndian32(SD_UINT32 word)
{
    SD_UINT8 bytes[sizeof word];
    std::memcpy(bytes, &word, sizeof word);
    return bigEndian32(bytes);
}

SD_UINT32 getTargetInfo(JNIEnv *env, jobject javaTargetInfoObject, TARGETINFORMATION &address)
{
    JavaObject info = objectOrNull(env, javaTargetInfoObject, NO_TARGET_INFO);
    getInt(info, "getBus", address.BusNumber, named);
    getInt(info, "getLUN", address.LUN, named);
    getInt(info, "getTargetID", address.TargetID, named);
    return info.status;
}

// A row: the address in the TargetInfo object of a target or a LUN.
static void getTargetInfoOf(JavaObject &owner, TARGETINFORMATION &address)
{
    if (const auto targetInfo = fetch(owner, "getTargetInfo", GIVES_TARGET_INFO, twoBlanks, NO_TARGET_INFO)) {
        owner.status = getTargetInfo(owner.env, targetInfo.get(), address);
    }
}

// Sends the command into the area. A tolerated status counts as success and is kept as the command's status.
static bool reportLUNs(SDMGT_HANDLE handle, TARGETINFORMATION &address, std::span<SD_UINT8> area,
                       SD_UINT32 &commandStatus)
{
    SD_UINT8 sense[SENSE_SIZE];
    clear(sense);
    commandStatus = SDSendScsiReportLunsCmdiSCSI(handle, &address, area.data(), static_cast<SD_UINT32>(area.size()),
                                                 sense, SENSE_SIZE);
    return commandStatus == ERR_SCSI_TOLERATED || !failed(commandStatus, "SDSendScsiReportLunsCmdiSCSI returned %x\n");
}

// Hands each reported unit to the target object. The length of the list is the target's word. A missing addLUN leaves
// the command's status to stand.
static void addLUNs(JavaObject &target, std::span<const SD_UINT8> area, SD_UINT32 commandStatus)
{
    const SD_UINT32 length = bigEndian32(area.data());
    if (length > REPORT_LUNS_LARGE_SIZE) {
        std::printf("JNI: Bad Report Luns Data - LUNs Reported: %x \n", length);
        target.status = ERR_BAD_DATA;
        return;
    }
    if (length == 0) {
        // A target that reports no unit is given LUN 0.
        setInt(target, "addLUN", 0, namedObj);
    }
    const SD_UINT32 reported = (length + LUN_ENTRY - 1) / LUN_ENTRY;
    const SD_UINT32 room = (static_cast<SD_UINT32>(area.size()) - LUN_HEADER) / LUN_ENTRY;
    const SD_UINT32 units = fitting(reported, room, "LUN list");
    for (SD_UINT32 i = 0; i < units; ++i) {
        const auto entry = area.subspan(LUN_HEADER + i * LUN_ENTRY);
        setInt(target, "addLUN", static_cast<SD_UINT32>(entry[0] * 256 + entry[1]), namedObj);
    }
    if (target.status != 0) {
        carryOn(target);
        target.status = commandStatus;
    }
}

SD_UINT32 sendReportLUNs(JNIEnv *env, SDMGT_HANDLE handle, jobject jTarget)
{
    SD_UINT8 smallArea[REPORT_LUNS_SMALL_SIZE];
    clear(smallArea);
    SD_UINT8 largeArea[REPORT_LUNS_LARGE_SIZE];
    clear(largeArea);
    TARGETINFORMATION address;
    clear(address);
    JavaObject target = objectOf(env, jTarget);
    getTargetInfoOf(target, address);
    if (target.status != 0) {
        return target.status;
    }
    SD_UINT32 status = 0;
    if (!reportLUNs(handle, address, smallArea, status)) {
        return status;
    }
    // The command is always sent a second time, into the area that the first response calls for.
    std::span<SD_UINT8> area = largeArea;
    if (bigEndian32(smallArea) <= REPORT_LUNS_SMALL_SIZE) {
        area = smallArea;
    }
    if (!reportLUNs(handle, address, area, status)) {
        return status;
    }
    addLUNs(target, area, status);
    return target.status;
}

SD_UINT32 sendInquiry(JNIEnv *env, SDMGT_HANDLE handle, jobject targetInfoObj, jobject inqObj)
{
    TARGETINFORMATION address;
    clear(address);
    SD_UINT32 status = getTargetInfo(env, targetInfoObj, address);
    if (status != 0) {
        return status;
    }
    // 36 bytes are asked for; the rest of the record stays zero, so that what was not sent gives empty strings.
    SCSI_INQUIRY_DATA_INFO inquiry;
    clear(inquiry);
    SD_UINT8 sense[SENSE_SIZE];
    clear(sense);
    status = SDSendScsiInquiryCmdiSCSI(handle, &address, &inquiry, INQUIRY_SIZE, sense, SENSE_SIZE);
    if (failed(status, "SDSendScsiInquiryCmdiSCSI returned %x\n")) {
        return status;
    }
    JavaObject info = objectOf(env, inqObj);
    setBytesText(info, "setExtraData", inquiry.cExtraData, namedObj);
    setBytesText(info, "setInquiryHeader", inquiry.cInquiryHeader, namedObj);
    setBytesText(info, "setProductID", inquiry.cProductID, namedObj);
    setBytesText(info, "setRevision", inquiry.cRevision, namedObj);
    setBytesText(info, "setSerialNumber", inquiry.cSerialNumber, namedObj);
    setBytesText(info, "setVendorID", inquiry.cVendorID, namedObj);
    // A missing setter is printed, and the call counts as a success: getiSCSILunData goes on to the capacity.
    carryOn(info);
    return 0;
}

// Sends the command to the unit that the LUN object's TargetInfo names.
static SD_UINT32 readCapacity(JNIEnv *env, SDMGT_HANDLE handle, jobject jLun, READ_CAPACITY_DATA &capacity)
{
    TARGETINFORMATION address;
    clear(address);
    SD_UINT8 sense[SENSE_SIZE];
    clear(sense);
    JavaObject lun = objectOf(env, jLun);
    getTargetInfoOf(lun, address);
    if (lun.status != 0) {
        return lun.status;
    }
    const SD_UINT32 status =
        SDSendScsiReadCapacityCmdiSCSI(handle, &address, &capacity, sizeof capacity, sense, SENSE_SIZE);
    report(status, "SDSendScsiReadCapacityCmdiSCSI returned %x\n");
    return status;
}

SD_UINT32 sendReadCapacity(JNIEnv *env, SDMGT_HANDLE handle, jobject jLun)
{
    READ_CAPACITY_DATA capacity;
    clear(capacity);
    const SD_UINT32 status = readCapacity(env, handle, jLun, capacity);
    if (status != 0) {
        return status;
    }
    JavaObject lun = objectOf(env, jLun);
    setInt(lun, "setLogicalBlockAddress", bigEndian32(capacity.LogicalBlockAddress), namedObj);
    setInt(lun, "setBytesPerBlock", bigEndian32(capacity.BytesPerBlock), namedObj);
    // A missing setter is printed, and the call counts as a success.
    carryOn(lun);
    return 0;
}
