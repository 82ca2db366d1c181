// The adapter as an initiator: what it does with targets, hosts and iSNS servers through its port, and what is logged
// and remembered of that.
#pragma once

#include "Adapter.h"

#include <chrono>

// Values of an entry of the connection-error log.
inline constexpr SD_UINT8 LOG_ENTRY_LOGIN = 1;  // a login failed, or the session of a command was lost
inline constexpr SD_UINT8 LOG_ENTRY_LOGOUT = 2; // a session was ended on request
inline constexpr SD_UINT8 LOG_ERROR_NONE = 0;
inline constexpr SD_UINT8 LOG_ERROR_UNREACHABLE = 1; // nothing answers
inline constexpr SD_UINT8 LOG_ERROR_REFUSED = 2;     // the login failed; the detail is the iSCSI login status, if any
inline constexpr SD_UINT8 LOG_ERROR_TIMEOUT = 3;     // connected, then silence
inline constexpr SD_UINT16 CONNECTION_CLOSED = 0;
inline constexpr SD_UINT16 CONNECTION_OPENING = 1; // no TCP connection yet
inline constexpr SD_UINT16 CONNECTION_LOGIN = 2;   // connected

// The status of an operation that got this far; 0 for a session.
SD_UINT32 statusOf(Reach reach);

// The address and name by which an entry leads to its target.
TargetAddress addressOf(const DEVICEENTRYISCSI &entry);
// Makes the initiator session identifier of an entry its own: its last two bytes are the entry's index.
void setSessionId(DEVICEENTRYISCSI &entry);
// How long an operation with an entry's target may wait.
std::chrono::milliseconds deadlineOf(const Settings &settings, const ISCSIDEVICE &parameters);

// Logs in to the target of an entry just written. The outcome becomes the entry's state, and a failure an entry of the
// log: at once or, where the network takes its time, later.
void login(Adapter &adapter, const DEVICEENTRYISCSI &entry);
// Ends all sessions and logs in anew to the targets of all entries. Waits for the outcomes. Then a last change applies
// to the settings, together with the states.
void loginAll(Adapter &adapter, const SettingsStore::Change &change);
// Ends the session of an entry. logged: an entry of the log tells of it.
void endSession(Adapter &adapter, SD_UINT32 index, bool logged);

// Sends a SCSI command to a unit of an entry's target. The settings are those that the entry is of.
CommandResult execute(Adapter &adapter, const Settings &settings, const DEVICEENTRYISCSI &entry, SD_UINT16 lun,
                      std::span<const SD_UINT8> command, std::size_t allocationLength);

// Asks the portal of an entry for its targets.
DiscoveryResult discover(Adapter &adapter, const DEVICEENTRYISCSI &entry);
// Discovers, gives each target that has no entry yet one like this entry, at its index or the next free one, and logs
// in to them. Throws the status of a portal that does not answer, and ERR_DATABASE_FULL when not all found a place.
void addDiscovered(Adapter &adapter, const DEVICEENTRYISCSI &entry);
