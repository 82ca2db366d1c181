// The port's counters.
#pragma once

#include "Types.h"

// Traffic and error counters of the port, each an unsigned 64-bit number in the machine's byte order.
struct HBAPORTSTATISCSI {
    SD_UINT64 MACTxFramesCount;
    SD_UINT64 MACTxBytesCount;
    SD_UINT64 MACRxFramesCount;
    SD_UINT64 MACRxBytesCount;
    SD_UINT64 MACCRCErrorCount;
    SD_UINT64 MACEncodingErrorCount;
    SD_UINT64 IPTxPacketsCount;
    SD_UINT64 IPTxBytesCount;
    SD_UINT64 IPTxFragmentsCount;
    SD_UINT64 IPRxPacketsCount;
    SD_UINT64 IPRxBytesCount;
    SD_UINT64 IPRxFragmentsCount;
    SD_UINT64 IPDatagramReassemblyCount;
    SD_UINT64 Reserved1;
    SD_UINT64 IPRxPacketErrorCount;
    SD_UINT64 IPReassemblyErrorCount;
    SD_UINT64 TCPTxSegmentsCount;
    SD_UINT64 TCPTxBytesCount;
    SD_UINT64 TCPRxSegmentsCount;
    SD_UINT64 TCPRxBytesCount;
    SD_UINT64 TCPTimerExpiredCount;
    SD_UINT64 TCPRxACKCount;
    SD_UINT64 TCPTxACKCount;
    SD_UINT64 TCPRxErrorSegmentCount;
    SD_UINT64 TCPWindowProbeUpdateCount;
    SD_UINT64 iSCSITxPDUCount;
    SD_UINT64 iSCSITxBytesCount;
    SD_UINT64 iSCSIRxPDUCount;
    SD_UINT64 iSCSIRxBytesCount;
    SD_UINT64 iSCSICompleteIOsCount;
    SD_UINT64 iSCSIUnexpectedIORxCount;
    SD_UINT64 iSCSIFormatErrorCount;
    SD_UINT64 iSCSIHeaderDigestCount;
    SD_UINT64 iSCSIDataDigestErrorCount;
    SD_UINT64 iSCSISeqErrorCount;
    SD_UINT32 Reserved[20];
};
static_assert(sizeof(HBAPORTSTATISCSI) == 360);
static_assert(offsetof(HBAPORTSTATISCSI, MACEncodingErrorCount) == 40);
static_assert(offsetof(HBAPORTSTATISCSI, IPTxPacketsCount) == 48);
static_assert(offsetof(HBAPORTSTATISCSI, IPDatagramReassemblyCount) == 96);
static_assert(offsetof(HBAPORTSTATISCSI, Reserved1) == 104);
static_assert(offsetof(HBAPORTSTATISCSI, IPRxPacketErrorCount) == 112);
static_assert(offsetof(HBAPORTSTATISCSI, TCPTxSegmentsCount) == 128);
static_assert(offsetof(HBAPORTSTATISCSI, TCPRxErrorSegmentCount) == 184);
static_assert(offsetof(HBAPORTSTATISCSI, iSCSITxPDUCount) == 200);
static_assert(offsetof(HBAPORTSTATISCSI, iSCSIUnexpectedIORxCount) == 240);
static_assert(offsetof(HBAPORTSTATISCSI, iSCSIFormatErrorCount) == 248);
static_assert(offsetof(HBAPORTSTATISCSI, iSCSISeqErrorCount) == 272);
static_assert(offsetof(HBAPORTSTATISCSI, Reserved) == 280);
