// Keeps SIGPIPE away.
#pragma once

#include <pthread.h>

#include <csignal>
#include <ctime>

// libiscsi writes to sockets without MSG_NOSIGNAL: while this lives, a connection that is gone is an error for the
// calling thread and no signal for its process.
class WithoutPipeSignal
{
public:
    WithoutPipeSignal()
    {
        sigemptyset(&pipe_);
        sigaddset(&pipe_, SIGPIPE);
        sigset_t before;
        pthread_sigmask(SIG_BLOCK, &pipe_, &before);
        wasBlocked_ = sigismember(&before, SIGPIPE) == 1;
    }
    WithoutPipeSignal(const WithoutPipeSignal &) = delete;
    WithoutPipeSignal &operator=(const WithoutPipeSignal &) = delete;
    ~WithoutPipeSignal()
    {
        if (wasBlocked_) {
            return; // the caller's own affair
        }
        constexpr timespec noWait{};
        while (sigtimedwait(&pipe_, nullptr, &noWait) == SIGPIPE) {
        }
        pthread_sigmask(SIG_UNBLOCK, &pipe_, nullptr);
    }

private:
    sigset_t pipe_;
    bool wasBlocked_;
};
