// Five native methods written out in straight lines: the same JNI calls as the bridge makes, in the same order, but
// without a function between them. It is the least that the contract can cost. Compiled a second time with
// TAVO_BENCH_CACHED it keeps classes and method IDs from the first use on, which the contract forbids, and shows what
// looking everything up anew costs.
//
// The macros stand for lines, not for functions: each use is its own piece of code with its own lookups.

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <jni.h>

#include "vdsdm.h"

#ifdef TAVO_BENCH_CACHED
#include "com_varden_tavo_iscsi_bench_Cached.h"
#define NATIVE(name) Java_com_varden_tavo_iscsi_bench_Cached_##name
#define LOOK_UP(method, type, name, signature)                                                                         \
    static jmethodID method;                                                                                           \
    if (method == nullptr)                                                                                             \
    method = env->GetMethodID(type, name, signature)
#define FIND_CLASS(type, name)                                                                                         \
    static jclass type;                                                                                                \
    if (type == nullptr)                                                                                               \
    type = static_cast<jclass>(env->NewGlobalRef(env->FindClass(name)))
// The first object's class serves all later ones.
#define CLASS_OF(type, object)                                                                                         \
    static jclass type;                                                                                                \
    if (type == nullptr)                                                                                               \
    type = static_cast<jclass>(env->NewGlobalRef(env->GetObjectClass(object)))
#define DROP_CLASS(type)
#else
#include "com_varden_tavo_iscsi_bench_Straight.h"
#define NATIVE(name) Java_com_varden_tavo_iscsi_bench_Straight_##name
#define LOOK_UP(method, type, name, signature) jmethodID method = env->GetMethodID(type, name, signature)
#define FIND_CLASS(type, name) jclass type = env->FindClass(name)
#define CLASS_OF(type, object) jclass type = env->GetObjectClass(object)
#define DROP_CLASS(type) env->DeleteLocalRef(type)
#endif

#define GIVE_UP(line, status)                                                                                          \
    do {                                                                                                               \
        std::printf(line);                                                                                             \
        return status;                                                                                                 \
    } while (false)

#define FIND(method, type, name, signature)                                                                            \
    LOOK_UP(method, type, name, signature);                                                                            \
    if (method == nullptr)                                                                                             \
    GIVE_UP("GetMethodID " name " call failed!\n", toJava(ERR_JNI_METHOD))

#define SET(object, type, name, signature, value)                                                                      \
    do {                                                                                                               \
        FIND(method, type, name, signature);                                                                           \
        env->CallVoidMethod(object, method, value);                                                                    \
    } while (false)

#define SET_INT(object, type, name, value) SET(object, type, name, "(I)V", static_cast<jint>(value))
#define SET_SHORT(object, type, name, value) SET(object, type, name, "(S)V", static_cast<jshort>(value))
#define SET_BYTE(object, type, name, value) SET(object, type, name, "(B)V", static_cast<jbyte>(value))

// A terminated field is handed over as it stands, a full one by way of a copy.
#define SET_TEXT(object, type, name, field)                                                                            \
    do {                                                                                                               \
        FIND(method, type, name, "(Ljava/lang/String;)V");                                                             \
        jstring text;                                                                                                  \
        if (std::memchr(field, 0, sizeof field) != nullptr) {                                                          \
            text = env->NewStringUTF(reinterpret_cast<const char *>(field));                                           \
        } else {                                                                                                       \
            char copy[sizeof field + 1];                                                                               \
            std::memcpy(copy, field, sizeof field);                                                                    \
            copy[sizeof field] = '\0';                                                                                 \
            text = env->NewStringUTF(copy);                                                                            \
        }                                                                                                              \
        if (text == nullptr)                                                                                           \
            GIVE_UP("NULL string for " name "!\n", toJava(ERR_JNI_NULL));                                              \
        env->CallVoidMethod(object, method, text);                                                                     \
        env->DeleteLocalRef(text);                                                                                     \
    } while (false)

#define SET_SHORTS(object, type, name, field)                                                                          \
    do {                                                                                                               \
        jshortArray array = env->NewShortArray(sizeof field);                                                          \
        jshort *elements = array == nullptr ? nullptr : env->GetShortArrayElements(array, nullptr);                    \
        if (elements == nullptr)                                                                                       \
            GIVE_UP("NULL array for " name "!\n", toJava(ERR_JNI_NULL));                                               \
        for (std::size_t i = 0; i < sizeof field; i++)                                                                 \
            elements[i] = field[i];                                                                                    \
        LOOK_UP(method, type, name, "([S)V");                                                                          \
        env->ReleaseShortArrayElements(array, elements, 0);                                                            \
        if (method == nullptr)                                                                                         \
            GIVE_UP("GetMethodID " name " call failed!\n", toJava(ERR_JNI_METHOD));                                    \
        env->CallVoidMethod(object, method, array);                                                                    \
        env->DeleteLocalRef(array);                                                                                    \
    } while (false)

#define NEW_OBJECT(object, type)                                                                                       \
    LOOK_UP(constructor, type, "<init>", "()V");                                                                       \
    jobject object = constructor == nullptr ? nullptr : env->NewObject(type, constructor);                             \
    if (object == nullptr)                                                                                             \
    GIVE_UP("NewObject failed!\n", toJava(ERR_JNI_NULL))

#define SET_ADDRESS(object, setter, field)                                                                             \
    do {                                                                                                               \
        FIND_CLASS(addressClass, "com/varden/tavo/iscsi/model/IPAddr");                                                \
        if (addressClass == nullptr)                                                                                   \
            GIVE_UP("Find class call failed!\n", toJava(ERR_JNI_CLASS));                                               \
        NEW_OBJECT(address, addressClass);                                                                             \
        SET_SHORTS(address, addressClass, "setAddress", field.IPAddress);                                              \
        CLASS_OF(ownerClass, object);                                                                                  \
        SET(object, ownerClass, setter, "(Lcom/varden/tavo/iscsi/model/IPAddr;)V", address);                           \
        DROP_CLASS(ownerClass);                                                                                        \
        env->DeleteLocalRef(address);                                                                                  \
        DROP_CLASS(addressClass);                                                                                      \
    } while (false)

#define FETCH(result, object, type, name, signature)                                                                   \
    FIND(result##Getter, type, name, signature);                                                                       \
    jobject result = env->CallObjectMethod(object, result##Getter);                                                    \
    if (result == nullptr)                                                                                             \
    GIVE_UP("NULL from " name "!\n", toJava(ERR_JNI_NULL))

#define SET_DEVICE(entry, record)                                                                                      \
    do {                                                                                                               \
        CLASS_OF(type, entry);                                                                                         \
        SET_SHORT(entry, type, "setiSCSIOptions", record.iSCSIOptions);                                                \
        SET_SHORT(entry, type, "setTaskManagementTimeout", record.taskMngmntTimeout);                                  \
        SET_SHORT(entry, type, "setRetryCount", record.retryCount);                                                    \
        SET_SHORT(entry, type, "setRetryDelay", record.retryDelay);                                                    \
        SET_INT(entry, type, "setDeviceType", record.deviceType);                                                      \
        SET_INT(entry, type, "setExecutionThrottle", record.exeThrottle);                                              \
        SET_INT(entry, type, "setFirstBurstSize", record.firstBurstSize);                                              \
        SET_SHORT(entry, type, "setMaxBurstSize", record.maxBurstSize);                                                \
        SET_INT(entry, type, "setIPOptions", record.IPOptions);                                                        \
        SET_INT(entry, type, "setMaxRxDataSegmentLen", record.MaxRxDataSegmentLen);                                    \
        SET_INT(entry, type, "setDefaultTime2Wait", record.DefaultTime2Wait);                                          \
        SET_INT(entry, type, "setDefaultTime2Retain", record.DefaultTime2Retain);                                      \
        SET_INT(entry, type, "setKeepAliveTO", record.keepAliveTimeout);                                               \
        SET_INT(entry, type, "setMaxOutstandingR2T", record.maxOutstandingR2T);                                        \
        SET_INT(entry, type, "setTCPOptions", record.TCPOptions);                                                      \
        SET_TEXT(entry, type, "setTargetAddress", record.targetAddr);                                                  \
        SET_INT(entry, type, "setPortNumber", record.portNumber);                                                      \
        DROP_CLASS(type);                                                                                              \
    } while (false)

#define GET(field, Type, object, type, name, signature)                                                                \
    do {                                                                                                               \
        FIND(method, type, name, signature);                                                                           \
        field = static_cast<std::remove_reference_t<decltype(field)>>(env->Call##Type##Method(object, method));        \
    } while (false)

#define GET_INT(field, object, type, name) GET(field, Int, object, type, name, "()I")
#define GET_SHORT(field, object, type, name) GET(field, Short, object, type, name, "()S")
#define GET_BYTE(field, object, type, name) GET(field, Byte, object, type, name, "()B")

#define GET_TEXT(field, object, type, name)                                                                            \
    do {                                                                                                               \
        FIND(method, type, name, "()Ljava/lang/String;");                                                              \
        auto text = static_cast<jstring>(env->CallObjectMethod(object, method));                                       \
        if (text != nullptr) {                                                                                         \
            const char *characters = env->GetStringUTFChars(text, nullptr);                                            \
            if (characters != nullptr) {                                                                               \
                std::strncpy(reinterpret_cast<char *>(field), characters, sizeof field);                               \
                env->ReleaseStringUTFChars(text, characters);                                                          \
            }                                                                                                          \
            env->DeleteLocalRef(text);                                                                                 \
        }                                                                                                              \
    } while (false)

static SDMGT_HANDLE hbaHandles[32];

static bool isAdapterIndex(jint dev)
{
    return dev >= 0 && static_cast<std::size_t>(dev) < std::size(hbaHandles);
}

static jint toJava(SD_UINT32 status)
{
    return static_cast<jint>(status);
}

extern "C" {

JNIEXPORT jboolean JNICALL NATIVE(openDevice)(JNIEnv *, jobject, jint dev)
{
    return isAdapterIndex(dev) && SDOpenDeviceiSCSI(static_cast<SD_UINT32>(dev), &hbaHandles[dev]) == 0;
}

JNIEXPORT jint JNICALL NATIVE(getiSCSIHBAState)(JNIEnv *env, jobject, jint dev, jobject hba)
{
    if (!isAdapterIndex(dev))
        return toJava(ERR_INVALID_PARAMETER);
    if (hba == nullptr)
        GIVE_UP("NULL jHBA!\n", toJava(ERR_JNI_NULL));
    HBAISCSIPORTAL portal;
    std::memset(&portal, 0, sizeof portal);
    const SD_UINT32 status = SDGetHbaDevicePortalPropertyiSCSI(hbaHandles[dev], 0, &portal);
    if (status != 0)
        GIVE_UP("SDGetHbaDevicePortalPropertyiSCSI call failed!\n", toJava(status));
    CLASS_OF(hbaClass, hba);
    SET_INT(hba, hbaClass, "setState", portal.State);
    SET_INT(hba, hbaClass, "setDhcpState", portal.dhcpState);
    SET_INT(hba, hbaClass, "setLinkStatus", portal.linkStatus);
    DROP_CLASS(hbaClass);
    return 0;
}

static jint getFWData(JNIEnv *env, SDMGT_HANDLE handle, jobject hba)
{
    INITFWISCSI block;
    std::memset(&block, 0, sizeof block);
    const SD_UINT32 status = SDGetInitFW(handle, &block);
    if (status != 0)
        GIVE_UP("SDGetInitFW call failed! 2\n", toJava(status));
    CLASS_OF(hbaClass, hba);
    SET_ADDRESS(hba, "setIPAddress", block.IPAddr);
    SET_ADDRESS(hba, "setGateway", block.Gateway);
    SET_ADDRESS(hba, "setSubnetMask", block.SubnetMask);
    SET_ADDRESS(hba, "setPrimaryDNS", block.PrimaryDNS.IPAddr);
    SET_ADDRESS(hba, "setSlpDa", block.SLPDAAddr);
    FETCH(initFW, hba, hbaClass, "getInitFW", "()Lcom/varden/tavo/iscsi/model/InitFW;");
    CLASS_OF(initFWClass, initFW);
    SET_SHORT(initFW, initFWClass, "setFWOptions", block.FWOptions);
    SET_SHORT(initFW, initFWClass, "setAddFWOptions", block.addFWOptions);
    SET_BYTE(initFW, initFWClass, "setReserved1", block.Reserved1);
    SET_SHORT(initFW, initFWClass, "setWakeupThreshold", block.wakeupThreshold);
    FETCH(devEntry, initFW, initFWClass, "getDevEntry", "()Lcom/varden/tavo/iscsi/model/DevEntry;");
    SET_DEVICE(devEntry, block.DeviceInfo);
    env->DeleteLocalRef(devEntry);
    DROP_CLASS(initFWClass);
    env->DeleteLocalRef(initFW);
    DROP_CLASS(hbaClass);
    return 0;
}

JNIEXPORT jint JNICALL NATIVE(getiSCSIHBAData)(JNIEnv *env, jobject, jint dev, jobject hba)
{
    if (!isAdapterIndex(dev))
        return toJava(ERR_INVALID_PARAMETER);
    if (hba == nullptr)
        GIVE_UP("NULL Java Obj!\n", toJava(ERR_JNI_NULL));
    const SDMGT_HANDLE handle = hbaHandles[dev];
    HBAISCSIPORTAL portal;
    std::memset(&portal, 0, sizeof portal);
    SD_UINT32 status = SDGetHbaDevicePortalPropertyiSCSI(handle, 0, &portal);
    if (status != 0)
        GIVE_UP("SDGetHbaDevicePortalPropertyiSCSI call failed!\n", toJava(status));
    CLASS_OF(hbaClass, hba);
    SET_INT(hba, hbaClass, "setNumberDiskTargets", portal.DiscTargetCount);
    SET_SHORTS(hba, hbaClass, "setMACAddress", portal.MacAddr);
    SET_INT(hba, hbaClass, "setState", portal.State);
    SET_INT(hba, hbaClass, "setDhcpState", portal.dhcpState);
    SET_INT(hba, hbaClass, "setLinkStatus", portal.linkStatus);
    SET_INT(hba, hbaClass, "setType", portal.Type);
    SET_INT(hba, hbaClass, "setDriverAttribute", portal.DriverAttr);
    SET_INT(hba, hbaClass, "setFirmwareAttribute", portal.FWAttr);
    SET_TEXT(hba, hbaClass, "setDriverVersion", portal.DriverVersion);
    SET_TEXT(hba, hbaClass, "setFirmwareVersion", portal.FWVersion);
    SET_TEXT(hba, hbaClass, "setManufacturer", portal.Manufacturer);
    SET_TEXT(hba, hbaClass, "setModel", portal.Model);
    SET_TEXT(hba, hbaClass, "setOptRomVersion", portal.OptRomVersion);
    SET_TEXT(hba, hbaClass, "setSerialNumberStr", portal.SerialNum);

    SD_UINT32 numEntries = 0;
    status = SDGetDDBEntryNum(handle, &numEntries);
    if (status != 0)
        std::printf("SDGetDDB call failed!\n");
    if (numEntries != 0) {
        FIND_CLASS(madeClass, "com/varden/tavo/iscsi/model/DevDBEntry");
        if (madeClass == nullptr)
            GIVE_UP("Find Device class call failed!\n", toJava(ERR_JNI_CLASS));
        SD_UINT32 found = 0;
        SD_UINT32 index = 0;
        while (index < DDB_SLOTS) {
            DEVICEENTRYISCSI ddb;
            std::memset(&ddb, 0, sizeof ddb);
            if (found == numEntries)
                break;
            status = SDGetDDBEntry(handle, &ddb, index);
            if (status != 0)
                std::printf("SDGetDDBEntry call failed! %x\n", status);
            if (ddb.DeviceState != 0) {
                NEW_OBJECT(entry, madeClass);
                FIND_CLASS(entryClass, "com/varden/tavo/iscsi/model/DevDBEntry");
                if (entryClass == nullptr)
                    GIVE_UP("Find Device class call failed!\n", toJava(ERR_JNI_NULL));
                SET_SHORTS(entry, entryClass, "setInitiatorSessionID", ddb.InitiatorSessID);
                SET_INT(entry, entryClass, "setTargetID", ddb.TargetID);
                SET_INT(entry, entryClass, "setState", ddb.DeviceState);
                SET_INT(entry, entryClass, "setIndex", found);
                SET_INT(entry, entryClass, "setMaxTxDataSegmentLen", ddb.MaxTxDataSegmentLen);
                SET_INT(entry, entryClass, "setDDBLink", ddb.DDBLink);
                SET_INT(entry, entryClass, "setChapIndex", ddb.CHAPTableIndex);
                SET_BYTE(entry, entryClass, "setOptions", ddb.Options);
                SET_BYTE(entry, entryClass, "setControl", ddb.Control);
                SET_INT(entry, entryClass, "setExeCount", ddb.exeCount);
                SET_INT(entry, entryClass, "setReservedFlags", ddb.ReservedFlags);
                SET_INT(entry, entryClass, "setTargetSessionID", ddb.TargetSessID);
                SET_INT(entry, entryClass, "setTargetPortalGroupID", ddb.TargetPortalGroupID);
                FETCH(nodeInfo, entry, entryClass, "getNodeInfo", "()Lcom/varden/tavo/iscsi/model/NodeInfo;");
                CLASS_OF(nodeInfoClass, nodeInfo);
                SET_TEXT(nodeInfo, nodeInfoClass, "setiSCSIName", ddb.EntryInfo.iSCSIName);
                SET_TEXT(nodeInfo, nodeInfoClass, "setAlias", ddb.EntryInfo.Alias);
                SET_ADDRESS(nodeInfo, "setIPAddress", ddb.EntryInfo.IPAddr);
                SET_INT(nodeInfo, nodeInfoClass, "setPortalCount", ddb.EntryInfo.PortalCount);
                DROP_CLASS(nodeInfoClass);
                env->DeleteLocalRef(nodeInfo);
                FETCH(devEntry, entry, entryClass, "getDeviceEntry", "()Lcom/varden/tavo/iscsi/model/DevEntry;");
                SET_DEVICE(devEntry, ddb.DeviceInfo);
                env->DeleteLocalRef(devEntry);
                DROP_CLASS(entryClass);
                SET(hba, hbaClass, "addDeviceDataBaseEntry", "(Lcom/varden/tavo/iscsi/model/DevDBEntry;)V", entry);
                env->DeleteLocalRef(entry);
                found++;
            }
            index = ddb.NextValid > index && ddb.NextValid < DDB_SLOTS ? ddb.NextValid : index + 1;
        }
        DROP_CLASS(madeClass);
    }
    DROP_CLASS(hbaClass);
    getFWData(env, handle, hba);
    return toJava(status);
}

#define SET_COUNTER(name)                                                                                              \
    do {                                                                                                               \
        FIND(method, statsClass, "set" #name, "([B)V");                                                                \
        jbyteArray array = env->NewByteArray(9);                                                                       \
        jbyte *elements = array == nullptr ? nullptr : env->GetByteArrayElements(array, nullptr);                      \
        if (elements == nullptr)                                                                                       \
            GIVE_UP("NULL array for set" #name "!\n", toJava(ERR_JNI_NULL));                                           \
        for (int i = 0; i < 8; i++)                                                                                    \
            elements[i + 1] = static_cast<jbyte>(statistics.name >> (8 * i));                                          \
        env->ReleaseByteArrayElements(array, elements, 0);                                                             \
        env->CallVoidMethod(stats, method, array);                                                                     \
        env->DeleteLocalRef(array);                                                                                    \
    } while (false)

JNIEXPORT jint JNICALL NATIVE(getiSCSIStatistics)(JNIEnv *env, jobject, jint dev, jobject stats)
{
    if (!isAdapterIndex(dev))
        return toJava(ERR_INVALID_PARAMETER);
    if (stats == nullptr)
        GIVE_UP("NULL jStats!\n", toJava(ERR_JNI_NULL));
    CLASS_OF(statsClass, stats);
    HBAPORTSTATISCSI statistics;
    std::memset(&statistics, 0, sizeof statistics);
    const SD_UINT32 status = SDGetStatisticsiSCSI(hbaHandles[dev], &statistics);
    if (status != 0)
        GIVE_UP("SDGetStatisticsiSCSI call failed!\n", toJava(status));
    SET_COUNTER(MACTxFramesCount);
    SET_COUNTER(MACTxBytesCount);
    SET_COUNTER(MACRxFramesCount);
    SET_COUNTER(MACRxBytesCount);
    SET_COUNTER(MACCRCErrorCount);
    SET_COUNTER(IPTxPacketsCount);
    SET_COUNTER(IPTxBytesCount);
    SET_COUNTER(IPTxFragmentsCount);
    SET_COUNTER(IPRxPacketsCount);
    SET_COUNTER(IPRxBytesCount);
    SET_COUNTER(IPRxFragmentsCount);
    SET_COUNTER(IPDatagramReassemblyCount);
    do {
        FIND(unused, statsClass, "setIPv6RxPacketsCount", "([B)V");
    } while (false);
    SET_COUNTER(IPRxPacketErrorCount);
    SET_COUNTER(IPReassemblyErrorCount);
    SET_COUNTER(TCPTxSegmentsCount);
    SET_COUNTER(TCPTxBytesCount);
    SET_COUNTER(TCPRxSegmentsCount);
    SET_COUNTER(TCPRxBytesCount);
    SET_COUNTER(TCPTimerExpiredCount);
    SET_COUNTER(TCPRxACKCount);
    SET_COUNTER(TCPTxACKCount);
    SET_COUNTER(TCPRxErrorSegmentCount);
    SET_COUNTER(TCPWindowProbeUpdateCount);
    SET_COUNTER(iSCSITxPDUCount);
    SET_COUNTER(iSCSITxBytesCount);
    SET_COUNTER(iSCSIRxPDUCount);
    SET_COUNTER(iSCSIRxBytesCount);
    SET_COUNTER(iSCSICompleteIOsCount);
    SET_COUNTER(iSCSIFormatErrorCount);
    SET_COUNTER(iSCSIHeaderDigestCount);
    SET_COUNTER(iSCSIDataDigestErrorCount);
    SET_COUNTER(iSCSISeqErrorCount);
    DROP_CLASS(statsClass);
    return 0;
}

JNIEXPORT jint JNICALL NATIVE(getConnectErrorLog)(JNIEnv *env, jobject, jint dev, jobject hba)
{
    if (!isAdapterIndex(dev))
        return toJava(ERR_INVALID_PARAMETER);
    if (hba == nullptr)
        GIVE_UP("NULL Java Obj!\n", toJava(ERR_JNI_NULL));
    CONNERRTABLE entries[LOG_CAPACITY];
    std::memset(entries, 0, sizeof entries);
    SD_UINT32 count = 0;
    const SD_UINT32 status = SDGetLogs(hbaHandles[dev], LOG_CONNECTION_ERRORS, &count, entries);
    if (status != 0)
        GIVE_UP("SDGetLogs call failed!\n", toJava(status));
    if (count > LOG_CAPACITY)
        count = LOG_CAPACITY;
    CLASS_OF(hbaClass, hba);
    jlongArray array = env->NewLongArray(static_cast<jsize>(count * 11));
    jlong *elements = array == nullptr ? nullptr : env->GetLongArrayElements(array, nullptr);
    if (elements == nullptr)
        GIVE_UP("NULL array for setConnectErrorLogEntries!\n", toJava(ERR_JNI_NULL));
    for (SD_UINT32 i = 0; i < count; i++) {
        const CONNERRTABLE &entry = entries[i];
        jlong *values = elements + i * 11;
        values[0] = entry.timeStamp.seconds;
        values[1] = entry.timeStamp.milliseconds;
        values[2] = entry.deviceIndex;
        values[3] = entry.connState;
        values[4] = entry.entryType;
        values[5] = entry.errorType;
        values[6] = entry.errorDetail;
        values[7] = entry.dupErrorCnt;
        values[8] = entry.reserved[0];
        values[9] = entry.reserved[1];
        values[10] = entry.reserved[2];
    }
    LOOK_UP(method, hbaClass, "setConnectErrorLogEntries", "([J)V");
    env->ReleaseLongArrayElements(array, elements, 0);
    if (method == nullptr)
        GIVE_UP("GetMethodID setConnectErrorLogEntries call failed!\n", toJava(ERR_JNI_METHOD));
    env->CallVoidMethod(hba, method, array);
    env->DeleteLocalRef(array);
    DROP_CLASS(hbaClass);
    return 0;
}

static jint setDDBData(JNIEnv *env, jint dev, jobject entry)
{
    if (!isAdapterIndex(dev))
        return toJava(ERR_INVALID_PARAMETER);
    DEVICEENTRYISCSI ddb;
    std::memset(&ddb, 0, sizeof ddb);
    if (entry == nullptr)
        GIVE_UP("NULL javaDDBObject!\n", toJava(ERR_JNI_NULL));
    CLASS_OF(entryClass, entry);
    FETCH(nodeInfo, entry, entryClass, "getNodeInfo", "()Lcom/varden/tavo/iscsi/model/NodeInfo;");
    CLASS_OF(nodeInfoClass, nodeInfo);
    GET_TEXT(ddb.EntryInfo.iSCSIName, nodeInfo, nodeInfoClass, "getiSCSIName");
    GET_TEXT(ddb.EntryInfo.Alias, nodeInfo, nodeInfoClass, "getAlias");
    FETCH(address, nodeInfo, nodeInfoClass, "getIPAddress", "()Lcom/varden/tavo/iscsi/model/IPAddr;");
    CLASS_OF(addressClass, address);
    FIND(getAddressElement, addressClass, "getAddressElement", "(S)S");
    for (jshort i = 0; i < 16; i++)
        ddb.EntryInfo.IPAddr.IPAddress[i] = static_cast<SD_UINT8>(env->CallShortMethod(address, getAddressElement, i));
    DROP_CLASS(addressClass);
    env->DeleteLocalRef(address);
    GET_INT(ddb.EntryInfo.PortalCount, nodeInfo, nodeInfoClass, "getPortalCount");
    DROP_CLASS(nodeInfoClass);
    env->DeleteLocalRef(nodeInfo);
    GET_INT(ddb.DeviceState, entry, entryClass, "getState");
    GET_INT(ddb.TargetID, entry, entryClass, "getTargetID");
    GET_BYTE(ddb.Options, entry, entryClass, "getOptions");
    GET_INT(ddb.exeCount, entry, entryClass, "getExeCount");
    GET_BYTE(ddb.Control, entry, entryClass, "getControl");
    GET_INT(ddb.TargetSessID, entry, entryClass, "getTargetSessionID");
    GET_INT(ddb.TargetPortalGroupID, entry, entryClass, "getTargetPortalGroupID");
    GET_INT(ddb.ReservedFlags, entry, entryClass, "getReservedFlags");
    FIND(getInitiatorSessionID, entryClass, "getInitiatorSessionID", "()[S");
    auto session = static_cast<jshortArray>(env->CallObjectMethod(entry, getInitiatorSessionID));
    if (session == nullptr || env->GetArrayLength(session) < 6)
        GIVE_UP("NULL or short array!\n", toJava(ERR_JNI_NULL));
    jshort *elements = env->GetShortArrayElements(session, nullptr);
    if (elements == nullptr)
        GIVE_UP("NULL elements!\n", toJava(ERR_JNI_NULL));
    for (int i = 0; i < 6; i++)
        ddb.InitiatorSessID[i] = static_cast<SD_UINT8>(elements[i]);
    env->ReleaseShortArrayElements(session, elements, 0);
    env->DeleteLocalRef(session);
    GET_INT(ddb.MaxTxDataSegmentLen, entry, entryClass, "getMaxTxDataSegmentLen");
    GET_INT(ddb.DDBLink, entry, entryClass, "getDDBLink");
    GET_INT(ddb.CHAPTableIndex, entry, entryClass, "getChapIndex");
    FETCH(devEntry, entry, entryClass, "getDeviceEntry", "()Lcom/varden/tavo/iscsi/model/DevEntry;");
    CLASS_OF(devEntryClass, devEntry);
    GET_SHORT(ddb.DeviceInfo.iSCSIOptions, devEntry, devEntryClass, "getiSCSIOptions");
    GET_SHORT(ddb.DeviceInfo.taskMngmntTimeout, devEntry, devEntryClass, "getTaskManagementTimeout");
    GET_SHORT(ddb.DeviceInfo.maxBurstSize, devEntry, devEntryClass, "getMaxBurstSize");
    GET_SHORT(ddb.DeviceInfo.retryCount, devEntry, devEntryClass, "getRetryCount");
    GET_SHORT(ddb.DeviceInfo.retryDelay, devEntry, devEntryClass, "getRetryDelay");
    GET_INT(ddb.DeviceInfo.deviceType, devEntry, devEntryClass, "getDeviceType");
    GET_INT(ddb.DeviceInfo.exeThrottle, devEntry, devEntryClass, "getExecutionThrottle");
    GET_INT(ddb.DeviceInfo.firstBurstSize, devEntry, devEntryClass, "getFirstBurstSize");
    GET_INT(ddb.DeviceInfo.IPOptions, devEntry, devEntryClass, "getIPOptions");
    GET_INT(ddb.DeviceInfo.MaxRxDataSegmentLen, devEntry, devEntryClass, "getMaxRxDataSegmentLen");
    GET_INT(ddb.DeviceInfo.DefaultTime2Wait, devEntry, devEntryClass, "getDefaultTime2Wait");
    GET_INT(ddb.DeviceInfo.DefaultTime2Retain, devEntry, devEntryClass, "getDefaultTime2Retain");
    GET_INT(ddb.DeviceInfo.keepAliveTimeout, devEntry, devEntryClass, "getKeepAliveTO");
    GET_INT(ddb.DeviceInfo.maxOutstandingR2T, devEntry, devEntryClass, "getMaxOutstandingR2T");
    GET_INT(ddb.DeviceInfo.TCPOptions, devEntry, devEntryClass, "getTCPOptions");
    GET_TEXT(ddb.DeviceInfo.targetAddr, devEntry, devEntryClass, "getTargetAddress");
    GET_INT(ddb.DeviceInfo.portNumber, devEntry, devEntryClass, "getPortNumber");
    DROP_CLASS(devEntryClass);
    env->DeleteLocalRef(devEntry);
    DROP_CLASS(entryClass);
    const SD_UINT32 status = SDSetDDBEntry(hbaHandles[dev], &ddb, ddb.TargetID);
    if (status != 0)
        GIVE_UP("SDSetDDBEntry call failed! 3\n", toJava(status));
    return 0;
}

JNIEXPORT jint JNICALL NATIVE(setDDBsData)(JNIEnv *env, jobject, jint dev, jobjectArray array)
{
    if (array == nullptr)
        GIVE_UP("NULL jArray!\n", toJava(ERR_JNI_NULL));
    const jsize length = env->GetArrayLength(array);
    if (length == 0 || length > 511)
        return 0;
    jobject first = env->GetObjectArrayElement(array, 0);
    if (first == nullptr)
        GIVE_UP("NULL javaDDBObject!\n", toJava(ERR_JNI_NULL));
    CLASS_OF(entryClass, first);
    if (!isAdapterIndex(dev))
        return toJava(ERR_INVALID_PARAMETER);
    for (jsize i = 0; i < length; i++) {
        jobject entry = env->GetObjectArrayElement(array, i);
        if (entry == nullptr)
            GIVE_UP("NULL javaDDBObject!\n", toJava(ERR_JNI_NULL));
        FIND(getTargetID, entryClass, "getTargetID", "()I");
        env->CallIntMethod(entry, getTargetID);
        setDDBData(env, dev, entry);
        env->DeleteLocalRef(entry);
    }
    DROP_CLASS(entryClass);
    env->DeleteLocalRef(first);
    return 0;
}
}
