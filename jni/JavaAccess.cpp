#include "JavaAccess.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Records.h"

namespace
{

// The longest text field of any record.
constexpr std::size_t LONGEST_TEXT = 256;

constexpr const char *TAKES_STRING = "(Ljava/lang/String;)V";

// Stores the status of an array or string that the VM could not make or that is not what the record needs; the line
// names the method it was for.
bool noValue(JavaObject &owner, const char *line, const char *name)
{
    std::printf(line, name);
    owner.status = ERR_JNI_NULL;
    return false;
}

bool isOf(JNIEnv *env, jthrowable error, const char *name)
{
    jclass type = env->FindClass(name);
    if (type == nullptr) {
        env->ExceptionClear();
        return false;
    }
    return withLocal(env, type, [&](jclass found) { return env->IsInstanceOf(error, found) == JNI_TRUE; });
}

} // namespace

SD_UINT32 nullObject(const char *line)
{
    std::printf("%s", line);
    return ERR_JNI_NULL;
}

bool failed(SD_UINT32 status, const char *line)
{
    if (status == 0) {
        return false;
    }
    std::printf(line, status);
    return true;
}

void forgetOwnError(JNIEnv *env)
{
    jthrowable error = env->ExceptionOccurred();
    if (error == nullptr) {
        return;
    }
    env->ExceptionClear();
    if (!isOf(env, error, "java/lang/LinkageError") && !isOf(env, error, "java/lang/OutOfMemoryError")) {
        env->Throw(error);
    }
    env->DeleteLocalRef(error);
}

jmethodID lookUp(JavaObject &owner, const char *name, const char *signature, Message message)
{
    jmethodID method = owner.env->GetMethodID(owner.type, name, signature);
    if (method == nullptr) {
        if (message != silent) {
            std::printf(message, name);
        }
        owner.status = ERR_JNI_METHOD;
    }
    return method;
}

jobject newObject(JNIEnv *env, jclass type)
{
    jmethodID constructor = env->GetMethodID(type, "<init>", "()V");
    return constructor == nullptr ? nullptr : env->NewObject(type, constructor);
}

jstring newText(JNIEnv *env, const SD_UINT8 *field, std::size_t size)
{
    char text[LONGEST_TEXT + 1];
    std::memcpy(text, field, size);
    text[size] = '\0';
    jstring made = env->NewStringUTF(text);
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

void copyText(JNIEnv *env, jstring text, SD_UINT8 *field, std::size_t size)
{
    withUtfChars(env, text, [&](const char *characters) {
        if (characters != nullptr) {
            std::strncpy(reinterpret_cast<char *>(field), characters, size);
        }
        return 0;
    });
}

bool callVoid(JavaObject &owner, const char *name, Message message)
{
    jmethodID method = lookUp(owner, name, "()V", message);
    if (method != nullptr) {
        owner.env->CallVoidMethod(owner.object, method);
    }
    return method != nullptr;
}

bool setInt(JavaObject &owner, const char *name, SD_UINT32 value, Message message)
{
    jmethodID method = lookUp(owner, name, "(I)V", message);
    if (method != nullptr) {
        owner.env->CallVoidMethod(owner.object, method, static_cast<jint>(value));
    }
    return method != nullptr;
}

bool setShort(JavaObject &owner, const char *name, SD_UINT16 value, Message message)
{
    jmethodID method = lookUp(owner, name, "(S)V", message);
    if (method != nullptr) {
        owner.env->CallVoidMethod(owner.object, method, static_cast<jshort>(value));
    }
    return method != nullptr;
}

bool setByte(JavaObject &owner, const char *name, SD_UINT8 value, Message message)
{
    jmethodID method = lookUp(owner, name, "(B)V", message);
    if (method != nullptr) {
        owner.env->CallVoidMethod(owner.object, method, static_cast<jbyte>(value));
    }
    return method != nullptr;
}

bool setObject(JavaObject &owner, const char *name, const char *signature, jobject value, Message message)
{
    jmethodID method = lookUp(owner, name, signature, message);
    if (method != nullptr) {
        owner.env->CallVoidMethod(owner.object, method, value);
    }
    return method != nullptr;
}

// Hands a string to a setter that has been looked up, and deletes the reference.
static bool handStringOver(JavaObject &owner, jmethodID method, jstring text)
{
    if (text == nullptr) {
        forgetOwnError(owner.env);
    }
    return withLocal(owner.env, text, [&](jstring string) {
        owner.env->CallVoidMethod(owner.object, method, string);
        return true;
    });
}

bool setString(JavaObject &owner, const char *name, const char *text, Message message)
{
    jmethodID method = lookUp(owner, name, TAKES_STRING, message);
    if (method == nullptr) {
        return false;
    }
    jstring string = owner.env->NewStringUTF(text);
    return string == nullptr ? noValue(owner, "NULL string for %s!\n", name) : handStringOver(owner, method, string);
}

bool setTextOf(JavaObject &owner, const char *name, const SD_UINT8 *field, std::size_t size, Message message,
               const char *noString)
{
    jmethodID method = lookUp(owner, name, TAKES_STRING, message);
    if (method == nullptr) {
        return false;
    }
    jstring text = newText(owner.env, field, size);
    if (text == nullptr && noString != handNullOver) {
        return noValue(owner, noString, name);
    }
    return handStringOver(owner, method, text);
}

bool setBytesTextOf(JavaObject &owner, const char *name, const SD_UINT8 *bytes, std::size_t size, Message message)
{
    jmethodID method = lookUp(owner, name, TAKES_STRING, message);
    if (method == nullptr) {
        return false;
    }
    jstring text = nullptr;
    convertBytesToString(owner.env, bytes, &text, static_cast<int>(size));
    return handStringOver(owner, method, text);
}

// Makes the array, looks the setter up while its elements are borrowed, and calls it with the array: call(setter,
// array).
template <typename Call>
static bool handShortsOver(JavaObject &owner, const char *name, const char *signature, const SD_UINT8 *bytes,
                           std::size_t size, Message message, Call call)
{
    jmethodID method = nullptr;
    jshortArray made = newShorts(owner.env, bytes, static_cast<jsize>(size),
                                 [&] { method = lookUp(owner, name, signature, message); });
    return withLocal(owner.env, made, [&](jshortArray array) {
        if (array == nullptr) {
            return noValue(owner, "NULL array for %s!\n", name);
        }
        if (method != nullptr) {
            call(method, array);
        }
        return method != nullptr;
    });
}

bool setShortsOf(JavaObject &owner, const char *name, const SD_UINT8 *bytes, std::size_t size, Message message)
{
    return handShortsOver(owner, name, "([S)V", bytes, size, message, [&](jmethodID method, jshortArray array) {
        owner.env->CallVoidMethod(owner.object, method, array);
    });
}

bool setShortsAndIntOf(JavaObject &owner, const char *name, const SD_UINT8 *bytes, std::size_t size, SD_UINT16 value,
                       Message message)
{
    return handShortsOver(owner, name, "([SI)V", bytes, size, message, [&](jmethodID method, jshortArray array) {
        owner.env->CallVoidMethod(owner.object, method, array, static_cast<jint>(value));
    });
}

bool readInt(JavaObject &owner, const char *name, jint &result, Message message)
{
    jmethodID method = lookUp(owner, name, "()I", message);
    if (method != nullptr) {
        result = owner.env->CallIntMethod(owner.object, method);
    }
    return method != nullptr;
}

bool readShort(JavaObject &owner, const char *name, jshort &result, Message message)
{
    jmethodID method = lookUp(owner, name, "()S", message);
    if (method != nullptr) {
        result = owner.env->CallShortMethod(owner.object, method);
    }
    return method != nullptr;
}

bool getByte(JavaObject &owner, const char *name, SD_UINT8 &field, Message message)
{
    jmethodID method = lookUp(owner, name, "()B", message);
    if (method != nullptr) {
        field = static_cast<SD_UINT8>(owner.env->CallByteMethod(owner.object, method));
    }
    return method != nullptr;
}

bool getFlag(JavaObject &owner, const char *name, SD_UINT8 &field, Message message)
{
    jmethodID method = lookUp(owner, name, "()Z", message);
    if (method != nullptr) {
        field = owner.env->CallBooleanMethod(owner.object, method) != JNI_FALSE ? 1 : 0;
    }
    return method != nullptr;
}

bool getTextOf(JavaObject &owner, const char *name, SD_UINT8 *field, std::size_t size, Message message)
{
    jmethodID method = lookUp(owner, name, "()Ljava/lang/String;", message);
    if (method == nullptr) {
        return false;
    }
    return withLocal(owner.env, owner.env->CallObjectMethod(owner.object, method), [&](jobject text) {
        copyText(owner.env, static_cast<jstring>(text), field, size);
        return true;
    });
}

bool getShortsOf(JavaObject &owner, const char *name, SD_UINT8 *bytes, std::size_t size, Message message)
{
    constexpr const char *unusable = "NULL or short array from %s!\n";
    JNIEnv *env = owner.env;
    jmethodID method = lookUp(owner, name, "()[S", message);
    if (method == nullptr) {
        return false;
    }
    return withLocal(env, env->CallObjectMethod(owner.object, method), [&](jobject object) {
        auto *array = static_cast<jshortArray>(object);
        if (array == nullptr || static_cast<std::size_t>(env->GetArrayLength(array)) < size) {
            return noValue(owner, unusable, name);
        }
        jshort *elements = env->GetShortArrayElements(array, nullptr);
        if (elements == nullptr) {
            return noValue(owner, unusable, name);
        }
        for (std::size_t i = 0; i < size; i++) {
            bytes[i] = static_cast<SD_UINT8>(elements[i]);
        }
        env->ReleaseShortArrayElements(array, elements, 0);
        return true;
    });
}
