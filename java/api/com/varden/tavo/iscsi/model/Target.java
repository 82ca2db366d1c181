package com.varden.tavo.iscsi.model;

import java.util.ArrayList;
import java.util.Collections;
import java.util.List;

/**
 * A target that the adapter discovered: where it was found, how it is connected, which logical units it has.
 *
 * Before a query the caller sets the instance number, that is the target's position in the adapter's device database
 * list ({@link HBA#getDeviceDataBaseEntry}), and the target ID in {@link #getTargetInfo}.
 */
public final class Target {
    private int instance;
    private int nodeCount;
    private String hostName;
    private int tcpPortNumber;
    private IPAddr ipAddress = new IPAddr();
    private final TargetInfo targetInfo = new TargetInfo();
    private int sessionID;
    private int connectionID;
    private int portalGroup;
    private final NodeInfo nodeInfo = new NodeInfo();
    private final List<Integer> luns = new ArrayList<>();

    /** Instance number of the target, set by the caller. */
    public int getInstance() {
        return instance;
    }

    public void setInstance(int instance) {
        this.instance = instance;
    }

    /** Number of nodes behind the portal, 0 to 65535. */
    public int getNodeCount() {
        return nodeCount;
    }

    public void setNodeCount(int nodeCount) {
        this.nodeCount = nodeCount;
    }

    /** Host name of the portal, at most 128 bytes; null when not known. */
    public String getHostName() {
        return hostName;
    }

    public void setHostName(String hostName) {
        this.hostName = hostName;
    }

    /** TCP port of the portal, 0 to 65535. */
    public int getTCPPortNumber() {
        return tcpPortNumber;
    }

    public void setTCPPortNumber(int tcpPortNumber) {
        this.tcpPortNumber = tcpPortNumber;
    }

    /** Address of the portal; never null. */
    public IPAddr getIPAddress() {
        return ipAddress;
    }

    public void setIPAddress(IPAddr ipAddress) {
        this.ipAddress = IPAddr.copy(ipAddress, "ipAddress");
    }

    /** Bus, target ID and LUN by which the host addresses the target; never null. */
    public TargetInfo getTargetInfo() {
        return targetInfo;
    }

    /** Session identifier, 0 to 65535. */
    public int getSessionID() {
        return sessionID;
    }

    public void setSessionID(int sessionID) {
        this.sessionID = sessionID;
    }

    /** Connection identifier, 0 to 65535. */
    public int getConnectionID() {
        return connectionID;
    }

    public void setConnectionID(int connectionID) {
        this.connectionID = connectionID;
    }

    /** Portal group, 0 to 65535. */
    public int getPortalGroup() {
        return portalGroup;
    }

    public void setPortalGroup(int portalGroup) {
        this.portalGroup = portalGroup;
    }

    /** Identity of the target; never null. */
    public NodeInfo getNodeInfo() {
        return nodeInfo;
    }

    /** Adds a logical unit by the first level of its number, 16 bits with the address method (see {@link Lun}). */
    public void addLUN(int lun) {
        luns.add(lun);
    }

    /** The logical units that were added, in order. */
    public List<Integer> getLUNs() {
        return Collections.unmodifiableList(luns);
    }

    public void clearLUNs() {
        luns.clear();
    }
}
