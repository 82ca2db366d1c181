#include "TargetDatabase.h"

#include "Handles.h"
#include "JavaAccess.h"
#include "NodeInfo.h"
#include "RecordMemory.h"
#include "ScsiPassThrough.h"
#include "vdsdm/DeviceDatabaseEntry.h"
#include "vdsdm/Operations.h"
#include "vdsdm/Status.h"

#include <cstdio>

// Chooses the target of the portal query: the instance number itself when Java holds no targets, else the target ID of
// the entry that Java holds under that number.
static SD_UINT32 chooseTarget(JNIEnv *env, jobject jHba, JavaObject &target, SD_UINT32 &chosen)
{
    JavaObject hba = objectOf(env, jHba);
    SD_UINT32 numberDiskTargets = 0;
    getInt(hba, "getNumberDiskTargets", numberDiskTargets, named);
    if (hba.status != 0) {
        return hba.status;
    }
    if (numberDiskTargets > DDB_SLOTS) {
        std::printf("Too many targets from Java!\n");
        return ERR_INVALID_PARAMETER;
    }
    jint instance = 0;
    getInt(target, "getInstance", instance, named);
    chosen = static_cast<SD_UINT32>(instance);
    if (target.status != 0 || numberDiskTargets == 0) {
        return target.status;
    }
    const auto held =
        fetch(hba, "getDeviceDataBaseEntry", GIVES_DEV_DB_ENTRY_AT, twoBlanks, "NULL javaDDBEntryObject!\n", instance);
    if (held == nullptr) {
        return hba.status;
    }
    JavaObject entry = objectOf(env, held.get());
    getInt(entry, "getTargetID", chosen, named);
    return entry.status;
}

static void setDiscPortal(JavaObject &target, const DISCISCSIPORTAL &portal)
{
    setInt(target, "setNodeCount", portal.NodeCount, namedObj);
    setBytesText(target, "setHostName", portal.hostName, namedObj);
    setInt(target, "setTCPPortNumber", portal.portNumber, namedObj);
    if (target.status == 0) {
        setIPAddr(target.env, target.object, portal.IPAddr, ADDRESS_OWN);
    }
}

static void setDiscNode(JavaObject &target, const DISCISCSINODE &node)
{
    setInt(target, "setSessionID", node.SessionID, namedObj);
    setInt(target, "setConnectionID", node.ConnectionID, namedObj);
    setInt(target, "setPortalGroup", node.PortalGroupID, namedObj);
    if (const auto nodeInfo = fetch(target, "getNodeInfo", GIVES_NODE_INFO, twoBlanks, "NULL javaNodeInfoObject!5\n")) {
        setNodeInfo(target.env, nodeInfo.get(), node.NodeInfo);
    }
}

static SD_UINT32 setTargetInfo(JNIEnv *env, jobject javaTargetInfoObject, const TARGETINFORMATION &address)
{
    JavaObject info = objectOf(env, javaTargetInfoObject);
    setInt(info, "setBus", address.BusNumber, namedObj);
    setInt(info, "setLUN", address.LUN, namedObj);
    setInt(info, "setTargetID", address.TargetID, namedObj);
    return info.status;
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
    setDiscNode(target, node);
    return target.status != 0 ? target.status : setTargetInfo(target.env, javaTargetInfoObject, node.TargetInfo);
}

SD_UINT32 readTargetData(JNIEnv *env, SDMGT_HANDLE handle, jobject jHba, jobject jTarget)
{
    JavaObject target = objectOf(env, jTarget);
    if (target.status != 0) {
        return target.status;
    }
    SD_UINT32 chosen = 0;
    SD_UINT32 status = chooseTarget(env, jHba, target, chosen);
    if (status != 0) {
        return status;
    }
    DISCISCSIPORTAL portal;
    clear(portal);
    status = SDGetDiscPortalPropertyiSCSI(handle, 0, chosen, 0, &portal);
    if (failed(status, "SDGetDiscPortalPropertyiSCSI returned %x\n")) {
        return status;
    }
    setDiscPortal(target, portal);
    const auto targetInfo =
        fetch(target, "getTargetInfo", GIVES_TARGET_INFO, twoBlanks, "NULL javaTargetInfoObject!\n");
    return target.status != 0 ? target.status : readNode(target, handle, targetInfo.get());
}

SD_UINT32 readLunData(JNIEnv *env, jint dev, jobject jLun)
{
    JavaObject lun = objectOf(env, jLun);
    const auto targetInfo = fetch(lun, "getTargetInfo", GIVES_TARGET_INFO, twoBlanks, "NULL javaTargetInfoObject!\n");
    const auto inquiryInfo =
        fetch(lun, "getSCSIInqInfo", GIVES_SCSI_INQ_INFO, twoBlanks, "NULL javaSCSIInqInfoObject!\n");
    if (lun.status != 0) {
        return lun.status;
    }
    SD_UINT32 status = ERR_INVALID_PARAMETER;
    if (isAdapterIndex(dev)) {
        status = sendInquiry(env, hbaHandle(dev), targetInfo.get(), inquiryInfo.get());
    }
    if (failed(status, "getScsiInquiryData failed! %x\n")) {
        return status;
    }
    status = sendReadCapacity(env, hbaHandle(dev), jLun);
    report(status, "getScsiReadCapacityData failed! %x\n");
    return status;
}
