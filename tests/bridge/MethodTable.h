// The file methods.table, read: its statements as they stand there, and the records laid out.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

// One line of the table and the lines indented below it. A word that stood in quotes begins with one.
struct Statement {
    int line = 0;
    std::size_t indent = 0;
    std::vector<std::string> words;
    std::vector<Statement> body;

    const std::string &verb() const
    {
        return words.front();
    }
    // The word at a place, empty beyond the last.
    std::string word(std::size_t at) const;
    // Whether a word stands there.
    bool has(const std::string &word) const;
    // The word after a given one, empty when it is not there.
    std::string after(const std::string &word) const;
    // The first quoted text; empty when there is none.
    std::string quoted() const;
};

struct Field {
    enum class Kind { NUMBER, BYTES, TEXT, RECORD };
    std::string name;
    Kind kind = Kind::NUMBER;
    std::size_t offset = 0, width = 0;
    std::string record; // of Kind::RECORD
};

struct Layout {
    std::size_t size = 0, alignment = 1;
    std::vector<Field> fields;
};

struct MethodTable {
    std::map<std::string, Layout> records;
    std::map<std::string, Statement> blocks, methods;
    std::vector<Statement> cases; // with their names, in the order of the file; at least one for every method

    const Layout &record(const std::string &name) const;
};

// Read once. Ends the program, naming the line, when the table is not sound.
const MethodTable &methodTable();
