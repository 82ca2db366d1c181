// The connection-error log and the ARP table, oldest entries first.
#include "Library.h"

#include <algorithm>
#include <ctime>

namespace
{

// The minutes since a host was last heard of, as far as a byte goes.
SD_UINT8 minutesSince(SD_UINT32 seconds)
{
    const std::time_t passed = (std::time(nullptr) - static_cast<std::time_t>(seconds)) / 60;
    return static_cast<SD_UINT8>(std::clamp<std::time_t>(passed, 0, 255));
}

} // namespace

extern "C" {

SD_UINT32 SDGetLogs(SDMGT_HANDLE handle, SD_UINT32 logType, SD_UINT32 *count, void *entries)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(count, entries);
        require(logType == LOG_CONNECTION_ERRORS || logType == LOG_ARP, ERR_INVALID_PARAMETER);
        const auto activity = adapter.activity.read();
        if (logType == LOG_CONNECTION_ERRORS) {
            std::ranges::copy(activity->errors, static_cast<CONNERRTABLE *>(entries));
            *count = static_cast<SD_UINT32>(activity->errors.size());
            return;
        }
        auto *entry = static_cast<ARPTABLE *>(entries);
        for (const Neighbour &neighbour : activity->neighbours) {
            *entry = neighbour.entry;
            entry->time_in = minutesSince(neighbour.seconds);
            ++entry;
        }
        *count = static_cast<SD_UINT32>(activity->neighbours.size());
    });
}
}
