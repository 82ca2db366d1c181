// An adapter that says yes and forgets, or needs a moment for each target entry. Preloaded in front of the management
// library.
#include "vdsdm/Operations.h"

#include <dlfcn.h>
#include <unistd.h>

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
    usleep(20000);
    void *library = dlopen("./libvdsdm.so", RTLD_NOW);
    return reinterpret_cast<decltype(&SDSetDDBEntry)>(dlsym(library, "SDSetDDBEntry"))(handle, entry, index);
}
}
