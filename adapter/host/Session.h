// One iSCSI session with a target, or a discovery session with a portal, by libiscsi.
//
// Nothing in here waits. Whoever uses a session polls its descriptor, calls serve() for what has become ready and
// expire() when the deadline has passed, until it is no longer pending; serveUntil() does so for many. A session
// is one thread's at a time. SIGPIPE cannot come of it: what libiscsi sends without MSG_NOSIGNAL is the data of write
// commands, and there are none. After the first transport error it is not usable again: make a new one.
#pragma once

#include "Deadline.h"
#include "SessionParameters.h"
#include "TargetPort.h"

#include <poll.h>

#include <memory>
#include <span>
#include <vector>

struct iscsi_context;
struct scsi_task;

// What went over the wire.
struct Traffic {
    SD_UINT64 sentPdus = 0;
    SD_UINT64 sentBytes = 0;
    SD_UINT64 receivedPdus = 0;
    SD_UINT64 receivedBytes = 0;
};

class Session
{
public:
    // Begins to connect and to log in.
    explicit Session(const SessionParameters &parameters);
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;
    ~Session();

    // Whether something was begun and has not ended.
    bool pending() const;
    // What to poll for, while pending.
    pollfd waitsFor() const;
    // Does what can be done. ready holds what poll(2) told.
    void serve(short ready);
    // Gives up what is pending because its time is over.
    void expire();

    // Logged in, and no transport error since.
    bool usable() const;
    // How far the login got; after a session was lost, why.
    const LoginResult &login() const;

    // Meets what has arrived while nobody looked: the target's pings are answered, its end is noticed.
    void catchUp();

    // Begin what is then pending. Only when usable and not pending.
    void beginCommand(SD_UINT16 lun, std::span<const SD_UINT8> command, std::size_t allocation);
    void beginDiscovery();
    void beginLogout();

    // The answer to the command, once it is no longer pending.
    CommandResult takeResult();
    // What SendTargets told, once it is no longer pending.
    std::vector<OfferedTarget> takeTargets();

    // What went over the wire since the last time.
    Traffic takeTraffic();

private:
    enum class Phase { connecting, loggingIn, idle, working, ended };

    static void onConnected(iscsi_context *, int status, void *, void *session);
    static void onLoggedIn(iscsi_context *, int status, void *, void *session);
    static void onCommand(iscsi_context *, int status, void *, void *session);
    static void onDiscovered(iscsi_context *, int status, void *data, void *session);
    static void onLoggedOut(iscsi_context *, int status, void *, void *session);

    bool connectionFailed();
    bool loginAnswerArrived(short ready);
    Reach reachOfFailedLogin() const;
    void count(SD_UINT64 sentPayload, SD_UINT64 receivedPayload);
    void setLowWater(std::size_t bytes);
    void end(Reach reach);

    // Destroyed in the reverse order: libiscsi lets go of the task before it is freed.
    struct FreeTask {
        void operator()(scsi_task *task) const;
    };
    struct DestroyContext {
        void operator()(iscsi_context *context) const;
    };
    std::vector<SD_UINT8> data_; // the command's answer, as long as its allocation length
    std::unique_ptr<scsi_task, FreeTask> task_;
    std::unique_ptr<iscsi_context, DestroyContext> context_;

    Phase phase_ = Phase::connecting;
    LoginResult login_;
    CommandResult result_;
    std::vector<OfferedTarget> targets_;
    Traffic traffic_;
    SD_UINT64 sentBefore_ = 0; // bytes that the connection had carried when they were counted last
    SD_UINT64 receivedBefore_ = 0;
};

// The interface version of the libiscsi in use.
unsigned libiscsiVersion();

// Serves sessions until none is pending or the deadline has passed, which ends those that are.
void serveUntil(std::span<const std::unique_ptr<Session>> sessions, Deadline deadline);
void serveUntil(const std::unique_ptr<Session> &session, Deadline deadline);
