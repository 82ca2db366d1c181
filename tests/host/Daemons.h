// The target daemon of the host adapter's tests: a process of its own on a loopback address. It and its files are gone
// when the object goes, and when the test program ends in whatever way.
#pragma once

#include "Exported.h"
#include "Sandbox.h"

#include <sys/types.h>

#include <string>

// tgtd on 127.0.0.1.
class TargetDaemon
{
public:
    static bool isInstalled();

    // Commands of tools/target-daemon make its targets, whenever it starts.
    explicit TargetDaemon(std::string targets);
    TargetDaemon(const TargetDaemon &) = delete;
    TargetDaemon &operator=(const TargetDaemon &) = delete;
    ~TargetDaemon();

    SD_UINT16 port() const
    {
        return port_;
    }

    // Runs commands of tools/target-daemon.
    void administer(const std::string &commands) const;
    void freeze() const;
    void resume() const;
    void kill();
    void start();

private:
    const TemporaryFolder folder_;
    const std::string targets_;
    const SD_UINT16 port_;
    pid_t process_ = 0; // 0: it is not running
};
