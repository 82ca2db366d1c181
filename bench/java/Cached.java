package com.varden.tavo.iscsi.bench;

import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.PortStatistics;

/** The straight lines with classes and method IDs kept, which the contract forbids. */
final class Cached extends Contract {
    @Override
    native boolean openDevice(int dev);

    @Override
    native int getiSCSIHBAState(int dev, HBA hba);

    @Override
    native int getiSCSIHBAData(int dev, HBA hba);

    @Override
    native int getiSCSIStatistics(int dev, PortStatistics statistics);

    @Override
    native int getConnectErrorLog(int dev, HBA hba);

    @Override
    native int setDDBsData(int dev, DevDBEntry[] entries);
}
