// The snapshot of the device database and the write of its entries in straight lines, by hand: the JNI calls that the
// bridge makes for them, in the same order, and nothing else. This is the least that the contract can cost.
//
// There is no message and no owner, and nothing is checked: in the benchmark nothing is missing, every text is
// terminated and every slot below the number of entries is in use. Both ways are flattened: the compiled code has no
// function of ours left between two JNI calls. A second ApiWrapper loads this file.

#include "com_varden_tavo_iscsi_jni_ApiWrapper.h"
#include "vdsdm.h"

#include <jni.h>

#include <cstddef>
#include <cstring>

namespace
{

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

template <typename Java, typename Field>
void set(const Typed &owner, const char *name, const char *signature, Field value)
{
    owner.env->CallVoidMethod(owner.object, method(owner, name, signature), static_cast<Java>(value));
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
    jclass addressType = env->FindClass("com/varden/tavo/iscsi/model/IPAddr");
    const Typed address{env, newObject(env, addressType), addressType};
    setShorts(address, "setAddress", record.IPAddr.IPAddress);
    jclass nodeType = env->GetObjectClass(node.object);
    jmethodID setter = env->GetMethodID(nodeType, "setIPAddress", "(Lcom/varden/tavo/iscsi/model/IPAddr;)V");
    env->CallVoidMethod(node.object, setter, address.object);
    env->DeleteLocalRef(nodeType);
    drop(address);
    set<jint>(node, "setPortalCount", "(I)V", record.PortalCount);
    drop(node);
}

void setDevice(const Typed &entry, const ISCSIDEVICE &record)
{
    const Typed device = fetch(entry, "getDeviceEntry", "()Lcom/varden/tavo/iscsi/model/DevEntry;");
    set<jshort>(device, "setiSCSIOptions", "(S)V", record.iSCSIOptions);
    set<jshort>(device, "setTaskManagementTimeout", "(S)V", record.taskMngmntTimeout);
    set<jshort>(device, "setRetryCount", "(S)V", record.retryCount);
    set<jshort>(device, "setRetryDelay", "(S)V", record.retryDelay);
    set<jint>(device, "setDeviceType", "(I)V", record.deviceType);
    set<jint>(device, "setExecutionThrottle", "(I)V", record.exeThrottle);
    set<jint>(device, "setFirstBurstSize", "(I)V", record.firstBurstSize);
    set<jshort>(device, "setMaxBurstSize", "(S)V", record.maxBurstSize);
    set<jint>(device, "setIPOptions", "(I)V", record.IPOptions);
    set<jint>(device, "setMaxRxDataSegmentLen", "(I)V", record.MaxRxDataSegmentLen);
    set<jint>(device, "setDefaultTime2Wait", "(I)V", record.DefaultTime2Wait);
    set<jint>(device, "setDefaultTime2Retain", "(I)V", record.DefaultTime2Retain);
    set<jint>(device, "setKeepAliveTO", "(I)V", record.keepAliveTimeout);
    set<jint>(device, "setMaxOutstandingR2T", "(I)V", record.maxOutstandingR2T);
    set<jint>(device, "setTCPOptions", "(I)V", record.TCPOptions);
    setText(device, "setTargetAddress", record.targetAddr);
    set<jint>(device, "setPortNumber", "(I)V", record.portNumber);
    drop(device);
}

void addEntry(const Typed &hba, jclass type, const DEVICEENTRYISCSI &record, SD_UINT32 index)
{
    const Typed entry{hba.env, newObject(hba.env, type), hba.env->FindClass(DEV_DB_ENTRY)};
    setShorts(entry, "setInitiatorSessionID", record.InitiatorSessID);
    set<jint>(entry, "setTargetID", "(I)V", record.TargetID);
    set<jint>(entry, "setState", "(I)V", record.DeviceState);
    set<jint>(entry, "setIndex", "(I)V", index);
    set<jint>(entry, "setMaxTxDataSegmentLen", "(I)V", record.MaxTxDataSegmentLen);
    set<jint>(entry, "setDDBLink", "(I)V", record.DDBLink);
    set<jint>(entry, "setChapIndex", "(I)V", record.CHAPTableIndex);
    set<jbyte>(entry, "setOptions", "(B)V", record.Options);
    set<jbyte>(entry, "setControl", "(B)V", record.Control);
    set<jint>(entry, "setExeCount", "(I)V", record.exeCount);
    set<jint>(entry, "setReservedFlags", "(I)V", record.ReservedFlags);
    set<jint>(entry, "setTargetSessionID", "(I)V", record.TargetSessID);
    set<jint>(entry, "setTargetPortalGroupID", "(I)V", record.TargetPortalGroupID);
    setNode(entry, record.EntryInfo);
    setDevice(entry, record.DeviceInfo);
    hba.env->DeleteLocalRef(entry.type);
    jmethodID adder = method(hba, "addDeviceDataBaseEntry", "(Lcom/varden/tavo/iscsi/model/DevDBEntry;)V");
    hba.env->CallVoidMethod(hba.object, adder, entry.object);
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
    auto *text = static_cast<jstring>(owner.env->CallObjectMethod(owner.object, getter));
    const char *characters = owner.env->GetStringUTFChars(text, nullptr);
    std::strncpy(reinterpret_cast<char *>(field), characters, N);
    owner.env->ReleaseStringUTFChars(text, characters);
    owner.env->DeleteLocalRef(text);
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

void getSessionID(const Typed &entry, SD_UINT8 (&field)[6])
{
    jmethodID getter = method(entry, "getInitiatorSessionID", "()[S");
    auto *array = static_cast<jshortArray>(entry.env->CallObjectMethod(entry.object, getter));
    entry.env->GetArrayLength(array);
    jshort *elements = entry.env->GetShortArrayElements(array, nullptr);
    for (std::size_t i = 0; i < sizeof field; ++i) {
        field[i] = static_cast<SD_UINT8>(elements[i]);
    }
    entry.env->ReleaseShortArrayElements(array, elements, 0);
    entry.env->DeleteLocalRef(array);
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
    getSessionID(entry, record.InitiatorSessID);
    getInt(entry, "getMaxTxDataSegmentLen", record.MaxTxDataSegmentLen);
    getInt(entry, "getDDBLink", record.DDBLink);
    getInt(entry, "getChapIndex", record.CHAPTableIndex);
    getDevice(entry, record.DeviceInfo);
}

} // namespace

extern "C" {

JNIEXPORT jboolean JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_openDevice(JNIEnv *, jobject, jint dev)
{
    return SDOpenDeviceiSCSI(static_cast<SD_UINT32>(dev), &handle) == 0 ? JNI_TRUE : JNI_FALSE;
}

[[gnu::flatten]] JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSIHBAData(JNIEnv *env, jobject,
                                                                                                  jint, jobject object)
{
    const Typed hba = typed(env, object);
    SD_UINT32 count = 0;
    SD_UINT32 status = SDGetDDBEntryNum(handle, &count);
    jclass type = env->FindClass(DEV_DB_ENTRY);
    for (SD_UINT32 index = 0; index < count; ++index) {
        DEVICEENTRYISCSI record{};
        status |= SDGetDDBEntry(handle, &record, index);
        addEntry(hba, type, record, index);
    }
    env->DeleteLocalRef(type);
    env->DeleteLocalRef(hba.type);
    return static_cast<jint>(status);
}

[[gnu::flatten]] JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_jni_ApiWrapper_setDDBsData(JNIEnv *env, jobject,
                                                                                              jint, jobjectArray array)
{
    const jsize length = env->GetArrayLength(array);
    const Typed first = typed(env, env->GetObjectArrayElement(array, 0));
    SD_UINT32 status = 0;
    for (jsize i = 0; i < length; ++i) {
        DEVICEENTRYISCSI record{};
        jobject element = env->GetObjectArrayElement(array, i);
        getInt({env, element, first.type}, "getTargetID", record.TargetID);
        const Typed entry = typed(env, element);
        getEntry(entry, record);
        env->DeleteLocalRef(entry.type);
        status |= SDSetDDBEntry(handle, &record, record.TargetID);
        env->DeleteLocalRef(element);
    }
    drop(first);
    return static_cast<jint>(status);
}
}
