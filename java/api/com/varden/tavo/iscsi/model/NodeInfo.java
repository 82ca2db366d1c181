package com.varden.tavo.iscsi.model;

/**
 * The identity of an iSCSI node: the adapter itself, or a target.
 *
 * Text is null until somebody supplies it. Written to the adapter's firmware settings, a null text keeps what the
 * adapter has; written to the device database, it becomes empty. Longer text is cut at the limit when it is written.
 */
public final class NodeInfo {
    private String iscsiName;
    private String alias;
    private IPAddr ipAddress = new IPAddr();
    private int portalCount;

    /** iSCSI name, at most 256 bytes of UTF-8; null when not supplied. */
    public String getiSCSIName() {
        return iscsiName;
    }

    public void setiSCSIName(String iscsiName) {
        this.iscsiName = iscsiName;
    }

    /** Alias, at most 32 bytes of UTF-8; null when not supplied. */
    public String getAlias() {
        return alias;
    }

    public void setAlias(String alias) {
        this.alias = alias;
    }

    /** Address of the node; never null. */
    public IPAddr getIPAddress() {
        return ipAddress;
    }

    public void setIPAddress(IPAddr ipAddress) {
        this.ipAddress = IPAddr.copy(ipAddress, "ipAddress");
    }

    /** Number of portals, 0 to 65535. */
    public int getPortalCount() {
        return portalCount;
    }

    public void setPortalCount(int portalCount) {
        this.portalCount = portalCount;
    }
}
