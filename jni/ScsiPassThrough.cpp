#include "ScsiPassThrough.h"

#include <algorithm>
#include <cstdio>

#include "JavaAccess.h"
#include "Records.h"
#include "vdsdm/Operations.h"
#include "vdsdm/Status.h"

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
    if (javaTargetInfoObject == nullptr) {
        return nullObject("NULL javaTargetInfoObject!\n");
    }
    return withClassOf(env, javaTargetInfoObject, [&](JavaObject &info) {
        return getInt(info, "getBus", address.BusNumber, named) //
               && getInt(info, "getLUN", address.LUN, named)    //
               && getInt(info, "getTargetID", address.TargetID, named);
    });
}

// Sends the command into the area. A tolerated status counts as success and is kept as the command's status.
static bool reportLUNs(SDMGT_HANDLE handle, TARGETINFORMATION &address, SD_UINT8 *area, SD_UINT32 size,
                       SD_UINT32 &commandStatus)
{
    SD_UINT8 sense[SENSE_SIZE];
    clear(sense);
    commandStatus = SDSendScsiReportLunsCmdiSCSI(handle, &address, area, size, sense, SENSE_SIZE);
    return commandStatus == ERR_SCSI_TOLERATED || !failed(commandStatus, "SDSendScsiReportLunsCmdiSCSI returned %x\n");
}

// Hands each reported unit to the target object. The list length is the target's word: entries are read no further than
// the area reaches. A missing addLUN leaves the command's status to stand.
static void addLUNs(JavaObject &target, const SD_UINT8 *area, SD_UINT32 size, SD_UINT32 commandStatus)
{
    const SD_UINT32 length = bigEndian32(area);
    if (length > REPORT_LUNS_LARGE_SIZE) {
        std::printf("JNI: Bad Report Luns Data - LUNs Reported: %x \n", length);
        target.status = ERR_BAD_DATA;
        return;
    }
    // A target that reports no unit is given LUN 0.
    bool added = length != 0 || setInt(target, "addLUN", 0, namedObj);
    const SD_UINT32 end = std::min(length + LUN_HEADER, size);
    for (SD_UINT32 offset = LUN_HEADER; offset < end && added; offset += LUN_ENTRY) {
        const auto lun = static_cast<SD_UINT32>(area[offset] * 256 + area[offset + 1]);
        added = setInt(target, "addLUN", lun, namedObj);
    }
    if (!added) {
        target.status = commandStatus;
    }
}

SD_UINT32 sendReportLUNs(JNIEnv *env, SDMGT_HANDLE handle, jobject jTarget)
{
    SD_UINT8 smallArea[REPORT_LUNS_SMALL_SIZE];
    clear(smallArea);
    SD_UINT8 largeArea[REPORT_LUNS_LARGE_SIZE];
    clear(largeArea);
    return withClassOf(env, jTarget, [&](JavaObject &target) {
        TARGETINFORMATION address;
        clear(address);
        if (!withFetched(target, "getTargetInfo", GIVES_TARGET_INFO, twoBlanks, "NULL javaTargetInfoObject!\n",
                         [&](jobject targetInfo) { return getTargetInfo(env, targetInfo, address); })) {
            return;
        }
        SD_UINT32 status = 0;
        if (!reportLUNs(handle, address, smallArea, REPORT_LUNS_SMALL_SIZE, status)) {
            target.status = status;
            return;
        }
        // The command is always sent a second time, into the area that the first response calls for.
        const bool small = bigEndian32(smallArea) <= REPORT_LUNS_SMALL_SIZE;
        SD_UINT8 *area = small ? smallArea : largeArea;
        const SD_UINT32 size = small ? REPORT_LUNS_SMALL_SIZE : REPORT_LUNS_LARGE_SIZE;
        if (!reportLUNs(handle, address, area, size, status)) {
            target.status = status;
            return;
        }
        addLUNs(target, area, size, status);
    });
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
    const SD_UINT32 converted = withClassOf(env, inqObj, [&](JavaObject &info) {
        return setBytesText(info, "setExtraData", inquiry.cExtraData, namedObj)
               && setBytesText(info, "setInquiryHeader", inquiry.cInquiryHeader, namedObj)
               && setBytesText(info, "setProductID", inquiry.cProductID, namedObj)
               && setBytesText(info, "setRevision", inquiry.cRevision, namedObj)
               && setBytesText(info, "setSerialNumber", inquiry.cSerialNumber, namedObj)
               && setBytesText(info, "setVendorID", inquiry.cVendorID, namedObj);
    });
    // A missing setter is printed, and the call counts as a success: getiSCSILunData goes on to the capacity.
    if (converted != 0) {
        forgetOwnError(env);
    }
    return 0;
}

SD_UINT32 sendReadCapacity(JNIEnv *env, SDMGT_HANDLE handle, jobject jLun)
{
    TARGETINFORMATION address;
    clear(address);
    READ_CAPACITY_DATA capacity;
    clear(capacity);
    const SD_UINT32 status = withClassOf(env, jLun, [&](JavaObject &lun) {
        SD_UINT8 sense[SENSE_SIZE];
        clear(sense);
        if (!withFetched(lun, "getTargetInfo", GIVES_TARGET_INFO, twoBlanks, "NULL javaTargetInfoObject!\n",
                         [&](jobject targetInfo) { return getTargetInfo(env, targetInfo, address); })) {
            return;
        }
        lun.status = SDSendScsiReadCapacityCmdiSCSI(handle, &address, &capacity, sizeof capacity, sense, SENSE_SIZE);
        failed(lun.status, "SDSendScsiReadCapacityCmdiSCSI returned %x\n");
    });
    if (status != 0) {
        return status;
    }
    // A missing setter is printed, and the call counts as a success.
    withClassOf(env, jLun, [&](JavaObject &lun) {
        return setInt(lun, "setLogicalBlockAddress", bigEndian32(capacity.LogicalBlockAddress), namedObj)
               && setInt(lun, "setBytesPerBlock", bigEndian32(capacity.BytesPerBlock), namedObj);
    });
    return 0;
}
