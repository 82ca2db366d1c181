#include "IsnsDiscovery.h"

#include "JavaAccess.h"
#include "NodeInfo.h"
#include "RecordMemory.h"
#include "vdsdm/Operations.h"
#include "vdsdm/Status.h"

#include <cstdio>
#include <span>

SD_UINT32 SDMToJava_iSNSDiscoveryConfig(JNIEnv *env, jobject jiSNSDiscoveryConfig, const SDM_ISNS_CONFIG &config)
{
    if (jiSNSDiscoveryConfig == nullptr) {
        std::printf("NULL iSNSDiscoveryConfig!\n");
        return ERR_INVALID_PARAMETER;
    }
    JavaObject object = objectOf(env, jiSNSDiscoveryConfig);
    setInt(object, "setEnableiSNSDiscoveryFlag", config.performiSNSDiscovery, namedObj);
    setInt(object, "setAutomaticDiscoveryFlag", config.AutomaticiSNSDiscovery, namedObj);
    setShortsAndInt(object, "setServerIPAddress", config.ipAddr.IPAddress, config.ipAddr.Type, named);
    setString(object, "setServerHostname", " ", "GetMethodID call failed (setServerHostname)!\n");
    return object.status;
}

SD_UINT32 JavaToSDM_iSNSDiscoveryConfig(JNIEnv *env, jobject jiSNSDiscoveryConfig, SDM_ISNS_CONFIG &config)
{
    if (jiSNSDiscoveryConfig == nullptr) {
        return ERR_INVALID_PARAMETER;
    }
    JavaObject object = objectOf(env, jiSNSDiscoveryConfig, "Find iSNSDiscoveryConfig class call failed!\n");
    getFlag(object, "getEnableiSNSDiscoveryFlag", config.performiSNSDiscovery, namedObj);
    getFlag(object, "getAutomaticDiscoveryFlag", config.AutomaticiSNSDiscovery, silent);
    getAddress(object, "getServerIPAddress", "GetMethodID  getIPAddr call failed!\n", config.ipAddr);
    getText(object, "getHBAiSCSIName", config.initiatorName, anonymous);
    return object.status;
}

// The address is the one field whose setter is looked up before its array is made.
static void setTargetAddress(JavaObject &target, const ISCSIIPADDR &address)
{
    constexpr Message missing = "GetMethodID setIPAddressJNI(short[],int) call failed!\n";
    jmethodID setter = lookUp(target, "setIPAddress", "([SI)V", missing);
    if (setter == nullptr) {
        return;
    }
    const auto array = newShorts(target, "setIPAddress", address.IPAddress, [] {});
    if (target.status == 0) {
        target.env->CallVoidMethod(target.object, setter, array.get(), static_cast<jint>(address.Type));
    }
}

// Tells whether an input is null; if so prints its line.
static bool isNull(const void *input, const char *line)
{
    if (input == nullptr) {
        std::printf("%s", line);
    }
    return input == nullptr;
}

SD_UINT32 SDMToJava_iSNSDiscoveredTargets(JNIEnv *env, jclass hbacls, jclass iSNSTargetcls, jobject jHBAObj,
                                          const SDM_ISNS_DISCOVERED_TARGET *discoveredTargetTable)
{
    if (isNull(hbacls, "NULL java HBA Class! (hbacls)\n")
        || isNull(iSNSTargetcls, "NULL java iSNSTarget Class! (iSNSTargetcls)\n")
        || isNull(jHBAObj, "NULL java hba Object! (jHBAObj)\n")
        || isNull(discoveredTargetTable, "NULL Input Buffer! (discoveredTargetTable)\n")) {
        return ERR_INVALID_PARAMETER;
    }
    const SDM_ISNS_DISCOVERED_TARGET &found = *discoveredTargetTable;
    const SDM_DISCOVERED_TARGET_PORTAL &portal = found.targetPortal[0];
    const auto made = newObject(env, iSNSTargetcls, "New Device Object failed for iSNSEntry!\n");
    JavaObject target = objectWith(env, made.get(), iSNSTargetcls);
    setInt(target, "setPort", portal.port, namedObj);
    setText(target, "setiSCSIName", found.targetName, "GetMethodID call failed (setiSCSIName)!\n", noString);
    setText(target, "setiSCSIAlias", found.targetAlias, silent, noString);
    setTargetAddress(target, portal.ipAddr);
    if (target.status != 0) {
        return target.status;
    }
    JavaObject hba = objectWith(env, jHBAObj, hbacls);
    setObject(hba, "addiSNSTarget", TAKES_ISNS_TARGET, made.get(), named);
    return hba.status;
}

SD_UINT32 readiSNSDiscoveryConfig(JNIEnv *env, SDMGT_HANDLE handle, jobject jiSNSDiscoveryConfig)
{
    SDM_ISNS_CONFIG config;
    clear(config);
    const SD_UINT32 status = SDGet_iSNSDiscoveryConfig(handle, &config);
    if (failed(status, "\nSDGet_iSNSDiscoveryConfig call failed! return Code:%X\n")) {
        return status;
    }
    return SDMToJava_iSNSDiscoveryConfig(env, jiSNSDiscoveryConfig, config);
}

SD_UINT32 writeiSNSDiscoveryConfig(JNIEnv *env, SDMGT_HANDLE handle, jobject jiSNSDiscoveryConfig)
{
    SDM_ISNS_CONFIG config;
    clear(config);
    const SD_UINT32 converted = JavaToSDM_iSNSDiscoveryConfig(env, jiSNSDiscoveryConfig, config);
    if (failed(converted, "SDSet_iSNSDiscoveryConfig call failed! return Code:%X\n")) {
        return converted;
    }
    const SD_UINT32 status = SDSet_iSNSDiscoveryConfig(handle, config);
    report(status, "\nSDSet_iSNSDiscoveryConfig call failed! return Code:%X\n");
    return status;
}

// Empties the HBA object's list and adds the targets.
static SD_UINT32 replaceTargets(JNIEnv *env, jobject jHBAobj, std::span<const SDM_ISNS_DISCOVERED_TARGET> targets)
{
    constexpr const char *notAdded =
        "Failed Adding iSNS Targets to HBA, (SDMToJava_iSNSDiscoveredTargets) call failed!\n";
    JavaObject hba = objectOf(env, jHBAobj);
    callVoid(hba, "cleariSNSTargetList", named);
    if (hba.status != 0) {
        return hba.status;
    }
    const auto targetClass = findClass(env, ISNS_TARGET_CLASS, "Find class call failed for iSNSTarget!\n");
    if (targetClass == nullptr) {
        return ERR_JNI_CLASS;
    }
    for (const SDM_ISNS_DISCOVERED_TARGET &target : targets) {
        const SD_UINT32 status = SDMToJava_iSNSDiscoveredTargets(env, hba.type, targetClass.get(), jHBAobj, &target);
        if (failed(status, notAdded)) {
            return status;
        }
    }
    return 0;
}

// Hands over what a call brought, unless it failed.
static SD_UINT32 finish(JNIEnv *env, jobject jHBAobj, SD_UINT32 status, SD_UINT32 count,
                        std::span<const SDM_ISNS_DISCOVERED_TARGET> buffer)
{
    if (failed(status, "SDGetAlliSNSDiscoveredTargets call failed return Code:%X\n")) {
        return status;
    }
    const SD_UINT32 held = fitting(count, static_cast<SD_UINT32>(buffer.size()), "iSNS targets");
    return replaceTargets(env, jHBAobj, buffer.first(held));
}

SD_UINT32 readiSNSTargets(JNIEnv *env, SDMGT_HANDLE handle, jobject jHBAobj)
{
    SDM_ISNS_DISCOVERED_TARGET small[ISNS_TARGETS_SMALL];
    clear(small);
    SD_UINT32 count = 0;
    SD_UINT32 status = SDGetAlliSNSDiscoveredTargets(handle, &count, small, sizeof small);
    if (status == ERR_NOT_SUPPORTED || status == ERR_ISNS_NOT_SUPPORTED) {
        report(status, "SDGetAlliSNSDiscoveredTargets call Not Supported for this OS\n");
        return status;
    }
    if (status != ERR_BUFFER_TOO_SMALL && count <= ISNS_TARGETS_SMALL) {
        return finish(env, jHBAobj, status, count, small);
    }
    // The list does not fit: once more with room for 512. There is no third attempt.
    const auto large = newRecords<SDM_ISNS_DISCOVERED_TARGET>(
        ISNS_TARGETS_LARGE, "Unable to Allocate Full Size Buffer, memory not available\n");
    if (large == nullptr) {
        return ERR_NO_MEMORY;
    }
    count = 0;
    status = SDGetAlliSNSDiscoveredTargets(handle, &count, large.get(),
                                           ISNS_TARGETS_LARGE * sizeof(SDM_ISNS_DISCOVERED_TARGET));
    return finish(env, jHBAobj, status, count, {large.get(), ISNS_TARGETS_LARGE});
}
