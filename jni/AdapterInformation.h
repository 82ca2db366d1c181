// What the adapter says of itself, handed to the HBA object: five inventory queries and the full snapshot. A status is
// 0, one of the bridge's own (ERR_JNI_...) or the management library's, unchanged.
#pragma once

#include "vdsdm/AdapterInformation.h"
#include "vdsdm/Types.h"

#include <jni.h>

// The adapter's node identity: address, iSCSI name, alias, portal count.
SD_UINT32 readAdapterInfo(JNIEnv *env, SDMGT_HANDLE handle, jobject jObj);

// Firmware attribute bits, iSCSI, option ROM and firmware version, model.
SD_UINT32 readFWInfo(JNIEnv *env, SDMGT_HANDLE handle, jobject jObj);

// Driver version and attribute bits.
SD_UINT32 readDriverInfo(JNIEnv *env, SDMGT_HANDLE handle, jobject jObj);

// Board type and chip version.
SD_UINT32 readChipInfo(JNIEnv *env, SDMGT_HANDLE handle, jobject jHba);

// Copies a chip record into the HBA object. Prints its failures and returns nothing.
void setChipInfo(JNIEnv *env, jobject jObj, const CHIPINFO &chip);

// Adapter state, DHCP state and link status.
SD_UINT32 readHBAState(JNIEnv *env, SDMGT_HANDLE handle, jobject jHBA);

// The portal's properties, every device database entry in use, and the firmware block as getFWData hands it over, with
// the handle that the table holds by then.
SD_UINT32 readHBAData(JNIEnv *env, jint dev, jobject jObj);
