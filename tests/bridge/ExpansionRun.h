// One way through a method of the table. The status is sticky: once a statement has failed, no other is carried out.
#pragma once

#include "Expansion.h"
#include "SeededValues.h"

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

// A little-endian number of up to four bytes.
SD_UINT32 numberOf(const std::string &bytes);

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
    // Calls a method of the current object that cannot fail.
    void call(const std::string &text);
    // When something failed, prints the line, in which %s is the name and %x the status, and takes the status.
    bool failIf(bool failed, SD_UINT32 status, const std::string &line, const std::string &name = "");
    // Fails with the statement's line and, where it names another status, with that.
    void failAs(const Statement &s, SD_UINT32 status);
    // A failure does not end the method.
    void forget();
    bool lookUp(const std::string &name, const std::string &signature, const std::string &message);
    bool lookUp(const Statement &row, const std::string &signature);
    std::string nameOf(const ModelObject &object);
    // What the object was given by this setter, with its path: what the case says, else fresh values.
    std::string held(const std::string &setter, const std::string &fresh);
    SeededValues seeded(const std::string &what) const;
    std::string setterOf(const Statement &getter) const;
    RecordView at(const std::string &path);
    std::string bytesAt(const std::string &path);
    void store(const std::string &path, const std::string &bytes);
    SD_UINT32 valueOf(const std::string &word);
    void storeValue(const std::string &path, SD_UINT32 value);
    std::vector<long long> flattened(const RecordView &view);
    Answer answerOf(const std::string &operation, const std::string &record);
    // Calls the operation: its answer, whose bytes go to the record (`room` of them at most), or the fault's status.
    Answer operate(const std::string &operation, const std::string &arguments, const std::string &record,
                   std::size_t room, std::vector<SD_UINT32> statuses = {});

    void run(const std::vector<Statement> &list);
    void step(const Statement &s);
    void block(const std::string &name, const ModelObject &object, const RecordView &view);
    void ask(const Statement &s);
    void use(const Statement &s);
    void callMethod(const Statement &s);
    void make(const std::string &type, const std::string &line);
    void hand(const std::string &method, const ModelObject &object, const std::string &message);
    void element(std::size_t index, const std::string &line);
    void elements(const Statement &s);
    void walk(const Statement &s);
    void units(const Statement &s);
    void chars(const std::string &line);

    void row(const Statement &s);
    void numberToJava(const Statement &s, char letter);
    void numberFromJava(const Statement &s, char letter);
    void textToJava(const Statement &s, const std::string &text);
    void textFromJava(const Statement &s);
    void arrayToJava(const Statement &s, const std::string &signature, const std::vector<long long> &values,
                     const std::string &more = "");
    void shortsFromJava(const Statement &s);
    void counters(const Statement &s);
    void address(const Statement &s);
    void bytesOfAddress(const Statement &s);
    void fetch(const Statement &s);

    Values &values_;
    jint dev_;
    Fault fault_;
    SD_UINT32 status_ = 0;
    Expectation out_;
    Frame frame_;
    std::map<std::string, std::string> names_; // of objects, by path
    std::map<std::string, int> named_;         // by class
    std::map<std::string, std::size_t> asked_; // by operation
    int created_ = 0;
};
