#include "Logs.h"

#include "JavaAccess.h"
#include "RecordMemory.h"
#include "vdsdm/Logs.h"
#include "vdsdm/Operations.h"
#include "vdsdm/Status.h"

#include <span>

namespace
{

struct Log {
    const char *name;
    SD_UINT32 type;
    const char *failure;
    const char *setter;
    Message message;
    jsize stride; // values per entry
};

constexpr Log CONNECTION_ERROR_LOG{
    .name = "Connection error log",
    .type = LOG_CONNECTION_ERRORS,
    .failure = "SDGetLogs call failed! %x \n",
    .setter = "setConnectErrorLogEntries",
    .message = named,
    .stride = 11,
};

constexpr Log ARP_TABLE_LOG{
    .name = "ARP log",
    .type = LOG_ARP,
    .failure = "SDGetLogs call failed!\n",
    .setter = "setARPLogEntries",
    .message = silent,
    .stride = 26,
};

} // namespace

// Each value is the field zero-extended, so that none is negative.
static void pack(const CONNERRTABLE &entry, jlong *values)
{
    *values++ = entry.timeStamp.seconds;
    *values++ = entry.timeStamp.milliseconds;
    *values++ = entry.deviceIndex;
    *values++ = entry.connState;
    *values++ = entry.entryType;
    *values++ = entry.errorType;
    *values++ = entry.errorDetail;
    *values++ = entry.dupErrorCnt;
    for (const SD_UINT8 byte : entry.reserved) {
        *values++ = byte;
    }
}

static void pack(const ARPTABLE &entry, jlong *values)
{
    for (const SD_UINT8 byte : entry.ipAddr.IPAddress) {
        *values++ = byte;
    }
    *values++ = entry.ipAddr.Type;
    *values++ = entry.ipAddr.Reserved;
    for (const SD_UINT8 byte : entry.macAddr) {
        *values++ = byte;
    }
    *values++ = entry.valid;
    *values++ = entry.time_in;
}

// Packs the entries into a new long[] and hands it to the setter, which is looked up while the elements are borrowed.
template <typename Entry>
static void setEntries(JavaObject &hba, const Log &log, std::span<const Entry> entries)
{
    JNIEnv *env = hba.env;
    const auto array = local(env, env->NewLongArray(log.stride * static_cast<jsize>(entries.size())));
    jboolean copied = JNI_FALSE;
    jlong *values = array == nullptr ? nullptr : env->GetLongArrayElements(array.get(), &copied);
    if (values == nullptr) {
        noValue(hba, noArray, log.setter);
        return;
    }
    jlong *group = values;
    for (const Entry &entry : entries) {
        pack(entry, group);
        group += log.stride;
    }
    jmethodID setter = lookUp(hba, log.setter, "([J)V", log.message);
    env->ReleaseLongArrayElements(array.get(), values, 0);
    if (setter != nullptr) {
        env->CallVoidMethod(hba.object, setter, array.get());
    }
}

template <typename Entry>
static SD_UINT32 readLog(JNIEnv *env, SDMGT_HANDLE handle, jobject jObj, const Log &log)
{
    Entry entries[LOG_CAPACITY];
    clear(entries);
    SD_UINT32 count = 0;
    const SD_UINT32 status = SDGetLogs(handle, log.type, &count, entries);
    if (failed(status, log.failure)) {
        return status;
    }
    JavaObject hba = objectOf(env, jObj);
    if (hba.status == 0) {
        setEntries(hba, log, std::span<const Entry>(entries).first(fitting(count, LOG_CAPACITY, log.name)));
    }
    return hba.status;
}

SD_UINT32 readConnectErrorLog(JNIEnv *env, SDMGT_HANDLE handle, jobject jObj)
{
    return readLog<CONNERRTABLE>(env, handle, jObj, CONNECTION_ERROR_LOG);
}

SD_UINT32 readARPLog(JNIEnv *env, SDMGT_HANDLE handle, jobject jObj)
{
    return readLog<ARPTABLE>(env, handle, jObj, ARP_TABLE_LOG);
}
