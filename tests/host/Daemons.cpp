// Servers for the tests, see Daemons.h.
#include "Daemons.h"

#include "ScriptedTarget.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <thread>

namespace
{

const std::string PATH = "PATH=" TAVO_SERVERS "/usr/sbin:/usr/sbin:/usr/bin:/bin ";

bool run(const std::string &command)
{
    return std::system((PATH + command + " >/dev/null 2>&1").c_str()) == 0;
}

std::string makeFolder()
{
    std::string path = "/tmp/tavo-host-XXXXXX";
    if (mkdtemp(path.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
    return path;
}

// Tries until it works.
template <typename Attempt>
void await(const std::string &what, Attempt &&attempt)
{
    for (int tries = 0; !attempt(); ++tries) {
        if (tries == 1000) {
            throw std::runtime_error(what + " does not work");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

} // namespace

TemporaryFolder::TemporaryFolder() : path(makeFolder()) {}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
}

ChildProcess::ChildProcess(const std::string &command)
{
    std::string line = PATH + "exec setpriv --pdeathsig KILL " + command + " 2>&1";
    std::array<char *, 4> words{const_cast<char *>("sh"), const_cast<char *>("-c"), line.data(), nullptr};
    if (posix_spawn(&process_, "/bin/sh", nullptr, nullptr, words.data(), environ) != 0) {
        throw std::runtime_error(command + " cannot be started");
    }
}

ChildProcess::~ChildProcess()
{
    signal(SIGKILL);
    waitpid(process_, nullptr, 0);
}

void ChildProcess::signal(int number) const
{
    ::kill(process_, number);
}

bool isInstalled(const std::string &program)
{
    return run("command -v " + program);
}

TargetDaemon::TargetDaemon() : port_(freePort())
{
    start();
}

int TargetDaemon::addTarget(const std::string &name)
{
    const std::string number = std::to_string(++lastTarget_);
    administer("--mode target --op new --tid " + number + " --targetname " + name);
    administer("--mode target --op bind --tid " + number + " --initiator-address ALL");
    return lastTarget_;
}

void TargetDaemon::removeTarget(int target)
{
    administer("--mode target --op delete --force --tid " + std::to_string(target));
}

void TargetDaemon::addUnit(int target, int lun)
{
    administer("--mode logicalunit --op new --tid " + std::to_string(target) + " --lun " + std::to_string(lun)
               + " --bstype null --backing-store /dev/null");
}

void TargetDaemon::addAccount(int target, const std::string &name, const std::string &secret, bool outgoing)
{
    administer("--mode account --op new --user " + name + " --password '" + secret + "'");
    administer("--mode account --op bind --tid " + std::to_string(target) + " --user " + name
               + (outgoing ? " --outgoing" : ""));
}

void TargetDaemon::freeze() const
{
    process_->signal(SIGSTOP);
}

void TargetDaemon::resume() const
{
    process_->signal(SIGCONT);
}

void TargetDaemon::kill()
{
    process_.reset();
}

void TargetDaemon::start()
{
    process_ = std::make_unique<ChildProcess>("env TGT_IPC_SOCKET=" + folder_.path
                                              + "/control tgtd -f --iscsi portal=127.0.0.1:" + std::to_string(port_)
                                              + " >" + folder_.path + "/log");
    await("tgtd", [&] { return tell("--mode system --op show"); });
    for (const std::string &options : history_) {
        if (!tell(options)) {
            throw std::runtime_error("tgtd does not take what it took before");
        }
    }
}

void TargetDaemon::administer(const std::string &options)
{
    if (!tell(options)) {
        throw std::runtime_error("tgtadm fails: " + options);
    }
    history_.push_back(options);
}

bool TargetDaemon::tell(const std::string &options) const
{
    return run("TGT_IPC_SOCKET=" + folder_.path + "/control tgtadm --lld iscsi " + options);
}
