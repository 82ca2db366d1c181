// The adapter's logs, each handed to the HBA object as one flat long[]. A status is 0, one of the bridge's own or the
// management library's, unchanged.
#pragma once

#include "vdsdm/Types.h"

#include <jni.h>

// The connection-error log: 11 values per entry.
SD_UINT32 readConnectErrorLog(JNIEnv *env, SDMGT_HANDLE handle, jobject jObj);

// The ARP table: 26 values per entry.
SD_UINT32 readARPLog(JNIEnv *env, SDMGT_HANDLE handle, jobject jObj);
