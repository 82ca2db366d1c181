// iSNS: the discovery settings, and the targets that the server at their address tells of.
#include "Fields.h"
#include "Initiator.h"
#include "Library.h"

#include <algorithm>

extern "C" {

SD_UINT32 SDGet_iSNSDiscoveryConfig(SDMGT_HANDLE handle, SDM_ISNS_CONFIG *config)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(config);
        require(adapter.model().isnsSupported, ERR_ISNS_NOT_SUPPORTED);
        *config = adapter.settings.read()->isns;
    });
}

SD_UINT32 SDSet_iSNSDiscoveryConfig(SDMGT_HANDLE handle, SDM_ISNS_CONFIG config)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        require(adapter.model().isnsSupported, ERR_ISNS_NOT_SUPPORTED);
        setAddressType(config.ipAddr);
        adapter.settings.change([&](Settings &settings) { settings.isns = config; });
    });
}

// Fills what fits and tells the number of all. ERR_NOT_SUPPORTED while discovery is off, ERR_UNREACHABLE or
// ERR_TIMEOUT when the server does not answer, ERR_BUFFER_TOO_SMALL when not all fit.
SD_UINT32 SDGetAlliSNSDiscoveredTargets(SDMGT_HANDLE handle, SD_UINT32 *count, SDM_ISNS_DISCOVERED_TARGET *targets,
                                        SD_UINT32 size)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(count);
        const std::size_t room = size / sizeof(SDM_ISNS_DISCOVERED_TARGET);
        require(targets != nullptr || room == 0, ERR_INVALID_PARAMETER);
        require(adapter.model().isnsSupported, ERR_ISNS_NOT_SUPPORTED);
        const auto settings = adapter.settings.read();
        require(settings->isns.performiSNSDiscovery != 0, ERR_NOT_SUPPORTED);
        const IsnsResult answer = adapter.port().queryIsns(settings->isns.ipAddr, getText(settings->block.iSCSIName),
                                                           deadlineOf(*settings, settings->block.DeviceInfo));
        require(answer.reach == Reach::session, statusOf(answer.reach));
        const auto &found = answer.targets;
        std::copy_n(found.begin(), std::min(room, found.size()), targets);
        *count = static_cast<SD_UINT32>(found.size());
        require(found.size() <= room, ERR_BUFFER_TOO_SMALL);
    });
}
}
