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

SD_UINT32 numberOf(const std::string &bytes)
{
    SD_UINT32 out = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        out |= SD_UINT32(static_cast<unsigned char>(bytes[i])) << 8 * i;
    }
    return out;
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

std::vector<long long> parsed(const std::string &words)
{
    std::istringstream in(words);
    std::vector<long long> out;
    for (long long value = 0; in >> value;) {
        out.push_back(value);
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

SD_UINT32 ExpansionRun::row(const Statement &s)
{
    const std::string &kind = s.verb();
    const bool toJava = !s.word(1).starts_with("get");
    if (kind == "Int" || kind == "Short" || kind == "Byte" || kind == "BigEndian" || kind == "Low8") {
        const char letter = kind == "Short" ? 'S' : kind == "Byte" ? 'B' : 'I';
        return toJava ? numberToJava(s, letter) : numberFromJava(s, letter);
    } else if (kind == "Flag") {
        return numberFromJava(s, 'Z');
    } else if (kind == "Text" || kind == "Copied") {
        return toJava ? textToJava(s, upToZero(bytesAt(s.word(2)))) : textFromJava(s);
    } else if (kind == "Constant") {
        return textToJava(s, s.word(2).substr(1));
    } else if (kind == "Shorts") {
        return toJava ? arrayToJava(s, "([S)V", bytesOf(bytesAt(s.word(2)))) : shortsFromJava(s);
    } else if (kind == "TypedShorts" || kind == "LateShorts") {
        return arrayToJava(s, "([SI)V", bytesOf(bytesAt(s.word(2) + ".IPAddress")),
                           " " + std::to_string(numberOf(bytesAt(s.word(2) + ".Type"))));
    } else if (kind == "Longs") {
        std::vector<long long> values;
        const RecordView first = at(s.word(2));
        for (std::size_t i = 0; i < frame_.numbers["count"]; ++i) {
            const RecordView entry{first.bytes, i * first.layout->size, first.layout};
            const std::vector<long long> group = flattened(entry);
            values.insert(values.end(), group.begin(), group.end());
        }
        return arrayToJava(s, "([J)V", values);
    } else if (kind == "Elements") {
        return bytesOfAddress(s);
    } else if (kind == "Counters") {
        return counters(s);
    } else if (kind == "Address") {
        return address(s);
    } else if (kind == "Object") {
        return fetch(s);
    } else if (kind == "Void") {
        const SD_UINT32 status = lookUp(s.word(1), "()V", s.word(2));
        return status != 0 ? status : (event("call " + nameOf(frame_.current) + " " + s.word(1)), 0);
    }
    giveUp("methods.table:" + std::to_string(s.line) + ": no statement " + kind);
}

SD_UINT32 ExpansionRun::numberToJava(const Statement &s, char letter)
{
    if (SD_UINT32 status = lookUp(s.word(1), std::string("(") + letter + ")V", s.word(3)); status != 0) {
        return status;
    }
    std::string bytes = s.word(2)[0] == '$' ? "" : bytesAt(s.word(2));
    if (s.verb() == "BigEndian") {
        bytes.assign(bytes.rbegin(), bytes.rend());
    }
    const SD_UINT32 value = s.word(2)[0] == '$' ? valueOf(s.word(2)) : numberOf(bytes);
    event("call " + nameOf(frame_.current) + " " + s.word(1) + " " + asJava(value, letter));
    return 0;
}

SD_UINT32 ExpansionRun::numberFromJava(const Statement &s, char letter)
{
    if (SD_UINT32 status = lookUp(s.word(1), std::string("()") + letter, s.word(3)); status != 0) {
        return status;
    }
    event("call " + nameOf(frame_.current) + " " + s.word(1));
    const std::string digits = held(s.word(1), [&](SeededValues &values) {
        return letter == 'Z' ? std::to_string(values.bytes(1)[0] & 1)
                             : values.number(letter == 'I'   ? 32
                                             : letter == 'S' ? 16
                                                             : 8);
    });
    const auto value = SD_UINT32(std::stoll(digits));
    storeValue(s.word(2), s.verb() == "Low8" ? value & 0xffU : value);
    return 0;
}

// A string that cannot be made ends the row with its line, or is handed over as null where there is none.
SD_UINT32 ExpansionRun::textToJava(const Statement &s, const std::string &text)
{
    if (SD_UINT32 status = lookUp(s.word(1), TAKES_STRING, s.word(3)); status != 0) {
        return status;
    }
    const bool copied = s.verb() == "Copied";
    std::string handed = "\"" + text + "\"";
    if ((copied && event("malloc " + std::to_string(bytesAt(s.word(2)).size() + 1), true))
        || event("string " + handed, true)) {
        if (!copied && s.word(4) != "-") {
            return stop(ERR_JNI_NULL, s.word(4));
        }
        handed = "null";
        ignore(ERR_JNI_NULL);
    }
    event("call " + nameOf(frame_.current) + " " + s.word(1) + " " + handed);
    return 0;
}

SD_UINT32 ExpansionRun::textFromJava(const Statement &s)
{
    if (SD_UINT32 status = lookUp(s.word(1), "()Ljava/lang/String;", s.word(3)); status != 0) {
        return status;
    }
    const std::size_t width = bytesAt(s.word(2)).size();
    const std::string text =
        held(s.word(1), [&](SeededValues &values) { return values.text(values_.full ? width + 8 : width * 5 / 8); });
    const bool null = event("call " + nameOf(frame_.current) + " " + s.word(1), text != "null") || text == "null";
    if (null) {
        return 0;
    }
    if (event("chars \"" + text + "\"", true)) {
        return ignore(ERR_JNI_NULL);
    }
    std::string field = text.substr(0, width);
    field.resize(width, '\0');
    store(s.word(2), field);
    event("give back \"" + text + "\"");
    return 0;
}

// The setter is looked up while the elements are borrowed; a late one before there is an array.
SD_UINT32 ExpansionRun::arrayToJava(const Statement &s, const std::string &signature,
                                    const std::vector<long long> &values, const std::string &more)
{
    const bool late = s.verb() == "LateShorts";
    SD_UINT32 status = late ? lookUp(s.word(1), signature, s.word(3)) : 0;
    if (status != 0) {
        return status;
    }
    const std::string length = std::to_string(values.size());
    if (event("array " + length, true) || event("borrow " + length, true)) {
        return stop(ERR_JNI_NULL, s.word(4));
    }
    status = late ? 0 : lookUp(s.word(1), signature, s.word(3));
    event("give back mode 0");
    if (status == 0) {
        event("call " + nameOf(frame_.current) + " " + s.word(1) + " " + list(values) + more);
    }
    return status;
}

SD_UINT32 ExpansionRun::shortsFromJava(const Statement &s)
{
    if (SD_UINT32 status = lookUp(s.word(1), "()[S", s.word(3)); status != 0) {
        return status;
    }
    const std::size_t width = bytesAt(s.word(2)).size();
    const std::string words = held(s.word(1), [&](SeededValues &values) { return values.shorts(width); });
    if (event("call " + nameOf(frame_.current) + " " + s.word(1), true)) {
        return stop(ERR_JNI_NULL, s.word(4));
    }
    event("length");
    if (event("borrow " + std::to_string(width), true)) {
        return stop(ERR_JNI_NULL, s.word(4));
    }
    std::string field;
    for (long long value : parsed(words)) {
        field += char(value);
    }
    store(s.word(2), field);
    event("give back mode 0");
    return 0;
}

SD_UINT32 ExpansionRun::counters(const Statement &s)
{
    for (std::size_t i = 1; i < s.words.size(); ++i) {
        std::string name = s.words[i];
        const bool onlyLookedUp = name[0] == '(';
        name = onlyLookedUp ? name.substr(1, name.size() - 2) : name;
        if (SD_UINT32 status = lookUp("set" + name, "([B)V", "dashed"); status != 0) {
            return status;
        } else if (onlyLookedUp) {
            continue;
        }
        if (event("array 9", true) || event("borrow 9", true)) {
            return stop(ERR_JNI_NULL, "open");
        }
        std::vector<long long> values{0};
        for (char byte : bytesAt(name)) {
            values.push_back(static_cast<signed char>(byte));
        }
        event("give back mode 0");
        event("call " + nameOf(frame_.current) + " set" + name + " " + list(values));
    }
    return 0;
}

// A new IPAddr object for the owner. Whatever fails is printed, and the owner's converter carries on.
SD_UINT32 ExpansionRun::address(const Statement &s)
{
    const ModelObject owner = frame_.current;
    const Frame saved = frame_;
    const std::string bytes = bytesAt(s.word(2) + ".IPAddress");
    const auto convert = [&]() -> SD_UINT32 {
        if (event("find IPAddr", true)) {
            return stop(ERR_JNI_CLASS, "\"Find class call failed!\n");
        }
        if (SD_UINT32 status = make("IPAddr", "\"NewObject failed!\n"); status != 0) {
            return status;
        }
        const ModelObject made = frame_.objects["IPAddr"];
        frame_.current = made;
        const Statement set{s.line, 0, {"Shorts", "setAddress", "", "named", "open"}, {}};
        if (SD_UINT32 status = arrayToJava(set, "([S)V", bytesOf(bytes)); status != 0) {
            return status;
        }
        frame_.current = owner;
        event("class " + nameOf(owner));
        SD_UINT32 status = lookUp(s.word(1), "(" + modelType("IPAddr") + ")V", s.word(3));
        if (status == 0) {
            event("call " + nameOf(owner) + " " + s.word(1) + " " + nameOf(made));
        }
        return status;
    };
    ignore(convert());
    frame_.current = owner;
    frame_.objects = saved.objects;
    frame_.made = saved.made;
    return 0;
}

// One call per byte. The whole address is what the object was given.
SD_UINT32 ExpansionRun::bytesOfAddress(const Statement &s)
{
    if (SD_UINT32 status = lookUp(s.word(1), "(S)S", s.word(3)); status != 0) {
        return status;
    }
    const std::size_t slash = frame_.current.path.rfind('/');
    const ModelObject address = frame_.current;
    if (slash != std::string::npos) {
        frame_.current.path = address.path.substr(0, slash);
    }
    const std::string getter = slash == std::string::npos ? "getAddress" : address.path.substr(slash + 1);
    const std::vector<long long> bytes = parsed(held(getter, [](SeededValues &values) { return values.shorts(16); }));
    frame_.current = address;
    std::string field;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        event("call " + nameOf(address) + " " + s.word(1) + " " + std::to_string(i));
        field += char(bytes[i]);
    }
    store(s.word(2), field);
    return 0;
}

// NAME:$number passes the number.
SD_UINT32 ExpansionRun::fetch(const Statement &s)
{
    const std::size_t colon = s.word(1).find(':');
    const std::string name = s.word(1).substr(0, colon);
    const std::string argument = colon == std::string::npos ? "" : asJava(valueOf(s.word(1).substr(colon + 1)), 'I');
    const std::string signature = (argument.empty() ? "()" : "(I)") + modelType(s.word(2));
    if (SD_UINT32 status = lookUp(name, signature, s.word(3)); status != 0) {
        return status;
    }
    const ModelObject owner = frame_.current;
    const std::string call = name + (argument.empty() ? "" : " " + argument);
    if (event("call " + nameOf(owner) + " " + call, true)) {
        return stop(ERR_JNI_NULL, s.word(4));
    }
    const ModelObject fetched{s.word(2), owner.path + "/" + name + (argument.empty() ? "" : ":" + argument)};
    frame_.objects[fetched.type] = fetched;
    return s.word(5).empty() ? 0 : block(s.word(5), fetched, at(s.word(6)));
}
