// The firmware's initialisation block, both ways, and adapter maintenance. A status is 0, one of the bridge's own or
// the management library's, unchanged.
#pragma once

#include "vdsdm/FirmwareConfiguration.h"
#include "vdsdm/Types.h"

#include <jni.h>

// Copies option words and session parameters of a block into an InitFW object. In spite of its name, which it shares
// with the HBA object's Java method, it goes from record to Java.
SD_UINT32 getInitFW(JNIEnv *env, jobject javaInitFWObject, const INITFWISCSI &block);

// Hands the block in force to the HBA object: five addresses, and its InitFW object filled.
SD_UINT32 readFWData(JNIEnv *env, SDMGT_HANDLE handle, jobject jObj);

// Fills an InitFW object from the firmware's default block.
SD_UINT32 readFWDefaults(JNIEnv *env, SDMGT_HANDLE handle, jobject jInitFW);

// Reads the block, overwrites what the HBA object owns, and writes it back. Nothing is written when a method or an
// object is missing; failures inside addresses and session parameters, and getters that throw, do not stop it. The HBA
// object may be null, which is reported after the read.
SD_UINT32 writeFWData(JNIEnv *env, SDMGT_HANDLE handle, jobject jHba);

// Restores the firmware's default block.
SD_UINT32 restoreFWDefaults(SDMGT_HANDLE handle);

// Flashes the named image; prints nothing.
SD_UINT32 updateFW(SDMGT_HANDLE handle, const char *fileName, jshort imageType);

// Resets the adapter.
SD_UINT32 resetHBA(SDMGT_HANDLE handle);

// Clears the counters of a port; the low 16 bits count.
SD_UINT32 resetCounters(SDMGT_HANDLE handle, jint portNum);

// Pings the address of an IPAddr object, the all-zero address when it cannot be read; the low 16 bits of count count.
SD_UINT32 sendPing(JNIEnv *env, SDMGT_HANDLE handle, jobject ipAddr, jint count);
