#include "JavaAccess.h"

#include "RecordMemory.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace
{

// The longest text field of any record.
constexpr std::size_t LONGEST_TEXT = 256;

constexpr const char *TAKES_STRING = "(Ljava/lang/String;)V";

// Tells whether an error is of the class of this name.
bool isOf(JNIEnv *env, jthrowable error, const char *name)
{
    const auto type = local(env, env->FindClass(name));
    if (type == nullptr) {
        env->ExceptionClear();
        return false;
    }
    return env->IsInstanceOf(error, type.get()) == JNI_TRUE;
}

// Takes over a reference to a class that was looked up for an object.
JavaObject withOwnedClass(JNIEnv *env, jobject object, jclass type, const char *noClass)
{
    const SD_UINT32 status = type == nullptr ? ERR_JNI_CLASS : 0;
    report(status, noClass);
    return {env, object, type, status, local(env, type)};
}

// A row that hands its arguments to a setter.
template <typename... Arguments>
void callSetter(JavaObject &owner, const char *name, const char *signature, Message message, Arguments... arguments)
{
    if (jmethodID setter = lookUp(owner, name, signature, message)) {
        owner.env->CallVoidMethod(owner.object, setter, arguments...);
    }
}

// Hands a new string to a setter that has been looked up.
void handStringOver(JavaObject &owner, jmethodID setter, const char *name, const Local<jstring> &text,
                    const char *noStringLine)
{
    if (text == nullptr && noStringLine != handNullOver) {
        noValue(owner, noStringLine, name);
        return;
    }
    if (text == nullptr) {
        forgetOwnError(owner.env);
    }
    owner.env->CallVoidMethod(owner.object, setter, text.get());
}

// Makes the array, looks the setter up while its elements are borrowed, and calls it with the array and what follows.
template <typename... Following>
void handShortsOver(JavaObject &owner, const char *name, const char *signature, std::span<const SD_UINT8> bytes,
                    Message message, Following... following)
{
    if (owner.status != 0) {
        return;
    }
    jmethodID setter = nullptr;
    const auto array = newShorts(owner, name, bytes, [&] { setter = lookUp(owner, name, signature, message); });
    if (setter != nullptr) {
        owner.env->CallVoidMethod(owner.object, setter, array.get(), following...);
    }
}

} // namespace

void report(SD_UINT32 status, const char *line)
{
    if (status != 0) {
        std::printf(line, status);
    }
}

bool failed(SD_UINT32 status, const char *line)
{
    report(status, line);
    return status != 0;
}

SD_UINT32 nullObject(const char *line)
{
    std::printf("%s", line);
    return ERR_JNI_NULL;
}

void noValue(JavaObject &owner, const char *line, const char *name)
{
    std::printf(line, name);
    owner.status = ERR_JNI_NULL;
}

void forgetOwnError(JNIEnv *env)
{
    const auto error = local(env, env->ExceptionOccurred());
    if (error == nullptr) {
        return;
    }
    env->ExceptionClear();
    if (!isOf(env, error.get(), "java/lang/LinkageError") && !isOf(env, error.get(), "java/lang/OutOfMemoryError")) {
        env->Throw(error.get());
    }
}

void carryOn(const JavaObject &owner)
{
    if (owner.status != 0) {
        forgetOwnError(owner.env);
    }
}

JavaObject objectOf(JNIEnv *env, jobject object, const char *noClass)
{
    return withOwnedClass(env, object, env->GetObjectClass(object), noClass);
}

JavaObject objectOrNull(JNIEnv *env, jobject object, const char *nullLine)
{
    if (object == nullptr) {
        nullObject(nullLine);
        return objectWith(env, nullptr, nullptr);
    }
    return objectOf(env, object);
}

JavaObject objectAs(JNIEnv *env, jobject object, const char *className, const char *noClass)
{
    return withOwnedClass(env, object, env->FindClass(className), noClass);
}

JavaObject objectWith(JNIEnv *env, jobject object, jclass type)
{
    return {env, object, type, object == nullptr ? ERR_JNI_NULL : 0, local(env, jclass())};
}

Local<jclass> findClass(JNIEnv *env, const char *name, const char *line)
{
    auto type = local(env, env->FindClass(name));
    if (type == nullptr) {
        std::printf("%s", line);
    }
    return type;
}

Local<jobject> newObject(JNIEnv *env, jclass type, const char *line)
{
    jmethodID constructor = env->GetMethodID(type, "<init>", "()V");
    auto object = local(env, constructor == nullptr ? nullptr : env->NewObject(type, constructor));
    if (object == nullptr) {
        std::printf("%s", line);
    }
    return object;
}

jmethodID lookUp(JavaObject &owner, const char *name, const char *signature, Message message)
{
    if (owner.status != 0) {
        return nullptr;
    }
    jmethodID method = owner.env->GetMethodID(owner.type, name, signature);
    if (method == nullptr) {
        if (message != silent) {
            std::printf(message, name);
        }
        owner.status = ERR_JNI_METHOD;
    }
    return method;
}

Local<jstring> newText(JNIEnv *env, std::span<const SD_UINT8> field)
{
    char text[LONGEST_TEXT + 1];
    const std::size_t size = std::min(field.size(), LONGEST_TEXT);
    std::memcpy(text, field.data(), size);
    text[size] = '\0';
    auto made = local(env, env->NewStringUTF(text));
    // The field may be a CHAP secret.
    wipe(text, size);
    return made;
}

void convertBytesToString(JNIEnv *env, const SD_UINT8 *bytes, jstring *javaString, int length)
{
    *javaString = nullptr;
    const auto size = static_cast<std::size_t>(length);
    char *buffer = static_cast<char *>(std::malloc(size + 1));
    if (buffer == nullptr) {
        return;
    }
    std::memcpy(buffer, bytes, size);
    buffer[size] = '\0';
    *javaString = env->NewStringUTF(buffer);
    std::free(buffer);
}

void callVoid(JavaObject &owner, const char *name, Message message)
{
    callSetter(owner, name, "()V", message);
}

void setInt(JavaObject &owner, const char *name, SD_UINT32 value, Message message)
{
    callSetter(owner, name, "(I)V", message, static_cast<jint>(value));
}

void setShort(JavaObject &owner, const char *name, SD_UINT16 value, Message message)
{
    callSetter(owner, name, "(S)V", message, static_cast<jshort>(value));
}

void setByte(JavaObject &owner, const char *name, SD_UINT8 value, Message message)
{
    callSetter(owner, name, "(B)V", message, static_cast<jbyte>(value));
}

void setObject(JavaObject &owner, const char *name, const char *signature, jobject value, Message message)
{
    callSetter(owner, name, signature, message, value);
}

void setString(JavaObject &owner, const char *name, const char *text, Message message)
{
    if (jmethodID setter = lookUp(owner, name, TAKES_STRING, message)) {
        handStringOver(owner, setter, name, local(owner.env, owner.env->NewStringUTF(text)), noString);
    }
}

void setText(JavaObject &owner, const char *name, std::span<const SD_UINT8> field, Message message,
             const char *noStringLine)
{
    if (jmethodID setter = lookUp(owner, name, TAKES_STRING, message)) {
        handStringOver(owner, setter, name, newText(owner.env, field), noStringLine);
    }
}

void setBytesText(JavaObject &owner, const char *name, std::span<const SD_UINT8> field, Message message)
{
    if (jmethodID setter = lookUp(owner, name, TAKES_STRING, message)) {
        jstring text = nullptr;
        convertBytesToString(owner.env, field.data(), &text, static_cast<int>(field.size()));
        handStringOver(owner, setter, name, local(owner.env, text), handNullOver);
    }
}

void setShorts(JavaObject &owner, const char *name, std::span<const SD_UINT8> field, Message message)
{
    handShortsOver(owner, name, "([S)V", field, message);
}

void setShortsAndInt(JavaObject &owner, const char *name, std::span<const SD_UINT8> field, SD_UINT16 value,
                     Message message)
{
    handShortsOver(owner, name, "([SI)V", field, message, static_cast<jint>(value));
}

void getByte(JavaObject &owner, const char *name, SD_UINT8 &field, Message message)
{
    if (jmethodID getter = lookUp(owner, name, "()B", message)) {
        field = static_cast<SD_UINT8>(owner.env->CallByteMethod(owner.object, getter));
    }
}

void getFlag(JavaObject &owner, const char *name, SD_UINT8 &field, Message message)
{
    if (jmethodID getter = lookUp(owner, name, "()Z", message)) {
        field = owner.env->CallBooleanMethod(owner.object, getter) != JNI_FALSE ? 1 : 0;
    }
}

void getText(JavaObject &owner, const char *name, std::span<SD_UINT8> field, Message message)
{
    JNIEnv *env = owner.env;
    if (jmethodID getter = lookUp(owner, name, "()Ljava/lang/String;", message)) {
        const auto text = local(env, static_cast<jstring>(env->CallObjectMethod(owner.object, getter)));
        if (const auto characters = utfChars(env, text.get())) {
            std::strncpy(reinterpret_cast<char *>(field.data()), characters.get(), field.size());
        } else if (text != nullptr) {
            forgetOwnError(env);
        }
    }
}

void getShorts(JavaObject &owner, const char *name, std::span<SD_UINT8> field, Message message)
{
    constexpr const char *unusable = "NULL or short array from %s!\n";
    JNIEnv *env = owner.env;
    jmethodID getter = lookUp(owner, name, "()[S", message);
    if (getter == nullptr) {
        return;
    }
    const auto array = local(env, static_cast<jshortArray>(env->CallObjectMethod(owner.object, getter)));
    if (array == nullptr || static_cast<std::size_t>(env->GetArrayLength(array.get())) < field.size()) {
        noValue(owner, unusable, name);
        return;
    }
    jshort *elements = env->GetShortArrayElements(array.get(), nullptr);
    if (elements == nullptr) {
        noValue(owner, unusable, name);
        return;
    }
    for (std::size_t i = 0; i < field.size(); ++i) {
        field[i] = static_cast<SD_UINT8>(elements[i]);
    }
    env->ReleaseShortArrayElements(array.get(), elements, 0);
}
