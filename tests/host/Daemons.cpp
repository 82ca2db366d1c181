// A target daemon for the tests, see Daemons.h.
#include "Daemons.h"

#include "ScriptedTarget.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>
#include <utility>

namespace
{

// A shell that knows the commands of tools/target-daemon.
pid_t startShell(const std::string &commands)
{
    std::string line = "source '" TAVO_TARGET_DAEMON "'; exec >/dev/null 2>&1; " + commands;
    std::array<char *, 4> words{const_cast<char *>("bash"), const_cast<char *>("-ec"), line.data(), nullptr};
    pid_t process = 0;
    if (posix_spawnp(&process, "bash", nullptr, nullptr, words.data(), environ) != 0) {
        throw std::runtime_error("no shell");
    }
    return process;
}

bool run(const std::string &commands)
{
    int status = -1;
    waitpid(startShell(commands), &status, 0);
    return status == 0;
}

} // namespace

bool TargetDaemon::isInstalled()
{
    return run("command -v tgtd");
}

// The port is one that another target had a moment ago.
TargetDaemon::TargetDaemon(std::string targets) : targets_(std::move(targets)), port_(ScriptedTarget(nullptr).port())
{
    start();
}

TargetDaemon::~TargetDaemon()
{
    kill();
}

void TargetDaemon::administer(const std::string &commands) const
{
    if (!run("export TGT_IPC_SOCKET='" + (folder_.path / "control").string() + "'; " + commands)) {
        throw std::runtime_error("the target daemon does not take: " + commands);
    }
}

void TargetDaemon::freeze() const
{
    ::kill(process_, SIGSTOP);
}

void TargetDaemon::resume() const
{
    ::kill(process_, SIGCONT);
}

void TargetDaemon::kill()
{
    if (process_ != 0) {
        ::kill(process_, SIGKILL);
        waitpid(std::exchange(process_, 0), nullptr, 0);
    }
}

void TargetDaemon::start()
{
    process_ = startShell("become_daemon '" + folder_.path.string() + "' " + std::to_string(port_));
    administer("await_daemon; " + targets_);
}
