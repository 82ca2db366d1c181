#include "DeviceParameters.h"

#include "JavaAccess.h"

void setiSCSIDevEntry(JNIEnv *env, jobject jObj, const ISCSIDEVICE &piSCSIDevice)
{
    JavaObject entry = objectOrNull(env, jObj, "NULL jObj!\n");
    setShort(entry, "setiSCSIOptions", piSCSIDevice.iSCSIOptions, named);
    setShort(entry, "setTaskManagementTimeout", piSCSIDevice.taskMngmntTimeout, named);
    setShort(entry, "setRetryCount", piSCSIDevice.retryCount, named);
    setShort(entry, "setRetryDelay", piSCSIDevice.retryDelay, named);
    setInt(entry, "setDeviceType", piSCSIDevice.deviceType, named);
    setInt(entry, "setExecutionThrottle", piSCSIDevice.exeThrottle, named);
    setInt(entry, "setFirstBurstSize", piSCSIDevice.firstBurstSize, named);
    setShort(entry, "setMaxBurstSize", piSCSIDevice.maxBurstSize, named);
    setInt(entry, "setIPOptions", piSCSIDevice.IPOptions, named);
    setInt(entry, "setMaxRxDataSegmentLen", piSCSIDevice.MaxRxDataSegmentLen, named);
    setInt(entry, "setDefaultTime2Wait", piSCSIDevice.DefaultTime2Wait, named);
    setInt(entry, "setDefaultTime2Retain", piSCSIDevice.DefaultTime2Retain, named);
    setInt(entry, "setKeepAliveTO", piSCSIDevice.keepAliveTimeout, named);
    setInt(entry, "setMaxOutstandingR2T", piSCSIDevice.maxOutstandingR2T, named);
    setInt(entry, "setTCPOptions", piSCSIDevice.TCPOptions, named);
    setText(entry, "setTargetAddress", piSCSIDevice.targetAddr, named, "NULL target Addr!\n");
    setInt(entry, "setPortNumber", piSCSIDevice.portNumber, named);
    carryOn(entry);
}

// The order is not that of the setters: getMaxBurstSize comes third here.
void getiSCSIDevEntry(JNIEnv *env, jobject jObj, ISCSIDEVICE &piSCSIDevice)
{
    JavaObject entry = objectOrNull(env, jObj, "NULL jObj!\n");
    getShort(entry, "getiSCSIOptions", piSCSIDevice.iSCSIOptions, named);
    getShort(entry, "getTaskManagementTimeout", piSCSIDevice.taskMngmntTimeout, named);
    getShort(entry, "getMaxBurstSize", piSCSIDevice.maxBurstSize, named);
    getShort(entry, "getRetryCount", piSCSIDevice.retryCount, named);
    getShort(entry, "getRetryDelay", piSCSIDevice.retryDelay, named);
    getInt(entry, "getDeviceType", piSCSIDevice.deviceType, named);
    getInt(entry, "getExecutionThrottle", piSCSIDevice.exeThrottle, named);
    getInt(entry, "getFirstBurstSize", piSCSIDevice.firstBurstSize, named);
    getInt(entry, "getIPOptions", piSCSIDevice.IPOptions, named);
    getInt(entry, "getMaxRxDataSegmentLen", piSCSIDevice.MaxRxDataSegmentLen, named);
    getInt(entry, "getDefaultTime2Wait", piSCSIDevice.DefaultTime2Wait, named);
    getInt(entry, "getDefaultTime2Retain", piSCSIDevice.DefaultTime2Retain, named);
    getInt(entry, "getKeepAliveTO", piSCSIDevice.keepAliveTimeout, named);
    getInt(entry, "getMaxOutstandingR2T", piSCSIDevice.maxOutstandingR2T, named);
    getInt(entry, "getTCPOptions", piSCSIDevice.TCPOptions, named);
    getText(entry, "getTargetAddress", piSCSIDevice.targetAddr, named);
    getInt(entry, "getPortNumber", piSCSIDevice.portNumber, named);
    carryOn(entry);
}
