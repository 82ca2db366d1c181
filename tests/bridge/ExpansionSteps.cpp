// The statements of the table that are no rows: operations, new objects, loops, methods that call others.
#include "ExpansionRun.h"

#include <vdsdm/Status.h>

#include <algorithm>

namespace
{
constexpr SD_UINT32 FAULT = 0x2000abcd; // tells %x from %X
constexpr SD_UINT32 SLOTS = 512;        // of the device database
constexpr SD_UINT32 SMALL_AREA = 264, LARGE_AREA = 2048;
constexpr std::size_t HEADER = 8, ENTRY = 8;
constexpr std::size_t ARRAY_LENGTH = 2;

bool isNumber(const std::string &word)
{
    return word.find_first_not_of("0123456789abcdef") == std::string::npos;
}

SD_UINT32 bigEndian(const std::string &bytes)
{
    return unhexNumber(hex(bytes.data(), 4));
}
} // namespace

// The answer to the operation's next call: what the case says, the rest from the seed.
Answer ExpansionRun::answerOf(const std::string &operation, const std::string &record)
{
    std::vector<Statement> said;
    std::ranges::copy_if(values_.oneCase.body, std::back_inserter(said),
                         [&](const Statement &s) { return s.verb() == "answer" && s.word(1) == operation; });
    const std::size_t call = asked_[operation]++;
    std::vector<Answer> &answers = values_.answers[operation];
    const bool last = !answers.empty() && (fault_.event >= 0 || answers.size() == said.size());
    if (call < answers.size() || last) {
        return answers[std::min(call, answers.size() - 1)];
    }
    std::map<std::string, std::string> values{{"count", "2"}, {"status", "0"}};
    for (const std::string &word : said.empty() ? std::vector<std::string>{} : said[call].words) {
        values[word.substr(0, word.find('='))] = word.substr(word.find('=') + 1);
    }
    Answer answer{unhexNumber(values["status"]), "", unhexNumber(values["count"])};
    if (!record.empty()) {
        const Layout &layout = methodTable().record(record);
        SeededValues seeded(values_.seed + operation + std::to_string(call));
        for (std::size_t i = 0; i < std::max<std::size_t>(1, *answer.count); ++i) {
            answer.bytes += seeded.record(layout, values_.full);
        }
        for (const Field &field : layout.fields) {
            if (values.contains(field.name)) {
                answer.bytes.replace(field.offset, field.width, unhex(values[field.name]));
            }
        }
    }
    answers.push_back(answer);
    return answer;
}

Answer ExpansionRun::operate(const std::string &operation, const std::string &arguments, const std::string &record,
                             std::size_t room, std::vector<SD_UINT32> statuses)
{
    statuses.push_back(FAULT);
    const bool fails = event(operation + arguments, true, std::move(statuses));
    Answer answer = answerOf(operation, record);
    if (fails) {
        return {fault_.status, "", 0};
    }
    if (!record.empty()) {
        frame_.records[record].replace(0, std::min(room, answer.bytes.size()), answer.bytes.substr(0, room));
    }
    return answer;
}

void ExpansionRun::ask(const Statement &s)
{
    if (s.has("name") && !frame_.hasChars) {
        return;
    }
    const std::string of = s.after("of"), in = s.after("in"), out = s.after("out");
    const std::string record = out.substr(0, out.find_first_of("*:"));
    std::string arguments = of == "none" ? "" : " " + hex(of == "dev" ? SD_UINT32(dev_) : handleOf(dev_));
    if (!in.empty()) {
        RecordView whole = at(in);
        arguments += " [" + hex(whole.bytes->data(), whole.bytes->size()) + "]";
    }
    std::vector<SD_UINT32> statuses;
    for (std::size_t i = 2; i < s.words.size() && s.words[i] != "as"; ++i) {
        const std::string &word = s.words[i];
        if (word == "also" || word == "tolerating") {
            for (++i; i < s.words.size() && isNumber(s.words[i]); ++i) {
                statuses.push_back(unhexNumber(s.words[i]));
            }
        } else if (word == "name") {
            arguments += " \"" + std::string(FILE_NAME) + "\"";
        } else if (word[0] == '$' || isNumber(word)) {
            arguments += " " + hex(valueOf(word));
        }
    }
    std::size_t room = 0;
    if (!record.empty()) {
        const Layout &layout = methodTable().record(record);
        const std::size_t limit = out.find_first_of("*:");
        const std::size_t given = limit == std::string::npos ? 1 : unhexNumber(out.substr(limit + 1));
        room = limit != std::string::npos && out[limit] == ':' ? given : given * layout.size;
        if (!s.has("uncleared")) {
            frame_.records[record].assign(std::max(room, layout.size), '\0');
        }
        frame_.view = {&frame_.records[record], 0, &layout};
    }
    const Answer answer = operate(s.word(1), arguments, record, room, statuses);
    if (s.has("count")) {
        frame_.numbers["count"] = *answer.count;
    }
    frame_.last = answer.status;
    const bool tolerated = s.has("kept") || (s.has("tolerating") && answer.status == statuses.front());
    if (answer.status != 0 && !tolerated) {
        failAs(s, answer.status);
        status_ = s.has("ignored") ? 0 : status_;
    }
}

void ExpansionRun::make(const std::string &type, const std::string &line)
{
    const bool failed = event("lookup " + type + " <init> ()V", true) || event("create " + type, true);
    if (!failIf(failed, ERR_JNI_NULL, line)) {
        frame_.made = type;
        frame_.objects[type] = {type, "new" + std::to_string(++created_)};
    }
}

void ExpansionRun::hand(const std::string &method, const ModelObject &object, const std::string &message)
{
    if (lookUp(method, "(Lcom/varden/tavo/iscsi/model/" + object.type + ";)V", message)) {
        call(method + " " + nameOf(object));
    }
}

void ExpansionRun::block(const std::string &name, const ModelObject &object, const RecordView &view)
{
    const Statement &block = methodTable().blocks.at(name);
    const bool unheard = block.has("unheard");
    if (failIf(object.null, ERR_JNI_NULL, block.quoted())) {
        status_ = unheard ? 0 : status_;
        return;
    }
    const ModelObject current = frame_.current;
    const RecordView outer = frame_.view;
    const auto objects = frame_.objects;
    frame_.current = object;
    frame_.view = view;
    if (!block.has("classless") && block.body.front().verb() != "find") {
        event("class " + nameOf(object));
    }
    run(block.body);
    frame_.current = current;
    frame_.view = outer;
    frame_.objects = objects;
    if (unheard) {
        forget();
    }
}

void ExpansionRun::use(const Statement &s)
{
    for (const std::string &word : s.words) {
        const std::size_t equals = word.find('=');
        if (word[0] == '$' && equals != std::string::npos) {
            frame_.numbers[word.substr(1, equals - 1)] = unhexNumber(word.substr(equals + 1));
        }
    }
    block(s.word(1), frame_.objects.at(s.word(2)), at(s.word(3)));
    if (status_ != 0) {
        failAs(s, status_);
    }
}

// A method works on a frame of its own, with the objects that it is called with.
void ExpansionRun::callMethod(const Statement &s)
{
    Frame outer = std::exchange(frame_, {});
    for (std::size_t i = 2; i < s.words.size(); ++i) {
        if (outer.objects.contains(s.words[i])) {
            frame_.objects[s.words[i]] = outer.objects[s.words[i]];
        }
    }
    run(methodTable().methods.at(s.word(1)).body);
    frame_ = std::move(outer);
    if (s.has("ignored")) {
        forget();
    } else if (status_ != 0) {
        failAs(s, status_);
    }
}

void ExpansionRun::element(std::size_t index, const std::string &line)
{
    if (!failIf(event("element " + std::to_string(index), true), ERR_JNI_NULL, line)) {
        const std::string type = frame_.elements.substr(0, frame_.elements.find('['));
        frame_.current = {type, type + (index == 0 ? "" : "#" + std::to_string(index + 1))};
        frame_.objects[type] = frame_.current;
    }
}

// Java's elements fill the records after the first, where there is a table.
void ExpansionRun::elements(const Statement &s)
{
    for (std::size_t i = 0; i < ARRAY_LENGTH && status_ == 0; ++i) {
        element(i, s.word(1));
        frame_.slot = i + 1;
        run(s.body);
    }
}

// The device database: slots in use are handed to the statements below, until as many as counted are found.
void ExpansionRun::walk(const Statement &s)
{
    const std::string &record = s.word(2);
    const std::size_t size = methodTable().record(record).size;
    const SD_UINT32 counted = frame_.numbers["count"];
    SD_UINT32 found = 0;
    for (SD_UINT32 slot = 0; slot < SLOTS && found != counted && status_ == 0;) {
        frame_.records[record].assign(size, '\0');
        frame_.last = operate(s.word(1), " " + hex(handleOf(dev_)) + " " + hex(slot), record, size).status;
        if (failIf(frame_.last != 0, frame_.last, s.word(3))) {
            status_ = 0; // the next slot may answer
        }
        if (valueOf("$" + record + ".DeviceState") != 0) {
            frame_.numbers["index"] = found++;
            run(s.body);
        }
        const SD_UINT32 next = valueOf("$" + record + ".NextValid");
        slot = next > slot && next < SLOTS ? next : slot + 1;
    }
}

// The second REPORT LUNS command, into the area that the first response calls for, and the units of its response.
void ExpansionRun::units(const Statement &s)
{
    const SD_UINT32 area = bigEndian(bytesAt("REPORT_LUNS.length")) > SMALL_AREA ? LARGE_AREA : SMALL_AREA;
    const std::string cleared = area == LARGE_AREA ? "cleared" : "uncleared";
    ask({s.line,
         0,
         {"ask", s.word(1), "in", "TARGETINFORMATION", hex(area), "100", "out", "REPORT_LUNS", cleared, "tolerating",
          "20000077", s.word(2)},
         {}});
    const SD_UINT32 length = bigEndian(bytesAt("REPORT_LUNS.length"));
    if (status_ == 0 && failIf(length > LARGE_AREA, length, s.word(3))) {
        status_ = ERR_BAD_DATA;
    }
    if (status_ != 0) {
        return;
    }
    const std::size_t reported = (length + ENTRY - 1) / ENTRY, held = (area - HEADER) / ENTRY;
    if (reported > held) {
        out_.printed +=
            s.word(4).substr(1) + ": " + std::to_string(reported) + " reported, " + std::to_string(held) + " read\n";
    }
    const std::string bytes = frame_.records["REPORT_LUNS"] + std::string(LARGE_AREA, '\0');
    // A list without entries stands for unit 0.
    for (std::size_t i = 0; i < std::clamp<std::size_t>(reported, 1, held) && status_ == 0; ++i) {
        const std::string lun = length == 0 ? "0" : hex(bytes.data() + HEADER + i * ENTRY, 2);
        if (lookUp(s.word(5), "(I)V", s.word(6))) {
            call(s.word(5) + " " + std::to_string(unhexNumber(lun)));
        }
    }
    if (status_ != 0) {
        forget();
        status_ = frame_.last;
    }
}

// Without a line, a file name that cannot be had only keeps the operation from being called.
void ExpansionRun::chars(const std::string &line)
{
    const bool null = frame_.objects.at("fileName").null;
    frame_.hasChars = !null && !event("chars \"" + std::string(FILE_NAME) + "\"", true);
    failIf(!frame_.hasChars && (!line.empty() || !null), ERR_JNI_NULL, line);
    if (line.empty()) {
        forget();
    }
}

Expectation ExpansionRun::of(const Statement &method, unsigned nulls)
{
    unsigned bit = 0;
    std::string kind = "status";
    for (std::size_t i = 2; i < method.words.size() && method.words[i] != "peak"; ++i) {
        const std::string &word = method.words[i];
        if (word == "->") {
            kind = method.words[++i];
            continue;
        }
        frame_.objects[word] = {word, word, (nulls >> bit++ & 1U) != 0};
        if (word.ends_with("[]")) {
            frame_.elements = word;
            const std::string type = word.substr(0, word.size() - 2);
            nameOf({type, type});
            nameOf({type, type + "#2"});
        } else if (word != "fileName") {
            nameOf(frame_.objects[word]);
        }
    }
    run(method.body);
    if (frame_.objects.contains("fileName") && frame_.hasChars) {
        event("give back \"" + std::string(FILE_NAME) + "\"");
    }
    out_.result = kind == "nothing"                                       ? "done"
                  : kind == "boolean"                                     ? (status_ == 0 ? "true" : "false")
                  : kind == "status" || (kind == "count" && status_ != 0) ? hex(status_)
                  : kind == "count"                                       ? hex(frame_.numbers["count"])
                  : status_ != 0                                          ? "null"
                  : kind == "text"                                        ? frame_.text
                                                                          : nameOf(frame_.objects[frame_.made]);
    return out_;
}
