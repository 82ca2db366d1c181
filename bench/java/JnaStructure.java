package com.varden.tavo.iscsi.bench;

import com.sun.jna.Native;
import com.sun.jna.Structure;
import com.sun.jna.Structure.FieldOrder;
import com.sun.jna.ptr.IntByReference;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.DevEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.IPAddr;
import com.varden.tavo.iscsi.model.NodeInfo;
import java.nio.file.Path;
import java.util.function.ToIntFunction;

/** The device database by way of JNA: direct mapping, and a new Structure for each record, as its manual teaches. */
final class JnaStructure implements ToIntFunction<HBA> {
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

    /** Identity of a node, with its address. */
    @FieldOrder({"IPAddress", "Type", "AddressReserved", "iSCSIName", "Alias", "PortalCount", "Reserved"})
    public static class Node extends Structure {
        public byte[] IPAddress = new byte[16];
        public short Type;
        public short AddressReserved;
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

    static {
        Native.register(JnaStructure.class, Path.of("libvdsdm.so").toAbsolutePath().toString());
    }

    static native int SDOpenDeviceiSCSI(int adapterIndex, IntByReference handle);

    static native int SDGetDDBEntryNum(int handle, IntByReference count);

    static native int SDGetDDBEntry(int handle, Entry entry, int index);

    private final IntByReference handle = new IntByReference();

    JnaStructure() {
        SDOpenDeviceiSCSI(Peer.DEV, handle);
    }

    @Override
    public int applyAsInt(HBA hba) {
        IntByReference count = new IntByReference();
        int status = SDGetDDBEntryNum(handle.getValue(), count);
        for (int index = 0; index < count.getValue(); index++) {
            Entry record = new Entry();
            status |= SDGetDDBEntry(handle.getValue(), record, index);
            hba.addDeviceDataBaseEntry(entry(record, index));
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
        nodeInfo.setiSCSIName(Native.toString(record.EntryInfo.iSCSIName, "UTF-8"));
        nodeInfo.setAlias(Native.toString(record.EntryInfo.Alias, "UTF-8"));
        IPAddr address = new IPAddr();
        address.setAddress(shorts(record.EntryInfo.IPAddress));
        nodeInfo.setIPAddress(address);
        nodeInfo.setPortalCount(Short.toUnsignedInt(record.EntryInfo.PortalCount));
        setDevice(record.DeviceInfo, entry.getDeviceEntry());
        return entry;
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
        device.setTargetAddress(Native.toString(record.targetAddr, "UTF-8"));
        device.setPortNumber(Short.toUnsignedInt(record.portNumber));
    }

    private static short[] shorts(byte[] bytes) {
        short[] shorts = new short[bytes.length];
        for (int i = 0; i < bytes.length; i++) {
            shorts[i] = (short) Byte.toUnsignedInt(bytes[i]);
        }
        return shorts;
    }
}
