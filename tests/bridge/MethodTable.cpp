#include "MethodTable.h"

#include "ScriptedLibrary.h"

#include <algorithm>
#include <fstream>
#include <set>

namespace
{
[[noreturn]] void refuse(int line, const std::string &why)
{
    giveUp("methods.table:" + std::to_string(line) + ": " + why);
}

std::vector<std::string> wordsOf(const std::string &text, int line)
{
    std::vector<std::string> out;
    for (std::size_t at = text.find_first_not_of(' '); at < text.size() && text[at] != '#';
         at = text.find_first_not_of(' ', at)) {
        if (text[at] != '"') {
            std::size_t end = std::min(text.find(' ', at), text.size());
            out.push_back(text.substr(at, end - at));
            at = end;
            continue;
        }
        std::string word = "\"";
        for (++at; at < text.size() && text[at] != '"'; ++at) {
            bool newLine = text.compare(at, 2, "\\n") == 0;
            word += newLine ? '\n' : text[at];
            at += newLine ? 1 : 0;
        }
        if (at == text.size()) {
            refuse(line, "a quote without an end");
        }
        ++at;
        out.push_back(word);
    }
    return out;
}

// FIELD:KIND, added to the layout.
void add(Layout &layout, const MethodTable &table, const std::string &word, int line)
{
    std::size_t colon = word.find(':');
    if (colon == std::string::npos) {
        refuse(line, "no kind of field: " + word);
    }
    Field field;
    field.name = word.substr(0, colon);
    std::string kind = word.substr(colon + 1);
    std::size_t alignment = 1;
    if (table.records.contains(kind)) {
        field.kind = Field::Kind::RECORD;
        field.record = kind;
        field.width = table.records.at(kind).size;
        alignment = table.records.at(kind).alignment;
    } else if (kind[0] == 'b' || kind[0] == 't') {
        field.kind = kind[0] == 't' ? Field::Kind::TEXT : Field::Kind::BYTES;
        field.width = std::stoul(kind.substr(1));
    } else {
        std::size_t star = kind.find('*');
        field.kind = star == std::string::npos ? Field::Kind::NUMBER : Field::Kind::BYTES;
        alignment = std::min<std::size_t>(std::stoul(kind), alignof(unsigned long long));
        field.width = std::stoul(kind) * (star == std::string::npos ? 1 : std::stoul(kind.substr(star + 1)));
    }
    field.offset = (layout.size + alignment - 1) / alignment * alignment;
    layout.size = field.offset + field.width;
    layout.alignment = std::max(layout.alignment, alignment);
    layout.fields.push_back(field);
}

Layout layoutOf(const Statement &section, const MethodTable &table)
{
    Layout layout;
    for (std::size_t i = 3; i < section.words.size(); ++i) {
        add(layout, table, section.words[i], section.line);
    }
    for (const Statement &line : section.body) {
        for (const std::string &word : line.words) {
            add(layout, table, word, line.line);
        }
    }
    layout.size = (layout.size + layout.alignment - 1) / layout.alignment * layout.alignment;
    if (std::to_string(layout.size) != section.word(2)) {
        refuse(section.line, "the fields take " + std::to_string(layout.size) + " bytes");
    }
    return layout;
}

// The sections of the file, each with the lines below it.
std::vector<Statement> sections()
{
    std::ifstream in(TAVO_METHODS_TABLE);
    Statement root;
    std::vector<Statement *> open{&root};
    int number = 0;
    for (std::string text; std::getline(in, text);) {
        ++number;
        Statement statement{number, std::min(text.find_first_not_of(' '), text.size()), wordsOf(text, number), {}};
        if (statement.words.empty()) {
            continue;
        }
        while (open.size() > 1 && open.back()->indent >= statement.indent) {
            open.pop_back();
        }
        open.back()->body.push_back(statement);
        open.push_back(&open.back()->body.back());
    }
    return root.body;
}

MethodTable read()
{
    MethodTable table;
    for (const Statement &section : sections()) {
        const std::string &kind = section.verb();
        const std::string name = section.word(1);
        if (kind == "record") {
            table.records[name] = layoutOf(section, table);
        } else if (kind == "block") {
            table.blocks[name] = section;
        } else if (kind == "method") {
            table.methods[name] = section;
        } else if (kind == "case") {
            table.cases.push_back(section);
        } else {
            refuse(section.line, "not a section: " + kind);
        }
    }
    std::set<std::string> named;
    for (const Statement &one : table.cases) {
        named.insert(one.word(2));
    }
    for (const auto &[name, method] : table.methods) {
        if (!named.contains(name)) {
            table.cases.push_back({method.line, 0, {"case", "plain", name}, {}});
        }
    }
    return table;
}
} // namespace

std::string Statement::word(std::size_t at) const
{
    return at < words.size() ? words[at] : "";
}

bool Statement::has(const std::string &word) const
{
    return std::ranges::find(words, word) != words.end();
}

std::string Statement::after(const std::string &word) const
{
    auto found = std::ranges::find(words, word);
    return found == words.end() || found + 1 == words.end() ? "" : *(found + 1);
}

std::string Statement::quoted() const
{
    auto found = std::ranges::find_if(words, [](const std::string &word) { return word[0] == '"'; });
    return found == words.end() ? "" : *found;
}

const Layout &MethodTable::record(const std::string &name) const
{
    auto found = records.find(name);
    if (found == records.end()) {
        giveUp("methods.table: no record " + name);
    }
    return found->second;
}

const MethodTable &methodTable()
{
    static const MethodTable table = read();
    return table;
}
