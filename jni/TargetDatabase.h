// Discovered targets and their LUNs. A status is 0, one of the bridge's own or the management library's, unchanged.
#pragma once

#include "vdsdm/TargetDatabase.h"
#include "vdsdm/Types.h"

#include <jni.h>

// Fills a target object with the portal at which the target was discovered and the node behind it.
SD_UINT32 readTargetData(JNIEnv *env, SDMGT_HANDLE handle, jobject jHba, jobject jTarget);

// Fills a LUN object with inquiry data and capacity, as getScsiInquiryData and getScsiReadCapacityData do, each with
// the handle that the table holds by then. The adapter index is checked when the LUN's objects are there.
SD_UINT32 readLunData(JNIEnv *env, jint dev, jobject jLun);
