// The firmware's initialisation block.
#include "Library.h"
#include "Fields.h"

extern "C" {

SD_UINT32 SDGetInitFW(SDMGT_HANDLE handle, INITFWISCSI *block)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(block);
        *block = adapter.settings.read()->block;
    });
}

// The block is in force at once. The types of its addresses are set by the adapter.
SD_UINT32 SDSetInitFW(SDMGT_HANDLE handle, INITFWISCSI *block)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(block);
        INITFWISCSI written = *block;
        for (ISCSIIPADDR *address : {&written.IPAddr, &written.SecondaryIPAddr, &written.SubnetMask, &written.Gateway,
                                     &written.PrimaryDNS.IPAddr, &written.SecondaryDNS.IPAddr, &written.SLPDAAddr}) {
            setAddressType(*address);
        }
        adapter.settings.change([&](Settings &settings) { settings.block = written; });
    });
}

SD_UINT32 SDGetFWDefaults(SDMGT_HANDLE handle, INITFWISCSI *block)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(block);
        *block = defaultBlock(adapter.model);
    });
}

// What the caller's block holds does not matter.
SD_UINT32 SDSetFWDefaults(SDMGT_HANDLE handle, INITFWISCSI *block)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(block);
        adapter.settings.change([&](Settings &settings) { settings.block = defaultBlock(adapter.model); });
    });
}
}
