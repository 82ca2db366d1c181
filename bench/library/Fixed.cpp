// A management library whose answers are constant and cost next to nothing: what is measured above it is the way from
// the record to the Java object and back. Values differ from field to field and from entry to entry, so that a peer
// that mixes two of them up is found out before anything is timed. The Java class Fixture sets the number of entries
// and takes what was written.

#include "com_varden_tavo_iscsi_bench_Fixture.h"
#include "vdsdm.h"

#include <jni.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace
{

constexpr SDMGT_HANDLE HANDLE = 0x51;

struct Answers {
    DEVICEENTRYISCSI entries[DDB_SLOTS]{};
    DEVICEENTRYISCSI written[DDB_SLOTS]{};
    SD_UINT32 entryCount = DDB_SLOTS;
};

// Fills a record, or an array of records, with bytes of which no short run comes twice soon.
void fillBytes(void *record, std::size_t size, SD_UINT32 seed)
{
    auto *bytes = static_cast<SD_UINT8 *>(record);
    SD_UINT32 state = seed * 2654435761U + 12345;
    for (std::size_t i = 0; i < size; ++i) {
        state = state * 1664525U + 1013904223U;
        bytes[i] = static_cast<SD_UINT8>(state >> 24);
    }
}

template <std::size_t N>
void putText(SD_UINT8 (&field)[N], const char *format, SD_UINT32 number = 0)
{
    std::memset(field, 0, N);
    static_cast<void>(std::snprintf(reinterpret_cast<char *>(field), N, format, number));
}

void putAddress(ISCSIIPADDR &address, SD_UINT32 number)
{
    address = {};
    const SD_UINT32 ipv4 = 0x0A010203U + number;
    for (int i = 0; i < 4; ++i) {
        address.IPAddress[i] = static_cast<SD_UINT8>(ipv4 >> (24 - 8 * i));
    }
}

Answers &answers()
{
    static Answers all = [] {
        Answers made;
        for (SD_UINT32 i = 0; i < DDB_SLOTS; ++i) {
            DEVICEENTRYISCSI &entry = made.entries[i];
            fillBytes(&entry, sizeof entry, 100 + i);
            putAddress(entry.EntryInfo.IPAddr, 1000 + i);
            putText(entry.EntryInfo.iSCSIName, "iqn.2004-08.com.varden:array.lun%03u", i);
            putText(entry.EntryInfo.Alias, "array %u", i);
            putText(entry.DeviceInfo.targetAddr, "10.1.6.%u", i % 256);
            entry.TargetID = i;
            entry.DeviceState = 4;
            entry.NextValid = i + 1;
        }
        return made;
    }();
    return all;
}

template <typename Record>
SD_UINT32 answer(SDMGT_HANDLE handle, Record *record, const Record &value)
{
    if (handle != HANDLE) {
        return ERR_INVALID_HANDLE;
    }
    *record = value;
    return 0;
}

} // namespace

extern "C" {

SD_UINT32 SDOpenDeviceiSCSI(SD_UINT32, SDMGT_HANDLE *handle)
{
    *handle = HANDLE;
    answers();
    return 0;
}

SD_UINT32 SDGetHbaDevicePortalPropertyiSCSI(SDMGT_HANDLE handle, SD_UINT32, HBAISCSIPORTAL *portal)
{
    return answer(handle, portal, {});
}

SD_UINT32 SDGetDDBEntryNum(SDMGT_HANDLE handle, SD_UINT32 *count)
{
    return answer(handle, count, answers().entryCount);
}

SD_UINT32 SDGetDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index)
{
    return index < answers().entryCount ? answer(handle, entry, answers().entries[index]) : ERR_NO_SUCH_ENTRY;
}

SD_UINT32 SDSetDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index)
{
    return index < DDB_SLOTS ? answer(handle, &answers().written[index], *entry) : ERR_NO_SUCH_ENTRY;
}

SD_UINT32 SDGetInitFW(SDMGT_HANDLE handle, INITFWISCSI *block)
{
    return answer(handle, block, {});
}

// The operations that nothing here uses; the bridge is bound to all of them when it is loaded.
#define UNUSED(name, ...)                                                                                              \
    SD_UINT32 name(__VA_ARGS__)                                                                                        \
    {                                                                                                                  \
        return ERR_NOT_SUPPORTED;                                                                                      \
    }
UNUSED(SDCloseDeviceiSCSI, SDMGT_HANDLE)
UNUSED(SDGetVersioniSCSI, char *, SD_UINT32)
UNUSED(SDEnableDebugTraceiSCSI, SDMGT_HANDLE *, const char *, SD_UINT32)
UNUSED(SDGetHbaDeviceNodePropertyiSCSI, SDMGT_HANDLE, HBAISCSINODE *)
UNUSED(SDGetHbaDeviceDriverPropertyiSCSI, SDMGT_HANDLE, DRIVERINFO *)
UNUSED(SDGetHbaDeviceChipPropertyiSCSI, SDMGT_HANDLE, CHIPINFO *)
UNUSED(SDGetDefaultDDBEntry, SDMGT_HANDLE, DEVICEENTRYISCSI *)
UNUSED(SDGetInitialDDBEntry, SDMGT_HANDLE, DEVICEENTRYISCSI *, SD_UINT32)
UNUSED(SDSendiSCSILogout, SDMGT_HANDLE, LOGOUTISCSI *)
UNUSED(SDGetDiscPortalPropertyiSCSI, SDMGT_HANDLE, SD_UINT32, SD_UINT32, SD_UINT32, DISCISCSIPORTAL *)
UNUSED(SDGetDiscNodePropertyiSCSI, SDMGT_HANDLE, SD_UINT32, SD_UINT32, SD_UINT32, DISCISCSINODE *)
UNUSED(SDSetInitFW, SDMGT_HANDLE, INITFWISCSI *)
UNUSED(SDGetFWDefaults, SDMGT_HANDLE, INITFWISCSI *)
UNUSED(SDSetFWDefaults, SDMGT_HANDLE, INITFWISCSI *)
UNUSED(SDUpdateiSCSIFW, SDMGT_HANDLE, const char *, SD_UINT32)
UNUSED(SDResetHBA, SDMGT_HANDLE, HBARESET *)
UNUSED(SDGetStatisticsiSCSI, SDMGT_HANDLE, HBAPORTSTATISCSI *)
UNUSED(SDGetLogs, SDMGT_HANDLE, SD_UINT32, SD_UINT32 *, void *)
UNUSED(SDResetStatisticsiSCSI, SDMGT_HANDLE, SD_UINT32)
UNUSED(SDGetCrashRecord, SDMGT_HANDLE, const char *)
UNUSED(SDDiagPing, SDMGT_HANDLE, PING *)
UNUSED(SDSendScsiReportLunsCmdiSCSI, SDMGT_HANDLE, TARGETINFORMATION *, void *, SD_UINT32, void *, SD_UINT32)
UNUSED(SDSendScsiInquiryCmdiSCSI, SDMGT_HANDLE, TARGETINFORMATION *, void *, SD_UINT32, void *, SD_UINT32)
UNUSED(SDSendScsiReadCapacityCmdiSCSI, SDMGT_HANDLE, TARGETINFORMATION *, READ_CAPACITY_DATA *, SD_UINT32, void *,
       SD_UINT32)
UNUSED(SDGetCHAPEntryNum, SDMGT_HANDLE, SD_UINT32 *)
UNUSED(SDGetCHAPTable, SDMGT_HANDLE, CHAPTABLE *, SD_UINT32 *)
UNUSED(SDSetCHAPTable, SDMGT_HANDLE, CHAPTABLE *, SD_UINT32 *)
UNUSED(SDGet_iSNSDiscoveryConfig, SDMGT_HANDLE, SDM_ISNS_CONFIG *)
UNUSED(SDSet_iSNSDiscoveryConfig, SDMGT_HANDLE, SDM_ISNS_CONFIG)
UNUSED(SDGetAlliSNSDiscoveredTargets, SDMGT_HANDLE, SD_UINT32 *, SDM_ISNS_DISCOVERED_TARGET *, SD_UINT32)

// The number of device database entries, 0 to 512; they are those with the lowest indices.
JNIEXPORT void JNICALL Java_com_varden_tavo_iscsi_bench_Fixture_setEntryCount(JNIEnv *, jclass, jint count)
{
    answers().entryCount = static_cast<SD_UINT32>(count);
}

// The 512 records as they were written since the last call, all zero where none was.
JNIEXPORT jbyteArray JNICALL Java_com_varden_tavo_iscsi_bench_Fixture_takeWritten(JNIEnv *env, jclass)
{
    auto &written = answers().written;
    jbyteArray bytes = env->NewByteArray(sizeof written);
    if (bytes != nullptr) {
        env->SetByteArrayRegion(bytes, 0, sizeof written, reinterpret_cast<const jbyte *>(written));
        std::memset(written, 0, sizeof written);
    }
    return bytes;
}

// Nanoseconds of processor time that the threads of this process have taken.
JNIEXPORT jlong JNICALL Java_com_varden_tavo_iscsi_bench_Fixture_processorTime(JNIEnv *, jclass)
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return time.tv_sec * jlong{1'000'000'000} + time.tv_nsec;
}
}
