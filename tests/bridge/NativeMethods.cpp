// The 39 native methods, each with the objects it is called with and the call itself. A result is written as a status
// in hexadecimal, as true or false, as text in quotes or as the name of an object.
#include "Vm.h"

#include "JniWatch.h"
#include "ScriptedLibrary.h"

#include "com_varden_tavo_iscsi_jni_ApiWrapper.h"

#define NATIVE(name) Java_com_varden_tavo_iscsi_jni_ApiWrapper_##name

namespace
{
std::string result(World & /*world*/, jint status)
{
    return hex(SD_UINT32(status));
}

std::string result(World & /*world*/, jboolean done)
{
    return done == JNI_TRUE ? "true" : done == JNI_FALSE ? "false" : "not a boolean";
}

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
    // What is returned belongs to the caller from now on.
    watch->createdAlive -= watch->createdAlive > 0 ? 1 : 0;
    return watch->nameOf(kept);
}

// A method that takes the adapter index and one object.
#define WITH_OBJECT(name, type)                                                                                        \
    {                                                                                                                  \
#name, {type }, [](JNIEnv * env, World & w) {                                                                  \
            return result(w, NATIVE(name)(env, nullptr, w.dev, w.argument(1, type)));                                  \
        }                                                                                                              \
    }
// A method that takes the adapter index alone.
#define WITH_INDEX(name)                                                                                               \
    {                                                                                                                  \
#name, {}, [](JNIEnv * env, World & w) {                                                                       \
            return result(w, NATIVE(name)(env, nullptr, w.dev));                                                       \
        }                                                                                                              \
    }
// Any other.
#define WITH(name, objects, ...)                                                                                       \
    {                                                                                                                  \
#name, objects, [](JNIEnv * env, World & w) {                                                                  \
            return result(w, NATIVE(name)(env, nullptr __VA_OPT__(, ) __VA_ARGS__));                                   \
        }                                                                                                              \
    }
#define LIST(...)                                                                                                      \
    {                                                                                                                  \
        __VA_ARGS__                                                                                                    \
    }

jstring fileNameOf(World &world)
{
    return static_cast<jstring>(world.argument(1, "fileName"));
}

jobjectArray arrayOf(World &world)
{
    return static_cast<jobjectArray>(world.argument(1, "[]"));
}
} // namespace

const std::vector<NativeMethod> &nativeMethods()
{
    static const std::vector<NativeMethod> methods = {
        {"initJNINative",
         {},
         [](JNIEnv *env, World & /*w*/) {
             NATIVE(initJNINative)(env, nullptr);
             return std::string("done");
         }},
        WITH_INDEX(openDevice),
        WITH_INDEX(closeDevice),
        WITH(getVersioniSCSI, {}),
        WITH(enableSdmTrace, {}, w.dev, fileNameOf(w)),
        WITH_OBJECT(getiSCSIAdapterInfo, "HBA"),
        WITH_OBJECT(getiSCSIFWInfo, "HBA"),
        WITH_OBJECT(getiSCSIDriverInfo, "HBA"),
        WITH_OBJECT(getChipInfo, "HBA"),
        WITH_OBJECT(getiSCSIHBAState, "HBA"),
        WITH_OBJECT(getiSCSIHBAData, "HBA"),
        WITH_INDEX(getiSCSIEntryNum),
        WITH_INDEX(getDefaultDDBEntry),
        WITH(getInitialDDBEntry, LIST("DevDBEntry"), w.dev, w.argument(1, "DevDBEntry"), 0x7b3d51f9),
        WITH(setDDBData, LIST("DevDBEntry"), w.dev, w.argument(1, "DevDBEntry"), 0x1f2e3d4c),
        WITH(setDDBsData, LIST("DevDBEntry", "DevDBEntry#2", "[]"), w.dev, arrayOf(w)),
        WITH(logoutDDB, {}, w.dev, 0x1a2b3c4d, 0x5e6f7182, 0x293a4b5c),
        WITH(getiSCSITargetData, LIST("HBA", "Target"), w.dev, w.argument(1, "HBA"), w.argument(2, "Target")),
        WITH_OBJECT(getiSCSILunData, "Lun"),
        WITH_OBJECT(getFWData, "HBA"),
        WITH_OBJECT(getISCSIFWDefaults, "InitFW"),
        WITH_OBJECT(setFWData, "HBA"),
        WITH_INDEX(setISCSIDefaults),
        WITH(iSCSIUpdateFW, {}, w.dev, fileNameOf(w), jshort(0x9c7d)),
        WITH_INDEX(resetISCSIHBA),
        WITH(resetISCSICounters, {}, w.dev, 0x3a59d7e8),
        WITH(retrieveCrashRecord, {}, w.dev, fileNameOf(w)),
        WITH(ping, LIST("IPAddr"), w.dev, w.argument(1, "IPAddr"), 0x6d1c9ba7),
        WITH(getScsiReportLUNsData, LIST("HBA", "Target"), w.dev, w.argument(1, "HBA"), w.argument(2, "Target")),
        WITH(getScsiInquiryData, LIST("TargetInfo", "SCSIInqInfo"), w.dev, w.argument(1, "TargetInfo"),
             w.argument(2, "SCSIInqInfo")),
        WITH_OBJECT(getScsiReadCapacityData, "Lun"),
        WITH_OBJECT(getiSCSIStatistics, "PortStatistics"),
        WITH_OBJECT(getConnectErrorLog, "HBA"),
        WITH_OBJECT(getARPLog, "HBA"),
        WITH_OBJECT(getCHAPTableData, "HBA"),
        WITH(setCHAPTableData, LIST("CHAPTableEntry", "CHAPTableEntry#2", "[]"), w.dev, arrayOf(w)),
        WITH_OBJECT(getiSNSDiscoveryConfig, "iSNSDiscoveryConfig"),
        WITH_OBJECT(setiSNSDiscoveryConfig, "iSNSDiscoveryConfig"),
        WITH_OBJECT(getiSNSTargets, "HBA"),
    };
    return methods;
}
