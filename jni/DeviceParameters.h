// The session parameters of a target entry or of the firmware block, both ways. The converters print their failures and
// return nothing: the caller carries on as if they had succeeded.
#pragma once

#include "vdsdm/DeviceParameters.h"

#include <jni.h>

// Copies the parameters into a DevEntry object. iSCSIOptions, maxBurstSize and taskMngmntTimeout cross as Java shorts
// with the bits as they are, retryCount and retryDelay as shorts of 0 to 255, the other numbers as ints of 0 to 65535.
void setiSCSIDevEntry(JNIEnv *env, jobject jObj, const ISCSIDEVICE &piSCSIDevice);

// Fills the parameters from a DevEntry object, each cut to its field's width. Reserved stays as the caller prepared it.
void getiSCSIDevEntry(JNIEnv *env, jobject jObj, ISCSIDEVICE &piSCSIDevice);
