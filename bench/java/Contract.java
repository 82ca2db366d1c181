package com.varden.tavo.iscsi.bench;

import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.PortStatistics;

/** The operations that are compared; every peer fills the same model objects with the same values. */
abstract class Contract {
    static final int DEV = 0;

    abstract boolean openDevice(int dev);

    /** Three fields of the portal. */
    abstract int getiSCSIHBAState(int dev, HBA hba);

    /** The whole adapter: portal, device database, firmware block. */
    abstract int getiSCSIHBAData(int dev, HBA hba);

    /** The 32 counters. */
    abstract int getiSCSIStatistics(int dev, PortStatistics statistics);

    /** The log of connection errors, 128 entries. */
    abstract int getConnectErrorLog(int dev, HBA hba);

    /** Writes up to 511 entries one by one. */
    abstract int setDDBsData(int dev, DevDBEntry[] entries);
}
