// The seam between the adapter and what it talks to. All that the adapter knows of hosts, targets and iSNS servers goes
// through this interface; behind it stands the software storage network (SoftwareTargets.cpp).
//
// Implementations are called from many threads at once and keep no reference to their arguments.
#pragma once

#include "Exported.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <vector>

using MacAddress = std::array<SD_UINT8, 6>;

// Where a target is to be found.
struct TargetAddress {
    ISCSIIPADDR address; // of its portal
    SD_UINT16 port;      // TCP port
    std::string name;    // iSCSI name
};

// How far an attempt to reach a target got.
enum class Reach {
    session,     // logged in
    noAnswer,    // nothing answers at the address and port
    unknownName, // somebody answers but has no target of this name
};

// The outcome of one SCSI command. status, data and sense count only when a session was reached.
struct CommandResult {
    Reach reach = Reach::noAnswer;
    SD_UINT8 status = 0;         // SCSI status: 0 GOOD, 2 CHECK CONDITION
    std::vector<SD_UINT8> data;  // at most as long as the command's allocation length
    std::vector<SD_UINT8> sense; // fixed format, empty with GOOD
};

// What discovery at a portal tells.
struct DiscoveredPortal {
    std::string hostName;
    std::vector<std::string> targetNames;
};

class TargetPort
{
public:
    TargetPort() = default;
    TargetPort(const TargetPort &) = delete;
    TargetPort &operator=(const TargetPort &) = delete;
    virtual ~TargetPort() = default;

    // The hardware address of the host with this address, if it answers a ping.
    virtual std::optional<MacAddress> findHost(const ISCSIIPADDR &address) = 0;
    // What the portal at this address offers, if it answers.
    virtual std::optional<DiscoveredPortal> discover(const ISCSIIPADDR &address) = 0;
    // Logs in to a target.
    virtual Reach login(const TargetAddress &target) = 0;
    // Sends a SCSI command to a unit of a target. lun is the first two bytes of the unit's number, as REPORT LUNS
    // delivers them, big-endian.
    virtual CommandResult execute(const TargetAddress &target, SD_UINT16 lun, std::span<const SD_UINT8> command) = 0;
    // The targets that the iSNS server at this address knows, if it answers.
    virtual std::optional<std::vector<SDM_ISNS_DISCOVERED_TARGET>> queryIsns(const ISCSIIPADDR &server) = 0;
};

// The port in use.
TargetPort &targetPort();
