// The bridge's one way to the Java VM: method lookups, calls, text and arrays.
//
// A converter is a list of rows. A row names a method, a value and the line to print when the method is missing; it
// looks the method up and calls it at once. The status of a JavaObject is sticky: the row that fails prints its line
// and stores its status, and every later row of that object does nothing. What is no row asks for the status itself.
//
// Whoever makes a local reference owns it by a Local, which deletes it on every path. That keeps the number of live
// references the same for a table of one entry and for one of 512.
#pragma once

#include "vdsdm/Status.h"
#include "vdsdm/Types.h"

#include <jni.h>

#include <cstddef>
#include <memory>
#include <span>
#include <type_traits>
#include <utility>

// Owns a local reference, which may be null, and deletes it in the end.
template <typename Reference>
auto local(JNIEnv *env, Reference reference)
{
    auto giveBack = [env](Reference held) {
        env->DeleteLocalRef(held);
    };
    return std::unique_ptr<std::remove_pointer_t<Reference>, decltype(giveBack)>(reference, giveBack);
}

template <typename Reference>
using Local = decltype(local(std::declval<JNIEnv *>(), std::declval<Reference>()));

// Borrows the characters of a Java string. Null when the string is or the VM has no memory.
inline auto utfChars(JNIEnv *env, jstring text)
{
    const char *characters = text == nullptr ? nullptr : env->GetStringUTFChars(text, nullptr);
    auto giveBack = [env, text](const char *held) {
        env->ReleaseStringUTFChars(text, held);
    };
    return std::unique_ptr<const char, decltype(giveBack)>(characters, giveBack);
}

// A Java object, the class on which its methods are looked up, and the status of the conversion: 0 until a row fails.
struct JavaObject {
    JNIEnv *env;
    jobject object;
    jclass type;
    SD_UINT32 status;
    Local<jclass> ownedType; // the class, where it was found for this object
};

// What is printed when a method is missing; %s stands for its name.
using Message = const char *;
inline constexpr Message anonymous = "GetMethodID call failed!\n";
inline constexpr Message named = "GetMethodID %s call failed!\n";
inline constexpr Message namedObj = "GetMethodID %s - Obj call failed!\n";
inline constexpr Message twoBlanks = "GetMethodID  %s call failed!\n";
inline constexpr Message dashed = "GetMethodID - %s call failed!\n";
inline constexpr Message silent = nullptr;

// What is printed when a value cannot be made; %s stands for the setter's name.
inline constexpr const char *noArray = "NULL array for %s!\n";
inline constexpr const char *noString = "NULL string for %s!\n";
// In the place of a line: a string that cannot be made is handed over as null, as the contract does in places.
inline constexpr const char *handNullOver = nullptr;

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
inline constexpr const char *GIVES_DEV_DB_ENTRY_AT = "(I)Lcom/varden/tavo/iscsi/model/DevDBEntry;";
inline constexpr const char *GIVES_INIT_FW = "()Lcom/varden/tavo/iscsi/model/InitFW;";
inline constexpr const char *GIVES_TARGET_INFO = "()Lcom/varden/tavo/iscsi/model/TargetInfo;";
inline constexpr const char *GIVES_SCSI_INQ_INFO = "()Lcom/varden/tavo/iscsi/model/SCSIInqInfo;";

// ---- Lines and errors ----

// Prints the line of something that failed, in which %x or %X stands for the status; nothing for status 0.
void report(SD_UINT32 status, const char *line);

// Reports a status and tells whether it is a failure.
[[nodiscard]] bool failed(SD_UINT32 status, const char *line);

// Prints the line for a Java object that is null and returns ERR_JNI_NULL.
SD_UINT32 nullObject(const char *line);

// Prints the line for a value that cannot be had, in which %s stands for the method's name, and stores ERR_JNI_NULL.
void noValue(JavaObject &owner, const char *line, const char *name);

// Clears the error that a failed step of the bridge's own raised (a missing class or method, no memory), for the places
// that carry on after such a step: JNI allows no further call while an error is pending. An exception that Java code
// threw stays pending and reaches the Java caller, as does every error elsewhere.
void forgetOwnError(JNIEnv *env);

// Ends a converter that returns nothing and whose caller carries on: forgets the error of a step that failed.
void carryOn(const JavaObject &owner);

// ---- Objects and classes ----

// An object with its own class. No class: prints the line, and the status is ERR_JNI_CLASS.
JavaObject objectOf(JNIEnv *env, jobject object, const char *noClass = "Find class call failed!\n");

// The same for an object that may be null, which prints its line; the status is ERR_JNI_NULL then.
JavaObject objectOrNull(JNIEnv *env, jobject object, const char *nullLine);

// An object with the class of a name. No class: prints the line, and the status is ERR_JNI_CLASS.
JavaObject objectAs(JNIEnv *env, jobject object, const char *className, const char *noClass);

// An object with a class that somebody else owns. A null object, which was reported, has the status ERR_JNI_NULL.
JavaObject objectWith(JNIEnv *env, jobject object, jclass type);

// Finds a class by its name. Null when there is none, after printing the line.
Local<jclass> findClass(JNIEnv *env, const char *name, const char *line);

// Makes an object with its class's constructor without arguments. Null when there is none, after printing the line.
Local<jobject> newObject(JNIEnv *env, jclass type, const char *line);

// Looks a method up on the object's class. Missing: prints the message, stores ERR_JNI_METHOD and returns null. Null,
// and nothing done, once the object's status is a failure.
jmethodID lookUp(JavaObject &owner, const char *name, const char *signature, Message message);

// ---- Text and arrays ----

// Makes a string of a text field of at most 256 bytes: up to its first 0 byte. Null when the VM cannot.
Local<jstring> newText(JNIEnv *env, std::span<const SD_UINT8> field);

// Makes a string of `length` bytes, up to the first 0 byte, by way of a heap buffer. Null when there is no memory.
void convertBytesToString(JNIEnv *env, const SD_UINT8 *bytes, jstring *javaString, int length);

// Makes a short[] with one element per byte, zero-extended. meanwhile() runs while its elements are borrowed: most
// callers look the setter up there. No array: prints the line that names the setter, and stores ERR_JNI_NULL.
template <typename Work>
Local<jshortArray> newShorts(JavaObject &owner, const char *setter, std::span<const SD_UINT8> bytes, Work meanwhile)
{
    JNIEnv *env = owner.env;
    auto array = local(env, env->NewShortArray(static_cast<jsize>(bytes.size())));
    jboolean copied = JNI_FALSE;
    jshort *elements = array == nullptr ? nullptr : env->GetShortArrayElements(array.get(), &copied);
    if (elements == nullptr) {
        noValue(owner, noArray, setter);
        return array;
    }
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        elements[i] = bytes[i];
    }
    meanwhile();
    env->ReleaseShortArrayElements(array.get(), elements, 0);
    return array;
}

// ---- Rows, record to Java. The Java type is part of the name, since it is part of the contract. ----

void callVoid(JavaObject &owner, const char *name, Message message);                    // ()V
void setInt(JavaObject &owner, const char *name, SD_UINT32 value, Message message);     // (I)V, zero-extended
void setShort(JavaObject &owner, const char *name, SD_UINT16 value, Message message);   // (S)V, the bits as they are
void setByte(JavaObject &owner, const char *name, SD_UINT8 value, Message message);     // (B)V, the bits as they are
void setString(JavaObject &owner, const char *name, const char *text, Message message); // a constant text
void setObject(JavaObject &owner, const char *name, const char *signature, jobject value, Message message);

// A text field as a String; the last line is for a string that cannot be made, or handNullOver.
void setText(JavaObject &owner, const char *name, std::span<const SD_UINT8> field, Message message,
             const char *noStringLine);

// A text field as a String made by convertBytesToString; null is handed over when it could not be made.
void setBytesText(JavaObject &owner, const char *name, std::span<const SD_UINT8> field, Message message);

// A byte field as a short[], one element per byte. The array is made before the setter is looked up.
void setShorts(JavaObject &owner, const char *name, std::span<const SD_UINT8> field, Message message);

// A byte field and a number: ([SI)V. The array is made before the setter is looked up.
void setShortsAndInt(JavaObject &owner, const char *name, std::span<const SD_UINT8> field, SD_UINT16 value,
                     Message message);

// ---- Rows, Java to record. A result is cut to the field's width. ----

void getByte(JavaObject &owner, const char *name, SD_UINT8 &field, Message message); // ()B
void getFlag(JavaObject &owner, const char *name, SD_UINT8 &field, Message message); // ()Z, as 1 or 0

// ()I
template <typename Field>
void getInt(JavaObject &owner, const char *name, Field &field, Message message)
{
    if (jmethodID getter = lookUp(owner, name, "()I", message)) {
        field = static_cast<Field>(owner.env->CallIntMethod(owner.object, getter));
    }
}

// ()S
template <typename Field>
void getShort(JavaObject &owner, const char *name, Field &field, Message message)
{
    if (jmethodID getter = lookUp(owner, name, "()S", message)) {
        field = static_cast<Field>(owner.env->CallShortMethod(owner.object, getter));
    }
}

// A String into a text field: padded with zeros when shorter, without a terminator when it fills the field. A null
// string, or characters that the VM has no memory for, leave the field as it was.
void getText(JavaObject &owner, const char *name, std::span<SD_UINT8> field, Message message);

// A short[] into a byte field, the low 8 bits of each element. A null array, or one with fewer elements than the field
// has bytes, prints a line that names the getter and is ERR_JNI_NULL; the field stays as it was.
void getShorts(JavaObject &owner, const char *name, std::span<SD_UINT8> field, Message message);

// Fetches an object from its owner's getter. The getter missing: its message and ERR_JNI_METHOD; a null object: its
// line and ERR_JNI_NULL. Null once the owner's status is a failure.
template <typename... Arguments>
Local<jobject> fetch(JavaObject &owner, const char *name, const char *signature, Message message, const char *nullLine,
                     Arguments... arguments)
{
    jmethodID getter = lookUp(owner, name, signature, message);
    auto object =
        local(owner.env, getter == nullptr ? nullptr : owner.env->CallObjectMethod(owner.object, getter, arguments...));
    if (getter != nullptr && object == nullptr) {
        owner.status = nullObject(nullLine);
    }
    return object;
}
