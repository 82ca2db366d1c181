// What the host adapter's tests talk to: a target daemon and an iSNS server, each a process of its own on a loopback
// address, and a target that misbehaves as it is told. All of them, and their files, are gone when the object goes, and
// when the test program ends in whatever way.
#pragma once

#include "Exported.h"

#include <sys/types.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>
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

class ChildProcess
{
public:
    // Its output goes to the file; environment holds assignments to add.
    ChildProcess(const std::vector<std::string> &command, const std::string &output,
                 const std::vector<std::string> &environment = {});
    ChildProcess(const ChildProcess &) = delete;
    ChildProcess &operator=(const ChildProcess &) = delete;
    ~ChildProcess();

    void signal(int number) const;
    // Waits for its end; its exit status, or -1 when a signal ended it.
    int wait();

private:
    pid_t process_ = -1;
};

// Whether a program is installed. Debian keeps daemons where not everybody's path leads.
bool isInstalled(const std::string &program);
// A TCP port of the address that nobody has at the moment.
SD_UINT16 freePort(const std::string &address);

// tgtd on a loopback address, with targets as they are added.
class TargetDaemon
{
public:
    explicit TargetDaemon(std::string address = "127.0.0.1");

    ISCSIIPADDR address() const;
    SD_UINT16 port() const
    {
        return port_;
    }

    // A target that lets everybody in; answers its number.
    int addTarget(const std::string &name);
    void removeTarget(int target);
    // A unit whose contents are of no matter.
    void addUnit(int target, int lun);
    void addDisk(int target, int lun, SD_UINT64 bytes, unsigned blockSize);
    // An account that initiators have to log in with, or (outgoing) by which the target proves itself.
    void addAccount(int target, const std::string &name, const std::string &secret, bool outgoing);

    void freeze() const;
    void resume() const;
    void kill();
    // Starts anew, with all that was added.
    void start();

private:
    void administer(const std::vector<std::string> &arguments);
    bool tell(const std::vector<std::string> &arguments) const;

    TemporaryFolder folder_;
    std::string address_;
    SD_UINT16 port_;
    int lastTarget_ = 0;
    std::vector<std::vector<std::string>> history_;
    std::unique_ptr<ChildProcess> process_;
};

// isnsd on a loopback address of its own, since its port is fixed.
class IsnsDaemon
{
public:
    IsnsDaemon();

    ISCSIIPADDR address() const;
    // Registers targets named PREFIX0, PREFIX1, ... with two portals each.
    void addTargets(const std::string &prefix, int count);

private:
    TemporaryFolder folder_;
    std::string address_;
    std::unique_ptr<ChildProcess> process_;
};

// A PDU of iSCSI.
struct Pdu {
    std::vector<SD_UINT8> header = std::vector<SD_UINT8>(48);
    std::vector<SD_UINT8> data;
};

// A connection as a script sees it. Everything throws when the other side is gone.
class ScriptedConnection
{
public:
    explicit ScriptedConnection(int socket) : socket_(socket) {}

    Pdu receive();
    void send(const std::vector<SD_UINT8> &bytes);
    void send(const Pdu &pdu);
    // Takes the login request and lets the initiator in.
    void acceptLogin();
    // Waits until the other side ends the connection.
    void stayUntilClosed();

private:
    void receive(std::vector<SD_UINT8> &bytes);

    int socket_;
};

// The answer to a request: its kind, with the numbers that an answer repeats.
Pdu answerTo(const Pdu &request, SD_UINT8 opcode);
std::vector<SD_UINT8> bytesOf(const Pdu &pdu);

// Listens on 127.0.0.1 and plays the script for each connection.
class ScriptedTarget
{
public:
    using Script = std::function<void(ScriptedConnection &)>;
    explicit ScriptedTarget(Script script);
    ScriptedTarget(const ScriptedTarget &) = delete;
    ScriptedTarget &operator=(const ScriptedTarget &) = delete;
    ~ScriptedTarget();

    SD_UINT16 port() const
    {
        return port_;
    }

private:
    void serve();

    Script script_;
    int listener_;
    SD_UINT16 port_;
    std::atomic<int> connection_{-1};
    std::atomic<bool> ending_{false};
    std::thread thread_;
};
