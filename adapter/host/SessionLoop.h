// Serves many sessions at once, in one thread of its own, which is there from the first task to the end of the loop.
#pragma once

#include "Files.h"
#include "Session.h"

#include <chrono>
#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

class SessionLoop
{
public:
    struct Task {
        // Makes or hands over the session to serve; null when there is nothing to do any more. Does not wait.
        std::function<std::unique_ptr<Session>()> begin;
        // How long the session may be pending from then on.
        std::chrono::milliseconds time;
        // Takes the session back, no longer pending; null when it could not be made for want of memory. Called once for
        // each task, unless begin answered null.
        std::function<void(std::unique_ptr<Session>)> end;
    };

    SessionLoop();
    SessionLoop(const SessionLoop &) = delete;
    SessionLoop &operator=(const SessionLoop &) = delete;
    // Gives the tasks a second to end by themselves, then gives them up.
    ~SessionLoop();

    void add(Task task);

private:
    struct Running {
        std::unique_ptr<Session> session;
        Deadline deadline;
        std::function<void(std::unique_ptr<Session>)> end;
    };

    void run();
    bool beginTasks();
    void wait();
    void serve();

    Descriptor wake_; // readable when there is something new
    std::list<Running> running_;
    std::vector<pollfd> waits_; // of wake_, then of running_ in their order

    std::mutex mutex_; // guards what follows
    std::deque<Task> queue_;
    std::thread thread_;
    bool stopping_ = false;
    Deadline lastDeadline_ = Deadline::max();
};
