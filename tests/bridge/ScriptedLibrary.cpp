#include "ScriptedLibrary.h"

#include "JniWatch.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <sstream>

ScriptedLibrary &library()
{
    static ScriptedLibrary instance;
    return instance;
}

void giveUp(const std::string &why)
{
    std::cerr << why << std::endl;
    std::abort();
}

std::string hex(const void *bytes, std::size_t size)
{
    constexpr const char *digits = "0123456789abcdef";
    std::string out;
    for (std::size_t i = 0; i < size; ++i) {
        unsigned byte = static_cast<const unsigned char *>(bytes)[i];
        out += digits[byte >> 4U];
        out += digits[byte & 15U];
    }
    return out;
}

std::string unhex(const std::string &digits)
{
    std::string out;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        out += char(std::stoi(digits.substr(i, 2), nullptr, 16));
    }
    return out;
}

std::string hex(SD_UINT32 number)
{
    std::ostringstream out;
    out << std::hex << number;
    return out.str();
}

SD_UINT32 unhexNumber(const std::string &digits)
{
    return SD_UINT32(std::stoul(digits, nullptr, 16));
}

SD_UINT32 ScriptedLibrary::run(const Operation &operation)
{
    JniWatch *watch = JniWatch::current();
    const auto *out = static_cast<const unsigned char *>(operation.out);
    bool dirty = operation.cleared && std::any_of(out, out + operation.outSize, [](auto byte) { return byte != 0; });
    bool fails = watch != nullptr && watch->step(true, [&] {
        return operation.name + (operation.name == "SDGetVersioniSCSI" ? "" : " " + hex(operation.handle))
               + operation.arguments + (dirty ? " (record not cleared)" : "");
    });
    std::optional<Answer> answer;
    if (responder && !fails) {
        answer = responder(operation);
    }
    if (!answer) {
        auto &queue = answers[operation.name];
        answer = queue.empty() ? Answer{} : queue.front();
        if (queue.size() > 1) {
            queue.pop_front();
        }
    }
    if (fails) {
        return faultStatus;
    }
    if (operation.out != nullptr) {
        std::memcpy(operation.out, answer->bytes.data(), std::min(answer->bytes.size(), operation.outSize));
    }
    if (operation.count != nullptr && answer->count) {
        *operation.count = *answer->count;
    }
    return answer->status;
}

namespace
{
// What the library fills; most records have to arrive as zeros.
struct Room {
    void *bytes;
    std::size_t size;
    bool cleared = true;
};
template <typename Record>
Room fills(Record *record)
{
    return {record, sizeof *record};
}

// What the bridge hands in.
struct Handed {
    const void *bytes;
    std::size_t size;
};
template <typename Record>
Handed handed(const Record *records, std::size_t count = 1)
{
    return {records, count * sizeof *records};
}

// Fills the sense data, which is not for Java, with rubbish. Returns its size.
SD_UINT32 spoilt(void *sense, SD_UINT32 size)
{
    std::memset(sense, 0x5e, size);
    return size;
}

void add(Operation &operation, const Room &room)
{
    operation.out = room.bytes;
    operation.outSize = room.size;
    operation.cleared = room.cleared;
}

void add(Operation &operation, const Handed &handed)
{
    operation.arguments += " [" + hex(handed.bytes, handed.size) + "]";
}

void add(Operation &operation, const char *name)
{
    operation.arguments += " \"" + std::string(name) + "\"";
}

void add(Operation &operation, SD_UINT32 *count)
{
    operation.count = count;
}

void add(Operation &operation, SD_UINT32 number)
{
    operation.arguments += " " + hex(number);
    operation.number = number;
}

template <typename... Crossing>
SD_UINT32 run(const char *name, SDMGT_HANDLE handle, const Crossing &...crossing)
{
    Operation operation;
    operation.name = name;
    operation.handle = handle;
    (add(operation, crossing), ...);
    return library().run(operation);
}
} // namespace

// A list of parameters cannot stand in more parentheses. NOLINTBEGIN(bugprone-macro-parentheses)
// An operation, its parameters and what of them crosses, in the order of the journal.
#define OPERATION(name, parameters, ...)                                                                               \
    SD_UINT32 name parameters                                                                                          \
    {                                                                                                                  \
        return run(#name, __VA_ARGS__);                                                                                \
    }

OPERATION(SDOpenDeviceiSCSI, (SD_UINT32 adapter, SDMGT_HANDLE *handle), adapter, handle)
OPERATION(SDCloseDeviceiSCSI, (SDMGT_HANDLE handle), handle)
OPERATION(SDGetVersioniSCSI, (char *text, SD_UINT32 size), 0, size, Room{text, size})
OPERATION(SDEnableDebugTraceiSCSI, (SDMGT_HANDLE * handle, const char *name, SD_UINT32 mask), *handle, name, mask)
OPERATION(SDGetHbaDeviceNodePropertyiSCSI, (SDMGT_HANDLE handle, HBAISCSINODE *node), handle, fills(node))
OPERATION(SDGetHbaDevicePortalPropertyiSCSI, (SDMGT_HANDLE handle, SD_UINT32 port, HBAISCSIPORTAL *portal), handle,
          port, fills(portal))
OPERATION(SDGetHbaDeviceDriverPropertyiSCSI, (SDMGT_HANDLE handle, DRIVERINFO *driver), handle, fills(driver))
OPERATION(SDGetHbaDeviceChipPropertyiSCSI, (SDMGT_HANDLE handle, CHIPINFO *chip), handle, fills(chip))
OPERATION(SDGetDDBEntryNum, (SDMGT_HANDLE handle, SD_UINT32 *count), handle, count)
OPERATION(SDGetDDBEntry, (SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index), handle, fills(entry), index)
OPERATION(SDGetDefaultDDBEntry, (SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry), handle, fills(entry))
OPERATION(SDGetInitialDDBEntry, (SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index), handle, fills(entry),
          index)
OPERATION(SDSetDDBEntry, (SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index), handle, handed(entry), index)
OPERATION(SDSendiSCSILogout, (SDMGT_HANDLE handle, LOGOUTISCSI *logout), handle, handed(logout))
OPERATION(SDGetDiscPortalPropertyiSCSI,
          (SDMGT_HANDLE handle, SD_UINT32 port, SD_UINT32 target, SD_UINT32 zero, DISCISCSIPORTAL *portal), handle,
          port, target, zero, fills(portal))
OPERATION(SDGetDiscNodePropertyiSCSI,
          (SDMGT_HANDLE handle, SD_UINT32 bus, SD_UINT32 target, SD_UINT32 zero, DISCISCSINODE *node), handle, bus,
          target, zero, Room{node, sizeof *node, false})
OPERATION(SDGetInitFW, (SDMGT_HANDLE handle, INITFWISCSI *block), handle, fills(block))
OPERATION(SDSetInitFW, (SDMGT_HANDLE handle, INITFWISCSI *block), handle, handed(block))
OPERATION(SDGetFWDefaults, (SDMGT_HANDLE handle, INITFWISCSI *block), handle, fills(block))
OPERATION(SDSetFWDefaults, (SDMGT_HANDLE handle, INITFWISCSI *block), handle, fills(block))
OPERATION(SDUpdateiSCSIFW, (SDMGT_HANDLE handle, const char *name, SD_UINT32 type), handle, name, type)
OPERATION(SDResetHBA, (SDMGT_HANDLE handle, HBARESET *request), handle, handed(request))
OPERATION(SDResetStatisticsiSCSI, (SDMGT_HANDLE handle, SD_UINT32 port), handle, port)
OPERATION(SDGetCrashRecord, (SDMGT_HANDLE handle, const char *name), handle, name)
OPERATION(SDDiagPing, (SDMGT_HANDLE handle, PING *request), handle, handed(request))
OPERATION(SDSendScsiReportLunsCmdiSCSI,
          (SDMGT_HANDLE handle, TARGETINFORMATION *target, void *out, SD_UINT32 size, void *sense, SD_UINT32 senseSize),
          handle, handed(target), size, spoilt(sense, senseSize), Room{out, size, false})
OPERATION(SDSendScsiInquiryCmdiSCSI,
          (SDMGT_HANDLE handle, TARGETINFORMATION *target, void *out, SD_UINT32 size, void *sense, SD_UINT32 senseSize),
          handle, handed(target), size, spoilt(sense, senseSize), Room{out, size, false})
OPERATION(SDSendScsiReadCapacityCmdiSCSI,
          (SDMGT_HANDLE handle, TARGETINFORMATION *target, READ_CAPACITY_DATA *out, SD_UINT32 size, void *sense,
           SD_UINT32 senseSize),
          handle, handed(target), size, spoilt(sense, senseSize), Room{out, size, false})
OPERATION(SDGetStatisticsiSCSI, (SDMGT_HANDLE handle, HBAPORTSTATISCSI *statistics), handle, fills(statistics))
OPERATION(SDGetLogs, (SDMGT_HANDLE handle, SD_UINT32 type, SD_UINT32 *count, void *entries), handle, type, *count,
          count, Room{entries, LOG_CAPACITY *(type == LOG_ARP ? sizeof(ARPTABLE) : sizeof(CONNERRTABLE))})
OPERATION(SDGetCHAPEntryNum, (SDMGT_HANDLE handle, SD_UINT32 *count), handle, count)
OPERATION(SDGetCHAPTable, (SDMGT_HANDLE handle, CHAPTABLE *table, SD_UINT32 *count), handle, *count, count,
          Room{table, CHAP_CAPACITY * sizeof(CHAPTABLE)})
OPERATION(SDSetCHAPTable, (SDMGT_HANDLE handle, CHAPTABLE *table, SD_UINT32 *count), handle, handed(table, *count),
          *count)
OPERATION(SDGet_iSNSDiscoveryConfig, (SDMGT_HANDLE handle, SDM_ISNS_CONFIG *config), handle, fills(config))
OPERATION(SDSet_iSNSDiscoveryConfig, (SDMGT_HANDLE handle, SDM_ISNS_CONFIG config), handle, handed(&config))
OPERATION(SDGetAlliSNSDiscoveredTargets,
          (SDMGT_HANDLE handle, SD_UINT32 *count, SDM_ISNS_DISCOVERED_TARGET *targets, SD_UINT32 size), handle, *count,
          size, count, Room{targets, size})
// NOLINTEND(bugprone-macro-parentheses)
