// Tests with a target daemon: a process of its own on a loopback address. It and its files are gone when the test ends,
// in whatever way.
#pragma once

#include "OpenPort.h"
#include "Sandbox.h"
#include "ScriptedTarget.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>
#include <utility>

inline constexpr const char *OPEN = "iqn.2024-01.example:open";
inline constexpr const char *GUARDED = "iqn.2024-01.example:guarded"; // asks initiators for a proof
inline constexpr const char *MUTUAL = "iqn.2024-01.example:mutual";   // and gives one itself

class DaemonTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!run("command -v tgtd")) {
            GTEST_SKIP() << "tgtd is not installed";
        }
        startDaemon();
    }
    ~DaemonTest() override
    {
        killDaemon();
    }

    void startDaemon()
    {
        daemon_ = startShell("become_daemon '" + folder_.path.string() + "' 127.0.0.1:" + std::to_string(tcpPort_));
        administer(std::string("await_daemon; add_target 1 ") + OPEN + "; add_unit 1 1 --bstype null -b /dev/null"
                   + "; add_target 2 " + GUARDED + "; add_account 2 initiator 'initiators secret'" + "; add_target 3 "
                   + MUTUAL + "; add_account 3 another 'another initiators secret'"
                   + "; add_account 3 target 'secret of the target' --outgoing");
    }
    void killDaemon()
    {
        if (daemon_ != 0) {
            signal(SIGKILL);
            waitpid(std::exchange(daemon_, 0), nullptr, 0);
        }
    }
    void signal(int number) const
    {
        kill(daemon_, number);
    }
    // Runs commands of tools/target-daemon.
    void administer(const std::string &commands) const
    {
        if (!run("export TGT_IPC_SOCKET='" + folder_.path.string() + "/control'; " + commands)) {
            throw std::runtime_error("the target daemon does not take: " + commands);
        }
    }
    SessionRequest requestTo(const std::string &target, std::chrono::milliseconds deadline = USUAL_DEADLINE) const
    {
        return requestFor(tcpPort_, target, deadline);
    }

    OpenPort port;

private:
    // A shell that knows the commands of tools/target-daemon.
    static pid_t startShell(const std::string &commands)
    {
        std::string line = "source '" TAVO_TARGET_DAEMON "'; exec >/dev/null 2>&1; " + commands;
        std::array<char *, 4> words{const_cast<char *>("bash"), const_cast<char *>("-ec"), line.data(), nullptr};
        pid_t process = 0;
        if (posix_spawnp(&process, "bash", nullptr, nullptr, words.data(), environ) != 0) {
            throw std::runtime_error("no shell");
        }
        return process;
    }
    static bool run(const std::string &commands)
    {
        int status = -1;
        waitpid(startShell(commands), &status, 0);
        return status == 0;
    }

    const TemporaryFolder folder_;
    const SD_UINT16 tcpPort_ = ScriptedTarget(nullptr).port(); // nobody has it any more
    pid_t daemon_ = 0;                                         // 0: it is not running
};
