package com.varden.tavo.iscsi.model;

/**
 * The SCSI address of a logical unit behind a target.
 *
 * Every number has 16 bits in the adapter and is cut to them when it is sent.
 */
public final class TargetInfo {
    private int bus;
    private int targetID;
    private int lun;

    /** Bus number, 16 bits. */
    public int getBus() {
        return bus;
    }

    public void setBus(int bus) {
        this.bus = bus;
    }

    /** The target's ID, 16 bits. */
    public int getTargetID() {
        return targetID;
    }

    public void setTargetID(int targetID) {
        this.targetID = targetID;
    }

    /** First level of the logical unit number as REPORT LUNS gives it, 16 bits (see {@link Lun#unitNumber}). */
    public int getLUN() {
        return lun;
    }

    public void setLUN(int lun) {
        this.lun = lun;
    }
}
