#include "ExpansionRun.h"

#include <vdsdm/Status.h>

#include <algorithm>

namespace
{
std::string replaced(std::string text, const std::string &what, const std::string &with)
{
    const std::size_t at = text.find(what);
    return at == std::string::npos ? text : text.replace(at, what.size(), with);
}

std::string upper(std::string text)
{
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return char(std::toupper(c)); });
    return text;
}

std::string littleEndian(SD_UINT32 value)
{
    return std::string(reinterpret_cast<const char *>(&value), sizeof value);
}

// The printed line of a message's form or of a quoted text.
std::string lineOf(const std::string &word, const std::string &name, SD_UINT32 status)
{
    static const std::map<std::string, std::string> forms{{"anonymous", "GetMethodID call failed!\n"},
                                                          {"named", "GetMethodID %s call failed!\n"},
                                                          {"namedObj", "GetMethodID %s - Obj call failed!\n"},
                                                          {"twoBlanks", "GetMethodID  %s call failed!\n"},
                                                          {"dashed", "GetMethodID - %s call failed!\n"},
                                                          {"open", "NULL*\n"},
                                                          {"silent", ""},
                                                          {"", ""}};
    const auto form = forms.find(word);
    const std::string text = form != forms.end() ? form->second : word.substr(1);
    return replaced(replaced(replaced(text, "%s", name), "%x", hex(status)), "%X", upper(hex(status)));
}
} // namespace

bool ExpansionRun::event(const std::string &text, bool canFail, std::vector<SD_UINT32> statuses)
{
    out_.events.push_back({text, canFail, std::move(statuses)});
    return canFail && long(out_.events.size()) - 1 == fault_.event;
}

SD_UINT32 ExpansionRun::stop(SD_UINT32 status, const std::string &line, const std::string &name)
{
    out_.printed += lineOf(line, name, status);
    return status;
}

SD_UINT32 ExpansionRun::lookUp(const std::string &name, const std::string &signature, const std::string &message)
{
    const bool missing = event("lookup " + frame_.current.type + " " + name + " " + signature, true);
    return missing ? stop(ERR_JNI_METHOD, message, name) : 0;
}

std::string ExpansionRun::nameOf(const ModelObject &object)
{
    auto known = names_.find(object.path);
    if (known == names_.end()) {
        const int number = ++named_[object.type];
        known = names_.emplace(object.path, object.type + (number == 1 ? "" : "#" + std::to_string(number))).first;
    }
    return known->second;
}

std::string ExpansionRun::held(const std::string &getter, const std::function<std::string(SeededValues &)> &make)
{
    const std::string path = frame_.current.path + "/s" + getter.substr(1);
    auto known = values_.held.find(path);
    if (known == values_.held.end()) {
        SeededValues values(values_.seed + path);
        known = values_.held.emplace(path, make(values)).first;
        values_.given.emplace_back(path, known->second);
    }
    return known->second;
}

// A field of the current record, or RECORD[.FIELD] of the method. Of a table it is the record in turn.
RecordView ExpansionRun::at(const std::string &path)
{
    RecordView view = frame_.view;
    std::string rest = path;
    const std::string first = path.substr(0, path.find('.'));
    if (methodTable().records.contains(first)
        && (view.layout == nullptr
            || std::ranges::none_of(view.layout->fields, [&](const Field &field) { return field.name == first; }))) {
        const Layout &layout = methodTable().record(first);
        std::string &bytes = frame_.records[first];
        bytes.resize(std::max(bytes.size(), layout.size));
        view = {&bytes, bytes.size() > layout.size ? frame_.slot * layout.size : 0, &layout};
        rest = first.size() == path.size() ? "" : path.substr(first.size() + 1);
    }
    while (!rest.empty()) {
        const std::string name = rest.substr(0, rest.find('.'));
        rest = name.size() == rest.size() ? "" : rest.substr(name.size() + 1);
        const auto field =
            std::ranges::find_if(view.layout->fields, [&](const Field &one) { return one.name == name; });
        if (field == view.layout->fields.end()) {
            giveUp("methods.table: no field " + path);
        }
        static std::map<std::size_t, Layout> plain; // of a field that is no record
        Layout &width = plain[field->width];
        width.size = field->width;
        view = {view.bytes, view.offset + field->offset,
                field->kind == Field::Kind::RECORD ? &methodTable().record(field->record) : &width};
    }
    return view;
}

std::string ExpansionRun::bytesAt(const std::string &path)
{
    const RecordView view = at(path);
    return view.bytes->substr(view.offset, view.layout->size);
}

void ExpansionRun::store(const std::string &path, const std::string &bytes)
{
    const RecordView view = at(path);
    view.bytes->replace(view.offset, bytes.size(), bytes);
}

// A number as such, $name, or $RECORD.FIELD.
SD_UINT32 ExpansionRun::valueOf(const std::string &word)
{
    if (word[0] != '$') {
        return unhexNumber(word);
    } else if (word.find('.') == std::string::npos) {
        return frame_.numbers[word.substr(1)];
    }
    const std::string bytes = bytesAt(word.substr(1));
    SD_UINT32 value = 0;
    std::copy_n(bytes.begin(), bytes.size(), reinterpret_cast<char *>(&value));
    return value;
}

void ExpansionRun::storeValue(const std::string &path, SD_UINT32 value)
{
    if (path[0] == '$') {
        frame_.numbers[path.substr(1)] = value;
    } else {
        store(path, littleEndian(value).substr(0, at(path).layout->size));
    }
}

std::vector<long long> ExpansionRun::flattened(const RecordView &view)
{
    std::vector<long long> out;
    for (const Field &field : view.layout->fields) {
        const std::string bytes = view.bytes->substr(view.offset + field.offset, field.width);
        if (field.kind == Field::Kind::RECORD) {
            const std::vector<long long> inner =
                flattened({view.bytes, view.offset + field.offset, &methodTable().record(field.record)});
            out.insert(out.end(), inner.begin(), inner.end());
        } else if (field.kind == Field::Kind::NUMBER) {
            long long value = 0;
            std::copy_n(bytes.begin(), bytes.size(), reinterpret_cast<char *>(&value));
            out.push_back(value);
        } else {
            std::ranges::transform(bytes, std::back_inserter(out), [](unsigned char byte) { return byte; });
        }
    }
    return out;
}

SD_UINT32 ExpansionRun::run(const std::vector<Statement> &list)
{
    SD_UINT32 status = 0;
    for (auto s = list.begin(); s != list.end() && status == 0; ++s) {
        status = step(*s);
    }
    return status;
}

SD_UINT32 ExpansionRun::step(const Statement &s)
{
    const std::string &verb = s.verb();
    Frame &f = frame_;
    if (verb == "index") {
        return dev_ < 0 || dev_ > 31 ? ERR_INVALID_PARAMETER : 0;
    } else if (verb == "null") {
        return f.objects.at(s.word(1)).null ? stop(ERR_JNI_NULL, s.word(2)) : 0;
    } else if (verb == "class" || verb == "on") {
        f.current = f.objects.at(s.word(1));
        if (verb == "class") {
            event("class " + nameOf(f.current));
        }
        return 0;
    } else if (verb == "find") {
        return event("find " + s.word(1), true) ? stop(ERR_JNI_CLASS, s.word(2)) : 0;
    } else if (verb == "new") {
        return make(s.word(1), s.word(2));
    } else if (verb == "hand") {
        const ModelObject &made = f.objects[f.made];
        const std::string signature = "(Lcom/varden/tavo/iscsi/model/" + made.type + ";)V";
        if (SD_UINT32 status = lookUp(s.word(1), signature, s.word(2)); status != 0) {
            return status;
        }
        event("call " + nameOf(f.current) + " " + s.word(1) + " " + nameOf(made));
        return 0;
    } else if (verb == "ask") {
        return ask(s);
    } else if (verb == "refuse") {
        const bool refused = s.word(1) == "any" ? f.last != 0 : f.last == unhexNumber(s.word(1));
        return refused ? stop(f.last, s.word(2)) : 0;
    } else if (verb == "again") {
        return f.last == unhexNumber(s.word(1)) || f.numbers["count"] > unhexNumber(s.word(2)) ? run(s.body) : 0;
    } else if (verb == "when") {
        return valueOf(s.word(1)) != 0 ? run(s.body) : 0;
    } else if (verb == "use") {
        return use(s);
    } else if (verb == "call") {
        return callMethod(s);
    } else if (verb == "each") {
        return each(s);
    } else if (verb == "elements") {
        return elements(s);
    } else if (verb == "walk") {
        return walk(s);
    } else if (verb == "units") {
        return units(s);
    } else if (verb == "chars") {
        return chars(s.word(1));
    } else if (verb == "string") {
        const std::string bytes = bytesAt(s.word(1));
        f.text = "\"" + bytes.substr(0, bytes.find('\0')) + "\"";
        return event("string " + f.text, true) ? ERR_JNI_NULL : 0;
    } else if (verb == "malloc") {
        return event("malloc " + std::to_string(unhexNumber(s.word(1))), true) ? stop(ERR_NO_MEMORY, s.word(2)) : 0;
    } else if (verb == "room") {
        f.records[s.word(1)].assign(methodTable().record(s.word(1)).size * unhexNumber(s.word(2)), '\0');
        return 0;
    } else if (verb == "length") {
        event("length"); // the arrays of the table's cases are within their bounds
        return 0;
    } else if (verb == "element") {
        return element(unhexNumber(s.word(1)), s.word(2));
    } else if (verb == "put") {
        storeValue(s.word(1), unhexNumber(s.word(2)));
        return 0;
    } else if (verb == "return") {
        return f.last;
    }
    return row(s);
}

Expansion::Expansion(const Statement &oneCase, bool full) : method_(oneCase.word(2))
{
    values_.oneCase = oneCase;
    values_.full = full;
    values_.seed = oneCase.word(1) + oneCase.word(2) + (full ? "full" : "");
    for (const Statement &s : oneCase.body) {
        std::string value = s.word(2);
        for (std::size_t i = 3; i < s.words.size(); ++i) {
            value += " " + s.words[i];
        }
        if (s.verb() == "given") {
            values_.given.emplace_back(s.word(1), value);
        }
        if (s.verb() != "answer") {
            values_.held[s.word(1)] = value;
        }
    }
}

Expectation Expansion::expect(jint dev, unsigned nulls, const Fault &fault)
{
    return ExpansionRun(values_, dev, fault).of(methodTable().methods.at(method_), nulls);
}

void Expansion::prepare(World &world) const
{
    library().responder = nullptr;
    library().answers.clear();
    for (const auto &[operation, answers] : values_.answers) {
        library().answers[operation].assign(answers.begin(), answers.end());
    }
    for (const auto &[path, value] : values_.given) {
        world.set(path, value);
    }
}
