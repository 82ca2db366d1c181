// An adapter with faults, preloaded in front of the management library: it says yes to settings and forgets them, and
// needs a moment for each target entry. Adapter 1 does not come back from reading its counters as long as there is a
// file of the name in STUCK.
#include "vdsdm/Operations.h"

#include <dlfcn.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>

namespace
{

constexpr SD_UINT32 STUCK_ADAPTER = 1;
constexpr useconds_t PAUSE = 20000;

std::atomic<SDMGT_HANDLE> stuck;

template <typename Operation>
Operation *real(const char *name)
{
    return reinterpret_cast<Operation *>(dlsym(dlopen("./libvdsdm.so", RTLD_NOW), name));
}

} // namespace

extern "C" {

SD_UINT32 SDSetCHAPTable(SDMGT_HANDLE, CHAPTABLE *, SD_UINT32 *)
{
    return 0;
}

SD_UINT32 SDSetInitFW(SDMGT_HANDLE, INITFWISCSI *)
{
    return 0;
}

SD_UINT32 SDSet_iSNSDiscoveryConfig(SDMGT_HANDLE, SDM_ISNS_CONFIG)
{
    return 0;
}

SD_UINT32 SDSetDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index)
{
    usleep(PAUSE);
    return real<decltype(SDSetDDBEntry)>("SDSetDDBEntry")(handle, entry, index);
}

SD_UINT32 SDOpenDeviceiSCSI(SD_UINT32 adapterIndex, SDMGT_HANDLE *handle)
{
    const SD_UINT32 status = real<decltype(SDOpenDeviceiSCSI)>("SDOpenDeviceiSCSI")(adapterIndex, handle);
    if (adapterIndex == STUCK_ADAPTER) {
        stuck = *handle;
    }
    return status;
}

SD_UINT32 SDGetStatisticsiSCSI(SDMGT_HANDLE handle, HBAPORTSTATISCSI *statistics)
{
    const char *file = std::getenv("STUCK");
    while (file != nullptr && handle == stuck && access(file, F_OK) == 0) {
        usleep(PAUSE);
    }
    return real<decltype(SDGetStatisticsiSCSI)>("SDGetStatisticsiSCSI")(handle, statistics);
}
}
