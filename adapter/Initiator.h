// The adapter on the network: what it does with targets, hosts and iSNS servers is counted and logged here.
//
// Counters and logs are kept as well as the disk allows: when they cannot be written the work is done all the same.
#pragma once

#include "Adapter.h"
#include "NetworkSeam.h"

// Values of an entry of the connection-error log.
inline constexpr SD_UINT8 LOG_ENTRY_LOGIN = 1;  // a login failed
inline constexpr SD_UINT8 LOG_ENTRY_LOGOUT = 2; // a session was ended on request
inline constexpr SD_UINT8 LOG_ERROR_NONE = 0;
inline constexpr SD_UINT8 LOG_ERROR_TIMEOUT = 1; // nothing answered; detail 0
inline constexpr SD_UINT8 LOG_ERROR_REFUSED = 2; // the login was refused; detail is the iSCSI login status
inline constexpr SD_UINT16 LOGIN_STATUS_NOT_FOUND = 0x0203;
inline constexpr SD_UINT16 CONNECTION_CLOSED = 0;
inline constexpr SD_UINT16 CONNECTION_OPENING = 1; // no TCP connection yet
inline constexpr SD_UINT16 CONNECTION_LOGIN = 2;   // connected, not logged in

// The address and name by which an entry leads to its target.
TargetAddress addressOf(const DEVICEENTRYISCSI &entry);

// Logs in to the target of an entry.
Reach login(Adapter &adapter, const DEVICEENTRYISCSI &entry);
// Logs in to the targets of all entries; the answers in their order. Known neighbours are forgotten first.
std::vector<Reach> loginAll(Adapter &adapter, const std::vector<DEVICEENTRYISCSI> &entries);
// Counts a logout and logs the end of the connection.
void recordLogout(Adapter &adapter, SD_UINT32 index);

// Sends a SCSI command to a unit of an entry's target.
CommandResult execute(Adapter &adapter, const DEVICEENTRYISCSI &entry, SD_UINT16 lun,
                      std::span<const SD_UINT8> command);

// Pings an address; whether it answered.
bool ping(Adapter &adapter, const ISCSIIPADDR &address, SD_UINT32 packets);

// Asks an iSNS server for its targets; nothing when it does not answer.
std::optional<std::vector<SDM_ISNS_DISCOVERED_TARGET>> queryIsns(Adapter &adapter, const ISCSIIPADDR &server);
