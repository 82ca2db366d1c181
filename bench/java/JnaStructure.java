package com.varden.tavo.iscsi.bench;

import com.sun.jna.Native;
import com.sun.jna.Structure;
import com.sun.jna.Structure.FieldOrder;
import com.sun.jna.ptr.IntByReference;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.DevEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.IPAddr;
import com.varden.tavo.iscsi.model.InitFW;
import com.varden.tavo.iscsi.model.NodeInfo;
import com.varden.tavo.iscsi.model.PortStatistics;
import java.io.File;
import java.nio.charset.StandardCharsets;
import java.util.function.Supplier;

/**
 * JNA with direct mapping and Structures: the mapping that its manual teaches.
 *
 * A new Structure for each record, as one writes it; or one kept for all, which saves most of the time and is up to one
 * thread at a time.
 */
final class JnaStructure extends Contract {
    static final String LIBRARY = new File("libvdsdm.so").getAbsolutePath();

    /** One address. */
    @FieldOrder({"IPAddress", "Type", "Reserved"})
    public static class Address extends Structure {
        public byte[] IPAddress = new byte[16];
        public short Type;
        public short Reserved;
    }

    /** One DNS server. */
    @FieldOrder({"IPAddr", "Reserved"})
    public static class Dns extends Structure {
        public Address IPAddr;
        public byte[] Reserved = new byte[132];
    }

    /** Session parameters. */
    @FieldOrder({"deviceType", "exeThrottle", "Reserved", "retryCount", "retryDelay", "iSCSIOptions", "TCPOptions",
        "IPOptions", "MaxRxDataSegmentLen", "firstBurstSize", "DefaultTime2Wait", "DefaultTime2Retain",
        "maxOutstandingR2T", "keepAliveTimeout", "portNumber", "maxBurstSize", "taskMngmntTimeout", "targetAddr"})
    public static class Device extends Structure {
        public short deviceType;
        public short exeThrottle;
        public short Reserved;
        public byte retryCount;
        public byte retryDelay;
        public short iSCSIOptions;
        public short TCPOptions;
        public short IPOptions;
        public short MaxRxDataSegmentLen;
        public short firstBurstSize;
        public short DefaultTime2Wait;
        public short DefaultTime2Retain;
        public short maxOutstandingR2T;
        public short keepAliveTimeout;
        public short portNumber;
        public short maxBurstSize;
        public short taskMngmntTimeout;
        public byte[] targetAddr = new byte[32];
    }

    /** Identity of a node. */
    @FieldOrder({"IPAddr", "iSCSIName", "Alias", "PortalCount", "Reserved"})
    public static class Node extends Structure {
        public Address IPAddr;
        public byte[] iSCSIName = new byte[256];
        public byte[] Alias = new byte[32];
        public short PortalCount;
        public byte[] Reserved = new byte[10];
    }

    /** One device database entry. */
    @FieldOrder({"Options", "Control", "exeCount", "TargetSessID", "InitiatorSessID", "Reserved0", "DeviceInfo",
        "EntryInfo", "TargetID", "DeviceState", "ReservedFlags", "NextValid", "DDBLink", "CHAPTableIndex",
        "MaxTxDataSegmentLen", "TargetPortalGroupID"})
    public static class Entry extends Structure {
        public byte Options;
        public byte Control;
        public short exeCount;
        public short TargetSessID;
        public byte[] InitiatorSessID = new byte[6];
        public byte[] Reserved0 = new byte[64];
        public Device DeviceInfo;
        public Node EntryInfo;
        public int TargetID;
        public int DeviceState;
        public int ReservedFlags;
        public int NextValid;
        public short DDBLink;
        public short CHAPTableIndex;
        public short MaxTxDataSegmentLen;
        public short TargetPortalGroupID;
    }

    /** The portal. */
    @FieldOrder({"IPAddr", "SerialNum", "MacAddr", "Manufacturer", "Model", "DriverVersion", "FWVersion",
        "OptRomVersion", "State", "Type", "DiscTargetCount", "DriverAttr", "FWAttr", "iscsiVersion", "dhcpState",
        "linkStatus", "Reserved"})
    public static class Portal extends Structure {
        public Address IPAddr;
        public byte[] SerialNum = new byte[16];
        public byte[] MacAddr = new byte[6];
        public byte[] Manufacturer = new byte[128];
        public byte[] Model = new byte[128];
        public byte[] DriverVersion = new byte[128];
        public byte[] FWVersion = new byte[128];
        public byte[] OptRomVersion = new byte[128];
        public short State;
        public short Type;
        public short DiscTargetCount;
        public int DriverAttr;
        public int FWAttr;
        public byte[] iscsiVersion = new byte[4];
        public short dhcpState;
        public short linkStatus;
        public byte[] Reserved = new byte[14];
    }

    /** The firmware block. */
    @FieldOrder({"Reserved1", "Version", "FWOptions", "addFWOptions", "wakeupThreshold", "IPAddr", "SecondaryIPAddr",
        "SubnetMask", "Gateway", "PrimaryDNS", "SecondaryDNS", "SLPDAAddr", "Alias", "iSCSIName", "DeviceInfo",
        "Reserved"})
    public static class Firmware extends Structure {
        public byte Reserved1;
        public byte Version;
        public short FWOptions;
        public short addFWOptions;
        public short wakeupThreshold;
        public Address IPAddr;
        public Address SecondaryIPAddr;
        public Address SubnetMask;
        public Address Gateway;
        public Dns PrimaryDNS;
        public Dns SecondaryDNS;
        public Address SLPDAAddr;
        public byte[] Alias = new byte[32];
        public byte[] iSCSIName = new byte[256];
        public Device DeviceInfo;
        public byte[] Reserved = new byte[16];
    }

    /** The counters. */
    @FieldOrder({"words", "Reserved"})
    public static class Counters extends Structure {
        public long[] words = new long[35];
        public int[] Reserved = new int[20];
    }

    /** One entry of the log. */
    @FieldOrder({"seconds", "milliseconds", "deviceIndex", "connState", "entryType", "errorType", "errorDetail",
        "dupErrorCnt", "reserved"})
    public static class LogEntry extends Structure {
        public int seconds;
        public int milliseconds;
        public short deviceIndex;
        public short connState;
        public byte entryType;
        public byte errorType;
        public short errorDetail;
        public byte dupErrorCnt;
        public byte[] reserved = new byte[3];
    }

    /** The management library's operations. */
    private static final class Library {
        static {
            Native.register(Library.class, LIBRARY);
        }

        static native int SDOpenDeviceiSCSI(int adapterIndex, IntByReference handle);

        static native int SDGetHbaDevicePortalPropertyiSCSI(int handle, int port, Portal portal);

        static native int SDGetDDBEntryNum(int handle, IntByReference count);

        static native int SDGetDDBEntry(int handle, Entry entry, int index);

        static native int SDSetDDBEntry(int handle, Entry entry, int index);

        static native int SDGetInitFW(int handle, Firmware block);

        static native int SDGetStatisticsiSCSI(int handle, Counters statistics);

        static native int SDGetLogs(int handle, int logType, IntByReference count, LogEntry entries);
    }

    private final Kept<Portal> portals;
    private final Kept<Entry> incoming;
    private final Kept<Entry> outgoing;
    private final Kept<Firmware> firmware;
    private final Kept<Counters> counters;
    private final Kept<LogEntry[]> logs;
    private int handle;

    JnaStructure(boolean kept) {
        portals = new Kept<>(kept, Portal::new);
        incoming = new Kept<>(kept, Entry::new);
        outgoing = new Kept<>(kept, Entry::new);
        firmware = new Kept<>(kept, Firmware::new);
        counters = new Kept<>(kept, Counters::new);
        logs = new Kept<>(kept, () -> (LogEntry[]) new LogEntry().toArray(Records.LOG_CAPACITY));
    }

    private static final class Kept<T> {
        private final Supplier<T> make;
        private final T kept;

        Kept(boolean kept, Supplier<T> make) {
            this.make = make;
            this.kept = kept ? make.get() : null;
        }

        T get() {
            return kept != null ? kept : make.get();
        }
    }

    @Override
    boolean openDevice(int dev) {
        IntByReference opened = new IntByReference();
        int status = Library.SDOpenDeviceiSCSI(dev, opened);
        handle = opened.getValue();
        return status == 0;
    }

    @Override
    int getiSCSIHBAState(int dev, HBA hba) {
        Portal portal = portals.get();
        int status = Library.SDGetHbaDevicePortalPropertyiSCSI(handle, 0, portal);
        if (status == 0) {
            setState(portal, hba);
        }
        return status;
    }

    private static void setState(Portal portal, HBA hba) {
        hba.setState(Short.toUnsignedInt(portal.State));
        hba.setDhcpState(Short.toUnsignedInt(portal.dhcpState));
        hba.setLinkStatus(Short.toUnsignedInt(portal.linkStatus));
    }

    @Override
    int getiSCSIHBAData(int dev, HBA hba) {
        Portal portal = portals.get();
        int status = Library.SDGetHbaDevicePortalPropertyiSCSI(handle, 0, portal);
        if (status != 0) {
            return status;
        }
        hba.setNumberDiskTargets(Short.toUnsignedInt(portal.DiscTargetCount));
        hba.setMACAddress(shorts(portal.MacAddr));
        setState(portal, hba);
        hba.setType(Short.toUnsignedInt(portal.Type));
        hba.setDriverAttribute(portal.DriverAttr);
        hba.setFirmwareAttribute(portal.FWAttr);
        hba.setDriverVersion(text(portal.DriverVersion));
        hba.setFirmwareVersion(text(portal.FWVersion));
        hba.setManufacturer(text(portal.Manufacturer));
        hba.setModel(text(portal.Model));
        hba.setOptRomVersion(text(portal.OptRomVersion));
        hba.setSerialNumberStr(text(portal.SerialNum));
        IntByReference count = new IntByReference();
        status = Library.SDGetDDBEntryNum(handle, count);
        int found = 0;
        int index = 0;
        while (index < Records.SLOTS && found < count.getValue()) {
            Entry record = incoming.get();
            record.DeviceState = 0;
            record.NextValid = 0;
            status = Library.SDGetDDBEntry(handle, record, index);
            if (record.DeviceState != 0) {
                hba.addDeviceDataBaseEntry(entry(record, found));
                found++;
            }
            index = Records.following(record.NextValid, index);
        }
        Firmware block = firmware.get();
        if (Library.SDGetInitFW(handle, block) == 0) {
            setFirmware(block, hba);
        }
        return status;
    }

    private static DevDBEntry entry(Entry record, int index) {
        DevDBEntry entry = new DevDBEntry();
        entry.setInitiatorSessionID(shorts(record.InitiatorSessID));
        entry.setTargetID(record.TargetID);
        entry.setState(record.DeviceState);
        entry.setIndex(index);
        entry.setMaxTxDataSegmentLen(Short.toUnsignedInt(record.MaxTxDataSegmentLen));
        entry.setDDBLink(Short.toUnsignedInt(record.DDBLink));
        entry.setChapIndex(Short.toUnsignedInt(record.CHAPTableIndex));
        entry.setOptions(record.Options);
        entry.setControl(record.Control);
        entry.setExeCount(Short.toUnsignedInt(record.exeCount));
        entry.setReservedFlags(record.ReservedFlags);
        entry.setTargetSessionID(Short.toUnsignedInt(record.TargetSessID));
        entry.setTargetPortalGroupID(Short.toUnsignedInt(record.TargetPortalGroupID));
        NodeInfo nodeInfo = entry.getNodeInfo();
        nodeInfo.setiSCSIName(text(record.EntryInfo.iSCSIName));
        nodeInfo.setAlias(text(record.EntryInfo.Alias));
        nodeInfo.setIPAddress(address(record.EntryInfo.IPAddr));
        nodeInfo.setPortalCount(Short.toUnsignedInt(record.EntryInfo.PortalCount));
        setDevice(record.DeviceInfo, entry.getDeviceEntry());
        return entry;
    }

    private static void setFirmware(Firmware block, HBA hba) {
        hba.setIPAddress(address(block.IPAddr));
        hba.setGateway(address(block.Gateway));
        hba.setSubnetMask(address(block.SubnetMask));
        hba.setPrimaryDNS(address(block.PrimaryDNS.IPAddr));
        hba.setSlpDa(address(block.SLPDAAddr));
        InitFW initFW = hba.getInitFW();
        initFW.setFWOptions(block.FWOptions);
        initFW.setAddFWOptions(block.addFWOptions);
        initFW.setReserved1(block.Reserved1);
        initFW.setWakeupThreshold(block.wakeupThreshold);
        setDevice(block.DeviceInfo, initFW.getDevEntry());
    }

    private static void setDevice(Device record, DevEntry device) {
        device.setiSCSIOptions(record.iSCSIOptions);
        device.setTaskManagementTimeout(record.taskMngmntTimeout);
        device.setRetryCount((short) Byte.toUnsignedInt(record.retryCount));
        device.setRetryDelay((short) Byte.toUnsignedInt(record.retryDelay));
        device.setDeviceType(Short.toUnsignedInt(record.deviceType));
        device.setExecutionThrottle(Short.toUnsignedInt(record.exeThrottle));
        device.setFirstBurstSize(Short.toUnsignedInt(record.firstBurstSize));
        device.setMaxBurstSize(record.maxBurstSize);
        device.setIPOptions(Short.toUnsignedInt(record.IPOptions));
        device.setMaxRxDataSegmentLen(Short.toUnsignedInt(record.MaxRxDataSegmentLen));
        device.setDefaultTime2Wait(Short.toUnsignedInt(record.DefaultTime2Wait));
        device.setDefaultTime2Retain(Short.toUnsignedInt(record.DefaultTime2Retain));
        device.setKeepAliveTO(Short.toUnsignedInt(record.keepAliveTimeout));
        device.setMaxOutstandingR2T(Short.toUnsignedInt(record.maxOutstandingR2T));
        device.setTCPOptions(Short.toUnsignedInt(record.TCPOptions));
        device.setTargetAddress(text(record.targetAddr));
        device.setPortNumber(Short.toUnsignedInt(record.portNumber));
    }

    @Override
    int getiSCSIStatistics(int dev, PortStatistics statistics) {
        Counters record = counters.get();
        int status = Library.SDGetStatisticsiSCSI(handle, record);
        if (status != 0) {
            return status;
        }
        for (int i = 0; i < record.words.length; i++) {
            if (Records.COUNTERS.get(i) != null) {
                Records.COUNTERS.get(i).accept(statistics, Records.counter(record.words[i]));
            }
        }
        return 0;
    }

    @Override
    int getConnectErrorLog(int dev, HBA hba) {
        LogEntry[] entries = logs.get();
        IntByReference count = new IntByReference();
        int status = Library.SDGetLogs(handle, 1, count, entries[0]);
        if (status != 0) {
            return status;
        }
        int held = Math.min(count.getValue(), Records.LOG_CAPACITY);
        long[] log = new long[held * Records.LOG_STRIDE];
        int to = 0;
        for (int i = 0; i < held; i++) {
            LogEntry entry = entries[i];
            log[to++] = Integer.toUnsignedLong(entry.seconds);
            log[to++] = Integer.toUnsignedLong(entry.milliseconds);
            log[to++] = Short.toUnsignedInt(entry.deviceIndex);
            log[to++] = Short.toUnsignedInt(entry.connState);
            log[to++] = Byte.toUnsignedInt(entry.entryType);
            log[to++] = Byte.toUnsignedInt(entry.errorType);
            log[to++] = Short.toUnsignedInt(entry.errorDetail);
            log[to++] = Byte.toUnsignedInt(entry.dupErrorCnt);
            for (byte reserved : entry.reserved) {
                log[to++] = Byte.toUnsignedInt(reserved);
            }
        }
        hba.setConnectErrorLogEntries(log);
        return 0;
    }

    @Override
    int setDDBsData(int dev, DevDBEntry[] entries) {
        if (entries.length > Records.MOST_WRITTEN) {
            return 0;
        }
        for (DevDBEntry entry : entries) {
            Entry record = outgoing.get();
            put(entry, record);
            Library.SDSetDDBEntry(handle, record, record.TargetID);
        }
        return 0;
    }

    // The fields that are not set here stay zero: nothing is ever read into these records.
    private static void put(DevDBEntry entry, Entry record) {
        NodeInfo nodeInfo = entry.getNodeInfo();
        putText(nodeInfo.getiSCSIName(), record.EntryInfo.iSCSIName);
        putText(nodeInfo.getAlias(), record.EntryInfo.Alias);
        putBytes(nodeInfo.getIPAddress().getAddress(), record.EntryInfo.IPAddr.IPAddress);
        record.EntryInfo.PortalCount = (short) nodeInfo.getPortalCount();
        record.DeviceState = entry.getState();
        record.TargetID = entry.getTargetID();
        record.Options = entry.getOptions();
        record.exeCount = (short) entry.getExeCount();
        record.Control = entry.getControl();
        record.TargetSessID = (short) entry.getTargetSessionID();
        record.TargetPortalGroupID = (short) entry.getTargetPortalGroupID();
        record.ReservedFlags = entry.getReservedFlags();
        putBytes(entry.getInitiatorSessionID(), record.InitiatorSessID);
        record.MaxTxDataSegmentLen = (short) entry.getMaxTxDataSegmentLen();
        record.DDBLink = (short) entry.getDDBLink();
        record.CHAPTableIndex = (short) entry.getChapIndex();
        DevEntry device = entry.getDeviceEntry();
        record.DeviceInfo.iSCSIOptions = device.getiSCSIOptions();
        record.DeviceInfo.taskMngmntTimeout = device.getTaskManagementTimeout();
        record.DeviceInfo.maxBurstSize = device.getMaxBurstSize();
        record.DeviceInfo.retryCount = (byte) device.getRetryCount();
        record.DeviceInfo.retryDelay = (byte) device.getRetryDelay();
        record.DeviceInfo.deviceType = (short) device.getDeviceType();
        record.DeviceInfo.exeThrottle = (short) device.getExecutionThrottle();
        record.DeviceInfo.firstBurstSize = (short) device.getFirstBurstSize();
        record.DeviceInfo.IPOptions = (short) device.getIPOptions();
        record.DeviceInfo.MaxRxDataSegmentLen = (short) device.getMaxRxDataSegmentLen();
        record.DeviceInfo.DefaultTime2Wait = (short) device.getDefaultTime2Wait();
        record.DeviceInfo.DefaultTime2Retain = (short) device.getDefaultTime2Retain();
        record.DeviceInfo.keepAliveTimeout = (short) device.getKeepAliveTO();
        record.DeviceInfo.maxOutstandingR2T = (short) device.getMaxOutstandingR2T();
        record.DeviceInfo.TCPOptions = (short) device.getTCPOptions();
        putText(device.getTargetAddress(), record.DeviceInfo.targetAddr);
        record.DeviceInfo.portNumber = (short) device.getPortNumber();
    }

    private static short[] shorts(byte[] bytes) {
        short[] shorts = new short[bytes.length];
        for (int i = 0; i < bytes.length; i++) {
            shorts[i] = (short) Byte.toUnsignedInt(bytes[i]);
        }
        return shorts;
    }

    private static void putBytes(short[] shorts, byte[] bytes) {
        for (int i = 0; i < bytes.length; i++) {
            bytes[i] = (byte) shorts[i];
        }
    }

    private static IPAddr address(Address record) {
        IPAddr address = new IPAddr();
        address.setAddress(shorts(record.IPAddress));
        return address;
    }

    private static String text(byte[] field) {
        int length = 0;
        while (length < field.length && field[length] != 0) {
            length++;
        }
        return new String(field, 0, length, StandardCharsets.UTF_8);
    }

    private static void putText(String text, byte[] field) {
        byte[] bytes = text.getBytes(StandardCharsets.UTF_8);
        int length = Math.min(bytes.length, field.length);
        System.arraycopy(bytes, 0, field, 0, length);
        java.util.Arrays.fill(field, length, field.length, (byte) 0);
    }
}
