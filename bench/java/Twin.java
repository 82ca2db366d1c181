package com.varden.tavo.iscsi.bench;

import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;

/** The bridge's own source, compiled a second time: what differs from the bridge is chance. */
final class Twin {
    native boolean openDevice(int dev);

    native int getiSCSIHBAData(int dev, HBA hba);

    native int setDDBsData(int dev, DevDBEntry[] entries);
}
