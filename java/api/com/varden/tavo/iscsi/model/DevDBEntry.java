package com.varden.tavo.iscsi.model;

/**
 * One entry of the adapter's device database, that is one configured target.
 *
 * Which entry a write changes is decided by the target ID. Numbers are unsigned; a value wider than the adapter's
 * field is cut when it is written.
 */
public final class DevDBEntry {
    /** Bytes of an initiator session identifier. */
    public static final int SESSION_ID_LENGTH = 6;

    private int index;
    private final NodeInfo nodeInfo = new NodeInfo();
    private final DevEntry deviceEntry = new DevEntry();
    private byte options;
    private byte control;
    private int exeCount;
    private int targetSessionID;
    private short[] initiatorSessionID = new short[SESSION_ID_LENGTH];
    private int targetID;
    private int state;
    private int reservedFlags;
    private int ddbLink;
    private int chapIndex;
    private int maxTxDataSegmentLen;
    private int targetPortalGroupID;

    /** Position of the entry among those that one snapshot read, or the index that was asked for. Not written back. */
    public int getIndex() {
        return index;
    }

    public void setIndex(int index) {
        this.index = index;
    }

    /** Identity of the target; never null. */
    public NodeInfo getNodeInfo() {
        return nodeInfo;
    }

    /** Session parameters of the target; never null. */
    public DevEntry getDeviceEntry() {
        return deviceEntry;
    }

    /** Option bits of the entry: 8 bits in a byte, 0x80 and above arrive negative. */
    public byte getOptions() {
        return options;
    }

    public void setOptions(byte options) {
        this.options = options;
    }

    /** Option bits as a number from 0 to 255. */
    public int getOptionsUnsigned() {
        return Byte.toUnsignedInt(options);
    }

    /** Control bits of the entry: 8 bits in a byte, 0x80 and above arrive negative. */
    public byte getControl() {
        return control;
    }

    public void setControl(byte control) {
        this.control = control;
    }

    /** Control bits as a number from 0 to 255. */
    public int getControlUnsigned() {
        return Byte.toUnsignedInt(control);
    }

    /** Execution count, 16 bits. */
    public int getExeCount() {
        return exeCount;
    }

    public void setExeCount(int exeCount) {
        this.exeCount = exeCount;
    }

    /** Target session identifying handle, 16 bits. */
    public int getTargetSessionID() {
        return targetSessionID;
    }

    public void setTargetSessionID(int targetSessionID) {
        this.targetSessionID = targetSessionID;
    }

    /** Initiator session identifier: six bytes, one (0 to 255) per element. */
    public short[] getInitiatorSessionID() {
        return initiatorSessionID.clone();
    }

    public void setInitiatorSessionID(short[] initiatorSessionID) {
        this.initiatorSessionID = Elements.copy(initiatorSessionID, SESSION_ID_LENGTH, "initiatorSessionID");
    }

    /** The target's ID, 32 bits; also the slot of the device database, 0 to 511, that a write goes to. */
    public int getTargetID() {
        return targetID;
    }

    public void setTargetID(int targetID) {
        this.targetID = targetID;
    }

    /** The target's ID as a number from 0 to 4294967295. */
    public long getTargetIDUnsigned() {
        return Integer.toUnsignedLong(targetID);
    }

    /** State of the entry, 32 bits; 0 means that the slot is not in use. */
    public int getState() {
        return state;
    }

    public void setState(int state) {
        this.state = state;
    }

    /** State as a number from 0 to 4294967295. */
    public long getStateUnsigned() {
        return Integer.toUnsignedLong(state);
    }

    /** Reserved flag bits, 32 bits: 0x80000000 and above arrive negative. */
    public int getReservedFlags() {
        return reservedFlags;
    }

    public void setReservedFlags(int reservedFlags) {
        this.reservedFlags = reservedFlags;
    }

    /** Reserved flag bits as a number from 0 to 4294967295. */
    public long getReservedFlagsUnsigned() {
        return Integer.toUnsignedLong(reservedFlags);
    }

    /** Link to another entry, 16 bits. */
    public int getDDBLink() {
        return ddbLink;
    }

    public void setDDBLink(int ddbLink) {
        this.ddbLink = ddbLink;
    }

    /** Index into the CHAP table, 16 bits. */
    public int getChapIndex() {
        return chapIndex;
    }

    public void setChapIndex(int chapIndex) {
        this.chapIndex = chapIndex;
    }

    /** Longest data segment that is sent, 16 bits, in units of the adapter. */
    public int getMaxTxDataSegmentLen() {
        return maxTxDataSegmentLen;
    }

    public void setMaxTxDataSegmentLen(int maxTxDataSegmentLen) {
        this.maxTxDataSegmentLen = maxTxDataSegmentLen;
    }

    /** Target portal group, 16 bits. */
    public int getTargetPortalGroupID() {
        return targetPortalGroupID;
    }

    public void setTargetPortalGroupID(int targetPortalGroupID) {
        this.targetPortalGroupID = targetPortalGroupID;
    }
}
