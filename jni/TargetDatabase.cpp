#include "TargetDatabase.h"

#include <cstdio>

#include "JavaAccess.h"
#include "NodeInfo.h"
#include "Records.h"
#include "ScsiPassThrough.h"
#include "com_varden_tavo_iscsi_jni_ApiWrapper.h"
#include "vdsdm/DeviceDatabaseEntry.h"
#include "vdsdm/Operations.h"
#include "vdsdm/Status.h"

// The target ID of the HBA object's DevDBEntry with this instance number.
static bool readTargetIdOf(JavaObject &hba, jint instance, SD_UINT32 &target)
{
    constexpr const char *signature = "(I)Lcom/varden/tavo/iscsi/model/DevDBEntry;";
    jmethodID getEntry = lookUp(hba, "getDeviceDataBaseEntry", signature, twoBlanks);
    if (getEntry == nullptr) {
        return false;
    }
    hba.status = withLocal(hba.env, hba.env->CallObjectMethod(hba.object, getEntry, instance), [&](jobject object) {
        if (object == nullptr) {
            return nullObject("NULL javaDDBEntryObject!\n");
        }
        return withClassOf(hba.env, object,
                           [&](JavaObject &entry) { return getInt(entry, "getTargetID", target, named); });
    });
    return hba.status == 0;
}

// Chooses the target of the portal query: the instance number itself when Java holds no targets, else the target ID of
// the entry that Java holds under that number.
static bool chooseTarget(JavaObject &hba, JavaObject &jTarget, SD_UINT32 &target)
{
    SD_UINT32 numberDiskTargets = 0;
    if (!getInt(hba, "getNumberDiskTargets", numberDiskTargets, named)) {
        return false;
    }
    if (numberDiskTargets > DDB_SLOTS) {
        std::printf("Too many targets from Java!\n");
        hba.status = ERR_INVALID_PARAMETER;
        return false;
    }
    jint instance = 0;
    if (!getInt(jTarget, "getInstance", instance, named)) {
        hba.status = jTarget.status;
        return false;
    }
    target = static_cast<SD_UINT32>(instance);
    return numberDiskTargets == 0 || readTargetIdOf(hba, instance, target);
}

static bool setDiscPortal(JavaObject &target, const DISCISCSIPORTAL &portal)
{
    const bool converted = setInt(target, "setNodeCount", portal.NodeCount, namedObj)
                           && setBytesText(target, "setHostName", portal.hostName, namedObj)
                           && setInt(target, "setTCPPortNumber", portal.portNumber, namedObj);
    if (converted) {
        setIPAddr(target.env, target.object, portal.IPAddr, ADDRESS_OWN);
    }
    return converted;
}

static bool setDiscNode(JavaObject &target, const DISCISCSINODE &node)
{
    return setInt(target, "setSessionID", node.SessionID, namedObj)
           && setInt(target, "setConnectionID", node.ConnectionID, namedObj)
           && setInt(target, "setPortalGroup", node.PortalGroupID, namedObj)
           && withFetched(target, "getNodeInfo", GIVES_NODE_INFO, twoBlanks, "NULL javaNodeInfoObject!5\n",
                          [&](jobject nodeInfo) { setNodeInfo(target.env, nodeInfo, node.NodeInfo); });
}

static SD_UINT32 setTargetInfo(JNIEnv *env, jobject javaTargetInfoObject, const TARGETINFORMATION &address)
{
    return withClassOf(env, javaTargetInfoObject, [&](JavaObject &info) {
        return setInt(info, "setBus", address.BusNumber, namedObj) //
               && setInt(info, "setLUN", address.LUN, namedObj)
               && setInt(info, "setTargetID", address.TargetID, namedObj);
    });
}

// The second half of the target query: the node is named by the target ID in the target object's TargetInfo, which then
// receives the address that the node reports.
static SD_UINT32 readNode(JavaObject &target, SDMGT_HANDLE handle, jobject javaTargetInfoObject)
{
    TARGETINFORMATION address;
    clear(address);
    SD_UINT32 status = getTargetInfo(target.env, javaTargetInfoObject, address);
    if (failed(status, "getTargetInfo failed!\n")) {
        return status;
    }
    DISCISCSINODE node;
    clear(node);
    status = SDGetDiscNodePropertyiSCSI(handle, 0, address.TargetID, 0, &node);
    if (failed(status, "SDGetDiscNodePropertyiSCSI returned %x\n")) {
        return status;
    }
    if (!setDiscNode(target, node)) {
        return target.status;
    }
    return setTargetInfo(target.env, javaTargetInfoObject, node.TargetInfo);
}

SD_UINT32 readTargetData(JNIEnv *env, SDMGT_HANDLE handle, jobject jHba, jobject jTarget)
{
    return withClassOf(env, jTarget, [&](JavaObject &target) {
        DISCISCSIPORTAL portal;
        clear(portal);
        SD_UINT32 chosen = 0;
        target.status = withClassOf(env, jHba, [&](JavaObject &hba) { return chooseTarget(hba, target, chosen); });
        if (target.status != 0) {
            return;
        }
        target.status = SDGetDiscPortalPropertyiSCSI(handle, 0, chosen, 0, &portal);
        if (failed(target.status, "SDGetDiscPortalPropertyiSCSI returned %x\n") || !setDiscPortal(target, portal)) {
            return;
        }
        withFetched(target, "getTargetInfo", GIVES_TARGET_INFO, twoBlanks, "NULL javaTargetInfoObject!\n",
                    [&](jobject targetInfo) { return readNode(target, handle, targetInfo); });
    });
}

SD_UINT32 readLunData(JNIEnv *env, jobject self, jint dev, jobject jLun)
{
    return withClassOf(env, jLun, [&](JavaObject &lun) {
        const auto readUnit = [&](jobject targetInfo, jobject inquiryInfo) {
            auto status = static_cast<SD_UINT32>(
                Java_com_varden_tavo_iscsi_jni_ApiWrapper_getScsiInquiryData(env, self, dev, targetInfo, inquiryInfo));
            if (failed(status, "getScsiInquiryData failed! %x\n")) {
                return status;
            }
            status = static_cast<SD_UINT32>(
                Java_com_varden_tavo_iscsi_jni_ApiWrapper_getScsiReadCapacityData(env, self, dev, jLun));
            failed(status, "getScsiReadCapacityData failed! %x\n");
            return status;
        };
        withFetched(lun, "getTargetInfo", GIVES_TARGET_INFO, twoBlanks, "NULL javaTargetInfoObject!\n",
                    [&](jobject targetInfo) {
                        withFetched(lun, "getSCSIInqInfo", GIVES_SCSI_INQ_INFO, twoBlanks,
                                    "NULL javaSCSIInqInfoObject!\n",
                                    [&](jobject inquiryInfo) { return readUnit(targetInfo, inquiryInfo); });
                        return lun.status;
                    });
    });
}
