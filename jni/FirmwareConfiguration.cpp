#include "FirmwareConfiguration.h"

#include "DeviceParameters.h"
#include "JavaAccess.h"
#include "NodeInfo.h"
#include "RecordMemory.h"
#include "vdsdm/Operations.h"
#include "vdsdm/Status.h"

static constexpr const char *NO_DEV_ENTRY = "NULL javaDevEntryObject!\n";
static constexpr const char *NO_INIT_FW = "NULL javaInitFWObject!\n";

SD_UINT32 getInitFW(JNIEnv *env, jobject javaInitFWObject, const INITFWISCSI &block)
{
    JavaObject initFW = objectOf(env, javaInitFWObject);
    setShort(initFW, "setFWOptions", block.FWOptions, namedObj);
    setShort(initFW, "setAddFWOptions", block.addFWOptions, namedObj);
    setByte(initFW, "setReserved1", block.Reserved1, namedObj);
    setShort(initFW, "setWakeupThreshold", block.wakeupThreshold, namedObj);
    if (const auto devEntry = fetch(initFW, "getDevEntry", GIVES_DEV_ENTRY, twoBlanks, NO_DEV_ENTRY)) {
        setiSCSIDevEntry(env, devEntry.get(), block.DeviceInfo);
    }
    return initFW.status;
}

SD_UINT32 readFWData(JNIEnv *env, SDMGT_HANDLE handle, jobject jObj)
{
    INITFWISCSI block;
    clear(block);
    const SD_UINT32 status = SDGetInitFW(handle, &block);
    if (failed(status, "SDGetInitFW call failed! 2\n")) {
        return status;
    }
    JavaObject hba = objectOf(env, jObj);
    if (hba.status != 0) {
        return hba.status;
    }
    setIPAddr(env, jObj, block.IPAddr, ADDRESS_OWN);
    setIPAddr(env, jObj, block.Gateway, ADDRESS_GATEWAY);
    setIPAddr(env, jObj, block.SubnetMask, ADDRESS_SUBNET_MASK);
    setIPAddr(env, jObj, block.PrimaryDNS.IPAddr, ADDRESS_PRIMARY_DNS);
    setIPAddr(env, jObj, block.SLPDAAddr, ADDRESS_SLP_DA);
    const auto initFW = fetch(hba, "getInitFW", GIVES_INIT_FW, twoBlanks, NO_INIT_FW);
    return hba.status != 0 ? hba.status : getInitFW(env, initFW.get(), block);
}

SD_UINT32 readFWDefaults(JNIEnv *env, SDMGT_HANDLE handle, jobject jInitFW)
{
    INITFWISCSI block;
    clear(block);
    const SD_UINT32 status = SDGetFWDefaults(handle, &block);
    if (failed(status, "FAILED: %x \n")) {
        return status;
    }
    return getInitFW(env, jInitFW, block);
}

static SD_UINT32 getNames(JNIEnv *env, jobject javaNodeInfoObject, INITFWISCSI &block)
{
    JavaObject nodeInfo = objectOf(env, javaNodeInfoObject);
    getText(nodeInfo, "getiSCSIName", block.iSCSIName, twoBlanks);
    getText(nodeInfo, "getAlias", block.Alias, twoBlanks);
    return nodeInfo.status;
}

// Option words and session parameters; wakeupThreshold and Reserved1 keep the adapter's values.
static SD_UINT32 getOptions(JNIEnv *env, jobject javaInitFWObject, INITFWISCSI &block)
{
    JavaObject initFW = objectOf(env, javaInitFWObject);
    getShort(initFW, "getFWOptions", block.FWOptions, namedObj);
    getShort(initFW, "getAddFWOptions", block.addFWOptions, namedObj);
    if (const auto devEntry = fetch(initFW, "getDevEntry", GIVES_DEV_ENTRY, twoBlanks, NO_DEV_ENTRY)) {
        getiSCSIDevEntry(env, devEntry.get(), block.DeviceInfo);
    }
    return initFW.status;
}

// What the HBA object owns of the block.
static SD_UINT32 getBlock(JNIEnv *env, jobject jHba, INITFWISCSI &block)
{
    JavaObject hba = objectOf(env, jHba);
    getAddress(hba, "getIPAddress", "GetMethodID  getIPAddr call failed!\n", block.IPAddr);
    getAddress(hba, "getGateway", twoBlanks, block.Gateway);
    getAddress(hba, "getSubnetMask", twoBlanks, block.SubnetMask);
    getAddress(hba, "getPrimaryDNS", twoBlanks, block.PrimaryDNS.IPAddr);
    getAddress(hba, "getSlpDa", twoBlanks, block.SLPDAAddr);
    if (const auto nodeInfo = fetch(hba, "getNodeInfo", GIVES_NODE_INFO, twoBlanks, "NULL javaNodeInfoObject!4\n")) {
        hba.status = getNames(env, nodeInfo.get(), block);
    }
    if (const auto initFW = fetch(hba, "getInitFW", GIVES_INIT_FW, twoBlanks, NO_INIT_FW)) {
        hba.status = getOptions(env, initFW.get(), block);
    }
    return hba.status;
}

SD_UINT32 writeFWData(JNIEnv *env, SDMGT_HANDLE handle, jobject jHba)
{
    INITFWISCSI block;
    clear(block);
    // A failed read is only printed: the write then starts from what the record holds.
    report(SDGetInitFW(handle, &block), "SDGetInitFW call failed!\n");
    if (jHba == nullptr) {
        return nullObject("NULL jHba!\n");
    }
    const SD_UINT32 converted = getBlock(env, jHba, block);
    if (converted != 0) {
        return converted;
    }
    const SD_UINT32 status = SDSetInitFW(handle, &block);
    report(status, "SDSetInitFW call failed!\n");
    return status;
}

SD_UINT32 restoreFWDefaults(SDMGT_HANDLE handle)
{
    INITFWISCSI block;
    clear(block);
    const SD_UINT32 status = SDSetFWDefaults(handle, &block);
    report(status, "FAILED: %x \n");
    return status;
}

SD_UINT32 updateFW(SDMGT_HANDLE handle, const char *fileName, jshort imageType)
{
    return SDUpdateiSCSIFW(handle, fileName, static_cast<SD_UINT16>(imageType));
}

SD_UINT32 resetHBA(SDMGT_HANDLE handle)
{
    HBARESET request;
    clear(request);
    const SD_UINT32 status = SDResetHBA(handle, &request);
    report(status, "SDResetHBA call failed!\n");
    return status;
}

SD_UINT32 resetCounters(SDMGT_HANDLE handle, jint portNum)
{
    const SD_UINT32 status = SDResetStatisticsiSCSI(handle, static_cast<SD_UINT16>(portNum));
    report(status, "SDResetiSCSICounters call failed! %x \n");
    return status;
}

SD_UINT32 sendPing(JNIEnv *env, SDMGT_HANDLE handle, jobject ipAddr, jint count)
{
    PING request;
    clear(request);
    ISCSIIPADDR address;
    clear(address);
    getIPAddr(env, ipAddr, address);
    request.IPAddr = address;
    request.packetCount = static_cast<SD_UINT16>(count);
    const SD_UINT32 status = SDDiagPing(handle, &request);
    report(status, "JNI: SDDiagPing() failed! %x\n");
    return status;
}
