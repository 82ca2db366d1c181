// A target that misbehaves as it is told.
#pragma once

#include "Exported.h"

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

// Kinds of PDUs that a target sends.
inline constexpr SD_UINT8 NOP_IN = 0x20;
inline constexpr SD_UINT8 SCSI_RESPONSE = 0x21;
inline constexpr SD_UINT8 LOGIN_RESPONSE = 0x23;
inline constexpr SD_UINT8 TEXT_RESPONSE = 0x24;
inline constexpr SD_UINT8 DATA_IN = 0x25;

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
    int socket_;
};

// The answer to a request: its kind, with the numbers that an answer repeats.
Pdu answerTo(const Pdu &request, SD_UINT8 opcode);
// The answer to a login. Status 0 goes on to the full feature phase.
Pdu loginAnswer(const Pdu &request, int status);
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
