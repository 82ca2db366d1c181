// The Java VM of the test program, and the objects that a native method is called with.
#pragma once

#include <jni.h>
#include <vdsdm.h>

#include <map>
#include <string>
#include <vector>

// The process's VM, created at first use, and the calling thread's environment.
JavaVM *javaVm();
JNIEnv *vmEnv();

// Ends the program when a Java error is pending: the tests' own Java calls must not fail.
void mustBeClear(JNIEnv *env, const std::string &doing);

// One native method and how to call it.
struct World;
struct NativeMethod {
    const char *name;
    std::vector<std::string> objects; // model classes of the objects it takes, created in this order
    std::string (*call)(JNIEnv *env, World &world);
};
const std::vector<NativeMethod> &nativeMethods();
const NativeMethod &nativeMethod(const std::string &name);

// Fresh objects for one call. `dev` is the adapter index to be passed; argument n (from 1) that takes an object is null
// when nulls has bit n - 1. The handles of all adapters are laid down by openAdapters.
struct World {
    explicit World(const NativeMethod &nativeMethodToCall);
    ~World();
    World(const World &) = delete;
    World &operator=(const World &) = delete;

    jobject object(const std::string &name) const;
    // Argument n as the call passes it.
    jobject argument(unsigned n, const std::string &name) const;
    void set(const std::string &path, const std::string &value);
    std::string get(const std::string &path) const;

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
