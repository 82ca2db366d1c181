// The servers of the host adapter's tests: processes of their own on loopback addresses. They and their files are gone
// when the object goes, and when the test program ends in whatever way.
#pragma once

#include "Exported.h"

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

// A folder that goes with all that is in it.
class TemporaryFolder
{
public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;
    ~TemporaryFolder();

    const std::string path;
};

// A process that runs a command of the shell.
class ChildProcess
{
public:
    explicit ChildProcess(const std::string &command);
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;
    ~ChildProcess();

    void signal(int number) const;

private:
    pid_t process_ = -1;
};

// Whether a server is installed or unpacked.
bool isInstalled(const std::string &program);

// tgtd on 127.0.0.1, with targets as they are added.
class TargetDaemon
{
public:
    TargetDaemon();

    SD_UINT16 port() const
    {
        return port_;
    }

    // A target that lets everybody in; answers its number.
    int addTarget(const std::string &name);
    void removeTarget(int target);
    // A unit whose contents are of no matter.
    void addUnit(int target, int lun);
    // An account that initiators have to log in with, or (outgoing) by which the target proves itself.
    void addAccount(int target, const std::string &name, const std::string &secret, bool outgoing);

    void freeze() const;
    void resume() const;
    void kill();
    // Starts anew, with all that was added.
    void start();

private:
    void administer(const std::string &options);
    bool tell(const std::string &options) const;

    TemporaryFolder folder_;
    SD_UINT16 port_;
    int lastTarget_ = 0;
    std::vector<std::string> history_;
    std::unique_ptr<ChildProcess> process_;
};
