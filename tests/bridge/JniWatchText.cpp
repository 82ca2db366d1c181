// How a watch names what it sees, and the rules it holds calls to.
#include "JniWatch.h"

#include <cstdarg>

namespace
{
template <typename T, typename Array>
std::string elements(JNIEnv *vm, Array array, void (JNIEnv::*read)(Array, jsize, jsize, T *))
{
    std::vector<T> values(static_cast<std::size_t>(vm->GetArrayLength(array)));
    (vm->*read)(array, 0, jsize(values.size()), values.data());
    std::string out = "[";
    for (T value : values) {
        out += (out.size() > 1 ? " " : "") + std::to_string(value);
    }
    return out + "]";
}
} // namespace

std::string JniWatch::text(jobject object)
{
    jstring string = static_cast<jstring>(object);
    const char *chars = vm_->GetStringUTFChars(string, nullptr);
    std::string out = chars;
    vm_->ReleaseStringUTFChars(string, chars);
    return out;
}

std::string JniWatch::className(jclass cls)
{
    jclass meta = vm_->GetObjectClass(cls);
    auto name = static_cast<jstring>(
        vm_->CallObjectMethod(cls, vm_->GetMethodID(meta, "getSimpleName", "()Ljava/lang/String;")));
    std::string out = text(name);
    vm_->DeleteLocalRef(name);
    vm_->DeleteLocalRef(meta);
    return out;
}

std::string JniWatch::nameOf(jobject object)
{
    if (object == nullptr) {
        return "null";
    }
    for (auto &[known, name] : names_) {
        if (vm_->IsSameObject(known, object) == JNI_TRUE) {
            return name;
        }
    }
    jclass cls = vm_->GetObjectClass(object);
    std::string name = className(cls);
    vm_->DeleteLocalRef(cls);
    if (name == "String") {
        return "\"" + text(object) + "\"";
    }
    if (name == "short[]") {
        return elements<jshort>(vm_, static_cast<jshortArray>(object), &JNIEnv::GetShortArrayRegion);
    }
    if (name == "byte[]") {
        return elements<jbyte>(vm_, static_cast<jbyteArray>(object), &JNIEnv::GetByteArrayRegion);
    }
    if (name == "long[]") {
        return elements<jlong>(vm_, static_cast<jlongArray>(object), &JNIEnv::GetLongArrayRegion);
    }
    int number = ++named_[name];
    names_.emplace_back(vm_->NewGlobalRef(object), number == 1 ? name : name + "#" + std::to_string(number));
    return names_.back().second;
}

std::string JniWatch::arguments(const Method &method, va_list values)
{
    std::string out;
    for (std::size_t at = 1; method.signature[at] != ')'; ++at) {
        const std::size_t type = at;
        at = method.signature.find_first_not_of('[', at);
        const bool isClass = method.signature[at] == 'L';
        at = isClass ? method.signature.find(';', at) : at;
        out += " " + (isClass || at > type ? nameOf(va_arg(values, jobject)) : std::to_string(va_arg(values, jint)));
    }
    return out;
}

void JniWatch::breach(const std::string &what)
{
    breaches += what + (failedAt.empty() ? "" : " (after a failure of: " + failedAt + ")") + "\n";
}

const JniWatch::Method &JniWatch::method(jobject object, jmethodID id, char result)
{
    static const Method unknown{nullptr, "unknown", "()V"};
    auto found = methods_.find(id);
    if (found == methods_.end()) {
        breach("call of a method that was not looked up");
        return unknown;
    }
    const Method &method = found->second;
    char returns = method.signature[method.signature.find(')') + 1];
    if ((returns == '[' ? 'L' : returns) != result) {
        breach("called by the function of another result type: " + method.name + method.signature);
    }
    if (vm_->IsInstanceOf(object, method.owner) == JNI_FALSE) {
        breach("called on an object of another class: " + method.name);
    }
    return method;
}
