// The firmware's initialisation block.
#include "FirmwareConfiguration.h"

#include "Fields.h"
#include "Library.h"

#include <algorithm>
#include <array>

namespace
{

// The addresses that a host can have of its own; the SLP directory agent's is always the block's.
std::array<ISCSIIPADDR *, 6> addressesOf(INITFWISCSI &block)
{
    return {&block.IPAddr,  &block.SecondaryIPAddr,   &block.SubnetMask,
            &block.Gateway, &block.PrimaryDNS.IPAddr, &block.SecondaryDNS.IPAddr};
}

void takeAddresses(INITFWISCSI &block, const HostAddresses &host)
{
    const std::array addresses{host.address, host.secondaryAddress, host.subnetMask,
                               host.gateway, host.primaryDns,       host.secondaryDns};
    const auto places = addressesOf(block);
    for (std::size_t number = 0; number < places.size(); ++number) {
        *places[number] = addresses[number];
    }
}

void write(Adapter &adapter, const INITFWISCSI &block)
{
    adapter.settings.change([&](Settings &settings) { settings.block = block; });
}

} // namespace

INITFWISCSI blockInForce(Adapter &adapter)
{
    INITFWISCSI block = adapter.settings.read()->block;
    if (const auto host = adapter.port().addresses()) {
        takeAddresses(block, *host);
    }
    return block;
}

extern "C" {

SD_UINT32 SDGetInitFW(SDMGT_HANDLE handle, INITFWISCSI *block)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(block);
        *block = blockInForce(adapter);
    });
}

// The block is in force at once. The types of its addresses are set by the adapter. Addresses that belong to the host
// cannot be changed: ERR_NOT_SUPPORTED, with nothing written.
SD_UINT32 SDSetInitFW(SDMGT_HANDLE handle, INITFWISCSI *block)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(block);
        INITFWISCSI written = *block;
        if (adapter.port().addresses()) {
            INITFWISCSI present = blockInForce(adapter);
            const bool same = std::ranges::equal(
                addressesOf(written), addressesOf(present),
                [](const ISCSIIPADDR *one, const ISCSIIPADDR *other) { return sameAddress(*one, *other); });
            require(same, ERR_NOT_SUPPORTED);
        }
        for (ISCSIIPADDR *address : addressesOf(written)) {
            setAddressType(*address);
        }
        setAddressType(written.SLPDAAddr);
        write(adapter, written);
    });
}

SD_UINT32 SDGetFWDefaults(SDMGT_HANDLE handle, INITFWISCSI *block)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(block);
        *block = defaultBlock(adapter.model());
    });
}

// What the caller's block holds does not matter.
SD_UINT32 SDSetFWDefaults(SDMGT_HANDLE handle, INITFWISCSI *block)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(block);
        write(adapter, defaultBlock(adapter.model()));
    });
}
}
