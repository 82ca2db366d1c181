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
    return {reinterpret_cast<const char *>(&value), sizeof value};
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

SD_UINT32 numberOf(const std::string &bytes)
{
    SD_UINT32 value = 0;
    std::ranges::copy(bytes, reinterpret_cast<char *>(&value));
    return value;
}

bool ExpansionRun::event(const std::string &text, bool canFail, std::vector<SD_UINT32> statuses)
{
    out_.events.push_back({text, canFail, std::move(statuses)});
    return canFail && long(out_.events.size()) - 1 == fault_.event;
}

void ExpansionRun::call(const std::string &text)
{
    event("call " + nameOf(frame_.current) + " " + text);
}

bool ExpansionRun::failIf(bool failed, SD_UINT32 status, const std::string &line, const std::string &name)
{
    if (failed) {
        out_.printed += lineOf(line, name, status);
        status_ = status;
    }
    return failed;
}

void ExpansionRun::failAs(const Statement &s, SD_UINT32 status)
{
    failIf(true, status, s.quoted());
    status_ = s.has("as") ? unhexNumber(s.after("as")) : status;
}

void ExpansionRun::forget()
{
    out_.ignored = out_.ignored || status_ != 0;
    status_ = 0;
}

bool ExpansionRun::lookUp(const std::string &name, const std::string &signature, const std::string &message)
{
    const bool missing = event("lookup " + frame_.current.type + " " + name + " " + signature, true);
    return !failIf(missing, ERR_JNI_METHOD, message, name);
}

bool ExpansionRun::lookUp(const Statement &row, const std::string &signature)
{
    return lookUp(row.word(1), signature, row.word(3));
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

std::string ExpansionRun::held(const std::string &setter, const std::string &fresh)
{
    const auto [known, isNew] = values_.held.emplace(setter, fresh);
    if (isNew) {
        values_.given.emplace_back(setter, fresh);
    }
    return known->second;
}

SeededValues ExpansionRun::seeded(const std::string &what) const
{
    return SeededValues(values_.seed + what);
}

std::string ExpansionRun::setterOf(const Statement &getter) const
{
    return frame_.current.path + "/s" + getter.word(1).substr(1);
}

// A field of the current record, or RECORD[.FIELD] of the method. Of a table it is the record in turn.
RecordView ExpansionRun::at(const std::string &path)
{
    RecordView view = frame_.view;
    std::string rest = path;
    const std::string first = path.substr(0, path.find('.'));
    if (methodTable().records.contains(first)) {
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
    return numberOf(bytesAt(word.substr(1)));
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
            out.push_back(numberOf(bytes));
        } else {
            std::ranges::transform(bytes, std::back_inserter(out), [](unsigned char byte) { return byte; });
        }
    }
    return out;
}

void ExpansionRun::run(const std::vector<Statement> &list)
{
    for (auto s = list.begin(); s != list.end() && status_ == 0; ++s) {
        step(*s);
    }
}

void ExpansionRun::step(const Statement &s)
{
    const std::string &verb = s.verb(), first = s.word(1), second = s.word(2);
    Frame &f = frame_;
    if (verb == "index") {
        failIf(dev_ < 0 || dev_ > 31, ERR_INVALID_PARAMETER, "");
    } else if (verb == "null") {
        failIf(f.objects.at(first).null, ERR_JNI_NULL, second);
    } else if (verb == "class") {
        f.current = f.objects.at(first);
        event("class " + nameOf(f.current));
    } else if (verb == "on") {
        f.current = f.objects.at(first);
    } else if (verb == "find") {
        failIf(event("find " + first, true), ERR_JNI_CLASS, second);
    } else if (verb == "new") {
        make(first, second);
    } else if (verb == "hand") {
        hand(first, f.objects[f.made], second);
    } else if (verb == "ask") {
        ask(s);
    } else if (verb == "refuse") {
        failIf(first == "any" ? f.last != 0 : f.last == unhexNumber(first), f.last, second);
    } else if (verb == "again") {
        if (f.last == unhexNumber(first) || f.numbers["count"] > unhexNumber(second)) {
            run(s.body);
        }
    } else if (verb == "when") {
        if (valueOf(first) != 0) {
            run(s.body);
        }
    } else if (verb == "use") {
        use(s);
    } else if (verb == "call") {
        callMethod(s);
    } else if (verb == "each") {
        for (f.slot = 0; f.slot < f.numbers["count"] && status_ == 0; ++f.slot) {
            run(s.body);
            failIf(status_ != 0, status_, second);
        }
    } else if (verb == "elements") {
        elements(s);
    } else if (verb == "walk") {
        walk(s);
    } else if (verb == "units") {
        units(s);
    } else if (verb == "chars") {
        chars(first);
    } else if (verb == "string") {
        const std::string bytes = bytesAt(first);
        f.text = "\"" + bytes.substr(0, bytes.find('\0')) + "\"";
        failIf(event("string " + f.text, true), ERR_JNI_NULL, "");
    } else if (verb == "malloc") {
        failIf(event("malloc " + std::to_string(unhexNumber(first)), true), ERR_NO_MEMORY, second);
    } else if (verb == "room") {
        f.records[first].assign(methodTable().record(first).size * unhexNumber(second), '\0');
    } else if (verb == "length") {
        event("length"); // the arrays of the table's cases are within their bounds
    } else if (verb == "element") {
        element(unhexNumber(first), second);
    } else if (verb == "put") {
        storeValue(first, unhexNumber(second));
    } else if (verb == "return") {
        status_ = f.last;
    } else {
        row(s);
    }
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
