#include "Statistics.h"

#include <cstdio>

#include "JavaAccess.h"
#include "Records.h"
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
    return withLocal(env, env->NewByteArray(COUNTER_ARRAY), [&](jbyteArray array) {
        jboolean copied = JNI_FALSE;
        jbyte *elements = array == nullptr ? nullptr : env->GetByteArrayElements(array, &copied);
        if (elements == nullptr) {
            return ERR_JNI_NULL;
        }
        for (int i = 1; i < COUNTER_ARRAY; i++) {
            elements[i] = static_cast<jbyte>(counter);
            counter >>= 8;
        }
        env->ReleaseByteArrayElements(array, elements, 0);
        env->CallVoidMethod(jStats, method, array);
        return SD_UINT32{0};
    });
}

static bool setCounter(JavaObject &stats, const Counter &counter, const HBAPORTSTATISCSI &statistics)
{
    jmethodID method = lookUp(stats, counter.setter, "([B)V", dashed);
    if (method == nullptr) {
        return false;
    }
    if (counter.field != nullptr) {
        stats.status = assign64toBigInt(stats.env, statistics.*counter.field, method, stats.object);
    }
    if (stats.status != 0) {
        std::printf("NULL array for %s!\n", counter.setter);
    }
    return stats.status == 0;
}

SD_UINT32 readStatistics(JNIEnv *env, SDMGT_HANDLE handle, jobject jStats)
{
    return withClassOf(env, jStats, [&](JavaObject &stats) {
        HBAPORTSTATISCSI statistics;
        clear(statistics);
        stats.status = SDGetStatisticsiSCSI(handle, &statistics);
        if (failed(stats.status, "SDGetStatisticsiSCSI call failed!\n")) {
            return;
        }
        for (const Counter &counter : COUNTERS) {
            if (!setCounter(stats, counter, statistics)) {
                return;
            }
        }
    });
}
