// Discovered targets and their LUNs. A status is 0, one of the bridge's own or the management library's, unchanged.
#pragma once

#include <jni.h>

#include "vdsdm/TargetDatabase.h"
#include "vdsdm/Types.h"

// Fills a target object with the portal at which the target was discovered and the node behind it.
SD_UINT32 readTargetData(JNIEnv *env, SDMGT_HANDLE handle, jobject jHba, jobject jTarget);

// Fills a LUN object with inquiry data and capacity, by way of the natives getScsiInquiryData and
// getScsiReadCapacityData, which check the adapter index.
SD_UINT32 readLunData(JNIEnv *env, jobject self, jint dev, jobject jLun);
