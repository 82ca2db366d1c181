// The rows of the table: what crosses between a record and the current object.
#include "ExpansionRun.h"

#include <vdsdm/Status.h>

#include <sstream>

namespace
{
constexpr const char *TAKES_STRING = "(Ljava/lang/String;)V";

std::string modelType(const std::string &type)
{
    return "Lcom/varden/tavo/iscsi/model/" + type + ";";
}

// A number as a Java value of the type.
std::string asJava(SD_UINT32 value, char letter)
{
    return std::to_string(letter == 'S'   ? std::int16_t(value)
                          : letter == 'B' ? std::int8_t(value)
                                          : std::int32_t(value));
}

std::string upToZero(const std::string &bytes)
{
    return bytes.substr(0, bytes.find('\0'));
}

std::string list(const std::vector<long long> &values)
{
    std::string out = "[";
    for (long long value : values) {
        out += (out.size() > 1 ? " " : "") + std::to_string(value);
    }
    return out + "]";
}

// The low bytes of numbers in words.
std::string bytesOfWords(const std::string &words)
{
    std::istringstream in(words);
    std::string out;
    for (int value = 0; in >> value;) {
        out += char(value);
    }
    return out;
}

std::vector<long long> bytesOf(const std::string &bytes)
{
    std::vector<long long> out;
    for (char byte : bytes) {
        out.push_back(static_cast<unsigned char>(byte));
    }
    return out;
}
} // namespace

void ExpansionRun::row(const Statement &s)
{
    static const std::map<std::string, char> numbers{{"Int", 'I'},   {"BigEndian", 'I'}, {"Low8", 'I'},
                                                     {"Short", 'S'}, {"Byte", 'B'},      {"Flag", 'Z'}};
    const std::string &kind = s.verb(), field = s.word(2);
    const bool toJava = !s.word(1).starts_with("get");
    if (const auto number = numbers.find(kind); number != numbers.end()) {
        toJava ? numberToJava(s, number->second) : numberFromJava(s, number->second);
    } else if (kind == "Text" || kind == "Copied") {
        toJava ? textToJava(s, upToZero(bytesAt(field))) : textFromJava(s);
    } else if (kind == "Constant") {
        textToJava(s, field.substr(1));
    } else if (kind == "Shorts") {
        toJava ? arrayToJava(s, "([S)V", bytesOf(bytesAt(field))) : shortsFromJava(s);
    } else if (kind == "TypedShorts" || kind == "LateShorts") {
        arrayToJava(s, "([SI)V", bytesOf(bytesAt(field + ".IPAddress")),
                    " " + std::to_string(numberOf(bytesAt(field + ".Type"))));
    } else if (kind == "Longs") {
        std::vector<long long> values;
        const RecordView first = at(field);
        for (std::size_t i = 0; i < frame_.numbers["count"]; ++i) {
            const std::vector<long long> entry = flattened({first.bytes, i * first.layout->size, first.layout});
            values.insert(values.end(), entry.begin(), entry.end());
        }
        arrayToJava(s, "([J)V", values);
    } else if (kind == "Elements") {
        bytesOfAddress(s);
    } else if (kind == "Counters") {
        counters(s);
    } else if (kind == "Address") {
        address(s);
    } else if (kind == "Object") {
        fetch(s);
    } else if (kind == "Void") {
        if (lookUp(s.word(1), "()V", field)) {
            call(s.word(1));
        }
    } else {
        giveUp("methods.table:" + std::to_string(s.line) + ": no statement " + kind);
    }
}

void ExpansionRun::numberToJava(const Statement &s, char letter)
{
    if (!lookUp(s, std::string("(") + letter + ")V")) {
        return;
    }
    SD_UINT32 value = s.word(2)[0] == '$' ? valueOf(s.word(2)) : numberOf(bytesAt(s.word(2)));
    if (s.verb() == "BigEndian") {
        value = __builtin_bswap32(value);
    }
    call(s.word(1) + " " + asJava(value, letter));
}

void ExpansionRun::numberFromJava(const Statement &s, char letter)
{
    static const std::map<char, unsigned> bits{{'I', 32}, {'S', 16}, {'B', 8}};
    if (!lookUp(s, std::string("()") + letter)) {
        return;
    }
    call(s.word(1));
    SeededValues values = seeded(setterOf(s));
    const std::string digits = held(setterOf(s), letter == 'Z' ? values.flag() : values.number(bits.at(letter)));
    const auto value = SD_UINT32(std::stoll(digits));
    storeValue(s.word(2), s.verb() == "Low8" ? value & 0xffU : value);
}

// A string that cannot be made ends the row with its line, or is handed over as null where there is none.
void ExpansionRun::textToJava(const Statement &s, const std::string &text)
{
    if (!lookUp(s, TAKES_STRING)) {
        return;
    }
    const bool copied = s.verb() == "Copied";
    std::string handed = "\"" + text + "\"";
    if ((copied && event("malloc " + std::to_string(bytesAt(s.word(2)).size() + 1), true))
        || event("string " + handed, true)) {
        failIf(true, ERR_JNI_NULL, s.word(4) == "-" ? "" : s.word(4));
        if (!copied && s.word(4) != "-") {
            return;
        }
        handed = "null";
        forget();
    }
    call(s.word(1) + " " + handed);
}

void ExpansionRun::textFromJava(const Statement &s)
{
    if (!lookUp(s, "()Ljava/lang/String;")) {
        return;
    }
    const std::size_t width = bytesAt(s.word(2)).size();
    const std::string fresh = seeded(setterOf(s)).text(values_.full ? width + 8 : width * 5 / 8);
    const std::string text = held(setterOf(s), fresh), isNull = "null";
    if (event("call " + nameOf(frame_.current) + " " + s.word(1), text != isNull) || text == isNull) {
        return;
    }
    if (failIf(event("chars \"" + text + "\"", true), ERR_JNI_NULL, "")) {
        forget();
        return;
    }
    std::string field = text.substr(0, width);
    field.resize(width, '\0');
    store(s.word(2), field);
    event("give back \"" + text + "\"");
}

// The setter is looked up while the elements are borrowed; a late one before there is an array.
void ExpansionRun::arrayToJava(const Statement &s, const std::string &signature, const std::vector<long long> &values,
                               const std::string &more)
{
    const bool late = s.verb() == "LateShorts";
    if (late && !lookUp(s, signature)) {
        return;
    }
    const std::string length = std::to_string(values.size());
    if (failIf(event("array " + length, true) || event("borrow " + length, true), ERR_JNI_NULL, s.word(4))) {
        return;
    }
    const bool found = late || lookUp(s, signature);
    event("give back mode 0");
    if (found) {
        call(s.word(1) + " " + list(values) + more);
    }
}

void ExpansionRun::shortsFromJava(const Statement &s)
{
    if (!lookUp(s, "()[S")) {
        return;
    }
    const std::size_t width = bytesAt(s.word(2)).size();
    const std::string words = held(setterOf(s), seeded(setterOf(s)).shorts(width));
    if (failIf(event("call " + nameOf(frame_.current) + " " + s.word(1), true), ERR_JNI_NULL, s.word(4))) {
        return;
    }
    event("length");
    if (failIf(event("borrow " + std::to_string(width), true), ERR_JNI_NULL, s.word(4))) {
        return;
    }
    store(s.word(2), bytesOfWords(words));
    event("give back mode 0");
}

void ExpansionRun::counters(const Statement &s)
{
    for (std::size_t i = 1; i < s.words.size() && status_ == 0; ++i) {
        std::string name = s.words[i];
        const bool onlyLookedUp = name[0] == '(';
        name = onlyLookedUp ? name.substr(1, name.size() - 2) : name;
        if (!lookUp("set" + name, "([B)V", "dashed") || onlyLookedUp
            || failIf(event("array 9", true) || event("borrow 9", true), ERR_JNI_NULL, "open")) {
            continue;
        }
        std::vector<long long> values{0};
        for (char byte : bytesAt(name)) {
            values.push_back(static_cast<signed char>(byte));
        }
        event("give back mode 0");
        call("set" + name + " " + list(values));
    }
}

// A new IPAddr object for the owner. Whatever fails is printed, and the owner's converter carries on.
void ExpansionRun::address(const Statement &s)
{
    const ModelObject owner = frame_.current;
    const Frame saved = frame_;
    if (!failIf(event("find IPAddr", true), ERR_JNI_CLASS, "\"Find class call failed!\n")) {
        make("IPAddr", "\"NewObject failed!\n");
    }
    const ModelObject made = frame_.objects["IPAddr"];
    if (status_ == 0) {
        frame_.current = made;
        arrayToJava({s.line, 0, {"Shorts", "setAddress", "", "named", "open"}, {}}, "([S)V",
                    bytesOf(bytesAt(s.word(2) + ".IPAddress")));
        frame_.current = owner;
    }
    if (status_ == 0) {
        event("class " + nameOf(owner));
        hand(s.word(1), made, s.word(3));
    }
    forget();
    frame_.objects = saved.objects;
    frame_.made = saved.made;
}

// One call per byte. The whole address is what the object was given: itself, or by its owner's setter.
void ExpansionRun::bytesOfAddress(const Statement &s)
{
    if (!lookUp(s, "(S)S")) {
        return;
    }
    std::string setter = frame_.current.path;
    const std::size_t slash = setter.rfind('/');
    if (slash == std::string::npos) {
        setter += "/setAddress";
    } else {
        setter[slash + 1] = 's'; // of get...
    }
    const std::string bytes = bytesOfWords(held(setter, seeded(setter).shorts(16)));
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        call(s.word(1) + " " + std::to_string(i));
    }
    store(s.word(2), bytes);
}

// NAME:$number passes the number.
void ExpansionRun::fetch(const Statement &s)
{
    const std::size_t colon = s.word(1).find(':');
    const std::string name = s.word(1).substr(0, colon);
    const std::string argument = colon == std::string::npos ? "" : asJava(valueOf(s.word(1).substr(colon + 1)), 'I');
    if (!lookUp(name, (argument.empty() ? "()" : "(I)") + modelType(s.word(2)), s.word(3))) {
        return;
    }
    const ModelObject owner = frame_.current;
    const std::string called = name + (argument.empty() ? "" : " " + argument);
    if (failIf(event("call " + nameOf(owner) + " " + called, true), ERR_JNI_NULL, s.word(4))) {
        return;
    }
    const ModelObject fetched{s.word(2), owner.path + "/" + name + (argument.empty() ? "" : ":" + argument)};
    frame_.objects[fetched.type] = fetched;
    if (!s.word(5).empty()) {
        block(s.word(5), fetched, at(s.word(6)));
    }
}
