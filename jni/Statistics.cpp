#include "Statistics.h"

#include "JavaAccess.h"
#include "RecordMemory.h"
#include "vdsdm/Operations.h"
#include "vdsdm/Status.h"

namespace
{

struct Counter {
    const char *setter;
    SD_UINT64 HBAPORTSTATISCSI::*field; // null: the setter must exist but is not called
};

constexpr Counter COUNTERS[] = {
    {"setMACTxFramesCount", &HBAPORTSTATISCSI::MACTxFramesCount},
    {"setMACTxBytesCount", &HBAPORTSTATISCSI::MACTxBytesCount},
    {"setMACRxFramesCount", &HBAPORTSTATISCSI::MACRxFramesCount},
    {"setMACRxBytesCount", &HBAPORTSTATISCSI::MACRxBytesCount},
    {"setMACCRCErrorCount", &HBAPORTSTATISCSI::MACCRCErrorCount},
    {"setIPTxPacketsCount", &HBAPORTSTATISCSI::IPTxPacketsCount},
    {"setIPTxBytesCount", &HBAPORTSTATISCSI::IPTxBytesCount},
    {"setIPTxFragmentsCount", &HBAPORTSTATISCSI::IPTxFragmentsCount},
    {"setIPRxPacketsCount", &HBAPORTSTATISCSI::IPRxPacketsCount},
    {"setIPRxBytesCount", &HBAPORTSTATISCSI::IPRxBytesCount},
    {"setIPRxFragmentsCount", &HBAPORTSTATISCSI::IPRxFragmentsCount},
    {"setIPDatagramReassemblyCount", &HBAPORTSTATISCSI::IPDatagramReassemblyCount},
    {"setIPv6RxPacketsCount", nullptr},
    {"setIPRxPacketErrorCount", &HBAPORTSTATISCSI::IPRxPacketErrorCount},
    {"setIPReassemblyErrorCount", &HBAPORTSTATISCSI::IPReassemblyErrorCount},
    {"setTCPTxSegmentsCount", &HBAPORTSTATISCSI::TCPTxSegmentsCount},
    {"setTCPTxBytesCount", &HBAPORTSTATISCSI::TCPTxBytesCount},
    {"setTCPRxSegmentsCount", &HBAPORTSTATISCSI::TCPRxSegmentsCount},
    {"setTCPRxBytesCount", &HBAPORTSTATISCSI::TCPRxBytesCount},
    {"setTCPTimerExpiredCount", &HBAPORTSTATISCSI::TCPTimerExpiredCount},
    {"setTCPRxACKCount", &HBAPORTSTATISCSI::TCPRxACKCount},
    {"setTCPTxACKCount", &HBAPORTSTATISCSI::TCPTxACKCount},
    {"setTCPRxErrorSegmentCount", &HBAPORTSTATISCSI::TCPRxErrorSegmentCount},
    {"setTCPWindowProbeUpdateCount", &HBAPORTSTATISCSI::TCPWindowProbeUpdateCount},
    {"setiSCSITxPDUCount", &HBAPORTSTATISCSI::iSCSITxPDUCount},
    {"setiSCSITxBytesCount", &HBAPORTSTATISCSI::iSCSITxBytesCount},
    {"setiSCSIRxPDUCount", &HBAPORTSTATISCSI::iSCSIRxPDUCount},
    {"setiSCSIRxBytesCount", &HBAPORTSTATISCSI::iSCSIRxBytesCount},
    {"setiSCSICompleteIOsCount", &HBAPORTSTATISCSI::iSCSICompleteIOsCount},
    {"setiSCSIFormatErrorCount", &HBAPORTSTATISCSI::iSCSIFormatErrorCount},
    {"setiSCSIHeaderDigestCount", &HBAPORTSTATISCSI::iSCSIHeaderDigestCount},
    {"setiSCSIDataDigestErrorCount", &HBAPORTSTATISCSI::iSCSIDataDigestErrorCount},
    {"setiSCSISeqErrorCount", &HBAPORTSTATISCSI::iSCSISeqErrorCount},
};

// Elements of a counter array: a leading 0 and the eight bytes.
constexpr jsize COUNTER_ARRAY = 9;

} // namespace

SD_UINT32 assign64toBigInt(JNIEnv *env, SD_UINT64 counter, jmethodID method, jobject jStats)
{
    const auto array = local(env, env->NewByteArray(COUNTER_ARRAY));
    jboolean copied = JNI_FALSE;
    jbyte *elements = array == nullptr ? nullptr : env->GetByteArrayElements(array.get(), &copied);
    if (elements == nullptr) {
        return ERR_JNI_NULL;
    }
    for (int i = 1; i < COUNTER_ARRAY; ++i) {
        elements[i] = static_cast<jbyte>(counter);
        counter >>= 8;
    }
    env->ReleaseByteArrayElements(array.get(), elements, 0);
    env->CallVoidMethod(jStats, method, array.get());
    return 0;
}

static void setCounter(JavaObject &stats, const Counter &counter, const HBAPORTSTATISCSI &statistics)
{
    jmethodID setter = lookUp(stats, counter.setter, "([B)V", dashed);
    if (setter == nullptr || counter.field == nullptr) {
        return;
    }
    if (assign64toBigInt(stats.env, statistics.*counter.field, setter, stats.object) != 0) {
        noValue(stats, noArray, counter.setter);
    }
}

SD_UINT32 readStatistics(JNIEnv *env, SDMGT_HANDLE handle, jobject jStats)
{
    JavaObject stats = objectOf(env, jStats);
    if (stats.status != 0) {
        return stats.status;
    }
    HBAPORTSTATISCSI statistics;
    clear(statistics);
    stats.status = SDGetStatisticsiSCSI(handle, &statistics);
    report(stats.status, "SDGetStatisticsiSCSI call failed!\n");
    for (const Counter &counter : COUNTERS) {
        setCounter(stats, counter, statistics);
    }
    return stats.status;
}
