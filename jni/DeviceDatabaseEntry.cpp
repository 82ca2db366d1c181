#include "DeviceDatabaseEntry.h"

#include "ApiWrapper.h"
#include "DeviceParameters.h"
#include "JavaAccess.h"
#include "NodeInfo.h"
#include "Records.h"
#include "com_varden_tavo_iscsi_jni_ApiWrapper.h"
#include "vdsdm/Operations.h"
#include "vdsdm/Status.h"

// The longest array that is written.
static constexpr jsize MOST_ENTRIES_WRITTEN = 511;

SD_UINT32 setiSCSIDevDDBEntry(JNIEnv *env, jobject javaDevDBEntryObject, const DEVICEENTRYISCSI &pDDB, SD_UINT32 index,
                              bool paramsOnly)
{
    return withClassNamed(env, DEV_DB_ENTRY_CLASS, "Find Device class call failed!\n", [&](jclass type) {
        JavaObject entry{env, javaDevDBEntryObject, type, 0};
        const auto setTarget = [&] {
            return setInt(entry, "setTargetID", pDDB.TargetID, namedObj)
                   && setInt(entry, "setState", pDDB.DeviceState, namedObj);
        };
        static_cast<void>(setShorts(entry, "setInitiatorSessionID", pDDB.InitiatorSessID, named) //
                          && (paramsOnly || setTarget())                                         //
                          && setInt(entry, "setIndex", index, namedObj)
                          && setInt(entry, "setMaxTxDataSegmentLen", pDDB.MaxTxDataSegmentLen, namedObj)
                          && setInt(entry, "setDDBLink", pDDB.DDBLink, namedObj)
                          && setInt(entry, "setChapIndex", pDDB.CHAPTableIndex, namedObj)
                          && setByte(entry, "setOptions", pDDB.Options, namedObj)
                          && setByte(entry, "setControl", pDDB.Control, namedObj)
                          && setInt(entry, "setExeCount", pDDB.exeCount, namedObj)
                          && setInt(entry, "setReservedFlags", pDDB.ReservedFlags, namedObj)
                          && setInt(entry, "setTargetSessionID", pDDB.TargetSessID, namedObj)
                          && setInt(entry, "setTargetPortalGroupID", pDDB.TargetPortalGroupID, namedObj)
                          && withFetched(entry, "getNodeInfo", GIVES_NODE_INFO, twoBlanks,
                                         "NULL javaNodeInfoObject!1\n",
                                         [&](jobject nodeInfo) { setNodeInfo(env, nodeInfo, pDDB.EntryInfo); })
                          && withFetched(entry, "getDeviceEntry", GIVES_DEV_ENTRY,
                                         "GetMethodID  DevEntry call failed!\n", "NULL javaDevEntryObject!\n",
                                         [&](jobject devEntry) { setiSCSIDevEntry(env, devEntry, pDDB.DeviceInfo); }));
        return entry.status;
    });
}

// Fills an entry from a DevDBEntry object; Reserved0, NextValid and the parameters' Reserved stay as they were.
static SD_UINT32 getiSCSIDevDDBEntry(JNIEnv *env, jobject jDDB, DEVICEENTRYISCSI &ddb)
{
    return withClassOf(env, jDDB, [&](JavaObject &entry) {
        return withFetched(entry, "getNodeInfo", GIVES_NODE_INFO, twoBlanks, "NULL javaNodeInfoObject!6\n",
                           [&](jobject nodeInfo) { getNodeInfo(env, nodeInfo, ddb.EntryInfo); })
               && getInt(entry, "getState", ddb.DeviceState, named) //
               && getInt(entry, "getTargetID", ddb.TargetID, named)
               && getByte(entry, "getOptions", ddb.Options, named)  //
               && getInt(entry, "getExeCount", ddb.exeCount, named) //
               && getByte(entry, "getControl", ddb.Control, named)
               && getInt(entry, "getTargetSessionID", ddb.TargetSessID, named)
               && getInt(entry, "getTargetPortalGroupID", ddb.TargetPortalGroupID, named)
               && getInt(entry, "getReservedFlags", ddb.ReservedFlags, named)
               && getShorts(entry, "getInitiatorSessionID", ddb.InitiatorSessID, named)
               && getInt(entry, "getMaxTxDataSegmentLen", ddb.MaxTxDataSegmentLen, named)
               && getInt(entry, "getDDBLink", ddb.DDBLink, named)
               && getInt(entry, "getChapIndex", ddb.CHAPTableIndex, named)
               && withFetched(entry, "getDeviceEntry", GIVES_DEV_ENTRY, twoBlanks, "NULL javaDevEntryObject!\n",
                              [&](jobject devEntry) { getiSCSIDevEntry(env, devEntry, ddb.DeviceInfo); });
    });
}

SD_UINT32 readEntryNum(SDMGT_HANDLE handle)
{
    SD_UINT32 count = 0;
    failed(SDGetDDBEntryNum(handle, &count), "SDGetDDBEntryNum call failed! 1\n");
    return count;
}

jobject readDefaultDDB(JNIEnv *env, SDMGT_HANDLE handle)
{
    DEVICEENTRYISCSI ddb;
    clear(ddb);
    if (failed(SDGetDefaultDDBEntry(handle, &ddb), "SDGetDefaultDDBEntry call failed! %x\n")) {
        return nullptr;
    }
    jobject made = nullptr;
    withClassNamed(env, DEV_DB_ENTRY_CLASS, "Find Device class call failed!\n", [&](jclass type) {
        jobject entry = newObject(env, type);
        if (entry == nullptr) {
            return nullObject("New Device Object failed!\n");
        }
        const SD_UINT32 status = setiSCSIDevDDBEntry(env, entry, ddb, 0, false);
        if (failed(status, "setiSCSIDevDDBEntry() failed!\n")) {
            env->DeleteLocalRef(entry);
        } else {
            made = entry;
        }
        return status;
    });
    return made;
}

SD_UINT32 readInitialDDB(JNIEnv *env, SDMGT_HANDLE handle, jobject JDDB, jint jIndex)
{
    const auto index = static_cast<SD_UINT32>(jIndex);
    DEVICEENTRYISCSI ddb;
    clear(ddb);
    const SD_UINT32 status = SDGetInitialDDBEntry(handle, &ddb, index);
    if (failed(status, "SDGetInitialDDBEntry FAILED!\n")) {
        return status;
    }
    return setiSCSIDevDDBEntry(env, JDDB, ddb, index, true);
}

SD_UINT32 writeDDB(JNIEnv *env, SDMGT_HANDLE handle, jobject jDDB)
{
    DEVICEENTRYISCSI ddb;
    clear(ddb);
    const SD_UINT32 converted = getiSCSIDevDDBEntry(env, jDDB, ddb);
    if (converted != 0) {
        return converted;
    }
    const SD_UINT32 status = SDSetDDBEntry(handle, &ddb, ddb.TargetID);
    failed(status, "SDSetDDBEntry call failed! 3\n");
    return status;
}

// Writes one element by way of the native method. A failed element does not end the run, so its error must not stay.
static SD_UINT32 writeElement(JNIEnv *env, jobject self, jint dev, jobject element, jclass type)
{
    JavaObject entry{env, element, type, 0};
    jint targetId = 0;
    if (!getInt(entry, "getTargetID", targetId, named)) {
        return entry.status;
    }
    if (Java_com_varden_tavo_iscsi_jni_ApiWrapper_setDDBData(env, self, dev, element, targetId) != 0) {
        forgetOwnError(env);
    }
    return 0;
}

SD_UINT32 writeDDBs(JNIEnv *env, jobject self, jint dev, jobjectArray jArray)
{
    constexpr const char *nullElement = "NULL javaDDBObject!\n";
    const jsize length = env->GetArrayLength(jArray);
    if (length == 0 || length > MOST_ENTRIES_WRITTEN) {
        return 0;
    }
    return withLocal(env, env->GetObjectArrayElement(jArray, 0), [&](jobject first) {
        if (first == nullptr) {
            return nullObject(nullElement);
        }
        return withClassOf(env, first, [&](JavaObject &entries) {
            if (!isAdapterIndex(dev)) {
                entries.status = ERR_INVALID_PARAMETER;
            }
            for (jsize i = 0; i < length && entries.status == 0; i++) {
                entries.status = withLocal(env, env->GetObjectArrayElement(jArray, i), [&](jobject element) {
                    return element == nullptr ? nullObject(nullElement)
                                              : writeElement(env, self, dev, element, entries.type);
                });
            }
        });
    });
}

SD_UINT32 sendLogout(SDMGT_HANDLE handle, jint index, jint options, jint newIndex)
{
    LOGOUTISCSI logout;
    clear(logout);
    logout.TargetID = static_cast<SD_UINT16>(index);
    logout.Options = static_cast<SD_UINT16>(options);
    logout.NewTargetID = static_cast<SD_UINT16>(newIndex);
    return SDSendiSCSILogout(handle, &logout);
}
