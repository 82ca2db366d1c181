#include "IsnsDiscovery.h"

#include <algorithm>
#include <cstdio>

#include "JavaAccess.h"
#include "NodeInfo.h"
#include "Records.h"
#include "vdsdm/Operations.h"
#include "vdsdm/Status.h"

static constexpr const char *NO_STRING = "NULL string for %s!\n";

SD_UINT32 SDMToJava_iSNSDiscoveryConfig(JNIEnv *env, jobject jiSNSDiscoveryConfig, const SDM_ISNS_CONFIG &config)
{
    if (jiSNSDiscoveryConfig == nullptr) {
        nullObject("NULL iSNSDiscoveryConfig!\n");
        return ERR_INVALID_PARAMETER;
    }
    return withClassOf(env, jiSNSDiscoveryConfig, [&](JavaObject &object) {
        return setInt(object, "setEnableiSNSDiscoveryFlag", config.performiSNSDiscovery, namedObj)
               && setInt(object, "setAutomaticDiscoveryFlag", config.AutomaticiSNSDiscovery, namedObj)
               && setShortsAndInt(object, "setServerIPAddress", config.ipAddr.IPAddress, config.ipAddr.Type, named)
               && setString(object, "setServerHostname", " ", "GetMethodID call failed (setServerHostname)!\n");
    });
}

SD_UINT32 JavaToSDM_iSNSDiscoveryConfig(JNIEnv *env, jobject jiSNSDiscoveryConfig, SDM_ISNS_CONFIG &config)
{
    if (jiSNSDiscoveryConfig == nullptr) {
        return ERR_INVALID_PARAMETER;
    }
    const auto convert = [&](JavaObject &object) {
        return getFlag(object, "getEnableiSNSDiscoveryFlag", config.performiSNSDiscovery, namedObj)
               && getFlag(object, "getAutomaticDiscoveryFlag", config.AutomaticiSNSDiscovery, silent)
               && withFetched(object, "getServerIPAddress", GIVES_IP_ADDR, "GetMethodID  getIPAddr call failed!\n",
                              "NULL javaIPObject!\n", [&](jobject address) { getIPAddr(env, address, config.ipAddr); })
               && getText(object, "getHBAiSCSIName", config.initiatorName, anonymous);
    };
    return withClassOf(env, jiSNSDiscoveryConfig, convert, "Find iSNSDiscoveryConfig class call failed!\n");
}

// The address is the one field whose setter is looked up before its array is made.
static bool setTargetAddress(JavaObject &target, const ISCSIIPADDR &address)
{
    JNIEnv *env = target.env;
    jmethodID method =
        lookUp(target, "setIPAddress", "([SI)V", "GetMethodID setIPAddressJNI(short[],int) call failed!\n");
    if (method == nullptr) {
        return false;
    }
    target.status =
        withLocal(env, newShorts(env, address.IPAddress, sizeof address.IPAddress, [] {}), [&](jshortArray array) {
            if (array == nullptr) {
                return nullObject("NULL array for setIPAddress!\n");
            }
            env->CallVoidMethod(target.object, method, array, static_cast<jint>(address.Type));
            return SD_UINT32{0};
        });
    return target.status == 0;
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
    return withNew(env, iSNSTargetcls, "New Device Object failed for iSNSEntry!\n", [&](JavaObject &target) {
        JavaObject hba{env, jHBAObj, hbacls, 0};
        const bool filled =
            setInt(target, "setPort", portal.port, namedObj)
            && setText(target, "setiSCSIName", found.targetName, "GetMethodID call failed (setiSCSIName)!\n", NO_STRING)
            && setText(target, "setiSCSIAlias", found.targetAlias, silent, NO_STRING)
            && setTargetAddress(target, portal.ipAddr);
        if (filled && !setObject(hba, "addiSNSTarget", TAKES_ISNS_TARGET, target.object, named)) {
            target.status = hba.status;
        }
    });
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
    failed(status, "\nSDSet_iSNSDiscoveryConfig call failed! return Code:%X\n");
    return status;
}

// Empties the HBA object's list and adds the targets.
static SD_UINT32 replaceTargets(JNIEnv *env, jobject jHBAobj, const SDM_ISNS_DISCOVERED_TARGET *targets,
                                SD_UINT32 count)
{
    constexpr const char *noClass = "Find class call failed for iSNSTarget!\n";
    constexpr const char *notAdded =
        "Failed Adding iSNS Targets to HBA, (SDMToJava_iSNSDiscoveredTargets) call failed!\n";
    return withClassOf(env, jHBAobj, [&](JavaObject &hba) {
        if (!callVoid(hba, "cleariSNSTargetList", named)) {
            return;
        }
        hba.status = withClassNamed(env, ISNS_TARGET_CLASS, noClass, [&](jclass targetClass) {
            SD_UINT32 status = 0;
            for (SD_UINT32 i = 0; i < count && status == 0; i++) {
                status = SDMToJava_iSNSDiscoveredTargets(env, hba.type, targetClass, jHBAobj, &targets[i]);
                failed(status, notAdded);
            }
            return status;
        });
    });
}

// Hands over what a call brought, unless it failed. Of a count above the buffer's capacity only what the buffer holds
// is handed over.
static SD_UINT32 finish(JNIEnv *env, jobject jHBAobj, SD_UINT32 status, const SDM_ISNS_DISCOVERED_TARGET *targets,
                        SD_UINT32 count, SD_UINT32 capacity)
{
    if (failed(status, "SDGetAlliSNSDiscoveredTargets call failed return Code:%X\n")) {
        return status;
    }
    return replaceTargets(env, jHBAobj, targets, std::min(count, capacity));
}

SD_UINT32 readiSNSTargets(JNIEnv *env, SDMGT_HANDLE handle, jobject jHBAobj)
{
    SDM_ISNS_DISCOVERED_TARGET small[ISNS_TARGETS_SMALL];
    clear(small);
    SD_UINT32 count = 0;
    const SD_UINT32 status = SDGetAlliSNSDiscoveredTargets(handle, &count, small, sizeof small);
    if (status == ERR_NOT_SUPPORTED || status == ERR_ISNS_NOT_SUPPORTED) {
        failed(status, "SDGetAlliSNSDiscoveredTargets call Not Supported for this OS\n");
        return status;
    }
    if (status != ERR_BUFFER_TOO_SMALL && count <= ISNS_TARGETS_SMALL) {
        return finish(env, jHBAobj, status, small, count, ISNS_TARGETS_SMALL);
    }
    // The list does not fit: once more with room for 512. There is no third attempt.
    constexpr const char *noMemory = "Unable to Allocate Full Size Buffer, memory not available\n";
    return withRecords<SDM_ISNS_DISCOVERED_TARGET>(ISNS_TARGETS_LARGE, noMemory, [&](auto *large) {
        count = 0;
        const SD_UINT32 second =
            SDGetAlliSNSDiscoveredTargets(handle, &count, large, ISNS_TARGETS_LARGE * sizeof *large);
        return finish(env, jHBAobj, second, large, count, ISNS_TARGETS_LARGE);
    });
}
