// The native methods called from Java, on the VM's own environment: objects that mean no good, and many threads at
// once. The work is done by the Java classes HostileJava and Storm; here are the library's answers.
#include "ScriptedLibrary.h"
#include "Vm.h"
#include "WatchedRuntime.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>

namespace
{
std::string lastRecord;

jstring JNICALL takeLastRecord(JNIEnv *env, jclass /*type*/)
{
    jstring taken = env->NewStringUTF(lastRecord.c_str());
    lastRecord.clear();
    return taken;
}

// The class Calls with its natives bound to the code under test, as far as it declares them.
void bindCalls(JNIEnv *env)
{
    jclass calls = env->FindClass("Calls");
    const auto bind = [&](const std::string &name, const std::string &signature, void *function) {
        JNINativeMethod native{const_cast<char *>(name.c_str()), const_cast<char *>(signature.c_str()), function};
        if (env->RegisterNatives(calls, &native, 1) != JNI_OK) {
            env->ExceptionClear();
        }
    };
    for (const NativeMethod &method : nativeMethods()) {
        bind(method.name, method.signature, method.function);
    }
    bind("lastRecord", "()Ljava/lang/String;", reinterpret_cast<void *>(&takeLastRecord));
}

// Calls a static method that returns what went wrong, on a thread that Java made.
std::string javaSays(const char *type, const char *method, const char *signature, jint first = 0, jint second = 0)
{
    JNIEnv *env = vmEnv();
    env->PushLocalFrame(16);
    bindCalls(env);
    jclass tests = env->FindClass(type);
    auto said = static_cast<jstring>(
        env->CallStaticObjectMethod(tests, env->GetStaticMethodID(tests, method, signature), first, second));
    mustBeClear(env, std::string("running ") + method);
    const char *chars = env->GetStringUTFChars(said, nullptr);
    std::string out = chars;
    env->ReleaseStringUTFChars(said, chars);
    env->PopLocalFrame(nullptr);
    return out;
}

TEST(HostileJava, objectsThatMeanNoGood)
{
    quietRuntime(true);
    library().responder = [](const Operation &operation) {
        const std::size_t record = operation.arguments.find('[');
        if (record != std::string::npos) {
            lastRecord = operation.arguments.substr(record + 1, operation.arguments.find(']') - record - 1);
        }
        return Answer{};
    };
    for (const char *test : {"throwingAndNull", "arrayLengths", "textLengths"}) {
        EXPECT_EQ(javaSays("HostileJava", test, "()Ljava/lang/String;"), "") << test;
    }
    library().responder = nullptr;
    quietRuntime(false);
}

// Resident memory of the process in KiB.
long residentMemory()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmRSS:")) {
            return std::strtol(line.c_str() + std::strlen("VmRSS:"), nullptr, 10);
        }
    }
    return 0;
}

// What adapter dev's library answers: all bytes alike, by the handle. 0 is the handle of an adapter that is not open.
Answer adapterAnswer(const Operation &operation)
{
    if (operation.name == "SDOpenDeviceiSCSI") {
        return {0, "", handleOf(jint(operation.handle))};
    }
    for (jint dev = 0; dev < 32; ++dev) {
        if (operation.handle == handleOf(dev)) {
            bool another = operation.name == "SDSetDDBEntry" && operation.number != SD_UINT32(dev);
            return {another ? 0xbadU : 0U, std::string(operation.outSize, char('A' + dev)), 5};
        }
    }
    return {operation.handle == 0 ? ScriptedLibrary::FAULT : 0xbad1U, "", {}};
}

void storm(jint calls)
{
    constexpr jint threads = 8;
    quietRuntime(true);
    library().responder = adapterAnswer;
    EXPECT_EQ(javaSays("Storm", "run", "(II)Ljava/lang/String;", threads, calls / threads / 4), "") << "warming up";
    long before = residentMemory();
    EXPECT_EQ(javaSays("Storm", "run", "(II)Ljava/lang/String;", threads, calls / threads), "");
    long after = residentMemory();
    library().responder = nullptr;
    quietRuntime(false);
    std::printf("%d calls from %d threads; resident memory before %ld KiB, after %ld KiB\n", calls, threads, before,
                after);
#ifndef __SANITIZE_ADDRESS__ // which keeps freed blocks for a while
    EXPECT_LT(after - before, 12 * 1024) << "memory grows";
#endif
}

TEST(Storm, quick)
{
    storm(40'000);
}

TEST(StormLong, aMillionCalls)
{
    storm(1'000'000);
}
} // namespace
