// The snapshot of the device database and the write in straight lines: the JNI calls that the bridge makes, in the same
// order, and nothing else. Both are flattened: the compiled code has no function of ours left between two JNI calls.
// What is missing ends the process, since nothing is missing in the benchmark. This is the least that the contract can
// cost.

#include "com_varden_tavo_iscsi_bench_Straight.h"
#include "vdsdm.h"

#include <jni.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <type_traits>

namespace
{

constexpr jsize MOST_ENTRIES = 511;
constexpr const char *IP_ADDR = "com/varden/tavo/iscsi/model/IPAddr";
constexpr const char *DEV_DB_ENTRY = "com/varden/tavo/iscsi/model/DevDBEntry";

SDMGT_HANDLE handles[32];

// An object and its class, whose local references are given back by drop.
struct Typed {
    JNIEnv *env;
    jobject object;
    jclass type;
};

template <typename Pointer>
Pointer needed(Pointer pointer)
{
    if (pointer == nullptr) {
        std::abort();
    }
    return pointer;
}

jmethodID method(const Typed &owner, const char *name, const char *signature)
{
    return needed(owner.env->GetMethodID(owner.type, name, signature));
}

Typed typed(JNIEnv *env, jobject object)
{
    return {env, needed(object), needed(env->GetObjectClass(object))};
}

void drop(const Typed &owner)
{
    owner.env->DeleteLocalRef(owner.type);
    owner.env->DeleteLocalRef(owner.object);
}

Typed fetch(const Typed &owner, const char *getter, const char *signature)
{
    return typed(owner.env, owner.env->CallObjectMethod(owner.object, method(owner, getter, signature)));
}

jobject newObject(JNIEnv *env, jclass type)
{
    return needed(env->NewObject(type, needed(env->GetMethodID(type, "<init>", "()V"))));
}

// ---- Record to Java ----

void setInt(const Typed &owner, const char *name, SD_UINT32 value)
{
    owner.env->CallVoidMethod(owner.object, method(owner, name, "(I)V"), static_cast<jint>(value));
}

void setShort(const Typed &owner, const char *name, SD_UINT16 value)
{
    owner.env->CallVoidMethod(owner.object, method(owner, name, "(S)V"), static_cast<jshort>(value));
}

void setByte(const Typed &owner, const char *name, SD_UINT8 value)
{
    owner.env->CallVoidMethod(owner.object, method(owner, name, "(B)V"), static_cast<jbyte>(value));
}

// A terminated field is handed over as it stands, a full one by way of a copy.
template <std::size_t N>
void setText(const Typed &owner, const char *name, const SD_UINT8 (&field)[N])
{
    jmethodID setter = method(owner, name, "(Ljava/lang/String;)V");
    const char *characters = reinterpret_cast<const char *>(field);
    char copy[N + 1];
    if (std::memchr(field, 0, N) == nullptr) {
        std::memcpy(copy, field, N);
        copy[N] = '\0';
        characters = copy;
    }
    jstring text = needed(owner.env->NewStringUTF(characters));
    owner.env->CallVoidMethod(owner.object, setter, text);
    owner.env->DeleteLocalRef(text);
}

template <std::size_t N>
void setShorts(const Typed &owner, const char *name, const SD_UINT8 (&field)[N])
{
    jshortArray array = needed(owner.env->NewShortArray(N));
    jshort *elements = needed(owner.env->GetShortArrayElements(array, nullptr));
    for (std::size_t i = 0; i < N; ++i) {
        elements[i] = field[i];
    }
    jmethodID setter = method(owner, name, "([S)V");
    owner.env->ReleaseShortArrayElements(array, elements, 0);
    owner.env->CallVoidMethod(owner.object, setter, array);
    owner.env->DeleteLocalRef(array);
}

void setAddress(const Typed &owner, const char *name, const ISCSIIPADDR &field)
{
    jclass type = needed(owner.env->FindClass(IP_ADDR));
    const Typed address{owner.env, newObject(owner.env, type), type};
    setShorts(address, "setAddress", field.IPAddress);
    jclass ownerType = needed(owner.env->GetObjectClass(owner.object));
    owner.env->CallVoidMethod(owner.object, method(owner, name, "(Lcom/varden/tavo/iscsi/model/IPAddr;)V"),
                              address.object);
    owner.env->DeleteLocalRef(ownerType);
    drop(address);
}

void setDevice(const Typed &owner, const char *getter, const ISCSIDEVICE &record)
{
    const Typed device = fetch(owner, getter, "()Lcom/varden/tavo/iscsi/model/DevEntry;");
    setShort(device, "setiSCSIOptions", record.iSCSIOptions);
    setShort(device, "setTaskManagementTimeout", record.taskMngmntTimeout);
    setShort(device, "setRetryCount", record.retryCount);
    setShort(device, "setRetryDelay", record.retryDelay);
    setInt(device, "setDeviceType", record.deviceType);
    setInt(device, "setExecutionThrottle", record.exeThrottle);
    setInt(device, "setFirstBurstSize", record.firstBurstSize);
    setShort(device, "setMaxBurstSize", record.maxBurstSize);
    setInt(device, "setIPOptions", record.IPOptions);
    setInt(device, "setMaxRxDataSegmentLen", record.MaxRxDataSegmentLen);
    setInt(device, "setDefaultTime2Wait", record.DefaultTime2Wait);
    setInt(device, "setDefaultTime2Retain", record.DefaultTime2Retain);
    setInt(device, "setKeepAliveTO", record.keepAliveTimeout);
    setInt(device, "setMaxOutstandingR2T", record.maxOutstandingR2T);
    setInt(device, "setTCPOptions", record.TCPOptions);
    setText(device, "setTargetAddress", record.targetAddr);
    setInt(device, "setPortNumber", record.portNumber);
    drop(device);
}

void addEntry(const Typed &hba, jclass type, const DEVICEENTRYISCSI &record, SD_UINT32 index)
{
    const Typed entry{hba.env, newObject(hba.env, type), needed(hba.env->FindClass(DEV_DB_ENTRY))};
    setShorts(entry, "setInitiatorSessionID", record.InitiatorSessID);
    setInt(entry, "setTargetID", record.TargetID);
    setInt(entry, "setState", record.DeviceState);
    setInt(entry, "setIndex", index);
    setInt(entry, "setMaxTxDataSegmentLen", record.MaxTxDataSegmentLen);
    setInt(entry, "setDDBLink", record.DDBLink);
    setInt(entry, "setChapIndex", record.CHAPTableIndex);
    setByte(entry, "setOptions", record.Options);
    setByte(entry, "setControl", record.Control);
    setInt(entry, "setExeCount", record.exeCount);
    setInt(entry, "setReservedFlags", record.ReservedFlags);
    setInt(entry, "setTargetSessionID", record.TargetSessID);
    setInt(entry, "setTargetPortalGroupID", record.TargetPortalGroupID);
    const Typed nodeInfo = fetch(entry, "getNodeInfo", "()Lcom/varden/tavo/iscsi/model/NodeInfo;");
    setText(nodeInfo, "setiSCSIName", record.EntryInfo.iSCSIName);
    setText(nodeInfo, "setAlias", record.EntryInfo.Alias);
    setAddress(nodeInfo, "setIPAddress", record.EntryInfo.IPAddr);
    setInt(nodeInfo, "setPortalCount", record.EntryInfo.PortalCount);
    drop(nodeInfo);
    setDevice(entry, "getDeviceEntry", record.DeviceInfo);
    hba.env->DeleteLocalRef(entry.type);
    hba.env->CallVoidMethod(
        hba.object, method(hba, "addDeviceDataBaseEntry", "(Lcom/varden/tavo/iscsi/model/DevDBEntry;)V"), entry.object);
    hba.env->DeleteLocalRef(entry.object);
}

// ---- Java to record ----

template <typename Field>
void getInt(const Typed &owner, const char *name, Field &field)
{
    field = static_cast<Field>(owner.env->CallIntMethod(owner.object, method(owner, name, "()I")));
}

template <typename Field>
void getShort(const Typed &owner, const char *name, Field &field)
{
    field = static_cast<Field>(owner.env->CallShortMethod(owner.object, method(owner, name, "()S")));
}

void getByte(const Typed &owner, const char *name, SD_UINT8 &field)
{
    field = static_cast<SD_UINT8>(owner.env->CallByteMethod(owner.object, method(owner, name, "()B")));
}

template <std::size_t N>
void getText(const Typed &owner, const char *name, SD_UINT8 (&field)[N])
{
    jmethodID getter = method(owner, name, "()Ljava/lang/String;");
    auto *text = static_cast<jstring>(needed(owner.env->CallObjectMethod(owner.object, getter)));
    const char *characters = needed(owner.env->GetStringUTFChars(text, nullptr));
    std::strncpy(reinterpret_cast<char *>(field), characters, N);
    owner.env->ReleaseStringUTFChars(text, characters);
    owner.env->DeleteLocalRef(text);
}

template <std::size_t N>
void getShorts(const Typed &owner, const char *name, SD_UINT8 (&field)[N])
{
    jmethodID getter = method(owner, name, "()[S");
    auto *array = static_cast<jshortArray>(needed(owner.env->CallObjectMethod(owner.object, getter)));
    if (owner.env->GetArrayLength(array) < static_cast<jsize>(N)) {
        std::abort();
    }
    jshort *elements = needed(owner.env->GetShortArrayElements(array, nullptr));
    for (std::size_t i = 0; i < N; ++i) {
        field[i] = static_cast<SD_UINT8>(elements[i]);
    }
    owner.env->ReleaseShortArrayElements(array, elements, 0);
    owner.env->DeleteLocalRef(array);
}

void getNode(const Typed &owner, NODEINFOISCSI &record)
{
    const Typed nodeInfo = fetch(owner, "getNodeInfo", "()Lcom/varden/tavo/iscsi/model/NodeInfo;");
    getText(nodeInfo, "getiSCSIName", record.iSCSIName);
    getText(nodeInfo, "getAlias", record.Alias);
    const Typed address = fetch(nodeInfo, "getIPAddress", "()Lcom/varden/tavo/iscsi/model/IPAddr;");
    jmethodID element = method(address, "getAddressElement", "(S)S");
    for (jshort i = 0; i < 16; ++i) {
        record.IPAddr.IPAddress[i] = static_cast<SD_UINT8>(address.env->CallShortMethod(address.object, element, i));
    }
    drop(address);
    getInt(nodeInfo, "getPortalCount", record.PortalCount);
    drop(nodeInfo);
}

void getDevice(const Typed &owner, ISCSIDEVICE &record)
{
    const Typed device = fetch(owner, "getDeviceEntry", "()Lcom/varden/tavo/iscsi/model/DevEntry;");
    getShort(device, "getiSCSIOptions", record.iSCSIOptions);
    getShort(device, "getTaskManagementTimeout", record.taskMngmntTimeout);
    getShort(device, "getMaxBurstSize", record.maxBurstSize);
    getShort(device, "getRetryCount", record.retryCount);
    getShort(device, "getRetryDelay", record.retryDelay);
    getInt(device, "getDeviceType", record.deviceType);
    getInt(device, "getExecutionThrottle", record.exeThrottle);
    getInt(device, "getFirstBurstSize", record.firstBurstSize);
    getInt(device, "getIPOptions", record.IPOptions);
    getInt(device, "getMaxRxDataSegmentLen", record.MaxRxDataSegmentLen);
    getInt(device, "getDefaultTime2Wait", record.DefaultTime2Wait);
    getInt(device, "getDefaultTime2Retain", record.DefaultTime2Retain);
    getInt(device, "getKeepAliveTO", record.keepAliveTimeout);
    getInt(device, "getMaxOutstandingR2T", record.maxOutstandingR2T);
    getInt(device, "getTCPOptions", record.TCPOptions);
    getText(device, "getTargetAddress", record.targetAddr);
    getInt(device, "getPortNumber", record.portNumber);
    drop(device);
}

SD_UINT32 writeEntry(JNIEnv *env, SDMGT_HANDLE handle, jobject object)
{
    DEVICEENTRYISCSI record;
    std::memset(&record, 0, sizeof record);
    const Typed entry{env, object, needed(env->GetObjectClass(object))};
    getNode(entry, record.EntryInfo);
    getInt(entry, "getState", record.DeviceState);
    getInt(entry, "getTargetID", record.TargetID);
    getByte(entry, "getOptions", record.Options);
    getInt(entry, "getExeCount", record.exeCount);
    getByte(entry, "getControl", record.Control);
    getInt(entry, "getTargetSessionID", record.TargetSessID);
    getInt(entry, "getTargetPortalGroupID", record.TargetPortalGroupID);
    getInt(entry, "getReservedFlags", record.ReservedFlags);
    getShorts(entry, "getInitiatorSessionID", record.InitiatorSessID);
    getInt(entry, "getMaxTxDataSegmentLen", record.MaxTxDataSegmentLen);
    getInt(entry, "getDDBLink", record.DDBLink);
    getInt(entry, "getChapIndex", record.CHAPTableIndex);
    getDevice(entry, record.DeviceInfo);
    env->DeleteLocalRef(entry.type);
    return SDSetDDBEntry(handle, &record, record.TargetID);
}

[[gnu::flatten]] jint readEntries(JNIEnv *env, SDMGT_HANDLE handle, jobject object)
{
    const Typed hba{env, object, needed(env->GetObjectClass(object))};
    SD_UINT32 count = 0;
    SD_UINT32 status = SDGetDDBEntryNum(handle, &count);
    if (count != 0) {
        jclass type = needed(env->FindClass(DEV_DB_ENTRY));
        SD_UINT32 found = 0;
        for (SD_UINT32 index = 0; index < DDB_SLOTS && found != count;) {
            DEVICEENTRYISCSI record;
            std::memset(&record, 0, sizeof record);
            status |= SDGetDDBEntry(handle, &record, index);
            if (record.DeviceState != 0) {
                addEntry(hba, type, record, found);
                ++found;
            }
            index = record.NextValid > index && record.NextValid < DDB_SLOTS ? record.NextValid : index + 1;
        }
        env->DeleteLocalRef(type);
    }
    env->DeleteLocalRef(hba.type);
    return static_cast<jint>(status);
}

[[gnu::flatten]] jint writeEntries(JNIEnv *env, SDMGT_HANDLE handle, jobjectArray array)
{
    const jsize length = env->GetArrayLength(array);
    if (length == 0 || length > MOST_ENTRIES) {
        return 0;
    }
    const Typed first = typed(env, env->GetObjectArrayElement(array, 0));
    SD_UINT32 status = 0;
    for (jsize i = 0; i < length; ++i) {
        const Typed entry{env, needed(env->GetObjectArrayElement(array, i)), first.type};
        SD_UINT32 targetId = 0;
        getInt(entry, "getTargetID", targetId);
        status |= writeEntry(env, handle, entry.object);
        env->DeleteLocalRef(entry.object);
    }
    drop(first);
    return static_cast<jint>(status);
}

} // namespace

extern "C" {

JNIEXPORT jboolean JNICALL Java_com_varden_tavo_iscsi_bench_Straight_openDevice(JNIEnv *, jobject, jint dev)
{
    return SDOpenDeviceiSCSI(static_cast<SD_UINT32>(dev), &handles[dev]) == 0;
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_bench_Straight_getiSCSIHBAData(JNIEnv *env, jobject, jint dev,
                                                                                 jobject hba)
{
    return readEntries(env, handles[dev], hba);
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_bench_Straight_setDDBsData(JNIEnv *env, jobject, jint dev,
                                                                             jobjectArray entries)
{
    return writeEntries(env, handles[dev], entries);
}
}
