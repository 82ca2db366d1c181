// What the table does not lead to: address selectors that no method uses, null objects that the converters' callers
// have tested already, the largest number of targets that Java may hold, and the printing of an address.
#include "AdapterInformation.h"
#include "DeviceParameters.h"
#include "IsnsDiscovery.h"
#include "JavaAccess.h"
#include "JniWatch.h"
#include "NodeInfo.h"
#include "ScsiPassThrough.h"
#include "Vm.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace
{

const ISCSIIPADDR ADDRESS = {{10, 20, 30, 40, 5, 6, 7, 8, 9, 11, 12, 13, 14, 15, 16, 17}, 1, 0};

// The selectors that no method uses; the others stand in the table.
TEST(Converters, everySelectorChoosesItsSetter)
{
    for (const auto &[selector, setter] :
         {std::pair(4, "setSecondaryDNS"), std::pair(9, "setIPAddress"), std::pair(-1, "setIPAddress")}) {
        World world(nativeMethod("getFWData"));
        JniWatch watch(world.env);
        setIPAddr(watch.env(), world.object("HBA"), ADDRESS, selector);
        EXPECT_EQ(watch.events.back(), std::string("call HBA ") + setter + " IPAddr");
        EXPECT_EQ(watch.printed + watch.breaches, "");
    }
}

TEST(Converters, nullObjectsAreNamed)
{
    JniWatch watch(vmEnv());
    JNIEnv *env = watch.env();
    const auto says = [&](const auto &convert) {
        watch.printed.clear();
        convert();
        return watch.printed;
    };
    ISCSIIPADDR address = ADDRESS;
    NODEINFOISCSI node = {};
    ISCSIDEVICE device = {};
    TARGETINFORMATION target = {};
    SDM_ISNS_CONFIG config = {};
    EXPECT_EQ(says([&] { getIPAddr(env, nullptr, address); }), "NULL jIPObj!\n");
    EXPECT_EQ(says([&] { setNodeInfo(env, nullptr, node); }), "NULL javaNodeInfoObject!2\n");
    EXPECT_EQ(says([&] { getNodeInfo(env, nullptr, node); }), "NULL javaNodeInfoObject!3\n");
    EXPECT_EQ(says([&] { setiSCSIDevEntry(env, nullptr, device); }), "NULL jObj!\n");
    EXPECT_EQ(says([&] { getiSCSIDevEntry(env, nullptr, device); }), "NULL jObj!\n");
    EXPECT_EQ(says([&] { setChipInfo(env, nullptr, CHIPINFO{}); }), "NULL javaChipInfoObject!2\n");
    EXPECT_EQ(says([&] { EXPECT_EQ(getTargetInfo(env, nullptr, target), ERR_JNI_NULL); }),
              "NULL javaTargetInfoObject!\n");
    EXPECT_EQ(says([&] { EXPECT_EQ(SDMToJava_iSNSDiscoveryConfig(env, nullptr, config), ERR_INVALID_PARAMETER); }),
              "NULL iSNSDiscoveryConfig!\n");
    EXPECT_EQ(says([&] { EXPECT_EQ(JavaToSDM_iSNSDiscoveryConfig(env, nullptr, config), ERR_INVALID_PARAMETER); }), "");
    EXPECT_TRUE(std::equal(std::begin(address.IPAddress), std::end(address.IPAddress), ADDRESS.IPAddress));
    EXPECT_TRUE(watch.events.empty()) << "nothing is asked of the VM";
}

// In the order in which the inputs are tested.
TEST(Converters, anIsnsTargetNeedsAllItsInputs)
{
    World world(nativeMethod("getiSNSTargets"));
    jobject hba = world.objects.front().second;
    jclass type = world.env->GetObjectClass(hba);
    const SDM_ISNS_DISCOVERED_TARGET found = {};
    JniWatch watch(world.env);
    const auto says = [&](jclass hbaClass, jclass targetClass, jobject owner,
                          const SDM_ISNS_DISCOVERED_TARGET *record) {
        watch.printed.clear();
        EXPECT_EQ(SDMToJava_iSNSDiscoveredTargets(watch.env(), hbaClass, targetClass, owner, record),
                  ERR_INVALID_PARAMETER);
        return watch.printed;
    };
    EXPECT_EQ(says(nullptr, nullptr, nullptr, nullptr), "NULL java HBA Class! (hbacls)\n");
    EXPECT_EQ(says(type, nullptr, nullptr, nullptr), "NULL java iSNSTarget Class! (iSNSTargetcls)\n");
    EXPECT_EQ(says(type, type, nullptr, &found), "NULL java hba Object! (jHBAObj)\n");
    EXPECT_EQ(says(type, type, hba, nullptr), "NULL Input Buffer! (discoveredTargetTable)\n");
    EXPECT_TRUE(watch.events.empty()) << "nothing is made before the inputs are tested";
    world.env->DeleteLocalRef(type);
}

// 512 targets are accepted, whatever comes of the query then; 513 end the call before the library is asked.
TEST(Converters, javaHoldsAtMost512Targets)
{
    World world(nativeMethod("getiSCSITargetData"));
    JNIEnv *env = world.env;
    jobject hba = world.object("HBA");
    jclass hbaClass = env->GetObjectClass(hba);
    jclass entryClass = env->FindClass(DEV_DB_ENTRY_CLASS);
    jmethodID add = env->GetMethodID(hbaClass, "addDeviceDataBaseEntry", TAKES_DEV_DB_ENTRY);
    const auto addEntries = [&](int count) {
        for (int i = 0; i < count; ++i) {
            jobject entry = newObject(env, entryClass, "").release();
            env->CallVoidMethod(hba, add, entry);
            env->DeleteLocalRef(entry);
        }
    };
    addEntries(512);
    Outcome outcome = call(world);
    EXPECT_EQ(outcome.printed.find("Too many"), std::string::npos);
    EXPECT_TRUE(std::any_of(outcome.events.begin(), outcome.events.end(),
                            [](const std::string &event) { return event.starts_with("SDGetDiscPortal"); }));
    addEntries(1);
    outcome = call(world);
    EXPECT_EQ(outcome.printed, "Too many targets from Java!\n");
    EXPECT_EQ(outcome.result, "20000064");
    EXPECT_TRUE(std::none_of(outcome.events.begin(), outcome.events.end(),
                             [](const std::string &event) { return event.starts_with("SD"); }));
    env->DeleteLocalRef(entryClass);
    env->DeleteLocalRef(hbaClass);
}

TEST(Converters, aClassThatCannotBeHadEndsTheConversion)
{
    World world(nativeMethod("getiSNSDiscoveryConfig"));
    jobject object = world.objects.front().second;
    SDM_ISNS_CONFIG config = {};
    JniWatch watch(world.env);
    const auto noClass = [](JNIEnv *, jobject) -> jclass {
        return nullptr;
    };
    withStub(&JNINativeInterface_::GetObjectClass, noClass, [&](JNIEnv *env) {
        EXPECT_EQ(SDMToJava_iSNSDiscoveryConfig(env, object, config), ERR_JNI_CLASS);
        EXPECT_EQ(watch.printed, "Find class call failed!\n");
        watch.printed.clear();
        EXPECT_EQ(JavaToSDM_iSNSDiscoveryConfig(env, object, config), ERR_JNI_CLASS);
        EXPECT_EQ(watch.printed, "Find iSNSDiscoveryConfig class call failed!\n");
    });
}

// The VM has no memory for the characters of a name; a name that is null has a line of its own.
TEST(Converters, aNameWithoutCharactersIsNotCalledNull)
{
    for (const auto &[method, name] :
         {std::pair("iSCSIUpdateFW", "fName"), std::pair("retrieveCrashRecord", "fileName")}) {
        World world(nativeMethod(method));
        const auto noMemory = [](JniWatch &watch) {
            watch.failEvent = 0;
        };
        EXPECT_EQ(call(world, noMemory).printed, std::string("NULL characters of ") + name + "!\n");
        world.nulls = 1;
        EXPECT_EQ(call(world).printed, std::string("NULL ") + name + "!\n");
    }
}

// An error whose kind cannot be found out is not the bridge's to forget.
TEST(Converters, anErrorOfUnknownKindStays)
{
    JNIEnv *vm = vmEnv();
    jclass error = vm->FindClass("java/lang/NoSuchMethodError");
    vm->ThrowNew(error, "planted");
    const auto noClass = [](JNIEnv *, const char *) -> jclass {
        return nullptr;
    };
    withStub(&JNINativeInterface_::FindClass, noClass, [](JNIEnv *env) { forgetOwnError(env); });
    EXPECT_EQ(vm->ExceptionCheck(), JNI_TRUE);
    forgetOwnError(vm);
    EXPECT_EQ(vm->ExceptionCheck(), JNI_FALSE);
    vm->DeleteLocalRef(error);
}

TEST(Converters, anAddressIsPrintedWithATrailingPoint)
{
    JniWatch watch(vmEnv());
    printfIPAddr(ISCSIIPADDR{{10, 0, 200, 255}, 0, 0});
    EXPECT_EQ(watch.printed, "IP Addr 10.0.200.255.\n");
}

} // namespace
