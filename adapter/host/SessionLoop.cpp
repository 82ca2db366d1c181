// Many sessions in one thread, see SessionLoop.h.
#include "SessionLoop.h"

#include <pthread.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <new>
#include <system_error>
#include <utility>

namespace
{

// Each takes a descriptor; the others wait for their turn.
constexpr std::size_t MOST_AT_ONCE = 256;
// What tasks have left when the loop is about to go.
constexpr std::chrono::milliseconds GRACE{1000};

} // namespace

SessionLoop::SessionLoop() : wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (!wake_) {
        throw std::system_error(errno, std::system_category());
    }
}

SessionLoop::~SessionLoop()
{
    {
        const std::lock_guard guard(mutex_);
        stopping_ = true;
        lastDeadline_ = deadlineIn(GRACE);
    }
    eventfd_write(wake_.number(), 1);
    if (thread_.joinable()) {
        thread_.join();
    }
}

void SessionLoop::add(Task task)
{
    const std::lock_guard guard(mutex_);
    queue_.push_back(std::move(task));
    if (!thread_.joinable()) {
        // The signals of the process are not this thread's affair.
        sigset_t all;
        sigset_t before;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
        thread_ = std::thread([this] { run(); });
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }
    eventfd_write(wake_.number(), 1);
}

void SessionLoop::run()
{
    while (beginTasks() || !running_.empty()) {
        wait();
        serve();
    }
}

// Whether there will be more to do.
bool SessionLoop::beginTasks()
{
    std::unique_lock lock(mutex_);
    while (!queue_.empty() && running_.size() < MOST_AT_ONCE) {
        Task task = std::move(queue_.front());
        queue_.pop_front();
        const Deadline last = lastDeadline_;
        lock.unlock();
        try {
            if (auto session = task.begin()) {
                running_.push_back({std::move(session), std::min(deadlineIn(task.time), last), std::move(task.end)});
            }
        } catch (const std::bad_alloc &) {
            task.end(nullptr);
        }
        lock.lock();
    }
    if (stopping_) {
        for (Running &running : running_) {
            running.deadline = std::min(running.deadline, lastDeadline_);
        }
    }
    return !stopping_ || !queue_.empty();
}

void SessionLoop::wait()
{
    waits_.assign(1, {wake_.number(), POLLIN, 0});
    Deadline next = Deadline::max();
    for (const Running &running : running_) {
        const bool pending = running.session->pending();
        waits_.push_back(pending ? running.session->waitsFor() : pollfd{-1, 0, 0});
        next = std::min(next, pending ? running.deadline : Deadline{});
    }
    poll(waits_.data(), waits_.size(), next == Deadline::max() ? -1 : millisecondsLeft(next));
    eventfd_t ignored = 0;
    eventfd_read(wake_.number(), &ignored);
}

void SessionLoop::serve()
{
    auto wait = waits_.begin() + 1;
    for (auto running = running_.begin(); running != running_.end(); ++wait) {
        Session &session = *running->session;
        if (session.pending() && wait->revents != 0) {
            session.serve(wait->revents);
        } else if (session.pending() && millisecondsLeft(running->deadline) == 0) {
            session.expire();
        }
        if (session.pending()) {
            ++running;
            continue;
        }
        const auto end = std::move(running->end);
        auto ended = std::move(running->session);
        running = running_.erase(running);
        end(std::move(ended));
    }
}
