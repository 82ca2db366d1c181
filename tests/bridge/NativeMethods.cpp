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
                    std::vector<std::string> objects = {}, const std::vector<jint> &numbers = {})
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

// A method of this name, with its objects and its numbers after the adapter index.
#define NATIVE(name, ...) native(#name, Java_com_varden_tavo_iscsi_jni_ApiWrapper_##name __VA_OPT__(, ) __VA_ARGS__)

const std::vector<NativeMethod> &nativeMethods()
{
    static const std::vector<NativeMethod> methods = {
        NATIVE(initJNINative),
        NATIVE(openDevice),
        NATIVE(closeDevice),
        NATIVE(getVersioniSCSI),
        NATIVE(enableSdmTrace, {"fileName"}),
        NATIVE(getiSCSIAdapterInfo, {"HBA"}),
        NATIVE(getiSCSIFWInfo, {"HBA"}),
        NATIVE(getiSCSIDriverInfo, {"HBA"}),
        NATIVE(getChipInfo, {"HBA"}),
        NATIVE(getiSCSIHBAState, {"HBA"}),
        NATIVE(getiSCSIHBAData, {"HBA"}),
        NATIVE(getiSCSIEntryNum),
        NATIVE(getDefaultDDBEntry),
        NATIVE(getInitialDDBEntry, {"DevDBEntry"}, {0x7b3d51f9}),
        NATIVE(setDDBData, {"DevDBEntry"}, {0x1f2e3d4c}),
        NATIVE(setDDBsData, {"DevDBEntry[]"}),
        NATIVE(logoutDDB, {}, {0x1a2b3c4d, 0x5e6f7182, 0x293a4b5c}),
        NATIVE(getiSCSITargetData, {"HBA", "Target"}),
        NATIVE(getiSCSILunData, {"Lun"}),
        NATIVE(getFWData, {"HBA"}),
        NATIVE(getISCSIFWDefaults, {"InitFW"}),
        NATIVE(setFWData, {"HBA"}),
        NATIVE(setISCSIDefaults),
        NATIVE(iSCSIUpdateFW, {"fileName"}, {0x9c7d}),
        NATIVE(resetISCSIHBA),
        NATIVE(resetISCSICounters, {}, {0x3a59d7e8}),
        NATIVE(retrieveCrashRecord, {"fileName"}),
        NATIVE(ping, {"IPAddr"}, {0x6d1c9ba7}),
        NATIVE(getScsiReportLUNsData, {"HBA", "Target"}),
        NATIVE(getScsiInquiryData, {"TargetInfo", "SCSIInqInfo"}),
        NATIVE(getScsiReadCapacityData, {"Lun"}),
        NATIVE(getiSCSIStatistics, {"PortStatistics"}),
        NATIVE(getConnectErrorLog, {"HBA"}),
        NATIVE(getARPLog, {"HBA"}),
        NATIVE(getCHAPTableData, {"HBA"}),
        NATIVE(setCHAPTableData, {"CHAPTableEntry[]"}),
        NATIVE(getiSNSDiscoveryConfig, {"iSNSDiscoveryConfig"}),
        NATIVE(setiSNSDiscoveryConfig, {"iSNSDiscoveryConfig"}),
        NATIVE(getiSNSTargets, {"HBA"}),
    };
    return methods;
}
