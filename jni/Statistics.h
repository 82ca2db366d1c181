// The port's counters, handed to the statistics object.
#pragma once

#include "vdsdm/Types.h"

#include <jni.h>

// Hands a counter to a setter as a new byte[9]: element 0 is 0, elements 1 to 8 the counter, least significant first.
// Returns 0, or ERR_JNI_NULL when the VM could not make the array.
SD_UINT32 assign64toBigInt(JNIEnv *env, SD_UINT64 counter, jmethodID method, jobject jStats);

// Reads the counters and hands 32 of them over. A status is 0, one of the bridge's own or the management library's.
SD_UINT32 readStatistics(JNIEnv *env, SDMGT_HANDLE handle, jobject jStats);
