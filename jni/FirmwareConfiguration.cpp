#include "FirmwareConfiguration.h"

#include "DeviceParameters.h"
#include "JavaAccess.h"
#include "NodeInfo.h"
#include "Records.h"
#include "vdsdm/Operations.h"
#include "vdsdm/Status.h"

SD_UINT32 getInitFW(JNIEnv *env, jobject javaInitFWObject, const INITFWISCSI &block)
{
    return withClassOf(env, javaInitFWObject, [&](JavaObject &initFW) {
        return setShort(initFW, "setFWOptions", block.FWOptions, namedObj)
               && setShort(initFW, "setAddFWOptions", block.addFWOptions, namedObj)
               && setByte(initFW, "setReserved1", block.Reserved1, namedObj)
               && setShort(initFW, "setWakeupThreshold", block.wakeupThreshold, namedObj)
               && withFetched(initFW, "getDevEntry", GIVES_DEV_ENTRY, twoBlanks, "NULL javaDevEntryObject!\n",
                              [&](jobject devEntry) { setiSCSIDevEntry(env, devEntry, block.DeviceInfo); });
    });
}

SD_UINT32 readFWData(JNIEnv *env, SDMGT_HANDLE handle, jobject jObj)
{
    INITFWISCSI block;
    clear(block);
    const SD_UINT32 status = SDGetInitFW(handle, &block);
    if (failed(status, "SDGetInitFW call failed! 2\n")) {
        return status;
    }
    return withClassOf(env, jObj, [&](JavaObject &hba) {
        setIPAddr(env, jObj, block.IPAddr, ADDRESS_OWN);
        setIPAddr(env, jObj, block.Gateway, ADDRESS_GATEWAY);
        setIPAddr(env, jObj, block.SubnetMask, ADDRESS_SUBNET_MASK);
        setIPAddr(env, jObj, block.PrimaryDNS.IPAddr, ADDRESS_PRIMARY_DNS);
        setIPAddr(env, jObj, block.SLPDAAddr, ADDRESS_SLP_DA);
        withFetched(hba, "getInitFW", GIVES_INIT_FW, twoBlanks, "NULL javaInitFWObject!\n",
                    [&](jobject initFW) { return getInitFW(env, initFW, block); });
    });
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

// One address of the HBA object: fetched and copied over the field's 16 address bytes.
static bool getAddress(JavaObject &hba, const char *getter, Message message, ISCSIIPADDR &field)
{
    return withFetched(hba, getter, GIVES_IP_ADDR, message, "NULL javaIPObject!\n",
                       [&](jobject address) { getIPAddr(hba.env, address, field); });
}

static SD_UINT32 getNames(JNIEnv *env, jobject javaNodeInfoObject, INITFWISCSI &block)
{
    return withClassOf(env, javaNodeInfoObject, [&](JavaObject &nodeInfo) {
        return getText(nodeInfo, "getiSCSIName", block.iSCSIName, twoBlanks)
               && getText(nodeInfo, "getAlias", block.Alias, twoBlanks);
    });
}

// Option words and session parameters; wakeupThreshold and Reserved1 keep the adapter's values.
static SD_UINT32 getOptions(JNIEnv *env, jobject javaInitFWObject, INITFWISCSI &block)
{
    return withClassOf(env, javaInitFWObject, [&](JavaObject &initFW) {
        return getShort(initFW, "getFWOptions", block.FWOptions, namedObj)
               && getShort(initFW, "getAddFWOptions", block.addFWOptions, namedObj)
               && withFetched(initFW, "getDevEntry", GIVES_DEV_ENTRY, twoBlanks, "NULL javaDevEntryObject!\n",
                              [&](jobject devEntry) { getiSCSIDevEntry(env, devEntry, block.DeviceInfo); });
    });
}

SD_UINT32 writeFWData(JNIEnv *env, SDMGT_HANDLE handle, jobject jHba)
{
    INITFWISCSI block;
    clear(block);
    // A failed read is only printed: the write then starts from what the record holds.
    failed(SDGetInitFW(handle, &block), "SDGetInitFW call failed!\n");
    if (jHba == nullptr) {
        return nullObject("NULL jHba!\n");
    }
    const SD_UINT32 converted = withClassOf(env, jHba, [&](JavaObject &hba) {
        return getAddress(hba, "getIPAddress", "GetMethodID  getIPAddr call failed!\n", block.IPAddr)
               && getAddress(hba, "getGateway", twoBlanks, block.Gateway)
               && getAddress(hba, "getSubnetMask", twoBlanks, block.SubnetMask)
               && getAddress(hba, "getPrimaryDNS", twoBlanks, block.PrimaryDNS.IPAddr)
               && getAddress(hba, "getSlpDa", twoBlanks, block.SLPDAAddr)
               && withFetched(hba, "getNodeInfo", GIVES_NODE_INFO, twoBlanks, "NULL javaNodeInfoObject!4\n",
                              [&](jobject nodeInfo) { return getNames(env, nodeInfo, block); })
               && withFetched(hba, "getInitFW", GIVES_INIT_FW, twoBlanks, "NULL javaInitFWObject!\n",
                              [&](jobject initFW) { return getOptions(env, initFW, block); });
    });
    if (converted != 0) {
        return converted;
    }
    const SD_UINT32 status = SDSetInitFW(handle, &block);
    failed(status, "SDSetInitFW call failed!\n");
    return status;
}

SD_UINT32 restoreFWDefaults(SDMGT_HANDLE handle)
{
    INITFWISCSI block;
    clear(block);
    const SD_UINT32 status = SDSetFWDefaults(handle, &block);
    failed(status, "FAILED: %x \n");
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
    failed(status, "SDResetHBA call failed!\n");
    return status;
}

SD_UINT32 resetCounters(SDMGT_HANDLE handle, jint portNum)
{
    const SD_UINT32 status = SDResetStatisticsiSCSI(handle, static_cast<SD_UINT16>(portNum));
    failed(status, "SDResetiSCSICounters call failed! %x \n");
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
    failed(status, "JNI: SDDiagPing() failed! %x\n");
    return status;
}
