package com.varden.tavo.iscsi.bench;

import com.varden.tavo.iscsi.jni.ApiWrapper;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.PortStatistics;

/** The product. */
final class Bridge extends Contract {
    private final ApiWrapper api = new ApiWrapper();

    @Override
    boolean openDevice(int dev) {
        return api.openDevice(dev);
    }

    @Override
    int getiSCSIHBAState(int dev, HBA hba) {
        return api.getiSCSIHBAState(dev, hba);
    }

    @Override
    int getiSCSIHBAData(int dev, HBA hba) {
        return api.getiSCSIHBAData(dev, hba);
    }

    @Override
    int getiSCSIStatistics(int dev, PortStatistics statistics) {
        return api.getiSCSIStatistics(dev, statistics);
    }

    @Override
    int getConnectErrorLog(int dev, HBA hba) {
        return api.getConnectErrorLog(dev, hba);
    }

    @Override
    int setDDBsData(int dev, DevDBEntry[] entries) {
        return api.setDDBsData(dev, entries);
    }
}
