package com.varden.tavo.iscsi.bench;

import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;

/** The bridge's JNI calls written out by hand in straight lines. */
final class Straight {
    native boolean openDevice(int dev);

    native int getiSCSIHBAData(int dev, HBA hba);

    native int setDDBsData(int dev, DevDBEntry[] entries);
}
