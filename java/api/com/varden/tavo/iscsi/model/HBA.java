package com.varden.tavo.iscsi.model;

import java.util.ArrayList;
import java.util.Collections;
import java.util.List;

/**
 * One adapter: what it says of itself, its addresses and firmware settings, and the tables that were read from it.
 *
 * Which properties a native method fills or reads is said there. Text is null until it was read. Objects that a
 * property holds are never null.
 */
public final class HBA {
    /** Bytes of a MAC address. */
    public static final int MAC_ADDRESS_LENGTH = 6;

    private final NodeInfo nodeInfo = new NodeInfo();
    private final InitFW initFW = new InitFW();
    private IPAddr gateway = new IPAddr();
    private IPAddr subnetMask = new IPAddr();
    private IPAddr primaryDNS = new IPAddr();
    private IPAddr secondaryDNS = new IPAddr();
    private IPAddr slpDa = new IPAddr();
    private int reportedDiskTargets;
    private short[] macAddress = new short[MAC_ADDRESS_LENGTH];
    private int state;
    private int dhcpState;
    private int linkStatus;
    private int type;
    private int driverAttribute;
    private int firmwareAttribute;
    private String driverVersion;
    private String firmwareVersion;
    private String manufacturer;
    private String model;
    private String optRomVersion;
    private String serialNumberStr;
    private String iscsiVersion;
    private String boardType;
    private int chipVersion;
    private final List<DevDBEntry> deviceDataBaseEntries = new ArrayList<>();
    private long[] connectErrorLogEntries = new long[0];
    private long[] arpLogEntries = new long[0];
    private final List<CHAPTableEntry> chapTableEntries = new ArrayList<>();
    private final List<iSNSTarget> isnsTargets = new ArrayList<>();

    /** The adapter's identity: its name, alias, address and number of portals; never null. */
    public NodeInfo getNodeInfo() {
        return nodeInfo;
    }

    /** iSCSI name of {@link #getNodeInfo}. */
    public String getiSCSIName() {
        return nodeInfo.getiSCSIName();
    }

    public void setiSCSIName(String iscsiName) {
        nodeInfo.setiSCSIName(iscsiName);
    }

    /** Alias of {@link #getNodeInfo}. */
    public String getAlias() {
        return nodeInfo.getAlias();
    }

    public void setAlias(String alias) {
        nodeInfo.setAlias(alias);
    }

    /** Number of portals of {@link #getNodeInfo}, 0 to 65535. */
    public int getPortalCount() {
        return nodeInfo.getPortalCount();
    }

    public void setPortalCount(int portalCount) {
        nodeInfo.setPortalCount(portalCount);
    }

    /** Address of {@link #getNodeInfo}; never null. */
    public IPAddr getIPAddress() {
        return nodeInfo.getIPAddress();
    }

    public void setIPAddress(IPAddr ipAddress) {
        nodeInfo.setIPAddress(ipAddress);
    }

    /** Address of the gateway; never null. */
    public IPAddr getGateway() {
        return gateway;
    }

    public void setGateway(IPAddr gateway) {
        this.gateway = IPAddr.copy(gateway, "gateway");
    }

    /** Subnet mask; never null. */
    public IPAddr getSubnetMask() {
        return subnetMask;
    }

    public void setSubnetMask(IPAddr subnetMask) {
        this.subnetMask = IPAddr.copy(subnetMask, "subnetMask");
    }

    /** Address of the primary DNS server; never null. */
    public IPAddr getPrimaryDNS() {
        return primaryDNS;
    }

    public void setPrimaryDNS(IPAddr primaryDNS) {
        this.primaryDNS = IPAddr.copy(primaryDNS, "primaryDNS");
    }

    /** Address of the secondary DNS server; never null. Neither read from the adapter nor written to it. */
    public IPAddr getSecondaryDNS() {
        return secondaryDNS;
    }

    public void setSecondaryDNS(IPAddr secondaryDNS) {
        this.secondaryDNS = IPAddr.copy(secondaryDNS, "secondaryDNS");
    }

    /** Address of the SLP directory agent; never null. */
    public IPAddr getSlpDa() {
        return slpDa;
    }

    public void setSlpDa(IPAddr slpDa) {
        this.slpDa = IPAddr.copy(slpDa, "slpDa");
    }

    /** Option words of the firmware and default session parameters; never null. */
    public InitFW getInitFW() {
        return initFW;
    }

    /**
     * Number of targets held here, that is of device database entries. The query for a discovered target asks for it;
     * with none held it takes the instance number as the target itself.
     */
    public int getNumberDiskTargets() {
        return deviceDataBaseEntries.size();
    }

    /** Takes the number of discovered targets that the adapter reports (see {@link #getReportedDiskTargets}). */
    public void setNumberDiskTargets(int count) {
        reportedDiskTargets = count;
    }

    /** Number of discovered targets that the adapter reports, 0 to 65535. */
    public int getReportedDiskTargets() {
        return reportedDiskTargets;
    }

    /** MAC address: six bytes, one (0 to 255) per element. */
    public short[] getMACAddress() {
        return macAddress.clone();
    }

    public void setMACAddress(short[] macAddress) {
        this.macAddress = Elements.copy(macAddress, MAC_ADDRESS_LENGTH, "macAddress");
    }

    /** Adapter state, 16 bits. */
    public int getState() {
        return state;
    }

    public void setState(int state) {
        this.state = state;
    }

    /** DHCP state, 16 bits. */
    public int getDhcpState() {
        return dhcpState;
    }

    public void setDhcpState(int dhcpState) {
        this.dhcpState = dhcpState;
    }

    /** Link status, 16 bits. */
    public int getLinkStatus() {
        return linkStatus;
    }

    public void setLinkStatus(int linkStatus) {
        this.linkStatus = linkStatus;
    }

    /** Adapter type, 16 bits. */
    public int getType() {
        return type;
    }

    public void setType(int type) {
        this.type = type;
    }

    /** Driver attribute bits, 32 bits: 0x80000000 and above arrive negative. */
    public int getDriverAttribute() {
        return driverAttribute;
    }

    public void setDriverAttribute(int driverAttribute) {
        this.driverAttribute = driverAttribute;
    }

    /** Driver attribute bits as a number from 0 to 4294967295. */
    public long getDriverAttributeUnsigned() {
        return Integer.toUnsignedLong(driverAttribute);
    }

    /** Firmware attribute bits, 32 bits: 0x80000000 and above arrive negative. */
    public int getFirmwareAttribute() {
        return firmwareAttribute;
    }

    public void setFirmwareAttribute(int firmwareAttribute) {
        this.firmwareAttribute = firmwareAttribute;
    }

    /** Firmware attribute bits as a number from 0 to 4294967295. */
    public long getFirmwareAttributeUnsigned() {
        return Integer.toUnsignedLong(firmwareAttribute);
    }

    /** Version of the driver; null until it was read. */
    public String getDriverVersion() {
        return driverVersion;
    }

    public void setDriverVersion(String driverVersion) {
        this.driverVersion = driverVersion;
    }

    /** Version of the firmware; null until it was read. */
    public String getFirmwareVersion() {
        return firmwareVersion;
    }

    public void setFirmwareVersion(String firmwareVersion) {
        this.firmwareVersion = firmwareVersion;
    }

    /** Manufacturer; null until it was read. */
    public String getManufacturer() {
        return manufacturer;
    }

    public void setManufacturer(String manufacturer) {
        this.manufacturer = manufacturer;
    }

    /** Model; null until it was read. */
    public String getModel() {
        return model;
    }

    public void setModel(String model) {
        this.model = model;
    }

    /** Version of the option ROM; null until it was read. */
    public String getOptRomVersion() {
        return optRomVersion;
    }

    public void setOptRomVersion(String optRomVersion) {
        this.optRomVersion = optRomVersion;
    }

    /** Serial number, at most 16 characters; null until it was read. */
    public String getSerialNumberStr() {
        return serialNumberStr;
    }

    public void setSerialNumberStr(String serialNumberStr) {
        this.serialNumberStr = serialNumberStr;
    }

    /** Version of iSCSI, at most 4 characters; null until it was read. */
    public String getiSCSIVersion() {
        return iscsiVersion;
    }

    public void setiSCSIVersion(String iscsiVersion) {
        this.iscsiVersion = iscsiVersion;
    }

    /** Board type; null until it was read. */
    public String getBoardType() {
        return boardType;
    }

    public void setBoardType(String boardType) {
        this.boardType = boardType;
    }

    /** Chip version, 16 bits. */
    public int getChipVersion() {
        return chipVersion;
    }

    public void setChipVersion(int chipVersion) {
        this.chipVersion = chipVersion;
    }

    /** Adds an entry of the device database. Reading a snapshot adds and never removes. */
    public void addDeviceDataBaseEntry(DevDBEntry entry) {
        deviceDataBaseEntries.add(entry);
    }

    /** The entry with this instance number, that is its position in the list; null when there is none. */
    public DevDBEntry getDeviceDataBaseEntry(int instance) {
        return instance >= 0 && instance < deviceDataBaseEntries.size() ? deviceDataBaseEntries.get(instance) : null;
    }

    /** The device database entries that were added, in order. */
    public List<DevDBEntry> getDeviceDataBaseEntries() {
        return Collections.unmodifiableList(deviceDataBaseEntries);
    }

    /** Empties the list of device database entries; call it before a new snapshot into the same object. */
    public void clearDeviceDataBaseEntries() {
        deviceDataBaseEntries.clear();
    }

    /** Takes the log of connection errors as a flat array, {@link ConnectionError#STRIDE} values for each entry. */
    public void setConnectErrorLogEntries(long[] log) {
        connectErrorLogEntries = log.clone();
    }

    public long[] getConnectErrorLogEntries() {
        return connectErrorLogEntries.clone();
    }

    /** The log of connection errors entry by entry. */
    public List<ConnectionError> getConnectErrorLog() {
        return ConnectionError.list(connectErrorLogEntries);
    }

    /** Takes the ARP table as a flat array, {@link ArpEntry#STRIDE} values for each entry. */
    public void setARPLogEntries(long[] log) {
        arpLogEntries = log.clone();
    }

    public long[] getARPLogEntries() {
        return arpLogEntries.clone();
    }

    /** The ARP table entry by entry. */
    public List<ArpEntry> getARPLog() {
        return ArpEntry.list(arpLogEntries);
    }

    /** Adds an entry of the CHAP table. Reading the table adds and never removes. */
    public void addCHAPTableEntry(CHAPTableEntry entry) {
        chapTableEntries.add(entry);
    }

    /** The CHAP entries that were added, in order. */
    public List<CHAPTableEntry> getCHAPTableEntries() {
        return Collections.unmodifiableList(chapTableEntries);
    }

    /** Empties the list of CHAP entries; call it before the table is read again into the same object. */
    public void clearCHAPTableEntries() {
        chapTableEntries.clear();
    }

    /** Adds a target that iSNS discovery found. */
    public void addiSNSTarget(iSNSTarget target) {
        isnsTargets.add(target);
    }

    /** The targets that iSNS discovery found, in order. */
    public List<iSNSTarget> getiSNSTargets() {
        return Collections.unmodifiableList(isnsTargets);
    }

    /** Empties the list of iSNS targets; reading the list does it by itself. */
    public void cleariSNSTargetList() {
        isnsTargets.clear();
    }
}
