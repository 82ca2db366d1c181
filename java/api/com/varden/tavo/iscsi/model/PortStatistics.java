package com.varden.tavo.iscsi.model;

import java.math.BigInteger;

/**
 * The counters of the adapter's port.
 *
 * A counter crosses as nine bytes: a zero, then the unsigned 64-bit number with its least significant byte first.
 * {@link #toBigInteger} and {@link #toUnsignedLong} read it.
 */
public final class PortStatistics {
    /** Bytes of a counter: one that is always 0, then eight with the least significant first. */
    public static final int COUNTER_LENGTH = 9;

    private byte[] macTxFramesCount = new byte[COUNTER_LENGTH];
    private byte[] macTxBytesCount = new byte[COUNTER_LENGTH];
    private byte[] macRxFramesCount = new byte[COUNTER_LENGTH];
    private byte[] macRxBytesCount = new byte[COUNTER_LENGTH];
    private byte[] macCrcErrorCount = new byte[COUNTER_LENGTH];
    private byte[] ipTxPacketsCount = new byte[COUNTER_LENGTH];
    private byte[] ipTxBytesCount = new byte[COUNTER_LENGTH];
    private byte[] ipTxFragmentsCount = new byte[COUNTER_LENGTH];
    private byte[] ipRxPacketsCount = new byte[COUNTER_LENGTH];
    private byte[] ipRxBytesCount = new byte[COUNTER_LENGTH];
    private byte[] ipRxFragmentsCount = new byte[COUNTER_LENGTH];
    private byte[] ipDatagramReassemblyCount = new byte[COUNTER_LENGTH];
    private byte[] ipv6RxPacketsCount = new byte[COUNTER_LENGTH];
    private byte[] ipRxPacketErrorCount = new byte[COUNTER_LENGTH];
    private byte[] ipReassemblyErrorCount = new byte[COUNTER_LENGTH];
    private byte[] tcpTxSegmentsCount = new byte[COUNTER_LENGTH];
    private byte[] tcpTxBytesCount = new byte[COUNTER_LENGTH];
    private byte[] tcpRxSegmentsCount = new byte[COUNTER_LENGTH];
    private byte[] tcpRxBytesCount = new byte[COUNTER_LENGTH];
    private byte[] tcpTimerExpiredCount = new byte[COUNTER_LENGTH];
    private byte[] tcpRxACKCount = new byte[COUNTER_LENGTH];
    private byte[] tcpTxACKCount = new byte[COUNTER_LENGTH];
    private byte[] tcpRxErrorSegmentCount = new byte[COUNTER_LENGTH];
    private byte[] tcpWindowProbeUpdateCount = new byte[COUNTER_LENGTH];
    private byte[] iscsiTxPDUCount = new byte[COUNTER_LENGTH];
    private byte[] iscsiTxBytesCount = new byte[COUNTER_LENGTH];
    private byte[] iscsiRxPDUCount = new byte[COUNTER_LENGTH];
    private byte[] iscsiRxBytesCount = new byte[COUNTER_LENGTH];
    private byte[] iscsiCompleteIOsCount = new byte[COUNTER_LENGTH];
    private byte[] iscsiFormatErrorCount = new byte[COUNTER_LENGTH];
    private byte[] iscsiHeaderDigestCount = new byte[COUNTER_LENGTH];
    private byte[] iscsiDataDigestErrorCount = new byte[COUNTER_LENGTH];
    private byte[] iscsiSeqErrorCount = new byte[COUNTER_LENGTH];

    /** The value of a counter, 0 to 18446744073709551615. */
    public static BigInteger toBigInteger(byte[] counter) {
        byte[] bigEndian = new byte[COUNTER_LENGTH];
        for (int i = 1; i < COUNTER_LENGTH; i++) {
            bigEndian[i] = counter[COUNTER_LENGTH - i];
        }
        return new BigInteger(bigEndian);
    }

    /** The value of a counter as a long that is to be read as unsigned (see {@link Long#toUnsignedString(long)}). */
    public static long toUnsignedLong(byte[] counter) {
        long value = 0;
        for (int i = COUNTER_LENGTH - 1; i >= 1; i--) {
            value = value << 8 | Byte.toUnsignedLong(counter[i]);
        }
        return value;
    }

    /** Ethernet frames sent. */
    public byte[] getMACTxFramesCount() {
        return macTxFramesCount.clone();
    }

    public void setMACTxFramesCount(byte[] counter) {
        macTxFramesCount = Elements.copy(counter, COUNTER_LENGTH, "MACTxFramesCount");
    }

    /** Bytes sent at the MAC layer. */
    public byte[] getMACTxBytesCount() {
        return macTxBytesCount.clone();
    }

    public void setMACTxBytesCount(byte[] counter) {
        macTxBytesCount = Elements.copy(counter, COUNTER_LENGTH, "MACTxBytesCount");
    }

    /** Ethernet frames received. */
    public byte[] getMACRxFramesCount() {
        return macRxFramesCount.clone();
    }

    public void setMACRxFramesCount(byte[] counter) {
        macRxFramesCount = Elements.copy(counter, COUNTER_LENGTH, "MACRxFramesCount");
    }

    /** Bytes received at the MAC layer. */
    public byte[] getMACRxBytesCount() {
        return macRxBytesCount.clone();
    }

    public void setMACRxBytesCount(byte[] counter) {
        macRxBytesCount = Elements.copy(counter, COUNTER_LENGTH, "MACRxBytesCount");
    }

    /** Frames received with a CRC error. */
    public byte[] getMACCRCErrorCount() {
        return macCrcErrorCount.clone();
    }

    public void setMACCRCErrorCount(byte[] counter) {
        macCrcErrorCount = Elements.copy(counter, COUNTER_LENGTH, "MACCRCErrorCount");
    }

    /** IP packets sent. */
    public byte[] getIPTxPacketsCount() {
        return ipTxPacketsCount.clone();
    }

    public void setIPTxPacketsCount(byte[] counter) {
        ipTxPacketsCount = Elements.copy(counter, COUNTER_LENGTH, "IPTxPacketsCount");
    }

    /** IP bytes sent. */
    public byte[] getIPTxBytesCount() {
        return ipTxBytesCount.clone();
    }

    public void setIPTxBytesCount(byte[] counter) {
        ipTxBytesCount = Elements.copy(counter, COUNTER_LENGTH, "IPTxBytesCount");
    }

    /** IP fragments sent. */
    public byte[] getIPTxFragmentsCount() {
        return ipTxFragmentsCount.clone();
    }

    public void setIPTxFragmentsCount(byte[] counter) {
        ipTxFragmentsCount = Elements.copy(counter, COUNTER_LENGTH, "IPTxFragmentsCount");
    }

    /** IP packets received. */
    public byte[] getIPRxPacketsCount() {
        return ipRxPacketsCount.clone();
    }

    public void setIPRxPacketsCount(byte[] counter) {
        ipRxPacketsCount = Elements.copy(counter, COUNTER_LENGTH, "IPRxPacketsCount");
    }

    /** IP bytes received. */
    public byte[] getIPRxBytesCount() {
        return ipRxBytesCount.clone();
    }

    public void setIPRxBytesCount(byte[] counter) {
        ipRxBytesCount = Elements.copy(counter, COUNTER_LENGTH, "IPRxBytesCount");
    }

    /** IP fragments received. */
    public byte[] getIPRxFragmentsCount() {
        return ipRxFragmentsCount.clone();
    }

    public void setIPRxFragmentsCount(byte[] counter) {
        ipRxFragmentsCount = Elements.copy(counter, COUNTER_LENGTH, "IPRxFragmentsCount");
    }

    /** IP datagrams reassembled. */
    public byte[] getIPDatagramReassemblyCount() {
        return ipDatagramReassemblyCount.clone();
    }

    public void setIPDatagramReassemblyCount(byte[] counter) {
        ipDatagramReassemblyCount = Elements.copy(counter, COUNTER_LENGTH, "IPDatagramReassemblyCount");
    }

    /** IPv6 packets received; the adapter never fills it. */
    public byte[] getIPv6RxPacketsCount() {
        return ipv6RxPacketsCount.clone();
    }

    public void setIPv6RxPacketsCount(byte[] counter) {
        ipv6RxPacketsCount = Elements.copy(counter, COUNTER_LENGTH, "IPv6RxPacketsCount");
    }

    /** IP packets received in error. */
    public byte[] getIPRxPacketErrorCount() {
        return ipRxPacketErrorCount.clone();
    }

    public void setIPRxPacketErrorCount(byte[] counter) {
        ipRxPacketErrorCount = Elements.copy(counter, COUNTER_LENGTH, "IPRxPacketErrorCount");
    }

    /** IP reassembly errors. */
    public byte[] getIPReassemblyErrorCount() {
        return ipReassemblyErrorCount.clone();
    }

    public void setIPReassemblyErrorCount(byte[] counter) {
        ipReassemblyErrorCount = Elements.copy(counter, COUNTER_LENGTH, "IPReassemblyErrorCount");
    }

    /** TCP segments sent. */
    public byte[] getTCPTxSegmentsCount() {
        return tcpTxSegmentsCount.clone();
    }

    public void setTCPTxSegmentsCount(byte[] counter) {
        tcpTxSegmentsCount = Elements.copy(counter, COUNTER_LENGTH, "TCPTxSegmentsCount");
    }

    /** TCP bytes sent. */
    public byte[] getTCPTxBytesCount() {
        return tcpTxBytesCount.clone();
    }

    public void setTCPTxBytesCount(byte[] counter) {
        tcpTxBytesCount = Elements.copy(counter, COUNTER_LENGTH, "TCPTxBytesCount");
    }

    /** TCP segments received. */
    public byte[] getTCPRxSegmentsCount() {
        return tcpRxSegmentsCount.clone();
    }

    public void setTCPRxSegmentsCount(byte[] counter) {
        tcpRxSegmentsCount = Elements.copy(counter, COUNTER_LENGTH, "TCPRxSegmentsCount");
    }

    /** TCP bytes received. */
    public byte[] getTCPRxBytesCount() {
        return tcpRxBytesCount.clone();
    }

    public void setTCPRxBytesCount(byte[] counter) {
        tcpRxBytesCount = Elements.copy(counter, COUNTER_LENGTH, "TCPRxBytesCount");
    }

    /** TCP timer expirations. */
    public byte[] getTCPTimerExpiredCount() {
        return tcpTimerExpiredCount.clone();
    }

    public void setTCPTimerExpiredCount(byte[] counter) {
        tcpTimerExpiredCount = Elements.copy(counter, COUNTER_LENGTH, "TCPTimerExpiredCount");
    }

    /** TCP acknowledgements received. */
    public byte[] getTCPRxACKCount() {
        return tcpRxACKCount.clone();
    }

    public void setTCPRxACKCount(byte[] counter) {
        tcpRxACKCount = Elements.copy(counter, COUNTER_LENGTH, "TCPRxACKCount");
    }

    /** TCP acknowledgements sent. */
    public byte[] getTCPTxACKCount() {
        return tcpTxACKCount.clone();
    }

    public void setTCPTxACKCount(byte[] counter) {
        tcpTxACKCount = Elements.copy(counter, COUNTER_LENGTH, "TCPTxACKCount");
    }

    /** TCP segments received in error. */
    public byte[] getTCPRxErrorSegmentCount() {
        return tcpRxErrorSegmentCount.clone();
    }

    public void setTCPRxErrorSegmentCount(byte[] counter) {
        tcpRxErrorSegmentCount = Elements.copy(counter, COUNTER_LENGTH, "TCPRxErrorSegmentCount");
    }

    /** TCP window probes and updates. */
    public byte[] getTCPWindowProbeUpdateCount() {
        return tcpWindowProbeUpdateCount.clone();
    }

    public void setTCPWindowProbeUpdateCount(byte[] counter) {
        tcpWindowProbeUpdateCount = Elements.copy(counter, COUNTER_LENGTH, "TCPWindowProbeUpdateCount");
    }

    /** ISCSI PDUs sent. */
    public byte[] getiSCSITxPDUCount() {
        return iscsiTxPDUCount.clone();
    }

    public void setiSCSITxPDUCount(byte[] counter) {
        iscsiTxPDUCount = Elements.copy(counter, COUNTER_LENGTH, "iSCSITxPDUCount");
    }

    /** ISCSI bytes sent. */
    public byte[] getiSCSITxBytesCount() {
        return iscsiTxBytesCount.clone();
    }

    public void setiSCSITxBytesCount(byte[] counter) {
        iscsiTxBytesCount = Elements.copy(counter, COUNTER_LENGTH, "iSCSITxBytesCount");
    }

    /** ISCSI PDUs received. */
    public byte[] getiSCSIRxPDUCount() {
        return iscsiRxPDUCount.clone();
    }

    public void setiSCSIRxPDUCount(byte[] counter) {
        iscsiRxPDUCount = Elements.copy(counter, COUNTER_LENGTH, "iSCSIRxPDUCount");
    }

    /** ISCSI bytes received. */
    public byte[] getiSCSIRxBytesCount() {
        return iscsiRxBytesCount.clone();
    }

    public void setiSCSIRxBytesCount(byte[] counter) {
        iscsiRxBytesCount = Elements.copy(counter, COUNTER_LENGTH, "iSCSIRxBytesCount");
    }

    /** ISCSI I/O operations completed. */
    public byte[] getiSCSICompleteIOsCount() {
        return iscsiCompleteIOsCount.clone();
    }

    public void setiSCSICompleteIOsCount(byte[] counter) {
        iscsiCompleteIOsCount = Elements.copy(counter, COUNTER_LENGTH, "iSCSICompleteIOsCount");
    }

    /** ISCSI PDU format errors. */
    public byte[] getiSCSIFormatErrorCount() {
        return iscsiFormatErrorCount.clone();
    }

    public void setiSCSIFormatErrorCount(byte[] counter) {
        iscsiFormatErrorCount = Elements.copy(counter, COUNTER_LENGTH, "iSCSIFormatErrorCount");
    }

    /** ISCSI header digest errors. */
    public byte[] getiSCSIHeaderDigestCount() {
        return iscsiHeaderDigestCount.clone();
    }

    public void setiSCSIHeaderDigestCount(byte[] counter) {
        iscsiHeaderDigestCount = Elements.copy(counter, COUNTER_LENGTH, "iSCSIHeaderDigestCount");
    }

    /** ISCSI data digest errors. */
    public byte[] getiSCSIDataDigestErrorCount() {
        return iscsiDataDigestErrorCount.clone();
    }

    public void setiSCSIDataDigestErrorCount(byte[] counter) {
        iscsiDataDigestErrorCount = Elements.copy(counter, COUNTER_LENGTH, "iSCSIDataDigestErrorCount");
    }

    /** ISCSI sequence errors. */
    public byte[] getiSCSISeqErrorCount() {
        return iscsiSeqErrorCount.clone();
    }

    public void setiSCSISeqErrorCount(byte[] counter) {
        iscsiSeqErrorCount = Elements.copy(counter, COUNTER_LENGTH, "iSCSISeqErrorCount");
    }
}
