// Operations that the adapter does not have yet: they answer that they are not supported.
#include "Network.h"
#include "Operations.h"
void login(Adapter &, const DEVICEENTRYISCSI &) {}
void recordLogout(Adapter &, SD_UINT32) {}
#define P(name, ...)                                                                                                   \
    SD_UINT32 name(SDMGT_HANDLE handle, __VA_ARGS__)                                                                   \
    {                                                                                                                  \
        return operate(__func__, handle, [](Adapter &) { throw Failure{ERR_NOT_SUPPORTED}; });                         \
    }
extern "C" {
P(SDGetDiscPortalPropertyiSCSI, SD_UINT32, SD_UINT32, SD_UINT32, DISCISCSIPORTAL *)
P(SDGetDiscNodePropertyiSCSI, SD_UINT32, SD_UINT32, SD_UINT32, DISCISCSINODE *)
P(SDUpdateiSCSIFW, const char *, SD_UINT32)
P(SDResetHBA, HBARESET *)
P(SDResetStatisticsiSCSI, SD_UINT32)
P(SDGetCrashRecord, const char *)
P(SDDiagPing, PING *)
P(SDSendScsiReportLunsCmdiSCSI, TARGETINFORMATION *, void *, SD_UINT32, void *, SD_UINT32)
P(SDSendScsiInquiryCmdiSCSI, TARGETINFORMATION *, void *, SD_UINT32, void *, SD_UINT32)
P(SDSendScsiReadCapacityCmdiSCSI, TARGETINFORMATION *, READ_CAPACITY_DATA *, SD_UINT32, void *, SD_UINT32)
P(SDGetStatisticsiSCSI, HBAPORTSTATISCSI *)
P(SDGetLogs, SD_UINT32, SD_UINT32 *, void *)
P(SDGet_iSNSDiscoveryConfig, SDM_ISNS_CONFIG *)
P(SDSet_iSNSDiscoveryConfig, SDM_ISNS_CONFIG)
P(SDGetAlliSNSDiscoveredTargets, SD_UINT32 *, SDM_ISNS_DISCOVERED_TARGET *, SD_UINT32)
}
