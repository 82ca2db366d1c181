#include "Logs.h"

#include "JavaAccess.h"
#include "RecordMemory.h"
#include "vdsdm/Logs.h"
#include "vdsdm/Operations.h"
#include "vdsdm/Status.h"

#include <algorithm>
#include <span>

// Values per entry.
static constexpr jsize CONNECT_ERROR_STRIDE = 11;
static constexpr jsize ARP_STRIDE = 26;

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
static void setEntries(JavaObject &hba, const char *setter, Message message, std::span<const Entry> entries,
                       jsize stride)
{
    JNIEnv *env = hba.env;
    const auto array = local(env, env->NewLongArray(stride * static_cast<jsize>(entries.size())));
    jboolean copied = JNI_FALSE;
    jlong *values = array == nullptr ? nullptr : env->GetLongArrayElements(array.get(), &copied);
    if (values == nullptr) {
        noValue(hba, noArray, setter);
        return;
    }
    jlong *group = values;
    for (const Entry &entry : entries) {
        pack(entry, group);
        group += stride;
    }
    jmethodID method = lookUp(hba, setter, "([J)V", message);
    env->ReleaseLongArrayElements(array.get(), values, 0);
    if (method != nullptr) {
        env->CallVoidMethod(hba.object, method, array.get());
    }
}

// Reads the log of one type. Of a count above the buffer's capacity only what the buffer holds is handed over.
template <typename Entry>
static SD_UINT32 readLog(JNIEnv *env, SDMGT_HANDLE handle, jobject jObj, SD_UINT32 logType, const char *failure,
                         const char *setter, Message message, jsize stride)
{
    Entry entries[LOG_CAPACITY];
    clear(entries);
    SD_UINT32 count = 0;
    const SD_UINT32 status = SDGetLogs(handle, logType, &count, entries);
    if (failed(status, failure)) {
        return status;
    }
    JavaObject hba = objectOf(env, jObj);
    if (hba.status == 0) {
        const std::span<const Entry> held(entries, std::min(count, LOG_CAPACITY));
        setEntries(hba, setter, message, held, stride);
    }
    return hba.status;
}

SD_UINT32 readConnectErrorLog(JNIEnv *env, SDMGT_HANDLE handle, jobject jObj)
{
    return readLog<CONNERRTABLE>(env, handle, jObj, LOG_CONNECTION_ERRORS, "SDGetLogs call failed! %x \n",
                                 "setConnectErrorLogEntries", named, CONNECT_ERROR_STRIDE);
}

SD_UINT32 readARPLog(JNIEnv *env, SDMGT_HANDLE handle, jobject jObj)
{
    return readLog<ARPTABLE>(env, handle, jObj, LOG_ARP, "SDGetLogs call failed!\n", "setARPLogEntries", silent,
                             ARP_STRIDE);
}
