#include "Transcript.h"

#include <alloca.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace
{
[[noreturn]] void refuse(const std::string &file, int line, const std::string &why)
{
    giveUp(file + ":" + std::to_string(line) + ": " + why);
}

std::string unescaped(const std::string &text)
{
    std::string out;
    for (std::size_t at = 0; at < text.size(); at++) {
        bool newLine = text[at] == '\\' && at + 1 < text.size() && text[at + 1] == 'n';
        out += newLine ? '\n' : text[at];
        at += newLine ? 1 : 0;
    }
    return out;
}

std::pair<std::string, std::string> halves(const std::string &text)
{
    std::size_t blank = text.find(' ');
    return {text.substr(0, blank), blank == std::string::npos ? "" : text.substr(blank + 1)};
}

SD_UINT32 number(const std::string &digits)
{
    return SD_UINT32(std::stoul(digits, nullptr, 16));
}

ExpectedFailure failure(const Transcript &t, int line, const std::string &text)
{
    ExpectedFailure out;
    out.line = line;
    std::size_t quote = text.find('"');
    std::size_t end = text.rfind('"');
    if (quote == std::string::npos || end == quote || end + 4 >= text.size()) {
        refuse(t.file, line, "not a failure: " + text);
    }
    std::string status = text.substr(1, quote - 1);
    if (status.size() > 1) {
        out.status = number(status);
    }
    out.printed = unescaped(text.substr(quote + 1, end - quote - 1));
    std::string goal = text.substr(end + 5);
    if (text.substr(end + 2, 2) == "=>") {
        out.result = goal;
        return out;
    }
    std::size_t extra = goal.find(" ~ ");
    if (extra != std::string::npos) {
        out.extraEvent = goal.substr(extra + 3);
        goal.erase(extra);
    }
    auto [label, patches] = halves(goal);
    out.label = label;
    while (!patches.empty()) {
        auto [patch, rest] = halves(patches);
        std::size_t colon = patch.find(':');
        out.patches.emplace_back(std::stoul(patch.substr(1, colon - 1)), patch.substr(colon + 1));
        patches = rest;
    }
    return out;
}

void answer(Answer &into, const std::string &text)
{
    auto [word, rest] = halves(text);
    if (word == "count") {
        into.count = number(rest);
    } else if (word == "status") {
        into.status = number(rest);
    } else {
        into.bytes += unhex(word);
    }
}

Transcript read(const std::filesystem::path &path)
{
    Transcript t;
    t.file = path.filename().string();
    t.method = t.file.substr(0, t.file.find_first_of(" ."));
    std::ifstream in(path);
    int line = 0;
    for (std::string text; std::getline(in, text);) {
        line++;
        std::string trimmed = text.substr(std::min(text.find_first_not_of(' '), text.size()));
        auto [word, rest] = halves(trimmed);
        if (trimmed.empty() || word == "#") {
            continue;
        }
        if (word == "given") {
            t.given.push_back(halves(rest));
        } else if (word == "then") {
            t.then.push_back(halves(rest));
        } else if (word == "dev") {
            t.dev = jint(std::stol(rest));
        } else if (word == "nulls") {
            t.nulls = unsigned(std::stoul(rest));
        } else if (word == "says") {
            t.says.emplace_back(t.events.size(), unescaped(rest));
        } else if (word == "=") {
            t.result = rest;
        } else if (word[0] == '@') {
            t.labels[word.substr(1)] = t.events.size();
        } else if (word == "<" || word[0] == '!') {
            if (t.events.empty()) {
                refuse(t.file, line, "belongs to no event");
            }
            ExpectedEvent &event = t.events.back();
            if (word == "<") {
                answer(event.answer ? *event.answer : event.answer.emplace(), rest);
            } else {
                event.failures.push_back(failure(t, line, trimmed));
            }
        } else {
            t.events.push_back({trimmed, {}, {}});
        }
    }
    return t;
}

// Leaves rubbish where the next call puts its records.
[[gnu::noinline]] void dirtyStack()
{
    constexpr std::size_t size = 96UL * 1024;
    void *below = alloca(size);
    std::memset(below, 0xa5, size);
    asm volatile("" : : "r"(below) : "memory");
}
} // namespace

std::string goldenFile(const std::string &name)
{
    return std::string(TAVO_GOLDEN) + "/" + name;
}

const std::vector<Transcript> &transcripts()
{
    static const std::vector<Transcript> all = [] {
        std::vector<std::filesystem::path> paths;
        for (const auto &entry : std::filesystem::directory_iterator(goldenFile("transcripts"))) {
            paths.push_back(entry.path());
        }
        std::sort(paths.begin(), paths.end());
        std::vector<Transcript> out(paths.size());
        std::transform(paths.begin(), paths.end(), out.begin(), read);
        return out;
    }();
    return all;
}

const Transcript &transcriptOf(const std::string &method)
{
    for (const Transcript &t : transcripts()) {
        if (t.method == method) {
            return t;
        }
    }
    giveUp("no transcript of " + method);
}

void Transcript::prepare(World &world) const
{
    world.dev = dev;
    world.nulls = nulls;
    library().answers.clear();
    library().responder = nullptr;
    library().faultStatus = ScriptedLibrary::FAULT;
    for (const ExpectedEvent &event : events) {
        if (event.answer) {
            library().answers[halves(event.text).first].push_back(*event.answer);
        }
    }
    for (const auto &[path, value] : given) {
        world.set(path, value);
    }
}

std::vector<std::string> Transcript::texts(std::size_t from, std::size_t to) const
{
    std::vector<std::string> out;
    for (std::size_t i = from; i < to; i++) {
        out.push_back(events[i].text);
    }
    return out;
}

std::string Transcript::printed(std::size_t from, std::size_t to) const
{
    std::string out;
    for (const auto &[before, text] : says) {
        out += before > from && before <= to ? text : "";
    }
    return out;
}

Outcome call(World &world, const std::function<void(JniWatch &)> &arrange)
{
    Outcome out;
    JniWatch watch(world.env);
    // Names follow the order in which the world made its objects, whatever the call meets first.
    for (auto &[name, object] : world.objects) {
        watch.nameOf(object);
    }
    if (arrange) {
        arrange(watch);
    }
    dirtyStack();
    out.result = world.method.call(watch.env(), world);
    out.events = watch.events;
    out.printed = watch.printed;
    out.breaches = watch.breaches;
    out.pending = watch.pending();
    out.loans = watch.loans();
    out.heapBlocks = watch.heapBlocks;
    out.unwiped = watch.unwiped;
    out.createdAlive = watch.createdAlive;
    out.failed = watch.failed;
    out.counts = watch.counts;
    out.failedAt = watch.failedAt;
    return out;
}
