package com.varden.tavo.iscsi.hba.serve;

import com.varden.tavo.iscsi.model.PortStatistics;
import java.util.function.Function;

/** The counters of an adapter's port, with their names as metrics. */
enum PortCounter {
    MAC_SENT_FRAMES("frames", "Ethernet frames sent", PortStatistics::getMACTxFramesCount),
    MAC_SENT_BYTES("bytes", "Bytes sent at the MAC layer", PortStatistics::getMACTxBytesCount),
    MAC_RECEIVED_FRAMES("frames", "Ethernet frames received", PortStatistics::getMACRxFramesCount),
    MAC_RECEIVED_BYTES("bytes", "Bytes received at the MAC layer", PortStatistics::getMACRxBytesCount),
    MAC_CRC_ERRORS("errors", "Ethernet frames with a CRC error", PortStatistics::getMACCRCErrorCount),
    IP_SENT_PACKETS("packets", "IP packets sent", PortStatistics::getIPTxPacketsCount),
    IP_SENT_BYTES("bytes", "Bytes sent at the IP layer", PortStatistics::getIPTxBytesCount),
    IP_SENT_FRAGMENTS("fragments", "IP fragments sent", PortStatistics::getIPTxFragmentsCount),
    IP_RECEIVED_PACKETS("packets", "IP packets received", PortStatistics::getIPRxPacketsCount),
    IP_RECEIVED_BYTES("bytes", "Bytes received at the IP layer", PortStatistics::getIPRxBytesCount),
    IP_RECEIVED_FRAGMENTS("fragments", "IP fragments received", PortStatistics::getIPRxFragmentsCount),
    IP_REASSEMBLED_DATAGRAMS("datagrams", "IP datagrams reassembled", PortStatistics::getIPDatagramReassemblyCount),
    IPV6_RECEIVED_PACKETS("packets", "IPv6 packets received", PortStatistics::getIPv6RxPacketsCount),
    IP_PACKET_ERRORS("errors", "IP packets received with an error", PortStatistics::getIPRxPacketErrorCount),
    IP_REASSEMBLY_ERRORS("errors", "IP datagrams that could not be reassembled",
        PortStatistics::getIPReassemblyErrorCount),
    TCP_SENT_SEGMENTS("segments", "TCP segments sent", PortStatistics::getTCPTxSegmentsCount),
    TCP_SENT_BYTES("bytes", "Bytes sent over TCP", PortStatistics::getTCPTxBytesCount),
    TCP_RECEIVED_SEGMENTS("segments", "TCP segments received", PortStatistics::getTCPRxSegmentsCount),
    TCP_RECEIVED_BYTES("bytes", "Bytes received over TCP", PortStatistics::getTCPRxBytesCount),
    TCP_EXPIRED_TIMERS("timers", "TCP retransmission timers that expired", PortStatistics::getTCPTimerExpiredCount),
    TCP_RECEIVED_ACKS("acks", "TCP acknowledgements received", PortStatistics::getTCPRxACKCount),
    TCP_SENT_ACKS("acks", "TCP acknowledgements sent", PortStatistics::getTCPTxACKCount),
    TCP_SEGMENT_ERRORS("errors", "TCP segments received with an error", PortStatistics::getTCPRxErrorSegmentCount),
    TCP_WINDOW_PROBES("probes", "TCP window probes and updates", PortStatistics::getTCPWindowProbeUpdateCount),
    ISCSI_SENT_PDUS("pdus", "iSCSI PDUs sent", PortStatistics::getiSCSITxPDUCount),
    ISCSI_SENT_BYTES("bytes", "Bytes sent in iSCSI PDUs", PortStatistics::getiSCSITxBytesCount),
    ISCSI_RECEIVED_PDUS("pdus", "iSCSI PDUs received", PortStatistics::getiSCSIRxPDUCount),
    ISCSI_RECEIVED_BYTES("bytes", "Bytes received in iSCSI PDUs", PortStatistics::getiSCSIRxBytesCount),
    ISCSI_COMPLETED_IOS("ios", "I/O requests completed", PortStatistics::getiSCSICompleteIOsCount),
    ISCSI_FORMAT_ERRORS("errors", "iSCSI PDUs received with a format error", PortStatistics::getiSCSIFormatErrorCount),
    ISCSI_HEADER_DIGEST_ERRORS("errors", "iSCSI PDUs received with a wrong header digest",
        PortStatistics::getiSCSIHeaderDigestCount),
    ISCSI_DATA_DIGEST_ERRORS("errors", "iSCSI PDUs received with a wrong data digest",
        PortStatistics::getiSCSIDataDigestErrorCount),
    ISCSI_SEQUENCE_ERRORS("errors", "iSCSI PDUs received out of sequence", PortStatistics::getiSCSISeqErrorCount);

    /** What is counted, and the last word of the metric's name. */
    final String unit;
    final String help;
    private final Function<PortStatistics, byte[]> getter;

    PortCounter(String unit, String help, Function<PortStatistics, byte[]> getter) {
        this.unit = unit;
        this.help = help;
        this.getter = getter;
    }

    /** The value, to be read as unsigned. */
    long of(PortStatistics statistics) {
        return PortStatistics.toUnsignedLong(getter.apply(statistics));
    }
}
