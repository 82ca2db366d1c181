// One way through a method of the table. Statements answer with a status; the first that is not 0 ends the method.
#pragma once

#include "Expansion.h"
#include "SeededValues.h"

#include <functional>
#include <optional>

// A Java object: its class, and the way to it from an argument.
struct ModelObject {
    std::string type, path;
    bool null = false;
};

// A record, or a part of one, in the bytes of a variable.
struct RecordView {
    std::string *bytes = nullptr;
    std::size_t offset = 0;
    const Layout *layout = nullptr;
};

class ExpansionRun
{
public:
    ExpansionRun(Values &values, jint dev, const Fault &fault) : values_(values), dev_(dev), fault_(fault) {}

    Expectation of(const Statement &method, unsigned nulls);

private:
    // What a method or block works on. A method that is called has a frame of its own.
    struct Frame {
        std::map<std::string, ModelObject> objects; // by argument or class
        std::map<std::string, std::string> records;
        std::map<std::string, SD_UINT32> numbers;
        ModelObject current;
        std::string made;     // class of the object made last
        std::string text;     // made by the statement string
        std::string elements; // the argument that is an array
        RecordView view;
        std::size_t slot = 0; // which record of a table, which element of an array
        SD_UINT32 last = 0;   // status of the last operation
        bool hasChars = true; // there is no file name, or its characters are borrowed
    };

    // Writes an event down; true when it fails.
    bool event(const std::string &text, bool canFail = false, std::vector<SD_UINT32> statuses = {});
    // Prints a line, in which %s is the name and %x the status, and returns the status.
    SD_UINT32 stop(SD_UINT32 status, const std::string &line, const std::string &name = "");
    // Notes that a failure does not end the method; 0.
    SD_UINT32 ignore(SD_UINT32 status);
    SD_UINT32 lookUp(const std::string &name, const std::string &signature, const std::string &message);
    std::string nameOf(const ModelObject &object);
    // What the current object's getter answers.
    std::string held(const std::string &getter, const std::function<std::string(SeededValues &)> &make);
    RecordView at(const std::string &path);
    std::string bytesAt(const std::string &path);
    void store(const std::string &path, const std::string &bytes);
    SD_UINT32 valueOf(const std::string &word);
    void storeValue(const std::string &path, SD_UINT32 value);
    std::vector<long long> flattened(const RecordView &view);
    std::vector<std::vector<std::string>> saidOf(const std::string &operation) const;
    Answer answerOf(const std::string &operation, const std::string &record);
    // Calls the operation: its answer, whose bytes go to the record (`room` of them at most), or nothing when it fails.
    std::optional<Answer> operate(const std::string &operation, const std::string &arguments, const std::string &record,
                                  std::size_t room, std::vector<SD_UINT32> statuses = {});

    SD_UINT32 run(const std::vector<Statement> &list);
    SD_UINT32 step(const Statement &s);
    SD_UINT32 block(const std::string &name, const ModelObject &object, const RecordView &view);
    SD_UINT32 ask(const Statement &s);
    SD_UINT32 use(const Statement &s);
    SD_UINT32 callMethod(const Statement &s);
    SD_UINT32 make(const std::string &type, const std::string &line);
    SD_UINT32 each(const Statement &s);
    SD_UINT32 element(std::size_t index, const std::string &line);
    SD_UINT32 elements(const Statement &s);
    SD_UINT32 walk(const Statement &s);
    SD_UINT32 units(const Statement &s);
    SD_UINT32 chars(const std::string &line);

    SD_UINT32 row(const Statement &s);
    SD_UINT32 numberToJava(const Statement &s, char letter);
    SD_UINT32 numberFromJava(const Statement &s, char letter);
    SD_UINT32 textToJava(const Statement &s, const std::string &text);
    SD_UINT32 textFromJava(const Statement &s);
    SD_UINT32 arrayToJava(const Statement &s, const std::string &signature, const std::vector<long long> &values,
                          const std::string &more = "");
    SD_UINT32 shortsFromJava(const Statement &s);
    SD_UINT32 counters(const Statement &s);
    SD_UINT32 address(const Statement &s);
    SD_UINT32 bytesOfAddress(const Statement &s);
    SD_UINT32 fetch(const Statement &s);

    Values &values_;
    jint dev_;
    Fault fault_;
    Expectation out_;
    Frame frame_;
    std::map<std::string, std::string> names_; // of objects, by path
    std::map<std::string, int> named_;         // by class
    std::map<std::string, std::size_t> asked_; // by operation
    int created_ = 0;
};
