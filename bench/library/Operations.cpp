// The operations that a snapshot calls, without the bridge, for the Java class AdapterShare.

#include "com_varden_tavo_iscsi_bench_AdapterShare.h"

#include <cstring>

#include "vdsdm.h"

extern "C" {

// Opens the adapter at the first use; all handles of a process share one adapter.
JNIEXPORT jint JNICALL Java_com_varden_tavo_iscsi_bench_AdapterShare_snapshot(JNIEnv *, jclass, jint adapterIndex)
{
    static SDMGT_HANDLE handle;
    SD_UINT32 status = handle != 0 ? 0 : SDOpenDeviceiSCSI(static_cast<SD_UINT32>(adapterIndex), &handle);
    HBAISCSIPORTAL portal;
    std::memset(&portal, 0, sizeof portal);
    status |= SDGetHbaDevicePortalPropertyiSCSI(handle, 0, &portal);
    SD_UINT32 count = 0;
    status |= SDGetDDBEntryNum(handle, &count);
    SD_UINT32 found = 0;
    for (SD_UINT32 index = 0; index < DDB_SLOTS && found != count;) {
        DEVICEENTRYISCSI entry;
        std::memset(&entry, 0, sizeof entry);
        status |= SDGetDDBEntry(handle, &entry, index);
        found += entry.DeviceState != 0;
        index = entry.NextValid > index && entry.NextValid < DDB_SLOTS ? entry.NextValid : index + 1;
    }
    INITFWISCSI block;
    std::memset(&block, 0, sizeof block);
    status |= SDGetInitFW(handle, &block);
    return static_cast<jint>(status);
}
}
