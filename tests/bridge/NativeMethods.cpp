// The 39 native methods, each with the objects it is called with and the call itself. A result is written as a status
// in hexadecimal, as true or false, as text in quotes or as the name of an object.
#include "JniWatch.h"
#include "ScriptedLibrary.h"
#include "Vm.h"
#include "com_varden_tavo_iscsi_jni_ApiWrapper.h"

#include <tuple>
#include <type_traits>

namespace
{
// What a call still has to pass, in the order of the parameters.
struct Arguments {
    const World &world;
    std::vector<jint> numbers; // the first is the adapter index
    unsigned taken = 0;        // of the numbers
    unsigned objects = 0;      // of the arguments that can be null

    template <typename T>
    T take()
    {
        if constexpr (std::is_convertible_v<T, jobject>) {
            return static_cast<T>(world.argument(++objects));
        } else {
            return static_cast<T>(numbers.at(taken++));
        }
    }
};

std::string result(World &world, jobject object)
{
    if (object == nullptr) {
        return "null";
    }
    jobject kept = world.env->NewGlobalRef(object);
    world.objects.emplace_back("result", kept);
    JniWatch *watch = JniWatch::current();
    if (watch == nullptr) {
        return "an object";
    }
    watch->handedOut(object);
    return watch->nameOf(kept);
}

template <typename T>
std::string result(World &world, T value)
{
    if constexpr (std::is_same_v<T, jboolean>) {
        return value == JNI_TRUE ? "true" : value == JNI_FALSE ? "false" : "not a boolean";
    } else if constexpr (std::is_same_v<T, jint>) {
        return hex(SD_UINT32(value));
    } else {
        return result(world, static_cast<jobject>(value));
    }
}

template <typename T>
std::string letterOf()
{
    return std::is_same_v<T, jint>           ? "I"
           : std::is_same_v<T, jshort>       ? "S"
           : std::is_same_v<T, jboolean>     ? "Z"
           : std::is_same_v<T, jstring>      ? "Ljava/lang/String;"
           : std::is_same_v<T, jobjectArray> ? "[Ljava/lang/Object;"
           : std::is_same_v<T, void>         ? "V"
                                             : "Ljava/lang/Object;";
}

template <typename Result, typename... Parameters>
NativeMethod native(const char *name, Result (*function)(JNIEnv *, jobject, Parameters...),
                    std::vector<std::string> objects = {}, std::vector<jint> numbers = {})
{
    const auto call = [=](JNIEnv *env, World &world) -> std::string {
        Arguments arguments{world, {world.dev}};
        arguments.numbers.insert(arguments.numbers.end(), numbers.begin(), numbers.end());
        const std::tuple<JNIEnv *, jobject, Parameters...> all{env, nullptr, arguments.take<Parameters>()...};
        if constexpr (std::is_void_v<Result>) {
            std::apply(function, all);
            return "done";
        } else {
            return result(world, std::apply(function, all));
        }
    };
    std::string signature = "(";
    ((signature += letterOf<Parameters>()), ...);
    signature.append(")" + letterOf<Result>());
    return {name, std::move(objects), call, signature, reinterpret_cast<void *>(function)};
}
} // namespace

const std::vector<NativeMethod> &nativeMethods()
{
    static const std::vector<NativeMethod> methods = {
        native("initJNINative", Java_com_varden_tavo_iscsi_jni_ApiWrapper_initJNINative),
        native("openDevice", Java_com_varden_tavo_iscsi_jni_ApiWrapper_openDevice),
        native("closeDevice", Java_com_varden_tavo_iscsi_jni_ApiWrapper_closeDevice),
        native("getVersioniSCSI", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getVersioniSCSI),
        native("enableSdmTrace", Java_com_varden_tavo_iscsi_jni_ApiWrapper_enableSdmTrace, {"fileName"}),
        native("getiSCSIAdapterInfo", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSIAdapterInfo, {"HBA"}),
        native("getiSCSIFWInfo", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSIFWInfo, {"HBA"}),
        native("getiSCSIDriverInfo", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSIDriverInfo, {"HBA"}),
        native("getChipInfo", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getChipInfo, {"HBA"}),
        native("getiSCSIHBAState", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSIHBAState, {"HBA"}),
        native("getiSCSIHBAData", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSIHBAData, {"HBA"}),
        native("getiSCSIEntryNum", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSIEntryNum),
        native("getDefaultDDBEntry", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getDefaultDDBEntry),
        native("getInitialDDBEntry", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getInitialDDBEntry, {"DevDBEntry"},
               {0x7b3d51f9}),
        native("setDDBData", Java_com_varden_tavo_iscsi_jni_ApiWrapper_setDDBData, {"DevDBEntry"}, {0x1f2e3d4c}),
        native("setDDBsData", Java_com_varden_tavo_iscsi_jni_ApiWrapper_setDDBsData, {"DevDBEntry[]"}),
        native("logoutDDB", Java_com_varden_tavo_iscsi_jni_ApiWrapper_logoutDDB, {},
               {0x1a2b3c4d, 0x5e6f7182, 0x293a4b5c}),
        native("getiSCSITargetData", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSITargetData, {"HBA", "Target"}),
        native("getiSCSILunData", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSILunData, {"Lun"}),
        native("getFWData", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getFWData, {"HBA"}),
        native("getISCSIFWDefaults", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getISCSIFWDefaults, {"InitFW"}),
        native("setFWData", Java_com_varden_tavo_iscsi_jni_ApiWrapper_setFWData, {"HBA"}),
        native("setISCSIDefaults", Java_com_varden_tavo_iscsi_jni_ApiWrapper_setISCSIDefaults),
        native("iSCSIUpdateFW", Java_com_varden_tavo_iscsi_jni_ApiWrapper_iSCSIUpdateFW, {"fileName"}, {0x9c7d}),
        native("resetISCSIHBA", Java_com_varden_tavo_iscsi_jni_ApiWrapper_resetISCSIHBA),
        native("resetISCSICounters", Java_com_varden_tavo_iscsi_jni_ApiWrapper_resetISCSICounters, {}, {0x3a59d7e8}),
        native("retrieveCrashRecord", Java_com_varden_tavo_iscsi_jni_ApiWrapper_retrieveCrashRecord, {"fileName"}),
        native("ping", Java_com_varden_tavo_iscsi_jni_ApiWrapper_ping, {"IPAddr"}, {0x6d1c9ba7}),
        native("getScsiReportLUNsData", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getScsiReportLUNsData,
               {"HBA", "Target"}),
        native("getScsiInquiryData", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getScsiInquiryData,
               {"TargetInfo", "SCSIInqInfo"}),
        native("getScsiReadCapacityData", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getScsiReadCapacityData, {"Lun"}),
        native("getiSCSIStatistics", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSCSIStatistics, {"PortStatistics"}),
        native("getConnectErrorLog", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getConnectErrorLog, {"HBA"}),
        native("getARPLog", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getARPLog, {"HBA"}),
        native("getCHAPTableData", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getCHAPTableData, {"HBA"}),
        native("setCHAPTableData", Java_com_varden_tavo_iscsi_jni_ApiWrapper_setCHAPTableData, {"CHAPTableEntry[]"}),
        native("getiSNSDiscoveryConfig", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSNSDiscoveryConfig,
               {"iSNSDiscoveryConfig"}),
        native("setiSNSDiscoveryConfig", Java_com_varden_tavo_iscsi_jni_ApiWrapper_setiSNSDiscoveryConfig,
               {"iSNSDiscoveryConfig"}),
        native("getiSNSTargets", Java_com_varden_tavo_iscsi_jni_ApiWrapper_getiSNSTargets, {"HBA"}),
    };
    return methods;
}
