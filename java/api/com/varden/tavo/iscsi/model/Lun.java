package com.varden.tavo.iscsi.model;

/** One logical unit of a target. Before a query the caller fills {@link #getTargetInfo}. */
public final class Lun {
    private static final int METHOD_SHIFT = 14;
    private static final int METHOD_FLAT = 1;

    private final TargetInfo targetInfo = new TargetInfo();
    private final SCSIInqInfo scsiInqInfo = new SCSIInqInfo();
    private int logicalBlockAddress;
    private int bytesPerBlock;

    /**
     * The number of the unit whose first level, as REPORT LUNS gives it, is this: its two top bits are the address
     * method. With flat addressing the number is the other 14 bits, otherwise the low 8.
     */
    public static int unitNumber(int firstLevel) {
        return firstLevel >> METHOD_SHIFT == METHOD_FLAT ? firstLevel & 0x3FFF : firstLevel & 0xFF;
    }

    /** The first level for a unit number from 0 to 16383: flat addressing above 255. */
    public static int firstLevel(int unitNumber) {
        return unitNumber > 0xFF ? METHOD_FLAT << METHOD_SHIFT | unitNumber : unitNumber;
    }

    /** Address of the unit; never null. */
    public TargetInfo getTargetInfo() {
        return targetInfo;
    }

    /** What the unit says of itself; never null. */
    public SCSIInqInfo getSCSIInqInfo() {
        return scsiInqInfo;
    }

    /** Address of the last block: 32 bits, 0x80000000 and above arrive negative. */
    public int getLogicalBlockAddress() {
        return logicalBlockAddress;
    }

    public void setLogicalBlockAddress(int logicalBlockAddress) {
        this.logicalBlockAddress = logicalBlockAddress;
    }

    /** Address of the last block as a number from 0 to 4294967295. */
    public long getLogicalBlockAddressUnsigned() {
        return Integer.toUnsignedLong(logicalBlockAddress);
    }

    /** Block length in bytes: 32 bits, 0x80000000 and above arrive negative. */
    public int getBytesPerBlock() {
        return bytesPerBlock;
    }

    public void setBytesPerBlock(int bytesPerBlock) {
        this.bytesPerBlock = bytesPerBlock;
    }

    /** Block length in bytes as a number from 0 to 4294967295. */
    public long getBytesPerBlockUnsigned() {
        return Integer.toUnsignedLong(bytesPerBlock);
    }

    /** Capacity in bytes, to be read as unsigned (see {@link Long#toUnsignedString(long)}). */
    public long getCapacity() {
        return (getLogicalBlockAddressUnsigned() + 1) * getBytesPerBlockUnsigned();
    }

    /**
     * Whether the unit has more blocks than the adapter's 32-bit READ CAPACITY can tell; the capacity is then a
     * minimum.
     */
    public boolean isCapacityMinimum() {
        return logicalBlockAddress == -1;
    }
}
