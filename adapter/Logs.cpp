// The connection-error log and the ARP table, oldest entries first.
#include "Library.h"

#include <algorithm>
#include <ctime>
#include <utility>
#include <vector>

namespace
{

// The minutes since a host was last heard of, as far as a byte goes.
SD_UINT8 minutesSince(SD_UINT32 seconds)
{
    const std::time_t passed = (std::time(nullptr) - static_cast<std::time_t>(seconds)) / 60;
    return static_cast<SD_UINT8>(std::clamp<std::time_t>(passed, 0, 255));
}

// The port's own table, or the hosts that the adapter has heard of.
std::vector<ARPTABLE> arpTable(Adapter &adapter)
{
    if (auto table = adapter.port().neighbours()) {
        return *std::move(table);
    }
    std::vector<ARPTABLE> table;
    for (const Neighbour &neighbour : adapter.activity.read().neighbours) {
        table.push_back(neighbour.entry);
        table.back().time_in = minutesSince(neighbour.seconds);
    }
    return table;
}

} // namespace

extern "C" {

SD_UINT32 SDGetLogs(SDMGT_HANDLE handle, SD_UINT32 logType, SD_UINT32 *count, void *entries)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(count, entries);
        require(logType == LOG_CONNECTION_ERRORS || logType == LOG_ARP, ERR_INVALID_PARAMETER);
        if (logType == LOG_CONNECTION_ERRORS) {
            const Activity activity = adapter.activity.read();
            std::ranges::copy(activity.errors, static_cast<CONNERRTABLE *>(entries));
            *count = static_cast<SD_UINT32>(activity.errors.size());
            return;
        }
        std::vector<ARPTABLE> table = arpTable(adapter);
        table.resize(std::min<std::size_t>(table.size(), LOG_CAPACITY));
        std::ranges::copy(table, static_cast<ARPTABLE *>(entries));
        *count = static_cast<SD_UINT32>(table.size());
    });
}
}
