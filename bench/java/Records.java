package com.varden.tavo.iscsi.bench;

import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.DevEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.IPAddr;
import com.varden.tavo.iscsi.model.InitFW;
import com.varden.tavo.iscsi.model.NodeInfo;
import com.varden.tavo.iscsi.model.PortStatistics;
import java.nio.ByteBuffer;
import java.nio.charset.StandardCharsets;
import java.util.List;
import java.util.function.BiConsumer;

/** The management library's records as bytes in the machine's order: decoding and encoding without JNI. */
final class Records {
    static final int PORTAL = 720;
    static final int FIRMWARE = 780;
    static final int STATISTICS = 360;
    static final int LOG_ENTRY = 20;
    static final int LOG_CAPACITY = 128;
    static final int ENTRY = 484;
    static final int SLOTS = 512;
    static final int MOST_WRITTEN = 511;
    static final int LOG_STRIDE = 11;

    private static final int DEVICE_STATE = 464;
    private static final int NEXT_VALID = 472;

    private Records() {}

    static void portal(ByteBuffer portal, HBA hba) {
        hba.setNumberDiskTargets(unsignedShort(portal, 686));
        hba.setMACAddress(shorts(portal, 36, 6));
        state(portal, hba);
        hba.setType(unsignedShort(portal, 684));
        hba.setDriverAttribute(portal.getInt(688));
        hba.setFirmwareAttribute(portal.getInt(692));
        hba.setDriverVersion(text(portal, 298, 128));
        hba.setFirmwareVersion(text(portal, 426, 128));
        hba.setManufacturer(text(portal, 42, 128));
        hba.setModel(text(portal, 170, 128));
        hba.setOptRomVersion(text(portal, 554, 128));
        hba.setSerialNumberStr(text(portal, 20, 16));
    }

    static void state(ByteBuffer portal, HBA hba) {
        hba.setState(unsignedShort(portal, 682));
        hba.setDhcpState(unsignedShort(portal, 700));
        hba.setLinkStatus(unsignedShort(portal, 702));
    }

    static void firmware(ByteBuffer block, HBA hba) {
        hba.setIPAddress(address(block, 8));
        hba.setGateway(address(block, 68));
        hba.setSubnetMask(address(block, 48));
        hba.setPrimaryDNS(address(block, 88));
        hba.setSlpDa(address(block, 392));
        InitFW initFW = hba.getInitFW();
        initFW.setFWOptions(block.getShort(2));
        initFW.setAddFWOptions(block.getShort(4));
        initFW.setReserved1(block.get(0));
        initFW.setWakeupThreshold(block.getShort(6));
        device(block, 700, initFW.getDevEntry());
    }

    static boolean isUsed(ByteBuffer record) {
        return record.getInt(DEVICE_STATE) != 0;
    }

    static int following(ByteBuffer record, int index) {
        return following(record.getInt(NEXT_VALID), index);
    }

    static int following(int nextValid, int index) {
        return nextValid > index && nextValid < SLOTS ? nextValid : index + 1;
    }

    static DevDBEntry entry(ByteBuffer record, int index) {
        DevDBEntry entry = new DevDBEntry();
        entry.setInitiatorSessionID(shorts(record, 6, 6));
        entry.setTargetID(record.getInt(460));
        entry.setState(record.getInt(DEVICE_STATE));
        entry.setIndex(index);
        entry.setMaxTxDataSegmentLen(unsignedShort(record, 480));
        entry.setDDBLink(unsignedShort(record, 476));
        entry.setChapIndex(unsignedShort(record, 478));
        entry.setOptions(record.get(0));
        entry.setControl(record.get(1));
        entry.setExeCount(unsignedShort(record, 2));
        entry.setReservedFlags(record.getInt(468));
        entry.setTargetSessionID(unsignedShort(record, 4));
        entry.setTargetPortalGroupID(unsignedShort(record, 482));
        NodeInfo nodeInfo = entry.getNodeInfo();
        nodeInfo.setiSCSIName(text(record, 160, 256));
        nodeInfo.setAlias(text(record, 416, 32));
        nodeInfo.setIPAddress(address(record, 140));
        nodeInfo.setPortalCount(unsignedShort(record, 448));
        device(record, 76, entry.getDeviceEntry());
        return entry;
    }

    /** Fills a record, cleared before, from an entry. */
    static void put(DevDBEntry entry, ByteBuffer record) {
        record.put(0, entry.getOptions());
        record.put(1, entry.getControl());
        record.putShort(2, (short) entry.getExeCount());
        record.putShort(4, (short) entry.getTargetSessionID());
        putShorts(entry.getInitiatorSessionID(), record, 6);
        DevEntry device = entry.getDeviceEntry();
        record.putShort(76, (short) device.getDeviceType());
        record.putShort(78, (short) device.getExecutionThrottle());
        record.put(82, (byte) device.getRetryCount());
        record.put(83, (byte) device.getRetryDelay());
        record.putShort(84, device.getiSCSIOptions());
        record.putShort(86, (short) device.getTCPOptions());
        record.putShort(88, (short) device.getIPOptions());
        record.putShort(90, (short) device.getMaxRxDataSegmentLen());
        record.putShort(92, (short) device.getFirstBurstSize());
        record.putShort(94, (short) device.getDefaultTime2Wait());
        record.putShort(96, (short) device.getDefaultTime2Retain());
        record.putShort(98, (short) device.getMaxOutstandingR2T());
        record.putShort(100, (short) device.getKeepAliveTO());
        record.putShort(102, (short) device.getPortNumber());
        record.putShort(104, device.getMaxBurstSize());
        record.putShort(106, device.getTaskManagementTimeout());
        putText(device.getTargetAddress(), record, 108, 32);
        NodeInfo nodeInfo = entry.getNodeInfo();
        putShorts(nodeInfo.getIPAddress().getAddress(), record, 140);
        putText(nodeInfo.getiSCSIName(), record, 160, 256);
        putText(nodeInfo.getAlias(), record, 416, 32);
        record.putShort(448, (short) nodeInfo.getPortalCount());
        record.putInt(460, entry.getTargetID());
        record.putInt(DEVICE_STATE, entry.getState());
        record.putInt(468, entry.getReservedFlags());
        record.putShort(476, (short) entry.getDDBLink());
        record.putShort(478, (short) entry.getChapIndex());
        record.putShort(480, (short) entry.getMaxTxDataSegmentLen());
        record.putShort(482, (short) entry.getTargetPortalGroupID());
    }

    static void log(ByteBuffer entries, int count, HBA hba) {
        int held = Math.min(count, LOG_CAPACITY);
        long[] log = new long[held * LOG_STRIDE];
        int to = 0;
        for (int i = 0; i < held; i++) {
            int at = i * LOG_ENTRY;
            log[to++] = Integer.toUnsignedLong(entries.getInt(at));
            log[to++] = Integer.toUnsignedLong(entries.getInt(at + 4));
            log[to++] = unsignedShort(entries, at + 8);
            log[to++] = unsignedShort(entries, at + 10);
            log[to++] = Byte.toUnsignedInt(entries.get(at + 12));
            log[to++] = Byte.toUnsignedInt(entries.get(at + 13));
            log[to++] = unsignedShort(entries, at + 14);
            for (int k = 16; k < 20; k++) {
                log[to++] = Byte.toUnsignedInt(entries.get(at + k));
            }
        }
        hba.setConnectErrorLogEntries(log);
    }

    /** Takes all 35 words of the record; the three that no setter takes are left out. */
    static void counters(ByteBuffer words, PortStatistics statistics) {
        for (int i = 0; i < COUNTERS.size(); i++) {
            if (COUNTERS.get(i) != null) {
                COUNTERS.get(i).accept(statistics, counter(words.getLong(8 * i)));
            }
        }
    }

    /** The setter of each word of the counters' record, null where there is none. */
    static final List<BiConsumer<PortStatistics, byte[]>> COUNTERS = java.util.Arrays.asList(
        PortStatistics::setMACTxFramesCount, PortStatistics::setMACTxBytesCount, PortStatistics::setMACRxFramesCount,
        PortStatistics::setMACRxBytesCount, PortStatistics::setMACCRCErrorCount, null,
        PortStatistics::setIPTxPacketsCount, PortStatistics::setIPTxBytesCount, PortStatistics::setIPTxFragmentsCount,
        PortStatistics::setIPRxPacketsCount, PortStatistics::setIPRxBytesCount, PortStatistics::setIPRxFragmentsCount,
        PortStatistics::setIPDatagramReassemblyCount, null, PortStatistics::setIPRxPacketErrorCount,
        PortStatistics::setIPReassemblyErrorCount, PortStatistics::setTCPTxSegmentsCount,
        PortStatistics::setTCPTxBytesCount, PortStatistics::setTCPRxSegmentsCount, PortStatistics::setTCPRxBytesCount,
        PortStatistics::setTCPTimerExpiredCount, PortStatistics::setTCPRxACKCount, PortStatistics::setTCPTxACKCount,
        PortStatistics::setTCPRxErrorSegmentCount, PortStatistics::setTCPWindowProbeUpdateCount,
        PortStatistics::setiSCSITxPDUCount, PortStatistics::setiSCSITxBytesCount, PortStatistics::setiSCSIRxPDUCount,
        PortStatistics::setiSCSIRxBytesCount, PortStatistics::setiSCSICompleteIOsCount, null,
        PortStatistics::setiSCSIFormatErrorCount, PortStatistics::setiSCSIHeaderDigestCount,
        PortStatistics::setiSCSIDataDigestErrorCount, PortStatistics::setiSCSISeqErrorCount);

    /** A counter as the setters take it: a zero, then eight bytes with the least significant first. */
    static byte[] counter(long value) {
        byte[] bytes = new byte[PortStatistics.COUNTER_LENGTH];
        for (int i = 1; i < bytes.length; i++) {
            bytes[i] = (byte) (value >>> 8 * (i - 1));
        }
        return bytes;
    }

    private static void device(ByteBuffer record, int at, DevEntry device) {
        device.setiSCSIOptions(record.getShort(at + 8));
        device.setTaskManagementTimeout(record.getShort(at + 30));
        device.setRetryCount((short) Byte.toUnsignedInt(record.get(at + 6)));
        device.setRetryDelay((short) Byte.toUnsignedInt(record.get(at + 7)));
        device.setDeviceType(unsignedShort(record, at));
        device.setExecutionThrottle(unsignedShort(record, at + 2));
        device.setFirstBurstSize(unsignedShort(record, at + 16));
        device.setMaxBurstSize(record.getShort(at + 28));
        device.setIPOptions(unsignedShort(record, at + 12));
        device.setMaxRxDataSegmentLen(unsignedShort(record, at + 14));
        device.setDefaultTime2Wait(unsignedShort(record, at + 18));
        device.setDefaultTime2Retain(unsignedShort(record, at + 20));
        device.setKeepAliveTO(unsignedShort(record, at + 24));
        device.setMaxOutstandingR2T(unsignedShort(record, at + 22));
        device.setTCPOptions(unsignedShort(record, at + 10));
        device.setTargetAddress(text(record, at + 32, 32));
        device.setPortNumber(unsignedShort(record, at + 26));
    }

    private static IPAddr address(ByteBuffer record, int at) {
        IPAddr address = new IPAddr();
        address.setAddress(shorts(record, at, IPAddr.LENGTH));
        return address;
    }

    private static int unsignedShort(ByteBuffer record, int at) {
        return Short.toUnsignedInt(record.getShort(at));
    }

    private static short[] shorts(ByteBuffer record, int at, int count) {
        short[] shorts = new short[count];
        for (int i = 0; i < count; i++) {
            shorts[i] = (short) Byte.toUnsignedInt(record.get(at + i));
        }
        return shorts;
    }

    private static void putShorts(short[] shorts, ByteBuffer record, int at) {
        for (int i = 0; i < shorts.length; i++) {
            record.put(at + i, (byte) shorts[i]);
        }
    }

    private static String text(ByteBuffer record, int at, int size) {
        int length = 0;
        while (length < size && record.get(at + length) != 0) {
            length++;
        }
        byte[] bytes = new byte[length];
        record.get(at, bytes);
        return new String(bytes, StandardCharsets.UTF_8);
    }

    private static void putText(String text, ByteBuffer record, int at, int size) {
        byte[] bytes = text.getBytes(StandardCharsets.UTF_8);
        record.put(at, bytes, 0, Math.min(bytes.length, size));
    }
}
