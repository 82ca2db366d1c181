#include "Vm.h"

#include "ScriptedLibrary.h"

#include "com_varden_tavo_iscsi_jni_ApiWrapper.h"

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
        return Answer{0, "", handleOf(jint(operation.index))};
    };
    for (jint dev = 0; dev < 32; dev++) {
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
    for (const std::string &name : method.objects) {
        std::string simple = name.substr(0, name.find('#'));
        if (simple == "[]") { // an array of all objects so far
            array = env->NewObjectArray(jsize(objects.size()), env->FindClass("java/lang/Object"), nullptr);
            for (jsize i = 0; i < jsize(objects.size()); i++) {
                env->SetObjectArrayElement(array, i, objects[std::size_t(i)].second);
            }
            continue;
        }
        jclass type = env->FindClass((std::string(MODEL) + simple).c_str());
        mustBeClear(env, "finding class " + simple);
        objects.emplace_back(name, env->NewObject(type, env->GetMethodID(type, "<init>", "()V")));
        mustBeClear(env, "creating " + name);
    }
    fileName = env->NewStringUTF("/var/tmp/J\xc3\xb6rg.img");
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

jobject World::argument(unsigned n, const std::string &name) const
{
    if ((nulls >> (n - 1) & 1U) != 0) {
        return nullptr;
    }
    return name == "[]" ? array : name == "fileName" ? fileName : object(name);
}

void World::set(const std::string &path, const std::string &value)
{
    std::size_t slash = path.find('/');
    jclass reach = env->FindClass("Reach");
    env->CallStaticVoidMethod(
        reach, env->GetStaticMethodID(reach, "set", "(Ljava/lang/Object;Ljava/lang/String;Ljava/lang/String;)V"),
        object(path.substr(0, slash)), env->NewStringUTF(path.c_str() + slash + 1), env->NewStringUTF(value.c_str()));
    mustBeClear(env, "setting " + path + " to " + value);
}

std::string World::get(const std::string &path) const
{
    std::size_t slash = path.find('/');
    jclass reach = env->FindClass("Reach");
    auto value = static_cast<jstring>(env->CallStaticObjectMethod(
        reach, env->GetStaticMethodID(reach, "get", "(Ljava/lang/Object;Ljava/lang/String;)Ljava/lang/String;"),
        object(path.substr(0, slash)), env->NewStringUTF(path.c_str() + slash + 1)));
    mustBeClear(env, "reading " + path);
    const char *chars = env->GetStringUTFChars(value, nullptr);
    std::string out = chars;
    env->ReleaseStringUTFChars(value, chars);
    return out;
}
