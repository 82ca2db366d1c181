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
template <typename... Numbers>
std::string words(Numbers... numbers)
{
    std::string out;
    ((out += " " + hex(SD_UINT32(numbers))), ...);
    return out;
}

std::string record(const void *bytes, std::size_t size)
{
    return " [" + hex(bytes, size) + "]";
}

template <typename Record>
SD_UINT32 read(const char *name, SDMGT_HANDLE handle, Record *out, const std::string &arguments = "",
               SD_UINT32 index = 0, bool cleared = true)
{
    return library().run({name, handle, arguments, out, sizeof *out, nullptr, index, cleared});
}

template <typename Record>
SD_UINT32 write(const char *name, SDMGT_HANDLE handle, const Record *in, const std::string &arguments = "",
                SD_UINT32 index = 0)
{
    return library().run({name, handle, record(in, sizeof *in) + arguments, nullptr, 0, nullptr, index});
}

SD_UINT32 scsi(const char *name, SDMGT_HANDLE handle, const TARGETINFORMATION *target, void *out, SD_UINT32 size,
               void *sense, SD_UINT32 senseSize)
{
    std::memset(sense, 0x5e, senseSize);
    return library().run({name, handle, record(target, sizeof *target) + words(size, senseSize), out, size, nullptr,
                          target->LUN, false});
}
} // namespace

// A type cannot stand in parentheses. NOLINTBEGIN(bugprone-macro-parentheses)
// The operations that fill one record, and those that are handed one, and take nothing else.
#define FILLS(name, Record)                                                                                            \
    SD_UINT32 name(SDMGT_HANDLE handle, Record *out)                                                                   \
    {                                                                                                                  \
        return read(#name, handle, out);                                                                               \
    }
#define TAKES(name, Record)                                                                                            \
    SD_UINT32 name(SDMGT_HANDLE handle, Record *in)                                                                    \
    {                                                                                                                  \
        return write(#name, handle, in);                                                                               \
    }
FILLS(SDGetHbaDeviceNodePropertyiSCSI, HBAISCSINODE)
FILLS(SDGetHbaDeviceDriverPropertyiSCSI, DRIVERINFO)
FILLS(SDGetHbaDeviceChipPropertyiSCSI, CHIPINFO)
FILLS(SDGetDefaultDDBEntry, DEVICEENTRYISCSI)
TAKES(SDSendiSCSILogout, LOGOUTISCSI)
FILLS(SDGetInitFW, INITFWISCSI)
TAKES(SDSetInitFW, INITFWISCSI)
FILLS(SDGetFWDefaults, INITFWISCSI)
FILLS(SDSetFWDefaults, INITFWISCSI)
TAKES(SDResetHBA, HBARESET)
TAKES(SDDiagPing, PING)
FILLS(SDGetStatisticsiSCSI, HBAPORTSTATISCSI)
FILLS(SDGet_iSNSDiscoveryConfig, SDM_ISNS_CONFIG)
// NOLINTEND(bugprone-macro-parentheses)

SD_UINT32 SDOpenDeviceiSCSI(SD_UINT32 adapterIndex, SDMGT_HANDLE *handle)
{
    return library().run({"SDOpenDeviceiSCSI", adapterIndex, "", nullptr, 0, handle, adapterIndex});
}

SD_UINT32 SDCloseDeviceiSCSI(SDMGT_HANDLE handle)
{
    return library().run({"SDCloseDeviceiSCSI", handle, ""});
}

SD_UINT32 SDGetVersioniSCSI(char *versionText, SD_UINT32 size)
{
    return library().run({"SDGetVersioniSCSI", 0, words(size), versionText, size});
}

SD_UINT32 SDEnableDebugTraceiSCSI(SDMGT_HANDLE *handle, const char *fileName, SD_UINT32 mask)
{
    return library().run({"SDEnableDebugTraceiSCSI", *handle, " \"" + std::string(fileName) + "\"" + words(mask)});
}

SD_UINT32 SDGetHbaDevicePortalPropertyiSCSI(SDMGT_HANDLE handle, SD_UINT32 port, HBAISCSIPORTAL *portal)
{
    return read("SDGetHbaDevicePortalPropertyiSCSI", handle, portal, words(port));
}

SD_UINT32 SDGetDDBEntryNum(SDMGT_HANDLE handle, SD_UINT32 *count)
{
    return library().run({"SDGetDDBEntryNum", handle, "", nullptr, 0, count});
}

SD_UINT32 SDGetDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index)
{
    return read("SDGetDDBEntry", handle, entry, words(index), index);
}

SD_UINT32 SDGetInitialDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index)
{
    return read("SDGetInitialDDBEntry", handle, entry, words(index), index);
}

SD_UINT32 SDSetDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index)
{
    return write("SDSetDDBEntry", handle, entry, words(index), index);
}

SD_UINT32 SDGetDiscPortalPropertyiSCSI(SDMGT_HANDLE handle, SD_UINT32 port, SD_UINT32 target, SD_UINT32 reserved,
                                       DISCISCSIPORTAL *portal)
{
    return read("SDGetDiscPortalPropertyiSCSI", handle, portal, words(port, target, reserved), target);
}

SD_UINT32 SDGetDiscNodePropertyiSCSI(SDMGT_HANDLE handle, SD_UINT32 bus, SD_UINT32 targetId, SD_UINT32 reserved,
                                     DISCISCSINODE *node)
{
    return read("SDGetDiscNodePropertyiSCSI", handle, node, words(bus, targetId, reserved), targetId, false);
}

SD_UINT32 SDUpdateiSCSIFW(SDMGT_HANDLE handle, const char *fileName, SD_UINT32 imageType)
{
    return library().run({"SDUpdateiSCSIFW", handle, " \"" + std::string(fileName) + "\"" + words(imageType)});
}

SD_UINT32 SDResetStatisticsiSCSI(SDMGT_HANDLE handle, SD_UINT32 port)
{
    return library().run({"SDResetStatisticsiSCSI", handle, words(port)});
}

SD_UINT32 SDGetCrashRecord(SDMGT_HANDLE handle, const char *fileName)
{
    return library().run({"SDGetCrashRecord", handle, " \"" + std::string(fileName) + "\""});
}

SD_UINT32 SDSendScsiReportLunsCmdiSCSI(SDMGT_HANDLE handle, TARGETINFORMATION *target, void *response,
                                       SD_UINT32 responseSize, void *sense, SD_UINT32 senseSize)
{
    return scsi("SDSendScsiReportLunsCmdiSCSI", handle, target, response, responseSize, sense, senseSize);
}

SD_UINT32 SDSendScsiInquiryCmdiSCSI(SDMGT_HANDLE handle, TARGETINFORMATION *target, void *response,
                                    SD_UINT32 responseSize, void *sense, SD_UINT32 senseSize)
{
    return scsi("SDSendScsiInquiryCmdiSCSI", handle, target, response, responseSize, sense, senseSize);
}

SD_UINT32 SDSendScsiReadCapacityCmdiSCSI(SDMGT_HANDLE handle, TARGETINFORMATION *target, READ_CAPACITY_DATA *response,
                                         SD_UINT32 responseSize, void *sense, SD_UINT32 senseSize)
{
    return scsi("SDSendScsiReadCapacityCmdiSCSI", handle, target, response, responseSize, sense, senseSize);
}

SD_UINT32 SDGetLogs(SDMGT_HANDLE handle, SD_UINT32 logType, SD_UINT32 *count, void *entries)
{
    std::size_t size = LOG_CAPACITY * (logType == LOG_ARP ? sizeof(ARPTABLE) : sizeof(CONNERRTABLE));
    return library().run({"SDGetLogs", handle, words(logType, *count), entries, size, count, logType});
}

SD_UINT32 SDGetCHAPEntryNum(SDMGT_HANDLE handle, SD_UINT32 *count)
{
    return library().run({"SDGetCHAPEntryNum", handle, "", nullptr, 0, count});
}

SD_UINT32 SDGetCHAPTable(SDMGT_HANDLE handle, CHAPTABLE *table, SD_UINT32 *count)
{
    return library().run({"SDGetCHAPTable", handle, words(*count), table, CHAP_CAPACITY * sizeof(CHAPTABLE), count});
}

SD_UINT32 SDSetCHAPTable(SDMGT_HANDLE handle, CHAPTABLE *table, SD_UINT32 *count)
{
    return library().run(
        {"SDSetCHAPTable", handle, record(table, *count * sizeof *table) + words(*count), nullptr, 0, nullptr, *count});
}

SD_UINT32 SDSet_iSNSDiscoveryConfig(SDMGT_HANDLE handle, SDM_ISNS_CONFIG config)
{
    return write("SDSet_iSNSDiscoveryConfig", handle, &config);
}

SD_UINT32 SDGetAlliSNSDiscoveredTargets(SDMGT_HANDLE handle, SD_UINT32 *count, SDM_ISNS_DISCOVERED_TARGET *targets,
                                        SD_UINT32 size)
{
    return library().run({"SDGetAlliSNSDiscoveredTargets", handle, words(*count, size), targets, size, count, size});
}
