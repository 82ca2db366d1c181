// The adapter's CHAP credentials, both ways. Secrets are neither printed nor kept: every buffer that held one is wiped.
#pragma once

#include "vdsdm/ChapTable.h"
#include "vdsdm/Types.h"

#include <jni.h>

// Copies a record into a CHAPTableEntry object; the secret crosses as a short[100] and as a String.
SD_UINT32 setiSCSICHAPEntry(JNIEnv *env, jobject entryObject, const CHAPTABLE &record);

// Fills a record from a CHAPTableEntry object. The secret's String, when there is one, replaces its short[].
SD_UINT32 getiSCSICHAPEntry(JNIEnv *env, jobject entryObject, CHAPTABLE &record);

// Adds one CHAPTableEntry per record to the HBA object. Failures of the management library become ERR_JNI_NULL.
SD_UINT32 readCHAPTable(JNIEnv *env, SDMGT_HANDLE handle, jobject jHBA);

// Replaces the adapter's table with an all-zero record followed by 1 to 127 CHAPTableEntry objects. Other lengths write
// nothing and return 0. Nothing is written when a method, an object or an array is missing; getters that throw do not
// stop it.
SD_UINT32 writeCHAPTable(JNIEnv *env, SDMGT_HANDLE handle, jobjectArray jArray);
