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
import java.nio.file.Path;
import java.util.function.ToIntFunction;

/** The snapshot by way of JNA: direct mapping, and a new Structure for each record, as its manual teaches. */
final class JnaStructure implements ToIntFunction<HBA> {
    private static final int SLOTS = 512;

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

    /** The management library's operations. */
    private static final class Library {
        static {
            Native.register(Library.class, Path.of("libvdsdm.so").toAbsolutePath().toString());
        }

        static native int SDOpenDeviceiSCSI(int adapterIndex, IntByReference handle);

        static native int SDGetHbaDevicePortalPropertyiSCSI(int handle, int port, Portal portal);

        static native int SDGetDDBEntryNum(int handle, IntByReference count);

        static native int SDGetDDBEntry(int handle, Entry entry, int index);

        static native int SDGetInitFW(int handle, Firmware block);
    }

    private final int handle;

    JnaStructure() {
        IntByReference opened = new IntByReference();
        Library.SDOpenDeviceiSCSI(Peer.DEV, opened);
        handle = opened.getValue();
    }

    @Override
    public int applyAsInt(HBA hba) {
        Portal portal = new Portal();
        int status = Library.SDGetHbaDevicePortalPropertyiSCSI(handle, 0, portal);
        setPortal(portal, hba);
        IntByReference count = new IntByReference();
        status |= Library.SDGetDDBEntryNum(handle, count);
        int found = 0;
        for (int index = 0; index < SLOTS && found < count.getValue();) {
            Entry record = new Entry();
            status |= Library.SDGetDDBEntry(handle, record, index);
            if (record.DeviceState != 0) {
                hba.addDeviceDataBaseEntry(entry(record, found));
                found++;
            }
            index = record.NextValid > index && record.NextValid < SLOTS ? record.NextValid : index + 1;
        }
        Firmware block = new Firmware();
        status |= Library.SDGetInitFW(handle, block);
        setFirmware(block, hba);
        return status;
    }

    private static void setPortal(Portal portal, HBA hba) {
        hba.setNumberDiskTargets(Short.toUnsignedInt(portal.DiscTargetCount));
        hba.setMACAddress(shorts(portal.MacAddr));
        hba.setState(Short.toUnsignedInt(portal.State));
        hba.setDhcpState(Short.toUnsignedInt(portal.dhcpState));
        hba.setLinkStatus(Short.toUnsignedInt(portal.linkStatus));
        hba.setType(Short.toUnsignedInt(portal.Type));
        hba.setDriverAttribute(portal.DriverAttr);
        hba.setFirmwareAttribute(portal.FWAttr);
        hba.setDriverVersion(text(portal.DriverVersion));
        hba.setFirmwareVersion(text(portal.FWVersion));
        hba.setManufacturer(text(portal.Manufacturer));
        hba.setModel(text(portal.Model));
        hba.setOptRomVersion(text(portal.OptRomVersion));
        hba.setSerialNumberStr(text(portal.SerialNum));
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

    private static short[] shorts(byte[] bytes) {
        short[] shorts = new short[bytes.length];
        for (int i = 0; i < bytes.length; i++) {
            shorts[i] = (short) Byte.toUnsignedInt(bytes[i]);
        }
        return shorts;
    }

    private static IPAddr address(Address record) {
        IPAddr address = new IPAddr();
        address.setAddress(shorts(record.IPAddress));
        return address;
    }

    private static String text(byte[] field) {
        return Native.toString(field, "UTF-8");
    }
}
