// SCSI commands to a target's units. A status is 0, one of the bridge's own or the management library's, unchanged.
#pragma once

#include "vdsdm/TargetDatabase.h"
#include "vdsdm/Types.h"

#include <jni.h>

// Fills bus, LUN and target ID, the low 16 bits of each, from a TargetInfo object.
SD_UINT32 getTargetInfo(JNIEnv *env, jobject javaTargetInfoObject, TARGETINFORMATION &address);

// Sends REPORT LUNS and calls addLUN of the target object once per unit, with the first two bytes of its LUN.
SD_UINT32 sendReportLUNs(JNIEnv *env, SDMGT_HANDLE handle, jobject jTarget);

// Sends INQUIRY to the unit that the TargetInfo object names and fills a SCSIInqInfo object with six strings.
SD_UINT32 sendInquiry(JNIEnv *env, SDMGT_HANDLE handle, jobject targetInfoObj, jobject inqObj);

// Sends READ CAPACITY to the LUN object's unit and hands it the last block's address and the block length in bytes.
SD_UINT32 sendReadCapacity(JNIEnv *env, SDMGT_HANDLE handle, jobject jLun);
