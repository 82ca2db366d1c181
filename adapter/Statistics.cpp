// The port's counters. An adapter has one port, number 0.
#include "Library.h"

extern "C" {

SD_UINT32 SDGetStatisticsiSCSI(SDMGT_HANDLE handle, HBAPORTSTATISCSI *statistics)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(statistics);
        *statistics = adapter.activity.counters(adapter.port().counted());
    });
}

SD_UINT32 SDResetStatisticsiSCSI(SDMGT_HANDLE handle, SD_UINT32 port)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        require(port == 0, ERR_INVALID_PARAMETER);
        adapter.activity.resetCounters(adapter.port().counted());
    });
}
}
