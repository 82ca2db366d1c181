package com.varden.tavo.iscsi.model;

/**
 * The adapter's settings for discovery by iSNS.
 */
public final class iSNSDiscoveryConfig {
    private boolean enableiSNSDiscoveryFlag;
    private boolean automaticDiscoveryFlag;
    private IPAddr serverIPAddress = new IPAddr();
    private int serverIPAddressType;
    private String serverHostname;
    private String hbaIscsiName;

    /** Whether iSNS discovery is performed. */
    public boolean getEnableiSNSDiscoveryFlag() {
        return enableiSNSDiscoveryFlag;
    }

    /** Takes 0 for no, anything else for yes. */
    public void setEnableiSNSDiscoveryFlag(int flag) {
        enableiSNSDiscoveryFlag = flag != 0;
    }

    /** Whether discovery runs by itself. */
    public boolean getAutomaticDiscoveryFlag() {
        return automaticDiscoveryFlag;
    }

    /** Takes 0 for no, anything else for yes. */
    public void setAutomaticDiscoveryFlag(int flag) {
        automaticDiscoveryFlag = flag != 0;
    }

    /** Address of the iSNS server; never null. */
    public IPAddr getServerIPAddress() {
        return serverIPAddress;
    }

    public void setServerIPAddress(IPAddr address) {
        serverIPAddress = IPAddr.copy(address, "address");
    }

    /** Takes the 16 bytes of the address, one (0 to 255) per element, and its type. */
    public void setServerIPAddress(short[] address, int type) {
        serverIPAddress = IPAddr.ofBytes(address);
        serverIPAddressType = type;
    }

    /** Type of the address as the adapter reported it, 16 bits. Not written back. */
    public int getServerIPAddressType() {
        return serverIPAddressType;
    }

    /** Host name of the server. The adapter holds none: a read gives one blank. Not written back. */
    public String getServerHostname() {
        return serverHostname;
    }

    public void setServerHostname(String serverHostname) {
        this.serverHostname = serverHostname;
    }

    /**
     * iSCSI name under which the adapter registers, at most 256 bytes of UTF-8; goes to the adapter on every write
     * and is never read back. null writes an empty name.
     */
    public String getHBAiSCSIName() {
        return hbaIscsiName;
    }

    public void setHBAiSCSIName(String hbaIscsiName) {
        this.hbaIscsiName = hbaIscsiName;
    }
}
