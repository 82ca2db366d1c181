// Entries of the device database: record to Java and Java to record, reads, writes and logout. A status is 0, one of
// the bridge's own (ERR_JNI_...) or the management library's, unchanged.
#pragma once

#include "vdsdm/DeviceDatabaseEntry.h"
#include "vdsdm/Types.h"

#include <jni.h>

// Copies an entry into a DevDBEntry object, which receives `index` as its index. With paramsOnly the object keeps the
// target ID and state that it has. Failures inside the node info and the session parameters do not change the status.
SD_UINT32 setiSCSIDevDDBEntry(JNIEnv *env, jobject javaDevDBEntryObject, const DEVICEENTRYISCSI &pDDB, SD_UINT32 index,
                              bool paramsOnly);

// Returns the number of entries; 0 when the count could not be read, which is printed.
SD_UINT32 readEntryNum(SDMGT_HANDLE handle);

// Returns the default entry as a new DevDBEntry object, or null after printing what failed.
jobject readDefaultDDB(JNIEnv *env, SDMGT_HANDLE handle);

// Copies the contents proposed for entry jIndex into a DevDBEntry object, except for target ID and state.
SD_UINT32 readInitialDDB(JNIEnv *env, SDMGT_HANDLE handle, jobject JDDB, jint jIndex);

// Writes a DevDBEntry object to the entry that its target ID names. Nothing is written when a method or an object of
// the entry itself is missing; failures inside node info and session parameters, and getters that throw, do not stop
// it.
SD_UINT32 writeDDB(JNIEnv *env, SDMGT_HANDLE handle, jobject jDDB);

// Writes 1 to 511 DevDBEntry objects, in their order, after checking the adapter index; an element that fails is
// reported by its own lines and the next one follows. Other lengths write nothing and return 0.
SD_UINT32 writeDDBs(JNIEnv *env, jint dev, jobjectArray jArray);

// Logs out of a target; each argument is cut to 16 bits. Nothing is printed.
SD_UINT32 sendLogout(SDMGT_HANDLE handle, jint index, jint options, jint newIndex);
