package com.varden.tavo.iscsi.model;

/**
 * The option words of the adapter's firmware and its default session parameters.
 *
 * The addresses and names of the same firmware block are properties of {@link HBA}.
 */
public final class InitFW {
    private short fwOptions;
    private short addFWOptions;
    private byte reserved1;
    private short wakeupThreshold;
    private final DevEntry devEntry = new DevEntry();

    /** Firmware option bits: 16 bits in a short, 0x8000 and above arrive negative. */
    public short getFWOptions() {
        return fwOptions;
    }

    public void setFWOptions(short fwOptions) {
        this.fwOptions = fwOptions;
    }

    /** Firmware option bits as a number from 0 to 65535. */
    public int getFWOptionsUnsigned() {
        return Short.toUnsignedInt(fwOptions);
    }

    /** Additional firmware option bits: 16 bits in a short, 0x8000 and above arrive negative. */
    public short getAddFWOptions() {
        return addFWOptions;
    }

    public void setAddFWOptions(short addFWOptions) {
        this.addFWOptions = addFWOptions;
    }

    /** Additional firmware option bits as a number from 0 to 65535. */
    public int getAddFWOptionsUnsigned() {
        return Short.toUnsignedInt(addFWOptions);
    }

    /** Reserved byte: 0x80 and above arrive negative. Not written back. */
    public byte getReserved1() {
        return reserved1;
    }

    public void setReserved1(byte reserved1) {
        this.reserved1 = reserved1;
    }

    /** Reserved byte as a number from 0 to 255. */
    public int getReserved1Unsigned() {
        return Byte.toUnsignedInt(reserved1);
    }

    /** Wakeup threshold: 16 bits in a short, 0x8000 and above arrive negative. Not written back. */
    public short getWakeupThreshold() {
        return wakeupThreshold;
    }

    public void setWakeupThreshold(short wakeupThreshold) {
        this.wakeupThreshold = wakeupThreshold;
    }

    /** Wakeup threshold as a number from 0 to 65535. */
    public int getWakeupThresholdUnsigned() {
        return Short.toUnsignedInt(wakeupThreshold);
    }

    /** Session parameters that the firmware uses by default; never null. */
    public DevEntry getDevEntry() {
        return devEntry;
    }
}
