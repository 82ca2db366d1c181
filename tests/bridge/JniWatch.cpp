#include "JniWatch.h"

#include "ScriptedLibrary.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

extern "C" void *__real_malloc(size_t size);
extern "C" void __real_free(void *block);

namespace
{
thread_local JniWatch *currentWatch = nullptr;

constexpr const char *OUT_OF_MEMORY = "java/lang/OutOfMemoryError";

// In the place of the functions that the bridge has no business with.
void forbidden()
{
    giveUp("a JNI function outside the bridge's list was called");
}
} // namespace

// The table's functions. Each finds its watch by the environment it is called with. The VM itself ends the program when
// it is called with null for a class, an object or a method.
struct WatchedTable {
    static JniWatch &watch(JNIEnv *env)
    {
        return *static_cast<JniWatch::Lent *>(env)->owner;
    }

    static jclass JNICALL findClass(JNIEnv *env, const char *name)
    {
        JniWatch &w = watch(env);
        if (std::strncmp(name, "java/", 5) == 0) { // telling errors apart, which is nobody's contract
            return w.made(w.vm_->FindClass(name));
        }
        const char *simple = std::strrchr(name, '/');
        if (w.fails("java/lang/NoClassDefFoundError",
                    [&] { return "find " + std::string(simple != nullptr ? simple + 1 : name); })) {
            return nullptr;
        }
        return w.made(w.vm_->FindClass(name));
    }

    static jclass JNICALL getObjectClass(JNIEnv *env, jobject object)
    {
        JniWatch &w = watch(env);
        w.fails(nullptr, [&] { return "class " + w.nameOf(object); });
        return w.made(w.vm_->GetObjectClass(object));
    }

    static jmethodID JNICALL getMethodID(JNIEnv *env, jclass cls, const char *name, const char *signature)
    {
        JniWatch &w = watch(env);
        if (w.fails("java/lang/NoSuchMethodError",
                    [&] { return "lookup " + w.className(cls) + " " + name + " " + signature; })) {
            return nullptr;
        }
        jmethodID id = w.vm_->GetMethodID(cls, name, signature);
        if (id == nullptr) {
            w.vm_->ExceptionClear();
            w.breach("no method " + w.className(cls) + "." + name + " " + signature);
            return nullptr;
        }
        if (!w.methods_.contains(id)) {
            w.methods_[id] = {static_cast<jclass>(w.vm_->NewGlobalRef(cls)), name, signature};
        }
        return id;
    }

    static jobject JNICALL newObjectV(JNIEnv *env, jclass cls, jmethodID id, va_list values)
    {
        JniWatch &w = watch(env);
        if (w.fails(OUT_OF_MEMORY, [&] { return "create " + w.className(cls); })) {
            return nullptr;
        }
        return w.made(w.vm_->NewObjectV(cls, id, values));
    }

    // What all calls have in common: written down, and carried out by the VM unless they fail.
    template <typename Work>
    static void call(JNIEnv *env, jobject object, jmethodID id, char result, va_list values, const Work &carryOut)
    {
        JniWatch &w = watch(env);
        const JniWatch::Method &method = w.method(object, id, result);
        const bool canFail = result == 'L' || w.leavePending;
        va_list copy;
        va_copy(copy, values);
        if (!w.fails(canFail ? "java/lang/IllegalStateException" : nullptr,
                     [&] { return "call " + w.nameOf(object) + " " + method.name + w.arguments(method, copy); })) {
            carryOut(w);
            w.mustNotThrow();
        }
        va_end(copy);
    }

    static void JNICALL callVoid(JNIEnv *env, jobject object, jmethodID id, va_list values)
    {
        call(env, object, id, 'V', values, [&](JniWatch &w) { w.vm_->CallVoidMethodV(object, id, values); });
    }

    static jobject JNICALL callObject(JNIEnv *env, jobject object, jmethodID id, va_list values)
    {
        jobject result = nullptr;
        call(env, object, id, 'L', values,
             [&](JniWatch &w) { result = w.made(w.vm_->CallObjectMethodV(object, id, values)); });
        return result;
    }

    template <typename T, char Letter, T (JNIEnv::*Call)(jobject, jmethodID, va_list)>
    static T JNICALL callNumber(JNIEnv *env, jobject object, jmethodID id, va_list values)
    {
        T result = 0;
        call(env, object, id, Letter, values, [&](JniWatch &w) { result = (w.vm_->*Call)(object, id, values); });
        return result;
    }

    static jstring JNICALL newStringUTF(JNIEnv *env, const char *text)
    {
        JniWatch &w = watch(env);
        if (w.fails(OUT_OF_MEMORY, [&] { return "string \"" + std::string(text) + "\""; })) {
            return nullptr;
        }
        return w.made(w.vm_->NewStringUTF(text));
    }

    static const char *JNICALL getStringUTFChars(JNIEnv *env, jstring string, jboolean *isCopy)
    {
        JniWatch &w = watch(env);
        if (w.fails(OUT_OF_MEMORY, [&] { return "chars " + w.nameOf(string); })) {
            return nullptr;
        }
        std::string text = w.text(string);
        char *chars = static_cast<char *>(__real_malloc(text.size() + 1));
        std::memcpy(chars, text.c_str(), text.size() + 1);
        if (isCopy != nullptr) {
            *isCopy = JNI_TRUE;
        }
        w.loans_[chars] = {w.vm_->NewGlobalRef(string), "chars"};
        return chars;
    }

    // Ends a loan. Returns false, and notes the breach, when there is none.
    static bool settle(JniWatch &w, jobject from, const void *contents, const std::string &what)
    {
        auto loan = w.loans_.find(contents);
        if (loan == w.loans_.end() || loan->second.what != what
            || w.vm_->IsSameObject(loan->second.from, from) == JNI_FALSE) {
            w.breach("given back without having been borrowed: " + what);
            return false;
        }
        w.vm_->DeleteGlobalRef(loan->second.from);
        w.loans_.erase(loan);
        return true;
    }

    static void JNICALL releaseStringUTFChars(JNIEnv *env, jstring string, const char *chars)
    {
        JniWatch &w = watch(env);
        w.step(false, [&] { return "give back " + w.nameOf(string); });
        if (settle(w, string, chars, "chars")) {
            __real_free(const_cast<char *>(chars));
        }
    }

    template <typename Array, Array (JNIEnv::*New)(jsize)>
    static Array JNICALL newArray(JNIEnv *env, jsize length)
    {
        JniWatch &w = watch(env);
        if (w.fails(OUT_OF_MEMORY, [&] { return "array " + std::to_string(length); })) {
            return nullptr;
        }
        return w.made((w.vm_->*New)(length));
    }

    // Elements are lent as a heap block of their exact size, so that one step beyond is seen.
    template <typename T, typename Array, void (JNIEnv::*Read)(Array, jsize, jsize, T *)>
    static T *JNICALL getElements(JNIEnv *env, Array array, jboolean *isCopy)
    {
        JniWatch &w = watch(env);
        jsize length = w.vm_->GetArrayLength(array);
        if (w.fails(OUT_OF_MEMORY, [&] { return "borrow " + std::to_string(length); })) {
            return nullptr;
        }
        T *elements = static_cast<T *>(__real_malloc(std::max<std::size_t>(1, sizeof(T) * unsigned(length))));
        (w.vm_->*Read)(array, 0, length, elements);
        if (isCopy != nullptr) {
            *isCopy = JNI_TRUE;
        }
        w.loans_[elements] = {w.vm_->NewGlobalRef(array), "elements"};
        return elements;
    }

    template <typename T, typename Array, void (JNIEnv::*Write)(Array, jsize, jsize, const T *)>
    static void JNICALL releaseElements(JNIEnv *env, Array array, T *elements, jint mode)
    {
        JniWatch &w = watch(env);
        w.step(false, [&] { return "give back mode " + std::to_string(mode); });
        if (!settle(w, array, elements, "elements")) {
            return;
        }
        if (mode != JNI_ABORT) {
            (w.vm_->*Write)(array, 0, w.vm_->GetArrayLength(array), elements);
        }
        if (mode == JNI_COMMIT) {
            w.breach("elements committed and not freed");
        }
        __real_free(elements);
    }

    static jsize JNICALL getArrayLength(JNIEnv *env, jarray array)
    {
        JniWatch &w = watch(env);
        w.fails(nullptr, [&] { return std::string("length"); });
        return w.vm_->GetArrayLength(array);
    }

    static jobject JNICALL getObjectArrayElement(JNIEnv *env, jobjectArray array, jsize index)
    {
        JniWatch &w = watch(env);
        if (w.fails(OUT_OF_MEMORY, [&] { return "element " + std::to_string(index); })) {
            return nullptr;
        }
        return w.made(w.vm_->GetObjectArrayElement(array, index));
    }

    static void JNICALL deleteLocalRef(JNIEnv *env, jobject object)
    {
        JniWatch &w = watch(env);
        if (object == nullptr) {
            return;
        }
        if (std::erase(w.alive_, object) == 0) {
            w.breach("deleted a local reference that is not the bridge's");
            return;
        }
        w.vm_->DeleteLocalRef(object);
    }

    static void JNICALL exceptionClear(JNIEnv *env)
    {
        JniWatch &w = watch(env);
        w.setPending(nullptr);
    }

    static jthrowable JNICALL exceptionOccurred(JNIEnv *env)
    {
        JniWatch &w = watch(env);
        return w.made(static_cast<jthrowable>(w.vm_->NewLocalRef(w.pendingError_)));
    }

    static jint JNICALL throwError(JNIEnv *env, jthrowable error)
    {
        JniWatch &w = watch(env);
        if (w.lastError_.empty()) {
            w.breach("an error of the bridge's own was thrown");
        }
        w.setPending(error);
        return 0;
    }

    static jboolean JNICALL isInstanceOf(JNIEnv *env, jobject object, jclass cls)
    {
        return watch(env).vm_->IsInstanceOf(object, cls);
    }

    static const JNINativeInterface_ *table()
    {
        static const JNINativeInterface_ functions = [] {
            std::array<void *, sizeof(JNINativeInterface_) / sizeof(void *)> entries;
            entries.fill(reinterpret_cast<void *>(&forbidden));
            auto t = std::bit_cast<JNINativeInterface_>(entries);
            t.FindClass = findClass;
            t.GetObjectClass = getObjectClass;
            t.GetMethodID = getMethodID;
            t.NewObjectV = newObjectV;
            t.CallVoidMethodV = callVoid;
            t.CallObjectMethodV = callObject;
            t.CallIntMethodV = callNumber<jint, 'I', &JNIEnv::CallIntMethodV>;
            t.CallShortMethodV = callNumber<jshort, 'S', &JNIEnv::CallShortMethodV>;
            t.CallByteMethodV = callNumber<jbyte, 'B', &JNIEnv::CallByteMethodV>;
            t.CallBooleanMethodV = callNumber<jboolean, 'Z', &JNIEnv::CallBooleanMethodV>;
            t.NewStringUTF = newStringUTF;
            t.GetStringUTFChars = getStringUTFChars;
            t.ReleaseStringUTFChars = releaseStringUTFChars;
            t.NewShortArray = newArray<jshortArray, &JNIEnv::NewShortArray>;
            t.NewLongArray = newArray<jlongArray, &JNIEnv::NewLongArray>;
            t.NewByteArray = newArray<jbyteArray, &JNIEnv::NewByteArray>;
            t.GetShortArrayElements = getElements<jshort, jshortArray, &JNIEnv::GetShortArrayRegion>;
            t.GetLongArrayElements = getElements<jlong, jlongArray, &JNIEnv::GetLongArrayRegion>;
            t.GetByteArrayElements = getElements<jbyte, jbyteArray, &JNIEnv::GetByteArrayRegion>;
            t.ReleaseShortArrayElements = releaseElements<jshort, jshortArray, &JNIEnv::SetShortArrayRegion>;
            t.ReleaseLongArrayElements = releaseElements<jlong, jlongArray, &JNIEnv::SetLongArrayRegion>;
            t.ReleaseByteArrayElements = releaseElements<jbyte, jbyteArray, &JNIEnv::SetByteArrayRegion>;
            t.GetArrayLength = getArrayLength;
            t.GetObjectArrayElement = getObjectArrayElement;
            t.DeleteLocalRef = deleteLocalRef;
            t.ExceptionClear = exceptionClear;
            t.ExceptionOccurred = exceptionOccurred;
            t.Throw = throwError;
            t.IsInstanceOf = isInstanceOf;
            return t;
        }();
        return &functions;
    }
};

JniWatch::JniWatch(JNIEnv *vm) : vm_(vm), outer_(currentWatch)
{
    lent_.functions = WatchedTable::table();
    lent_.owner = this;
    currentWatch = this;
    vm_->PushLocalFrame(64);
}

JniWatch::~JniWatch()
{
    currentWatch = outer_;
    setPending(nullptr);
    for (auto &[object, name] : names_) {
        vm_->DeleteGlobalRef(object);
    }
    for (auto &[id, method] : methods_) {
        vm_->DeleteGlobalRef(method.owner);
    }
    vm_->PopLocalFrame(nullptr);
}

void JniWatch::handedOut(jobject reference)
{
    std::erase(alive_, reference);
}

JniWatch *JniWatch::current()
{
    return currentWatch;
}

bool JniWatch::step(bool canFail, const std::function<std::string()> &text)
{
    if (!recording) {
        return false;
    }
    const bool fail = canFail && long(events.size()) == failEvent;
    events.push_back(text());
    if (fail) {
        failedAt = events.back();
    }
    return fail;
}

// A JNI call, which raises the named error when it fails; one without an error never does. While a Java error is
// pending none is allowed but those that clear up, and the VM fails all others.
bool JniWatch::fails(const char *error, const std::function<std::string()> &text)
{
    if (pending()) {
        if (lastError_ == "java/lang/NoSuchMethodError" || lastError_ == "java/lang/NoClassDefFoundError") {
            breach("called while the error of a failed lookup was pending: " + text());
        }
        return true;
    }
    if (!step(error != nullptr, text)) {
        return false;
    }
    if (leavePending) {
        jclass type = vm_->FindClass(error);
        jobject raised = vm_->NewObject(type, vm_->GetMethodID(type, "<init>", "()V"));
        setPending(raised);
        lastError_ = error;
        vm_->DeleteLocalRef(raised);
        vm_->DeleteLocalRef(type);
    }
    return true;
}

// The objects of these tests throw nothing of their own.
void JniWatch::mustNotThrow()
{
    if (vm_->ExceptionCheck() == JNI_TRUE) {
        vm_->ExceptionDescribe();
        vm_->ExceptionClear();
        breach("Java code threw");
    }
}

void JniWatch::setPending(jobject error)
{
    if (pendingError_ != nullptr) {
        vm_->DeleteGlobalRef(pendingError_);
    }
    pendingError_ = error == nullptr ? nullptr : vm_->NewGlobalRef(error);
}
