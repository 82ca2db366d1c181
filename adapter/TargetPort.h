// The seam between the adapter and the network it is on. All that the adapter knows of hosts, targets and iSNS servers
// goes through a port: the software adapter's leads to an imagined storage network, the host adapter's to a real one.
// Which of the two a library has is chosen when it is linked.
//
// A port is made when an adapter is first opened and goes when its last handle is closed; no thread of it outlives it.
// It is called from many threads at once, keeps no reference to its arguments, and waits no longer than the deadline
// of a request.
#pragma once

#include "Inventory.h"

#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

// A CHAP secret, wiped when it goes.
class Secret
{
public:
    Secret() = default;
    explicit Secret(std::span<const SD_UINT8> bytes); // what exceeds 100 bytes is left out
    Secret(const Secret &) = default;
    Secret &operator=(const Secret &) = default;
    ~Secret();

    std::span<const SD_UINT8> bytes() const
    {
        return std::span(bytes_).first(length_);
    }

private:
    std::array<SD_UINT8, sizeof CHAPTABLE::ChapSecret> bytes_{};
    std::size_t length_ = 0;
};

struct Credentials {
    std::string name;
    Secret secret; // 1 to 100 bytes, text or binary
};

// Where a target is to be found.
struct TargetAddress {
    ISCSIIPADDR address; // of its portal
    SD_UINT16 port;      // TCP port
    std::string name;    // iSCSI name; empty for discovery
};

// What a session is made of.
struct SessionRequest {
    SD_UINT32 index = 0; // of the device database entry. An entry has one session at most.
    TargetAddress target;
    ISCSIDEVICE parameters{};             // the entry's; where it has none (0), those of the firmware block
    std::string initiatorName;            // iSCSI name of the adapter
    std::string initiatorAlias;           // may be empty
    std::optional<Credentials> own;       // to log in with
    std::optional<Credentials> targets;   // by which the target has to prove itself; only together with own
    std::chrono::milliseconds deadline{}; // for connecting and login together, and for each command
};

// How far an attempt to reach a target got.
enum class Reach {
    session,        // logged in
    unreachable,    // no route, connection refused, no answer
    timeout,        // connected, then silence until the deadline
    unknownTarget,  // the portal has no target of this name
    authentication, // the target did not accept the credentials, or could not prove itself
    refused,        // refused for another reason, or by an answer that is no iSCSI
};

struct LoginResult {
    Reach reach = Reach::unreachable;
    SD_UINT16 status = 0; // iSCSI login status, class in the high byte, detail in the low; 0 when the target sent none
};

// Called once for each login, from any thread and at the latest when the port goes.
using LoginDone = std::function<void(const LoginResult &)>;

// The outcome of one SCSI command. status, data and sense count only when a session was reached.
struct CommandResult {
    LoginResult login;
    SD_UINT8 status = 0;         // SCSI status: 0 GOOD, 2 CHECK CONDITION
    std::vector<SD_UINT8> data;  // as the target sent it, at most as long as the allocation length
    std::vector<SD_UINT8> sense; // as the target sent it, empty with GOOD
};

// One target that a portal offers.
struct OfferedTarget {
    std::string name;
    std::vector<TargetAddress> portals; // where it is to be found, in the order offered; the names are its own
};

struct DiscoveryResult {
    LoginResult login;    // of the discovery session
    std::string hostName; // of the portal, empty when not known
    std::vector<OfferedTarget> targets;
};

struct IsnsResult {
    Reach reach = Reach::unreachable; // session: the server answered
    std::vector<SDM_ISNS_DISCOVERED_TARGET> targets;
};

struct PingRequest {
    ISCSIIPADDR address{};
    SD_UINT32 packets = 1;
    ISCSIIPADDR own{}; // the address in the firmware block
    std::chrono::milliseconds deadline{};
};

enum class PingResult { answered, silent, notSupported };

// Addresses that belong to the host and not to the firmware block.
struct HostAddresses {
    ISCSIIPADDR address{};
    ISCSIIPADDR secondaryAddress{};
    ISCSIIPADDR subnetMask{};
    ISCSIIPADDR gateway{};
    ISCSIIPADDR primaryDns{};
    ISCSIIPADDR secondaryDns{};
    bool dhcp = false;
};

// What a port tells its adapter as it happens, from any thread.
class PortObserver
{
public:
    PortObserver() = default;
    PortObserver(const PortObserver &) = delete;
    PortObserver &operator=(const PortObserver &) = delete;
    virtual ~PortObserver() = default;

    // Adds to the adapter's counters, field by field.
    virtual void count(const HBAPORTSTATISCSI &more) = 0;
    // A host of the network was heard of. For ports that leave the ARP table to the adapter.
    virtual void heardOf(const ISCSIIPADDR &address, const MacAddress &mac) = 0;
};

class TargetPort
{
public:
    TargetPort() = default;
    TargetPort(const TargetPort &) = delete;
    TargetPort &operator=(const TargetPort &) = delete;
    virtual ~TargetPort() = default; // ends all sessions

    virtual bool linkUp() = 0;
    // The host's addresses, which then cannot be changed through the adapter; none when those of the firmware block
    // are in force.
    virtual std::optional<HostAddresses> addresses() = 0;
    // Whether firmware images can be written.
    virtual bool takesImages() const = 0;
    // What others than this library count of the port (the kernel), since it began: added to the adapter's own
    // counters, less what it was at the last reset. All zero when nobody does.
    virtual HBAPORTSTATISCSI counted() = 0;
    // The ARP table, time_in filled in; none when the adapter keeps it from what it has heard.
    virtual std::optional<std::vector<ARPTABLE>> neighbours() = 0;
    // Lines of the crash record: what is known of the network, without secrets.
    virtual std::vector<std::string> report() = 0;

    virtual PingResult ping(const PingRequest &request) = 0;
    // Asks the portal of the request (SendTargets) for all of its targets.
    virtual DiscoveryResult discover(const SessionRequest &request) = 0;
    // Logs in, and calls done with the outcome: before it returns or later. A session that the entry has with another
    // target or with other parameters is ended first.
    virtual void login(const SessionRequest &request, LoginDone done) = 0;
    // Ends the session of the entry with this index, if it has one.
    virtual void logout(SD_UINT32 index) = 0;
    // Ends all sessions.
    virtual void logoutAll() = 0;
    // Sends a SCSI command over the entry's session, which is made when there is none. lun is the first two bytes of
    // the unit's number as REPORT LUNS delivers them, big-endian. Never more than allocationLength bytes of data.
    virtual CommandResult execute(const SessionRequest &request, SD_UINT16 lun, std::span<const SD_UINT8> command,
                                  std::size_t allocationLength) = 0;
    // Asks an iSNS server for the targets that the initiator with this name may see.
    virtual IsnsResult queryIsns(const ISCSIIPADDR &server, const std::string &initiatorName,
                                 std::chrono::milliseconds deadline) = 0;
};

// The port of an adapter. The observer outlives it.
std::unique_ptr<TargetPort> openPort(const AdapterModel &model, PortObserver &observer);
