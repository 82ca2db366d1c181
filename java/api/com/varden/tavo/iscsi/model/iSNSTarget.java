package com.varden.tavo.iscsi.model;

/**
 * One target that iSNS discovery found.
 */
public final class iSNSTarget {
    private int port;
    private String iscsiName;
    private String iscsiAlias;
    private IPAddr ipAddress = new IPAddr();
    private int ipAddressType;

    /** TCP port of the first portal, 0 to 65535. */
    public int getPort() {
        return port;
    }

    public void setPort(int port) {
        this.port = port;
    }

    /** iSCSI name. */
    public String getiSCSIName() {
        return iscsiName;
    }

    public void setiSCSIName(String iscsiName) {
        this.iscsiName = iscsiName;
    }

    /** Alias; may be empty. */
    public String getiSCSIAlias() {
        return iscsiAlias;
    }

    public void setiSCSIAlias(String iscsiAlias) {
        this.iscsiAlias = iscsiAlias;
    }

    /** Address of the first portal; never null. */
    public IPAddr getIPAddress() {
        return ipAddress;
    }

    /** Type of the address, 16 bits; its values are the adapter's. */
    public int getIPAddressType() {
        return ipAddressType;
    }

    /** Takes the 16 bytes of an address, one (0 to 255) per element, and its type. */
    public void setIPAddress(short[] address, int type) {
        ipAddress = IPAddr.ofBytes(address);
        ipAddressType = type;
    }
}
