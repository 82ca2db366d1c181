// The snapshot of the device database and the write of its entries in straight lines, by hand: the JNI calls that the
// bridge makes for them, in the same order, and nothing else. This is the least that the contract can cost.
//
// There is no status, no message and no owner, and nothing is checked: in the benchmark nothing is missing, every text
// is terminated and every slot below the number of entries is in use. Both ways are flattened, so that the compiled code
// has no function of ours left between two JNI calls. The class that loads this file is ApiWrapper.

#include "com_varden_tavo_iscsi_jni_ApiWrapper.h"
#include "vdsdm.h"

#include <jni.h>

#include <cstddef>
#include <cstring>

namespace
{

constexpr const char *IP_ADDR = "com/varden/tavo/iscsi/model/IPAddr";
constexpr const char *DEV_DB_ENTRY = "com/varden/tavo/iscsi/model/DevDBEntry";

SDMGT_HANDLE handle;

// An object and its class: two local references.
struct Typed {
    JNIEnv *env;
    jobject object;
    jclass type;
};

jmethodID method(const Typed &owner, const char *name, const char *signature)
{
    return owner.env->GetMethodID(owner.type, name, signature);
}

Typed typed(JNIEnv *env, jobject object)
{
    return {env, object, env->GetObjectClass(object)};
}

Typed fetch(const Typed &owner, const char *getter, const char *signature)
{
    return typed(owner.env, owner.env->CallObjectMethod(owner.object, method(owner, getter, signature)));
}

jobject newObject(JNIEnv *env, jclass type)
{
    return env->NewObject(type, env->GetMethodID(type, "<init>", "()V"));
}

void drop(const Typed &owner)
{
    owner.env->DeleteLocalRef(owner.type);
    owner.env->DeleteLocalRef(owner.object);
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

void setText(const Typed &owner, const char *name, const SD_UINT8 *field)
{
    jmethodID setter = method(owner, name, "(Ljava/lang/String;)V");
    jstring text = owner.env->NewStringUTF(reinterpret_cast<const char *>(field));
    owner.env->CallVoidMethod(owner.object, setter, text);
    owner.env->DeleteLocalRef(text);
}

template <std::size_t N>
void setShorts(const Typed &owner, const char *name, const SD_UINT8 (&field)[N])
{
    jshortArray array = owner.env->NewShortArray(N);
    jshort *elements = owner.env->GetShortArrayElements(array, nullptr);
    for (std::size_t i = 0; i < N; ++i) {
        elements[i] = field[i];
    }
    jmethodID setter = method(owner, name, "([S)V");
    owner.env->ReleaseShortArrayElements(array, elements, 0);
    owner.env->CallVoidMethod(owner.object, setter, array);
    owner.env->DeleteLocalRef(array);
}

void setNode(const Typed &entry, const NODEINFOISCSI &record)
{
    JNIEnv *env = entry.env;
    const Typed node = fetch(entry, "getNodeInfo", "()Lcom/varden/tavo/iscsi/model/NodeInfo;");
    setText(node, "setiSCSIName", record.iSCSIName);
    setText(node, "setAlias", record.Alias);
    jclass addressType = env->FindClass(IP_ADDR);
    const Typed address{env, newObject(env, addressType), addressType};
    setShorts(address, "setAddress", record.IPAddr.IPAddress);
    jclass nodeType = env->GetObjectClass(node.object);
    jmethodID setter = env->GetMethodID(nodeType, "setIPAddress", "(Lcom/varden/tavo/iscsi/model/IPAddr;)V");
    env->CallVoidMethod(node.object, setter, address.object);
    env->DeleteLocalRef(nodeType);
    drop(address);
    setInt(node, "setPortalCount", record.PortalCount);
    drop(node);
}

void setDevice(const Typed &entry, const ISCSIDEVICE &record)
{
    const Typed device = fetch(entry, "getDeviceEntry", "()Lcom/varden/tavo/iscsi/model/DevEntry;");
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
    const Typed entry{hba.env, newObject(hba.env, type), hba.env->FindClass(DEV_DB_ENTRY)};
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
    setNode(entry, record.EntryInfo);
    setDevice(entry, record.DeviceInfo);
    hba.env->DeleteLocalRef(entry.type);
    jmethodID adder = method(hba, "addDeviceDataBaseEntry", "(Lcom/varden/tavo/iscsi/model/DevDBEntry;)V");
    hba.env->CallVoidMethod(hba.object, adder, entry.object);
    hba.env->DeleteLocalRef(entry.object);
}

[[gnu::flatten]] SD_UINT32 readEntries(JNIEnv *env, jobject object)
{
    const Typed hba = typed(env, object);
    SD_UINT32 count = 0;
    SD_UINT32 status = SDGetDDBEntryNum(handle, &count);
    jclass type = env->FindClass(DEV_DB_ENTRY);
    for (SD_UINT32 index = 0; index < count; ++index) {
        DEVICEENTRYISCSI record;
        std::memset(&record, 0, sizeof record);
        status |= SDGetDDBEntry(handle, &record, index);
        addEntry(hba, type, record, index);
    }
    env->DeleteLocalRef(type);
    env->DeleteLocalRef(hba.type);
    return status;
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
    auto *text = static_cast<jstring>(owner.env->CallObjectMethod(owner.object, getter));
    const char *characters = owner.env->GetStringUTFChars(text, nullptr);
    std::strncpy(reinterpret_cast<char *>(field), characters, N);
    owner.env->ReleaseStringUTFChars(text, characters);
    owner.env->DeleteLocalRef(text);
}

template <std::size_t N>
void getShorts(const Typed &owner, const char *name, SD_UINT8 (&field)[N])
{
    jmethodID getter = method(owner, name, "()[S");
    auto *array = static_cast<jshortArray>(owner.env->CallObjectMethod(owner.object, getter));
    owner.env->GetArrayLength(array);
    jshort *elements = owner.env->GetShortArrayElements(array, nullptr);
    for (std::size_t i = 0; i < N; ++i) {
        field[i] = static_cast<SD_UINT8>(elements[i]);
    }
    owner.env->ReleaseShortArrayElements(array, elements, 0);
    owner.env->DeleteLocalRef(array);
}

void getNode(const Typed &entry, NODEINFOISCSI &record)
{
    const Typed node = fetch(entry, "getNodeInfo", "()Lcom/varden/tavo/iscsi/model/NodeInfo;");
    getText(node, "getiSCSIName", record.iSCSIName);
    getText(node, "getAlias", record.Alias);
    const Typed address = fetch(node, "getIPAddress", "()Lcom/varden/tavo/iscsi/model/IPAddr;");
    jmethodID element = method(address, "getAddressElement", "(S)S");
    for (jshort i = 0; i < 16; ++i) {
        record.IPAddr.IPAddress[i] = static_cast<SD_UINT8>(address.env->CallShortMethod(address.object, element, i));
    }
    drop(address);
    getInt(node, "getPortalCount", record.PortalCount);
    drop(node);
}

void getDevice(const Typed &entry, ISCSIDEVICE &record)
{
    const Typed device = fetch(entry, "getDeviceEntry", "()Lcom/varden/tavo/iscsi/model/DevEntry;");
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

void getEntry(const Typed &entry, DEVICEENTRYISCSI &record)
{
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
}

[[gnu::flatten]] SD_UINT32 writeEntries(JNIEnv *env, jobjectArray array)
{
    const jsize length = env->GetArrayLength(array);
    const Typed first = typed(env, env->GetObjectArrayElement(array, 0));
    SD_UINT32 status = 0;
    for (jsize i = 0; i < length; ++i) {
        DEVICEENTRYISCSI record;
        std::memset(&record, 0, sizeof record);
        jobject element = env->GetObjectArrayElement(array, i);
        getInt({env, element, first.type}, "getTargetID", record.TargetID);
        const Typed entry = typed(env, element);
        getEntry(entry, record);
        env->DeleteLocalRef(entry.type);
        status |= SDSetDDBEntry(handle, &record, record.TargetID);
        env->DeleteLocalRef(element);
    }
    drop(first);
    return status;
}

} // namespace

extern "C" {

JNIEXPORT jboolean JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_openDevice(JNIEnv *, jobject, jint dev)
{
    return SDOpenDeviceiSCSI(static_cast<SD_UINT32>(dev), &handle) == 0 ? JNI_TRUE : JNI_FALSE;
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSIHBAData(JNIEnv *env, jobject, jint,
                                                                                 jobject hba)
{
    return static_cast<jint>(readEntries(env, hba));
}

JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_setDDBsData(JNIEnv *env, jobject, jint,
                                                                             jobjectArray entries)
{
    return static_cast<jint>(writeEntries(env, entries));
}
}
