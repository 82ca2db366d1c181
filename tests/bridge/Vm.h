// The Java VM of the test program, and the objects that a native method is called with.
#pragma once

#include "JniWatch.h"

#include <jni.h>
#include <vdsdm.h>

#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

// The process's VM, created at first use, and the calling thread's environment.
JavaVM *javaVm();
JNIEnv *vmEnv();

// Ends the program when a Java error is pending: the tests' own Java calls must not fail.
void mustBeClear(JNIEnv *env, const std::string &doing);

// Calls work() while a stub stands in for one function of the VM.
template <typename Function, typename Work>
void withStub(Function JNINativeInterface_::*function, std::type_identity_t<Function> stub, const Work &work)
{
    JNIEnv *env = vmEnv();
    const JNINativeInterface_ *real = env->functions;
    JNINativeInterface_ functions = *real;
    functions.*function = stub;
    env->functions = &functions;
    work(env);
    env->functions = real;
}

// One native method and how to call it.
struct World;
struct NativeMethod {
    const char *name;
    std::vector<std::string> objects; // the arguments that are objects: model classes, CLASS[] for an array of two
    std::function<std::string(JNIEnv *env, World &world)> call;
    std::string signature; // as a static method that takes any object
    void *function;
};
const std::vector<NativeMethod> &nativeMethods();
const NativeMethod &nativeMethod(const std::string &name);

// The file name that methods are called with.
inline constexpr const char *FILE_NAME = "/var/tmp/J\xc3\xb6rg.img";

// Fresh objects for one call. `dev` is the adapter index to be passed; argument n (from 1) that takes an object is null
// when nulls has bit n - 1. All adapters are open.
struct World {
    explicit World(const NativeMethod &nativeMethodToCall);
    ~World();
    World(const World &) = delete;
    World &operator=(const World &) = delete;

    jobject object(const std::string &name) const;
    // Argument n as the call passes it.
    jobject argument(unsigned n) const;
    void set(const std::string &path, const std::string &value);

    const NativeMethod &method;
    JNIEnv *env;
    jint dev = 17;
    unsigned nulls = 0;
    std::vector<std::pair<std::string, jobject>> objects; // in order of creation; "result" when one was returned
    jobjectArray array = nullptr;
    jstring fileName = nullptr;
};

// The handle that adapter dev is open with.
SDMGT_HANDLE handleOf(jint dev);

// What came of one call.
struct Outcome {
    std::string result;
    std::vector<std::string> events;
    std::string printed;
    std::string left; // what no call may do or leave behind, empty when there is nothing
    bool pending = false;
    std::size_t peak = 0; // most local references alive at once
};

// Calls the world's method under a watch that `arrange` may set up. The stack below is full of rubbish.
Outcome call(World &world, const std::function<void(JniWatch &)> &arrange = {});
