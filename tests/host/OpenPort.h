// A port of this machine as the adapter sees it, and requests to it.
#pragma once

#include "Activity.h"
#include "ScsiStandard.h"
#include "TargetPort.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <future>
#include <iterator>
#include <memory>
#include <mutex>
#include <ostream>
#include <span>
#include <string>
#include <thread>

inline std::ostream &operator<<(std::ostream &stream, Reach reach)
{
    constexpr std::array names{"session", "unreachable", "timeout", "unknownTarget", "authentication", "refused"};
    return stream << names.at(static_cast<std::size_t>(reach));
}

inline constexpr std::chrono::milliseconds USUAL_DEADLINE{5000};

// A session with a target at a port of 127.0.0.1.
inline SessionRequest requestFor(SD_UINT16 port, const std::string &targetName,
                                 std::chrono::milliseconds deadline = USUAL_DEADLINE)
{
    SessionRequest request;
    request.target = {{{127, 0, 0, 1}, 1, 0}, port, targetName};
    request.initiatorName = "iqn.2024-01.example:initiator";
    request.initiatorAlias = "test";
    request.deadline = deadline;
    return request;
}

// The open port of an interface. What it counts is added up.
class OpenPort : private PortObserver
{
public:
    explicit OpenPort(const std::string &interfaceName = "lo")
    {
        setenv("TAVO_ADAPTER_INTERFACES", interfaceName.c_str(), 1);
        port_ = openPort(*findModel(0), *this);
    }
    TargetPort *operator->() const
    {
        return port_.get();
    }
    void close()
    {
        port_.reset();
    }
    HBAPORTSTATISCSI counters() const
    {
        const std::lock_guard guard(mutex_);
        return counters_;
    }

    // Logs in and waits for the outcome, twice the deadline at most.
    LoginResult logIn(const SessionRequest &request) const
    {
        const auto outcome = std::make_shared<std::promise<LoginResult>>();
        auto future = outcome->get_future();
        port_->login(request, [outcome](const LoginResult &login) { outcome->set_value(login); });
        if (future.wait_for(2 * request.deadline) != std::future_status::ready) {
            ADD_FAILURE() << "a login does not end";
            return {};
        }
        return future.get();
    }
    CommandResult reportLuns(const SessionRequest &request, SD_UINT16 allocation = 2048) const
    {
        std::array<SD_UINT8, 12> command{SCSI_REPORT_LUNS};
        command[8] = static_cast<SD_UINT8>(allocation >> 8);
        command[9] = static_cast<SD_UINT8>(allocation);
        return port_->execute(request, 0, command, allocation);
    }
    CommandResult readCapacity(const SessionRequest &request, SD_UINT16 lun) const
    {
        const std::array<SD_UINT8, 10> command{SCSI_READ_CAPACITY_10};
        return port_->execute(request, lun, command, sizeof(READ_CAPACITY_DATA));
    }
    // How far a command gets. Once it has reached its unit it succeeds.
    Reach reach(const SessionRequest &request) const
    {
        const CommandResult result = reportLuns(request);
        EXPECT_TRUE(result.login.reach != Reach::session || result.status == SCSI_GOOD);
        return result.login.reach;
    }

private:
    void count(const HBAPORTSTATISCSI &more) override
    {
        const std::lock_guard guard(mutex_);
        add(counters_, more);
    }
    void heardOf(const ISCSIIPADDR & /*address*/, const MacAddress & /*mac*/) override {}

    mutable std::mutex mutex_; // guards counters_
    HBAPORTSTATISCSI counters_{};
    std::unique_ptr<TargetPort> port_;
};

// How long work takes.
inline std::chrono::steady_clock::duration timeOf(const std::function<void()> &work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::steady_clock::now() - start;
}

// Waits until something is so, ten seconds at most.
inline void awaitUntil(const std::function<bool()> &condition)
{
    for (int tries = 0; tries < 1000 && !condition(); ++tries) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

// How many entries a folder of /proc/self has: descriptors ("fd") or threads ("task").
inline std::ptrdiff_t countOwn(const std::string &folder)
{
    const std::filesystem::directory_iterator entries("/proc/self/" + folder);
    return std::distance(begin(entries), end(entries));
}
