#include "Vm.h"

#include "ScriptedLibrary.h"
#include "com_varden_tavo_iscsi_jni_ApiWrapper.h"

#include <alloca.h>

#include <cstring>

namespace
{
constexpr const char *MODEL = "com/varden/tavo/iscsi/model/";

JavaVM *create()
{
    std::string classPath = "-Djava.class.path=";
    std::string options[] = {classPath + TAVO_CLASS_PATH, "-Xmx96m", "-Xms96m", "-XX:+AlwaysPreTouch",
                             "-XX:+UseSerialGC"};
    std::vector<JavaVMOption> list;
    for (std::string &option : options) {
        list.push_back({option.data(), nullptr});
    }
    JavaVMInitArgs arguments{JNI_VERSION_10, jint(list.size()), list.data(), JNI_FALSE};
    JavaVM *vm = nullptr;
    void *env = nullptr;
    if (JNI_CreateJavaVM(&vm, &env, &arguments) != JNI_OK) {
        giveUp("the Java VM could not be created");
    }
    return vm;
}

void openAdapters(JNIEnv *env)
{
    auto responder = library().responder;
    library().responder = [](const Operation &operation) {
        return Answer{0, "", handleOf(jint(operation.handle))};
    };
    for (jint dev = 0; dev < 32; ++dev) {
        Java_com_varden_tavo_iscsi_jni_ApiWrapper_openDevice(env, nullptr, dev);
    }
    library().responder = responder;
}
} // namespace

JavaVM *javaVm()
{
    static JavaVM *vm = create();
    return vm;
}

JNIEnv *vmEnv()
{
    void *env = nullptr;
    javaVm()->GetEnv(&env, JNI_VERSION_10);
    return static_cast<JNIEnv *>(env);
}

void mustBeClear(JNIEnv *env, const std::string &doing)
{
    if (env->ExceptionCheck() == JNI_TRUE) {
        env->ExceptionDescribe();
        giveUp("while " + doing);
    }
}

SDMGT_HANDLE handleOf(jint dev)
{
    return 0xc3d4e500U + SD_UINT32(dev) * 7U + 1U;
}

const NativeMethod &nativeMethod(const std::string &name)
{
    for (const NativeMethod &method : nativeMethods()) {
        if (name == method.name) {
            return method;
        }
    }
    giveUp("no native method " + name);
}

World::World(const NativeMethod &nativeMethodToCall) : method(nativeMethodToCall), env(vmEnv())
{
    env->PushLocalFrame(64);
    const auto create = [this](const std::string &type, const std::string &name) {
        jclass found = env->FindClass((std::string(MODEL) + type).c_str());
        mustBeClear(env, "finding class " + type);
        objects.emplace_back(name, env->NewObject(found, env->GetMethodID(found, "<init>", "()V")));
        mustBeClear(env, "creating " + name);
    };
    for (const std::string &type : method.objects) {
        if (type.ends_with("[]")) {
            const std::string element = type.substr(0, type.size() - 2);
            create(element, element);
            create(element, element + "#2");
            array = env->NewObjectArray(2, env->FindClass("java/lang/Object"), objects[0].second);
            env->SetObjectArrayElement(array, 1, objects[1].second);
        } else if (type != "fileName") {
            create(type, type);
        }
    }
    fileName = env->NewStringUTF(FILE_NAME);
    openAdapters(env);
}

World::~World()
{
    for (auto &[name, object] : objects) {
        if (name == "result") {
            env->DeleteGlobalRef(object);
        }
    }
    env->PopLocalFrame(nullptr);
}

jobject World::object(const std::string &name) const
{
    for (const auto &[known, object] : objects) {
        if (known == name) {
            return object;
        }
    }
    giveUp(std::string(method.name) + " has no object " + name);
}

jobject World::argument(unsigned n) const
{
    const std::string &type = method.objects.at(n - 1);
    if ((nulls >> (n - 1) & 1U) != 0) {
        return nullptr;
    }
    return type.ends_with("[]") ? array : type == "fileName" ? fileName : object(type);
}

void World::set(const std::string &path, const std::string &value)
{
    std::size_t slash = path.find('/');
    jclass values = env->FindClass("ModelValues");
    env->CallStaticVoidMethod(
        values, env->GetStaticMethodID(values, "set", "(Ljava/lang/Object;Ljava/lang/String;Ljava/lang/String;)V"),
        object(path.substr(0, slash)), env->NewStringUTF(path.c_str() + slash + 1), env->NewStringUTF(value.c_str()));
    mustBeClear(env, "setting " + path + " to " + value);
}

namespace
{
// Leaves rubbish where the next call puts its records.
[[gnu::noinline]] void dirtyStack()
{
    constexpr std::size_t size = 96UL * 1024;
    void *below = alloca(size);
    std::memset(below, 0xa5, size);
    asm volatile("" : : "r"(below) : "memory");
}
} // namespace

Outcome call(World &world, const std::function<void(JniWatch &)> &arrange)
{
    Outcome out;
    JniWatch watch(world.env);
    // Names follow the order in which the world made its objects, whatever the call meets first.
    for (auto &[name, object] : world.objects) {
        watch.nameOf(object);
    }
    if (arrange) {
        arrange(watch);
    }
    dirtyStack();
    out.result = world.method.call(watch.env(), world);
    out.events = watch.events;
    out.printed = watch.printed;
    out.left = watch.breaches;
    const auto mustBeNone = [&](long count, const char *what) {
        out.left += count == 0 ? "" : std::to_string(count) + " " + what + "\n";
    };
    mustBeNone(long(watch.loans()), "borrowed and not given back");
    mustBeNone(watch.heapBlocks, "heap blocks left");
    mustBeNone(long(watch.alive()), "local references left");
    mustBeNone(world.method.name == std::string("setCHAPTableData") ? long(watch.unwiped) : 0,
               "blocks of secrets freed");
    out.pending = watch.pending();
    out.peak = watch.peak;
    return out;
}
