// The bridge's one way to the Java VM: method lookups, calls, text and arrays.
//
// A converter is a chain of rows joined by `&&`. A row names a method, a value and the line to print when the method is
// missing; it looks the method up, calls it at once and tells whether to go on. The row that fails has printed its line
// and left its status in the JavaObject, so that the chain stops there and nothing else needs to be tested.
//
// Local references: whoever makes one deletes it. The with... functions and the rows do so on every path, which keeps
// the number of live references the same for a table of one entry and for one of 512.
#pragma once

#include <cstddef>
#include <jni.h>
#include <type_traits>

#include "vdsdm/Status.h"
#include "vdsdm/Types.h"

// A Java object, the class on which its methods are looked up, and the status of the conversion: 0 until a row fails.
struct JavaObject {
    JNIEnv *env;
    jobject object;
    jclass type;
    SD_UINT32 status;
};

// What is printed when a method is missing; %s stands for its name.
using Message = const char *;
inline constexpr Message anonymous = "GetMethodID call failed!\n";
inline constexpr Message named = "GetMethodID %s call failed!\n";
inline constexpr Message namedObj = "GetMethodID %s - Obj call failed!\n";
inline constexpr Message twoBlanks = "GetMethodID  %s call failed!\n";
inline constexpr Message dashed = "GetMethodID - %s call failed!\n";
inline constexpr Message silent = nullptr;

// Classes whose objects the bridge creates, and the signatures that name model classes.
inline constexpr const char *IP_ADDR_CLASS = "com/varden/tavo/iscsi/model/IPAddr";
inline constexpr const char *DEV_DB_ENTRY_CLASS = "com/varden/tavo/iscsi/model/DevDBEntry";
inline constexpr const char *CHAP_TABLE_ENTRY_CLASS = "com/varden/tavo/iscsi/model/CHAPTableEntry";
inline constexpr const char *ISNS_TARGET_CLASS = "com/varden/tavo/iscsi/model/iSNSTarget";
inline constexpr const char *TAKES_IP_ADDR = "(Lcom/varden/tavo/iscsi/model/IPAddr;)V";
inline constexpr const char *TAKES_DEV_DB_ENTRY = "(Lcom/varden/tavo/iscsi/model/DevDBEntry;)V";
inline constexpr const char *TAKES_CHAP_TABLE_ENTRY = "(Lcom/varden/tavo/iscsi/model/CHAPTableEntry;)V";
inline constexpr const char *TAKES_ISNS_TARGET = "(Lcom/varden/tavo/iscsi/model/iSNSTarget;)V";
inline constexpr const char *GIVES_IP_ADDR = "()Lcom/varden/tavo/iscsi/model/IPAddr;";
inline constexpr const char *GIVES_NODE_INFO = "()Lcom/varden/tavo/iscsi/model/NodeInfo;";
inline constexpr const char *GIVES_DEV_ENTRY = "()Lcom/varden/tavo/iscsi/model/DevEntry;";
inline constexpr const char *GIVES_INIT_FW = "()Lcom/varden/tavo/iscsi/model/InitFW;";
inline constexpr const char *GIVES_TARGET_INFO = "()Lcom/varden/tavo/iscsi/model/TargetInfo;";
inline constexpr const char *GIVES_SCSI_INQ_INFO = "()Lcom/varden/tavo/iscsi/model/SCSIInqInfo;";

// Prints the line for a Java object that is null and returns ERR_JNI_NULL.
SD_UINT32 nullObject(const char *line);

// Tells whether a management call failed; if so prints its line, in which %x or %X stands for the status.
bool failed(SD_UINT32 status, const char *line);

// Clears the error that a failed step of the bridge's own raised (a missing class or method, no memory), for the places
// that carry on after such a step: JNI allows no further call while an error is pending. An exception that Java code
// threw stays pending and reaches the Java caller, as does every error elsewhere.
void forgetOwnError(JNIEnv *env);

// Looks a method up on the object's class. Missing: prints the message, stores ERR_JNI_METHOD and returns null.
jmethodID lookUp(JavaObject &owner, const char *name, const char *signature, Message message);

// Makes an object with its class's constructor without arguments, or returns null.
jobject newObject(JNIEnv *env, jclass type);

// Makes a string of a text field: up to its first 0 byte, at most `size` (256) bytes. Null when the VM cannot.
jstring newText(JNIEnv *env, const SD_UINT8 *field, std::size_t size);

// Makes a string of `length` bytes, up to the first 0 byte, by way of a heap buffer. Null when there is no memory.
void convertBytesToString(JNIEnv *env, const SD_UINT8 *bytes, jstring *javaString, int length);

// Copies a Java string's characters into a text field of `size` bytes: padded with zeros when shorter, without a
// terminator when it fills the field. Characters that cannot be had leave the field as it was.
void copyText(JNIEnv *env, jstring text, SD_UINT8 *field, std::size_t size);

// ---- Lending: each function gives back what it lent, on every path. ----

// Lends a local reference, which may be null, to work(reference) and returns the result.
template <typename Reference, typename Work>
auto withLocal(JNIEnv *env, Reference reference, Work work)
{
    auto result = work(reference);
    if (reference != nullptr) {
        env->DeleteLocalRef(reference);
    }
    return result;
}

// Converts an object with its own class: work(JavaObject &). Returns the status of the conversion.
template <typename Work>
SD_UINT32 withClassOf(JNIEnv *env, jobject object, Work work, const char *noClass = "Find class call failed!\n")
{
    return withLocal(env, env->GetObjectClass(object), [&](jclass type) {
        JavaObject owner{env, object, type, 0};
        if (type == nullptr) {
            owner.status = ERR_JNI_CLASS;
            failed(owner.status, noClass);
        } else {
            work(owner);
        }
        return owner.status;
    });
}

// The frame of a converter that returns nothing and whose caller carries on: a null object prints its line, and the
// error of a failed row is forgotten.
template <typename Work>
void convertAndCarryOn(JNIEnv *env, jobject object, const char *nullLine, Work work)
{
    if (object == nullptr) {
        nullObject(nullLine);
    } else if (withClassOf(env, object, work) != 0) {
        forgetOwnError(env);
    }
}

// Finds a class by name: work(jclass), which returns a status. Not found: prints the line and returns ERR_JNI_CLASS.
template <typename Work>
SD_UINT32 withClassNamed(JNIEnv *env, const char *name, const char *line, Work work)
{
    return withLocal(env, env->FindClass(name), [&](jclass type) {
        return failed(type == nullptr ? ERR_JNI_CLASS : 0, line) ? ERR_JNI_CLASS : work(type);
    });
}

// Makes an object to be filled and handed over: work(JavaObject &). No object: prints the line, ERR_JNI_NULL.
template <typename Work>
SD_UINT32 withNew(JNIEnv *env, jclass type, const char *line, Work work)
{
    return withLocal(env, newObject(env, type), [&](jobject object) {
        JavaObject made{env, object, type, 0};
        if (object == nullptr) {
            made.status = nullObject(line);
        } else {
            work(made);
        }
        return made.status;
    });
}

// Lends the characters of a Java string to work(characters). They are null when the string is or the VM has no memory.
template <typename Work>
auto withUtfChars(JNIEnv *env, jstring text, Work work)
{
    const char *characters = text == nullptr ? nullptr : env->GetStringUTFChars(text, nullptr);
    auto result = work(characters);
    if (characters != nullptr) {
        env->ReleaseStringUTFChars(text, characters);
    }
    return result;
}

// Makes a short[] with one element per byte, zero-extended. meanwhile() runs while its elements are borrowed: most
// callers look the setter up there. Null when the VM cannot make the array.
template <typename Work>
jshortArray newShorts(JNIEnv *env, const SD_UINT8 *bytes, jsize count, Work meanwhile)
{
    jshortArray array = env->NewShortArray(count);
    if (array == nullptr) {
        return nullptr;
    }
    jboolean copied = JNI_FALSE;
    jshort *elements = env->GetShortArrayElements(array, &copied);
    if (elements == nullptr) {
        env->DeleteLocalRef(array);
        return nullptr;
    }
    for (jsize i = 0; i < count; i++) {
        elements[i] = bytes[i];
    }
    meanwhile();
    env->ReleaseShortArrayElements(array, elements, 0);
    return array;
}

// ---- Rows, record to Java. The Java type is part of the name, since it is part of the contract. ----

bool callVoid(JavaObject &owner, const char *name, Message message);                    // ()V
bool setInt(JavaObject &owner, const char *name, SD_UINT32 value, Message message);     // (I)V, zero-extended
bool setShort(JavaObject &owner, const char *name, SD_UINT16 value, Message message);   // (S)V, the bits as they are
bool setByte(JavaObject &owner, const char *name, SD_UINT8 value, Message message);     // (B)V, the bits as they are
bool setString(JavaObject &owner, const char *name, const char *text, Message message); // a constant text
bool setObject(JavaObject &owner, const char *name, const char *signature, jobject value, Message message);
bool setTextOf(JavaObject &owner, const char *name, const SD_UINT8 *field, std::size_t size, Message message,
               const char *noString);
bool setBytesTextOf(JavaObject &owner, const char *name, const SD_UINT8 *bytes, std::size_t size, Message message);
bool setShortsOf(JavaObject &owner, const char *name, const SD_UINT8 *bytes, std::size_t size, Message message);
bool setShortsAndIntOf(JavaObject &owner, const char *name, const SD_UINT8 *bytes, std::size_t size, SD_UINT16 value,
                       Message message);

// Line for a string that could not be made: a null line hands the null string over, as the contract does in places.
inline constexpr const char *handNullOver = nullptr;

// A text field as a String.
template <std::size_t N>
bool setText(JavaObject &owner, const char *name, const SD_UINT8 (&field)[N], Message message, const char *noString)
{
    static_assert(N <= 256, "newText has room for 256 bytes");
    return setTextOf(owner, name, field, N, message, noString);
}

// A text field as a String made by convertBytesToString; null is handed over when it could not be made.
template <std::size_t N>
bool setBytesText(JavaObject &owner, const char *name, const SD_UINT8 (&field)[N], Message message)
{
    return setBytesTextOf(owner, name, field, N, message);
}

// A byte field as a short[], one element per byte. The array is made before the setter is looked up.
template <std::size_t N>
bool setShorts(JavaObject &owner, const char *name, const SD_UINT8 (&field)[N], Message message)
{
    return setShortsOf(owner, name, field, N, message);
}

// A byte field and a number: ([SI)V. The array is made before the setter is looked up.
template <std::size_t N>
bool setShortsAndInt(JavaObject &owner, const char *name, const SD_UINT8 (&field)[N], SD_UINT16 value, Message message)
{
    return setShortsAndIntOf(owner, name, field, N, value, message);
}

// ---- Rows, Java to record. A result is cut to the field's width. ----

bool readInt(JavaObject &owner, const char *name, jint &result, Message message);
bool readShort(JavaObject &owner, const char *name, jshort &result, Message message);
bool getByte(JavaObject &owner, const char *name, SD_UINT8 &field, Message message); // ()B
bool getFlag(JavaObject &owner, const char *name, SD_UINT8 &field, Message message); // ()Z, as 1 or 0
bool getTextOf(JavaObject &owner, const char *name, SD_UINT8 *field, std::size_t size, Message message);
bool getShortsOf(JavaObject &owner, const char *name, SD_UINT8 *bytes, std::size_t size, Message message);

// ()I
template <typename Field>
bool getInt(JavaObject &owner, const char *name, Field &field, Message message)
{
    jint result = 0;
    const bool found = readInt(owner, name, result, message);
    if (found) {
        field = static_cast<Field>(result);
    }
    return found;
}

// ()S
template <typename Field>
bool getShort(JavaObject &owner, const char *name, Field &field, Message message)
{
    jshort result = 0;
    const bool found = readShort(owner, name, result, message);
    if (found) {
        field = static_cast<Field>(result);
    }
    return found;
}

// A String into a text field; null leaves the field as it was.
template <std::size_t N>
bool getText(JavaObject &owner, const char *name, SD_UINT8 (&field)[N], Message message)
{
    return getTextOf(owner, name, field, N, message);
}

// A short[] into a byte field, the low 8 bits of each element. A null array, or one with fewer elements than the field
// has bytes, prints a line that names the getter and is ERR_JNI_NULL; the field stays as it was.
template <std::size_t N>
bool getShorts(JavaObject &owner, const char *name, SD_UINT8 (&field)[N], Message message)
{
    return getShortsOf(owner, name, field, N, message);
}

// Fetches an object from its owner's getter and lends it to work(jobject), which returns a status, or nothing when its
// failures do not count. The getter missing: its message and ERR_JNI_METHOD; a null object: its line and ERR_JNI_NULL.
template <typename Work>
bool withFetched(JavaObject &owner, const char *name, const char *signature, Message message, const char *nullLine,
                 Work work)
{
    jmethodID method = lookUp(owner, name, signature, message);
    if (method == nullptr) {
        return false;
    }
    owner.status = withLocal(owner.env, owner.env->CallObjectMethod(owner.object, method), [&](jobject object) {
        if (object == nullptr) {
            return nullObject(nullLine);
        }
        if constexpr (std::is_void_v<decltype(work(object))>) {
            work(object);
            return SD_UINT32{0};
        } else {
            return work(object);
        }
    });
    return owner.status == 0;
}
