import com.varden.tavo.iscsi.model.*;

/** Every method that the bridge calls on objects whose class it never names. */
interface Everything {
    void setiSCSIName(String v); void setAlias(String v); void setPortalCount(int v); void setIPAddress(IPAddr v);
    void setGateway(IPAddr v); void setSubnetMask(IPAddr v); void setPrimaryDNS(IPAddr v); void setSlpDa(IPAddr v);
    void setFirmwareAttribute(int v); void setiSCSIVersion(String v); void setOptRomVersion(String v);
    void setFirmwareVersion(String v); void setModel(String v); void setDriverVersion(String v);
    void setDriverAttribute(int v); void setBoardType(String v); void setChipVersion(int v); void setState(int v);
    void setDhcpState(int v); void setLinkStatus(int v); void setNumberDiskTargets(int v);
    void setMACAddress(short[] v); void setType(int v); void setManufacturer(String v);
    void setSerialNumberStr(String v); void addDeviceDataBaseEntry(DevDBEntry v);
    void setConnectErrorLogEntries(long[] v); void setARPLogEntries(long[] v);
    void addCHAPTableEntry(CHAPTableEntry v); void cleariSNSTargetList(); void addiSNSTarget(iSNSTarget v);
    IPAddr getIPAddress(); IPAddr getGateway(); IPAddr getSubnetMask(); IPAddr getPrimaryDNS(); IPAddr getSlpDa();
    NodeInfo getNodeInfo(); InitFW getInitFW(); int getNumberDiskTargets(); DevDBEntry getDeviceDataBaseEntry(int i);
    // an entry of the device database, as it is written
    int getState(); int getTargetID(); byte getOptions(); int getExeCount(); byte getControl();
    int getTargetSessionID(); int getTargetPortalGroupID(); int getReservedFlags(); short[] getInitiatorSessionID();
    int getMaxTxDataSegmentLen(); int getDDBLink(); int getChapIndex(); DevEntry getDeviceEntry();
    // target, unit
    int getInstance(); void setNodeCount(int v); void setHostName(String v); void setTCPPortNumber(int v);
    TargetInfo getTargetInfo(); void setSessionID(int v); void setConnectionID(int v); void setPortalGroup(int v);
    void addLUN(int v); SCSIInqInfo getSCSIInqInfo(); void setLogicalBlockAddress(int v);
    void setBytesPerBlock(int v); int getBus(); int getLUN(); void setExtraData(String v);
    void setInquiryHeader(String v); void setProductID(String v); void setRevision(String v);
    void setSerialNumber(String v); void setVendorID(String v);
    // firmware block
    void setFWOptions(short v); void setAddFWOptions(short v); void setReserved1(byte v);
    void setWakeupThreshold(short v); DevEntry getDevEntry();
    // iSNS settings
    void setEnableiSNSDiscoveryFlag(int v); void setAutomaticDiscoveryFlag(int v);
    void setServerIPAddress(short[] v, int t); void setServerHostname(String v); boolean getEnableiSNSDiscoveryFlag();
    boolean getAutomaticDiscoveryFlag(); IPAddr getServerIPAddress(); String getHBAiSCSIName();
    // counters
    void setMACTxFramesCount(byte[] v); void setMACTxBytesCount(byte[] v); void setMACRxFramesCount(byte[] v);
    void setMACRxBytesCount(byte[] v); void setMACCRCErrorCount(byte[] v); void setIPTxPacketsCount(byte[] v);
    void setIPTxBytesCount(byte[] v); void setIPTxFragmentsCount(byte[] v); void setIPRxPacketsCount(byte[] v);
    void setIPRxBytesCount(byte[] v); void setIPRxFragmentsCount(byte[] v);
    void setIPDatagramReassemblyCount(byte[] v); void setIPv6RxPacketsCount(byte[] v);
    void setIPRxPacketErrorCount(byte[] v); void setIPReassemblyErrorCount(byte[] v);
    void setTCPTxSegmentsCount(byte[] v); void setTCPTxBytesCount(byte[] v); void setTCPRxSegmentsCount(byte[] v);
    void setTCPRxBytesCount(byte[] v); void setTCPTimerExpiredCount(byte[] v); void setTCPRxACKCount(byte[] v);
    void setTCPTxACKCount(byte[] v); void setTCPRxErrorSegmentCount(byte[] v);
    void setTCPWindowProbeUpdateCount(byte[] v); void setiSCSITxPDUCount(byte[] v);
    void setiSCSITxBytesCount(byte[] v); void setiSCSIRxPDUCount(byte[] v); void setiSCSIRxBytesCount(byte[] v);
    void setiSCSICompleteIOsCount(byte[] v); void setiSCSIFormatErrorCount(byte[] v);
    void setiSCSIHeaderDigestCount(byte[] v); void setiSCSIDataDigestErrorCount(byte[] v);
    void setiSCSISeqErrorCount(byte[] v);
}
