#include "DeviceDatabaseEntry.h"

#include "DeviceParameters.h"
#include "Handles.h"
#include "JavaAccess.h"
#include "NodeInfo.h"
#include "RecordMemory.h"
#include "vdsdm/Operations.h"
#include "vdsdm/Status.h"

static constexpr const char *NO_DEVICE_CLASS = "Find Device class call failed!\n";

// The longest array that is written.
static constexpr jsize MOST_ENTRIES_WRITTEN = 511;

SD_UINT32 setiSCSIDevDDBEntry(JNIEnv *env, jobject javaDevDBEntryObject, const DEVICEENTRYISCSI &pDDB, SD_UINT32 index,
                              bool paramsOnly)
{
    JavaObject entry = objectAs(env, javaDevDBEntryObject, DEV_DB_ENTRY_CLASS, NO_DEVICE_CLASS);
    setShorts(entry, "setInitiatorSessionID", pDDB.InitiatorSessID, named);
    if (!paramsOnly) {
        setInt(entry, "setTargetID", pDDB.TargetID, namedObj);
        setInt(entry, "setState", pDDB.DeviceState, namedObj);
    }
    setInt(entry, "setIndex", index, namedObj);
    setInt(entry, "setMaxTxDataSegmentLen", pDDB.MaxTxDataSegmentLen, namedObj);
    setInt(entry, "setDDBLink", pDDB.DDBLink, namedObj);
    setInt(entry, "setChapIndex", pDDB.CHAPTableIndex, namedObj);
    setByte(entry, "setOptions", pDDB.Options, namedObj);
    setByte(entry, "setControl", pDDB.Control, namedObj);
    setInt(entry, "setExeCount", pDDB.exeCount, namedObj);
    setInt(entry, "setReservedFlags", pDDB.ReservedFlags, namedObj);
    setInt(entry, "setTargetSessionID", pDDB.TargetSessID, namedObj);
    setInt(entry, "setTargetPortalGroupID", pDDB.TargetPortalGroupID, namedObj);
    if (const auto nodeInfo = fetch(entry, "getNodeInfo", GIVES_NODE_INFO, twoBlanks, "NULL javaNodeInfoObject!1\n")) {
        setNodeInfo(env, nodeInfo.get(), pDDB.EntryInfo);
    }
    if (const auto devEntry = fetch(entry, "getDeviceEntry", GIVES_DEV_ENTRY, "GetMethodID  DevEntry call failed!\n",
                                    "NULL javaDevEntryObject!\n")) {
        setiSCSIDevEntry(env, devEntry.get(), pDDB.DeviceInfo);
    }
    return entry.status;
}

// Fills an entry from a DevDBEntry object; Reserved0, NextValid and the parameters' Reserved stay as they were.
static SD_UINT32 getiSCSIDevDDBEntry(JNIEnv *env, jobject jDDB, DEVICEENTRYISCSI &ddb)
{
    JavaObject entry = objectOf(env, jDDB);
    if (const auto nodeInfo = fetch(entry, "getNodeInfo", GIVES_NODE_INFO, twoBlanks, "NULL javaNodeInfoObject!6\n")) {
        getNodeInfo(env, nodeInfo.get(), ddb.EntryInfo);
    }
    getInt(entry, "getState", ddb.DeviceState, named);
    getInt(entry, "getTargetID", ddb.TargetID, named);
    getByte(entry, "getOptions", ddb.Options, named);
    getInt(entry, "getExeCount", ddb.exeCount, named);
    getByte(entry, "getControl", ddb.Control, named);
    getInt(entry, "getTargetSessionID", ddb.TargetSessID, named);
    getInt(entry, "getTargetPortalGroupID", ddb.TargetPortalGroupID, named);
    getInt(entry, "getReservedFlags", ddb.ReservedFlags, named);
    getShorts(entry, "getInitiatorSessionID", ddb.InitiatorSessID, named);
    getInt(entry, "getMaxTxDataSegmentLen", ddb.MaxTxDataSegmentLen, named);
    getInt(entry, "getDDBLink", ddb.DDBLink, named);
    getInt(entry, "getChapIndex", ddb.CHAPTableIndex, named);
    if (const auto devEntry =
            fetch(entry, "getDeviceEntry", GIVES_DEV_ENTRY, twoBlanks, "NULL javaDevEntryObject!\n")) {
        getiSCSIDevEntry(env, devEntry.get(), ddb.DeviceInfo);
    }
    return entry.status;
}

SD_UINT32 readEntryNum(SDMGT_HANDLE handle)
{
    SD_UINT32 count = 0;
    report(SDGetDDBEntryNum(handle, &count), "SDGetDDBEntryNum call failed! 1\n");
    return count;
}

jobject readDefaultDDB(JNIEnv *env, SDMGT_HANDLE handle)
{
    DEVICEENTRYISCSI ddb;
    clear(ddb);
    if (failed(SDGetDefaultDDBEntry(handle, &ddb), "SDGetDefaultDDBEntry call failed! %x\n")) {
        return nullptr;
    }
    const auto entryClass = findClass(env, DEV_DB_ENTRY_CLASS, NO_DEVICE_CLASS);
    if (entryClass == nullptr) {
        return nullptr;
    }
    auto entry = newObject(env, entryClass.get(), "New Device Object failed!\n");
    if (entry == nullptr
        || failed(setiSCSIDevDDBEntry(env, entry.get(), ddb, 0, false), "setiSCSIDevDDBEntry() failed!\n")) {
        return nullptr;
    }
    return entry.release();
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
    report(status, "SDSetDDBEntry call failed! 3\n");
    return status;
}

// Writes one element as setDDBData does. Its target ID is asked for first, although the write reads it once more. A
// failed element does not end the run, so its error must not stay.
static SD_UINT32 writeElement(JNIEnv *env, jint dev, jobject element, jclass type)
{
    JavaObject entry = objectWith(env, element, type);
    SD_UINT32 targetId = 0;
    getInt(entry, "getTargetID", targetId, named);
    if (entry.status == 0 && writeDDB(env, hbaHandle(dev), element) != 0) {
        forgetOwnError(env);
    }
    return entry.status;
}

SD_UINT32 writeDDBs(JNIEnv *env, jint dev, jobjectArray jArray)
{
    constexpr const char *nullElement = "NULL javaDDBObject!\n";
    const jsize length = env->GetArrayLength(jArray);
    if (length == 0 || length > MOST_ENTRIES_WRITTEN) {
        return 0;
    }
    const auto first = local(env, env->GetObjectArrayElement(jArray, 0));
    if (first == nullptr) {
        return nullObject(nullElement);
    }
    const JavaObject entries = objectOf(env, first.get());
    SD_UINT32 status = entries.status;
    if (status == 0 && !isAdapterIndex(dev)) {
        status = ERR_INVALID_PARAMETER;
    }
    for (jsize i = 0; i < length && status == 0; ++i) {
        const auto element = local(env, env->GetObjectArrayElement(jArray, i));
        status = element == nullptr ? nullObject(nullElement) : writeElement(env, dev, element.get(), entries.type);
    }
    return status;
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
