// A JNIEnv of the tests' own, in front of the VM's: the code under test gets its function table, every call is carried
// out by the real VM, and on the way it is written down, kept on the books and, when a test asks, made to fail.
// Functions that the bridge has no business with end the program.
#pragma once

#include <jni.h>

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

class JniWatch
{
public:
    // While a watch lives, the management library, the heap and the printed lines of its thread report to it.
    explicit JniWatch(JNIEnv *vm);
    ~JniWatch();
    JniWatch(const JniWatch &) = delete;
    JniWatch &operator=(const JniWatch &) = delete;

    // The watch of this thread, null when there is none.
    static JniWatch *current();

    JNIEnv *vm() const
    {
        return vm_;
    }
    // The environment to hand to the code under test.
    JNIEnv *env()
    {
        return &lent_;
    }

    // Gives an object the name that events call it by: its class, with #2, #3 for the next ones of that class.
    std::string nameOf(jobject object);

    // The journal: one line per event, in order. Left empty when recording is off.
    bool recording = true;
    std::vector<std::string> events;
    std::string printed;  // everything that the code under test printed
    std::string breaches; // what no program may do; empty is the only good value

    long failEvent = -1;       // the event with this number (from 0) fails
    bool leavePending = false; // the failing JNI call also leaves the error pending that the VM would raise
    std::string failedAt;      // the event that failed

    std::size_t peak = 0;            // most local references alive at once
    long heapBlocks = 0;             // blocks allocated and not freed
    const void *lastBlock = nullptr; // the block allocated last, and its size
    std::size_t lastSize = 0;
    unsigned unwiped = 0; // blocks that were not all zero when they were freed

    // A Java error is pending.
    bool pending() const
    {
        return pendingError_ != nullptr;
    }

    // Contents borrowed and not given back.
    std::size_t loans() const
    {
        return loans_.size();
    }

    // Local references that have not been deleted.
    std::size_t alive() const
    {
        return alive_.size();
    }
    // A local reference belongs to the caller from now on.
    void handedOut(jobject reference);

    // One event. Returns true when it has to fail.
    bool step(bool canFail, const std::function<std::string()> &text);

private:
    struct Lent : JNIEnv_ {
        JniWatch *owner = nullptr;
    };
    struct Method {
        jclass owner;
        std::string name, signature;
    };
    struct Loan {
        jobject from;
        std::string what;
    };

    friend struct WatchedTable;

    std::string className(jclass cls);
    std::string text(jobject object);
    std::string arguments(const Method &method, va_list values);
    void breach(const std::string &what);
    // Takes a new local reference into the books.
    template <typename T>
    T made(T reference)
    {
        if (reference != nullptr) {
            alive_.push_back(reference);
            peak = std::max(peak, alive_.size());
        }
        return reference;
    }
    bool fails(const char *error, const std::function<std::string()> &text);
    void setPending(jobject error);
    void mustNotThrow();
    const Method &method(jobject object, jmethodID id, char result);

    JNIEnv *vm_;
    Lent lent_;
    JniWatch *outer_;
    std::map<jmethodID, Method> methods_;
    std::map<const void *, Loan> loans_;
    std::vector<std::pair<jobject, std::string>> names_;
    std::map<std::string, int> named_;
    std::vector<jobject> alive_; // local references
    jobject pendingError_ = nullptr;
    std::string lastError_; // the class of the error that was planted
};
