// The adapter on the network, see Initiator.h.
#include "Initiator.h"

#include "Fields.h"

#include <algorithm>
#include <ctime>

namespace
{

constexpr SD_UINT64 ISCSI_HEADER = 48; // bytes of a PDU without data
constexpr SD_UINT64 TCP_IP_HEADERS = 40;
constexpr SD_UINT64 FRAME_OVERHEAD = 18;
constexpr SD_UINT64 PING_PACKET = 84;

// Has the counters and logs changed and written.
template <class Change>
void note(Adapter &adapter, Change &&change)
{
    try {
        adapter.activity.change(change);
    } catch (const Failure &) {
        return; // counting is not worth failing for
    }
}

void countPackets(HBAPORTSTATISCSI &counters, SD_UINT64 out, SD_UINT64 in, SD_UINT64 bytesOut, SD_UINT64 bytesIn)
{
    counters.IPTxPacketsCount += out;
    counters.IPTxBytesCount += bytesOut;
    counters.IPRxPacketsCount += in;
    counters.IPRxBytesCount += bytesIn;
    counters.MACTxFramesCount += out;
    counters.MACTxBytesCount += bytesOut + FRAME_OVERHEAD * out;
    counters.MACRxFramesCount += in;
    counters.MACRxBytesCount += bytesIn + FRAME_OVERHEAD * in;
}

// Requests answered by a peer, each a PDU, a segment and a packet both ways; data is what came in beside the headers.
void countExchanges(HBAPORTSTATISCSI &counters, SD_UINT64 exchanges, SD_UINT64 data)
{
    const SD_UINT64 out = exchanges * ISCSI_HEADER;
    const SD_UINT64 in = exchanges * ISCSI_HEADER + data;
    counters.iSCSITxPDUCount += exchanges;
    counters.iSCSITxBytesCount += out;
    counters.iSCSIRxPDUCount += exchanges;
    counters.iSCSIRxBytesCount += in;
    counters.TCPTxSegmentsCount += exchanges;
    counters.TCPTxBytesCount += out;
    counters.TCPRxSegmentsCount += exchanges;
    counters.TCPRxBytesCount += in;
    counters.TCPTxACKCount += exchanges;
    counters.TCPRxACKCount += exchanges;
    countPackets(counters, exchanges, exchanges, out + exchanges * TCP_IP_HEADERS, in + exchanges * TCP_IP_HEADERS);
}

// Adds an entry to the connection-error log as its newest. An error that is in the log already is counted there.
void logConnection(Activity &activity, SD_UINT32 index, SD_UINT16 state, SD_UINT8 type, SD_UINT8 error,
                   SD_UINT16 detail)
{
    CONNERRTABLE entry{};
    entry.deviceIndex = static_cast<SD_UINT16>(index);
    entry.connState = state;
    entry.entryType = type;
    entry.errorType = error;
    entry.errorDetail = detail;
    const auto same = std::ranges::find_if(activity.errors, [&](const CONNERRTABLE &other) {
        return other.deviceIndex == entry.deviceIndex && other.connState == state && other.entryType == type
               && other.errorType == error && other.errorDetail == detail;
    });
    if (same != activity.errors.end()) {
        entry.dupErrorCnt = static_cast<SD_UINT8>(std::min(same->dupErrorCnt + 1, 255));
        activity.errors.erase(same);
    } else if (activity.errors.size() == LOG_CAPACITY) {
        activity.errors.erase(activity.errors.begin());
    }
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    entry.timeStamp.seconds = static_cast<SD_UINT32>(now.tv_sec);
    entry.timeStamp.milliseconds = static_cast<SD_UINT32>(now.tv_nsec / 1000000);
    activity.errors.push_back(entry);
}

// Puts a host at the end of the ARP table.
void remember(Activity &activity, const ISCSIIPADDR &address, const std::optional<MacAddress> &mac)
{
    if (!mac) {
        return;
    }
    std::erase_if(activity.neighbours,
                  [&](const Neighbour &other) { return sameAddress(other.entry.ipAddr, address); });
    if (activity.neighbours.size() == LOG_CAPACITY) {
        activity.neighbours.erase(activity.neighbours.begin());
    }
    Neighbour neighbour{};
    neighbour.entry.ipAddr = address;
    neighbour.entry.ipAddr.Reserved = 0;
    setAddressType(neighbour.entry.ipAddr);
    std::copy(mac->begin(), mac->end(), neighbour.entry.macAddr);
    neighbour.entry.valid = 1;
    neighbour.seconds = static_cast<SD_UINT32>(std::time(nullptr));
    activity.neighbours.push_back(neighbour);
}

// What remains of an attempt to log in.
void recordLogin(Activity &activity, SD_UINT32 index, const TargetAddress &target, Reach reach)
{
    if (reach == Reach::noAnswer) {
        activity.statistics.TCPTimerExpiredCount += 1;
        logConnection(activity, index, CONNECTION_OPENING, LOG_ENTRY_LOGIN, LOG_ERROR_TIMEOUT, 0);
        return;
    }
    remember(activity, target.address, targetPort().findHost(target.address));
    countExchanges(activity.statistics, 1, 0);
    if (reach == Reach::unknownName) {
        logConnection(activity, index, CONNECTION_LOGIN, LOG_ENTRY_LOGIN, LOG_ERROR_REFUSED, LOGIN_STATUS_NOT_FOUND);
    }
}

Reach reachOf(const Adapter &adapter, const TargetAddress &target)
{
    return adapter.model.linkUp ? targetPort().login(target) : Reach::noAnswer;
}

} // namespace

TargetAddress addressOf(const DEVICEENTRYISCSI &entry)
{
    TargetAddress target{entry.EntryInfo.IPAddr, entry.DeviceInfo.portNumber, getText(entry.EntryInfo.iSCSIName)};
    if (isZero(target.address)) {
        target.address = makeAddress(getText(entry.DeviceInfo.targetAddr));
    }
    return target;
}

Reach login(Adapter &adapter, const DEVICEENTRYISCSI &entry)
{
    const TargetAddress target = addressOf(entry);
    const Reach reach = reachOf(adapter, target);
    note(adapter, [&](Activity &activity) { recordLogin(activity, entry.TargetID, target, reach); });
    return reach;
}

std::vector<Reach> loginAll(Adapter &adapter, const std::vector<DEVICEENTRYISCSI> &entries)
{
    std::vector<Reach> answers;
    answers.reserve(entries.size());
    for (const DEVICEENTRYISCSI &entry : entries) {
        answers.push_back(reachOf(adapter, addressOf(entry)));
    }
    note(adapter, [&](Activity &activity) {
        activity.neighbours.clear();
        for (std::size_t number = 0; number < entries.size(); ++number) {
            recordLogin(activity, entries[number].TargetID, addressOf(entries[number]), answers[number]);
        }
    });
    return answers;
}

void recordLogout(Adapter &adapter, SD_UINT32 index)
{
    note(adapter, [&](Activity &activity) {
        countExchanges(activity.statistics, 1, 0);
        logConnection(activity, index, CONNECTION_CLOSED, LOG_ENTRY_LOGOUT, LOG_ERROR_NONE, 0);
    });
}

CommandResult execute(Adapter &adapter, const DEVICEENTRYISCSI &entry, SD_UINT16 lun, std::span<const SD_UINT8> command)
{
    const TargetAddress target = addressOf(entry);
    CommandResult result;
    if (adapter.model.linkUp) {
        result = targetPort().execute(target, lun, command);
    }
    note(adapter, [&](Activity &activity) {
        if (result.reach != Reach::session) {
            recordLogin(activity, entry.TargetID, target, result.reach);
            return;
        }
        remember(activity, target.address, targetPort().findHost(target.address));
        countExchanges(activity.statistics, 1, result.data.size() + result.sense.size());
        activity.statistics.iSCSICompleteIOsCount += 1;
    });
    return result;
}

bool ping(Adapter &adapter, const ISCSIIPADDR &address, SD_UINT32 packets)
{
    std::optional<MacAddress> mac;
    if (!isZero(address) && sameAddress(address, adapter.settings.read()->block.IPAddr)) {
        mac = std::to_array(adapter.model.mac);
    } else if (adapter.model.linkUp) {
        mac = targetPort().findHost(address);
    }
    const SD_UINT64 answers = mac ? packets : 0;
    note(adapter, [&](Activity &activity) {
        countPackets(activity.statistics, packets, answers, packets * PING_PACKET, answers * PING_PACKET);
        remember(activity, address, mac);
    });
    return mac.has_value();
}

std::optional<std::vector<SDM_ISNS_DISCOVERED_TARGET>> queryIsns(Adapter &adapter, const ISCSIIPADDR &server)
{
    if (!adapter.model.linkUp) {
        return std::nullopt;
    }
    auto targets = targetPort().queryIsns(server);
    if (targets) {
        note(adapter, [&](Activity &activity) {
            const SD_UINT64 bytes = targets->size() * sizeof(SDM_ISNS_DISCOVERED_TARGET);
            countPackets(activity.statistics, 1, 1 + bytes / 1460, 100, bytes);
            remember(activity, server, targetPort().findHost(server));
        });
    }
    return targets;
}
