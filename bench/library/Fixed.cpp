// A management library that keeps its records in memory, so that an operation costs next to nothing: what is measured
// above it is the way from the record to the Java object and back. Values differ from field to field and from entry to
// entry, so that a peer that mixes two of them up is found out before anything is timed. The operations that nothing
// here calls are one function under many names, which the build gives it. The Java class Fixture sets the number of
// entries.

#include "com_varden_tavo_iscsi_bench_Fixture.h"
#include "vdsdm.h"

#include <jni.h>

#include <cstddef>
#include <cstdio>
#include <ctime>

namespace
{

constexpr SDMGT_HANDLE HANDLE = 0x51;

DEVICEENTRYISCSI entries[DDB_SLOTS];
SD_UINT32 entryCount = DDB_SLOTS;

template <std::size_t N>
void putText(SD_UINT8 (&field)[N], const char *format, SD_UINT32 number)
{
    static_cast<void>(std::snprintf(reinterpret_cast<char *>(field), N, format, number));
}

// Fills the entries with bytes of which no short run comes twice soon, then with what has to make sense.
void makeEntries()
{
    for (SD_UINT32 i = 0; i < DDB_SLOTS; ++i) {
        DEVICEENTRYISCSI &entry = entries[i];
        auto *bytes = reinterpret_cast<SD_UINT8 *>(&entry);
        SD_UINT32 state = i * 2654435761U;
        for (std::size_t k = 0; k < sizeof entry; ++k) {
            state = state * 1664525U + 1013904223U;
            bytes[k] = static_cast<SD_UINT8>(state >> 24);
        }
        putText(entry.EntryInfo.iSCSIName, "iqn.2004-08.com.varden:array.lun%03u", i);
        putText(entry.EntryInfo.Alias, "array %u", i);
        putText(entry.DeviceInfo.targetAddr, "10.1.6.%u", i % 256);
        entry.TargetID = i;
        entry.DeviceState = 4;
        entry.NextValid = i + 1;
    }
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
    makeEntries();
    return 0;
}

SD_UINT32 SDGetHbaDevicePortalPropertyiSCSI(SDMGT_HANDLE handle, SD_UINT32, HBAISCSIPORTAL *portal)
{
    return answer(handle, portal, {});
}

SD_UINT32 SDGetDDBEntryNum(SDMGT_HANDLE handle, SD_UINT32 *count)
{
    return answer(handle, count, entryCount);
}

SD_UINT32 SDGetDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index)
{
    return index < entryCount ? answer(handle, entry, entries[index]) : ERR_NO_SUCH_ENTRY;
}

SD_UINT32 SDSetDDBEntry(SDMGT_HANDLE handle, DEVICEENTRYISCSI *entry, SD_UINT32 index)
{
    return index < DDB_SLOTS ? answer(handle, &entries[index], *entry) : ERR_NO_SUCH_ENTRY;
}

SD_UINT32 SDGetInitFW(SDMGT_HANDLE handle, INITFWISCSI *block)
{
    return answer(handle, block, {});
}

// Every other operation.
SD_UINT32 notSupported();
SD_UINT32 notSupported()
{
    return ERR_NOT_SUPPORTED;
}

// The number of device database entries, 0 to 512; they are those with the lowest indices.
JNIEXPORT void JNICALL Java_com_varden_tavo_iscsi_bench_Fixture_setEntryCount(JNIEnv *, jclass, jint count)
{
    entryCount = static_cast<SD_UINT32>(count);
}

// Nanoseconds of processor time that the threads of this process have taken.
JNIEXPORT jlong JNICALL Java_com_varden_tavo_iscsi_bench_Fixture_processorTime(JNIEnv *, jclass)
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return time.tv_sec * jlong{1'000'000'000} + time.tv_nsec;
}
}
