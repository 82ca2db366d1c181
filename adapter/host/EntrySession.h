// The session of one device database entry. Many threads may ask for it; one at a time works with it, the others wait
// their turn, none longer than the deadline of the entry.
#pragma once

#include "Session.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

class EntrySession
{
public:
    // The interface's name is for addresses that count on one link only.
    EntrySession(const SessionRequest &request, const std::string &interfaceName, PortObserver &observer);

    // Whether the request leads to the same session.
    bool serves(const SessionRequest &request) const;
    bool loggedIn() const;
    const SessionRequest &request() const;

    // A login in the background: announced, begun when its turn comes (null when there is nothing left to do), ended.
    void announceLogin(std::vector<LoginDone> done);
    std::unique_ptr<Session> beginLogin();
    void endLogin(std::unique_ptr<Session> session);

    // Sends a SCSI command, after a login when there is no session. A unit attention is taken note of by sending the
    // command again, once.
    CommandResult execute(SD_UINT16 lun, std::span<const SD_UINT8> command, std::size_t allocationLength);

    // What is left when the entry's session is to end.
    struct Remains {
        std::unique_ptr<Session> session; // to be logged out; null when there is none, or when somebody works with it
        std::vector<LoginDone> done;      // that are still to be called
    };
    // Ends the session: whoever works with it now is the last.
    Remains retire();

private:
    void giveBack(std::unique_ptr<Session> session, const LoginResult &login);

    const SessionRequest request_;
    const SessionParameters parameters_;
    PortObserver &observer_;

    mutable std::mutex mutex_; // guards what follows
    std::condition_variable changed_;
    std::unique_ptr<Session> session_; // while nobody works with it
    bool busy_ = false;                // somebody works with it
    bool announced_ = false;           // a login waits for its turn
    bool retired_ = false;
    std::optional<LoginResult> failure_; // of the last login
    std::vector<LoginDone> done_;
};

// How long a target has for the answer to a logout.
inline constexpr std::chrono::milliseconds LOGOUT_TIME{1000};

// Logs out of targets, all at the same time.
void logOut(std::vector<std::unique_ptr<Session>> sessions, PortObserver &observer);
