// A port of the loopback interface, and requests to it.
#pragma once

#include "Activity.h"
#include "Daemons.h"
#include "ScriptedTarget.h"
#include "TargetPort.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

// Adds up what the port tells.
class Counters : public PortObserver
{
public:
    void count(const HBAPORTSTATISCSI &more) override
    {
        const std::lock_guard guard(mutex_);
        add(sum_, more);
    }
    void heardOf(const ISCSIIPADDR & /*address*/, const MacAddress & /*mac*/) override {}
    HBAPORTSTATISCSI sum() const
    {
        const std::lock_guard guard(mutex_);
        return sum_;
    }

private:
    mutable std::mutex mutex_;
    HBAPORTSTATISCSI sum_{};
};

// The port of an interface.
std::unique_ptr<TargetPort> openPortOf(const std::string &interfaceName, PortObserver &observer);

// A session with a target at a port of 127.0.0.1.
SessionRequest requestFor(SD_UINT16 port, const std::string &targetName,
                          std::chrono::milliseconds deadline = std::chrono::seconds(5));
Credentials credentials(const std::string &name, const std::string &secret);

// Logs in and waits for the outcome, twice the deadline at most.
LoginResult logIn(TargetPort &port, const SessionRequest &request);
CommandResult reportLuns(TargetPort &port, const SessionRequest &request, SD_UINT32 allocation = 2048);
CommandResult readCapacity(TargetPort &port, const SessionRequest &request, SD_UINT16 lun);

// Whether a command reached its unit and ended well.
bool succeeded(const CommandResult &result);

// How long work takes.
std::chrono::steady_clock::duration timeOf(const std::function<void()> &work);
// Waits until something is so, ten seconds at most.
void awaitUntil(const std::function<bool()> &condition);

// How many entries a folder of /proc/self has: descriptors ("fd") or threads ("task").
std::size_t countOwn(const std::string &folder);

std::ostream &operator<<(std::ostream &stream, Reach reach);
