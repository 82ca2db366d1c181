// Targets as the adapter discovered them: the portal where a target is, and the node with its session. A target's ID is
// the index of its device database entry.
#include "Fields.h"
#include "Initiator.h"
#include "Library.h"

namespace
{

DEVICEENTRYISCSI entryOf(Adapter &adapter, SD_UINT32 target)
{
    const auto settings = adapter.settings.read();
    const SharedEntry entry = settings->find(target);
    require(entry != nullptr, ERR_NO_SUCH_TARGET);
    return *entry;
}

} // namespace

extern "C" {

// A portal that does not answer is told with its address alone: no host name, no nodes.
SD_UINT32 SDGetDiscPortalPropertyiSCSI(SDMGT_HANDLE handle, SD_UINT32 port, SD_UINT32 target, SD_UINT32 /*reserved*/,
                                       DISCISCSIPORTAL *portal)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(portal);
        require(port == 0, ERR_INVALID_PARAMETER);
        const DEVICEENTRYISCSI entry = entryOf(adapter, target);
        const TargetAddress address = addressOf(entry);
        *portal = {};
        portal->IPAddr = address.address;
        portal->portNumber = address.port;
        portal->TargetInfo.TargetID = static_cast<SD_UINT16>(target);
        const DiscoveryResult found = discover(adapter, entry);
        setText(portal->hostName, found.hostName);
        portal->NodeCount = static_cast<SD_UINT16>(found.targets.size());
    });
}

SD_UINT32 SDGetDiscNodePropertyiSCSI(SDMGT_HANDLE handle, SD_UINT32 bus, SD_UINT32 targetId, SD_UINT32 /*reserved*/,
                                     DISCISCSINODE *node)
{
    return operate(__func__, handle, [&](Adapter &adapter) {
        requirePointers(node);
        require(bus == 0, ERR_INVALID_PARAMETER);
        const DEVICEENTRYISCSI entry = entryOf(adapter, targetId);
        *node = {};
        node->SessionID = entry.TargetSessID;
        node->ConnectionID = entry.TargetSessID == 0 ? 0 : 1;
        node->PortalGroupID = entry.TargetPortalGroupID;
        node->NodeInfo = entry.EntryInfo;
        node->TargetInfo.TargetID = static_cast<SD_UINT16>(targetId);
    });
}
}
