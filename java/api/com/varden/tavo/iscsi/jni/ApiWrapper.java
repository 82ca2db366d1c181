package com.varden.tavo.iscsi.jni;

import com.varden.tavo.iscsi.model.CHAPTableEntry;
import com.varden.tavo.iscsi.model.DevDBEntry;
import com.varden.tavo.iscsi.model.HBA;
import com.varden.tavo.iscsi.model.IPAddr;
import com.varden.tavo.iscsi.model.InitFW;
import com.varden.tavo.iscsi.model.Lun;
import com.varden.tavo.iscsi.model.PortStatistics;
import com.varden.tavo.iscsi.model.SCSIInqInfo;
import com.varden.tavo.iscsi.model.Target;
import com.varden.tavo.iscsi.model.TargetInfo;
import com.varden.tavo.iscsi.model.iSNSDiscoveryConfig;

/**
 * The operations of the iSCSI adapters' management library.
 *
 * Call {@link #initJNINative} once, {@link #openDevice} for each adapter, then any operation, {@link #closeDevice} at
 * the end. {@code dev} is the adapter's index, 0 to 31. An {@code int} result is a status to be read as unsigned, 0
 * for success, unless the method says otherwise; a {@code boolean} result is true for success. On failure, objects
 * may have been filled in part, and one line about it stands on the C standard output of the process.
 *
 * The table of open adapters belongs to the process, whatever the number of {@code ApiWrapper} objects. Calls may
 * come from any thread.
 */
public final class ApiWrapper {
    /**
     * Makes the operations available.
     *
     * @throws BridgeNotLoadedException when the native library or the management library cannot be loaded
     */
    public ApiWrapper() {
        BridgeLoader.load();
    }

    /** Forgets all open adapters without closing them. */
    public native void initJNINative();

    /** Opens an adapter. */
    public native boolean openDevice(int dev);

    /** Closes an adapter. */
    public native boolean closeDevice(int dev);

    /** Version of the management library; needs no adapter. */
    public native String getVersioniSCSI();

    /** Has the management library append a trace of its operations to a file. */
    public native int enableSdmTrace(int dev, String fileName);

    /** Fills name, alias, address and portal count. */
    public native int getiSCSIAdapterInfo(int dev, HBA hba);

    /** Fills firmware attribute, versions of iSCSI, option ROM and firmware, and model. */
    public native int getiSCSIFWInfo(int dev, HBA hba);

    /** Fills version and attribute of the driver. */
    public native int getiSCSIDriverInfo(int dev, HBA hba);

    /** Fills board type and chip version. */
    public native int getChipInfo(int dev, HBA hba);

    /** Fills state, DHCP state and link status. */
    public native int getiSCSIHBAState(int dev, HBA hba);

    /**
     * Fills the whole object: properties, every device database entry in use (added to the list; clear it before),
     * and what {@link #getFWData} fills. Success does not tell whether the firmware settings could be read.
     */
    public native int getiSCSIHBAData(int dev, HBA hba);

    /** Number of device database entries; 0x20000064 for an index outside 0 to 31. */
    public native int getiSCSIEntryNum(int dev);

    /** The adapter's default device database entry, or null on failure. */
    public native DevDBEntry getDefaultDDBEntry(int dev);

    /** Fills the contents proposed for a new entry; target ID and state stay as they are. */
    public native int getInitialDDBEntry(int dev, DevDBEntry entry, int index);

    /** Writes an entry to the slot that its target ID names; {@code index} is not used. */
    public native int setDDBData(int dev, DevDBEntry entry, int index);

    /**
     * Writes 1 to 511 entries in order. Success says only that all were tried; an array that is empty or longer
     * writes nothing and is a success too.
     */
    public native int setDDBsData(int dev, DevDBEntry[] entries);

    /** Logs out of the target of an entry. Of each number 16 bits count; options and new index are the adapter's. */
    public native int logoutDDB(int dev, int index, int options, int newIndex);

    /** Fills portal and node of a discovered target. The target says which by its instance and its target ID. */
    public native int getiSCSITargetData(int dev, HBA hba, Target target);

    /** Fills inquiry data and capacity of a logical unit. */
    public native int getiSCSILunData(int dev, Lun lun);

    /** Fills address, gateway, subnet mask, primary DNS server, SLP directory agent and {@link HBA#getInitFW}. */
    public native int getFWData(int dev, HBA hba);

    /** Fills the firmware's default option words and session parameters. */
    public native int getISCSIFWDefaults(int dev, InitFW initFW);

    /**
     * Writes address, gateway, subnet mask, primary DNS server, SLP directory agent, name and alias of {@link
     * HBA#getNodeInfo} (null keeps them), the two option words and the default session parameters.
     */
    public native int setFWData(int dev, HBA hba);

    /** Restores the firmware's default settings. */
    public native boolean setISCSIDefaults(int dev);

    /** Writes a firmware image; the type is the adapter's, 16 bits. */
    public native boolean iSCSIUpdateFW(int dev, String fileName, short type);

    /** Resets the adapter. */
    public native boolean resetISCSIHBA(int dev);

    /** Clears the counters of a port, 16 bits. */
    public native boolean resetISCSICounters(int dev, int portNum);

    /** Has the adapter's crash record written to a file. */
    public native int retrieveCrashRecord(int dev, String fileName);

    /** Has the adapter ping an address; the count has 16 bits. */
    public native int ping(int dev, IPAddr address, int count);

    /** Adds the logical units of a target to it. The HBA object is not used, but may not be null. */
    public native int getScsiReportLUNsData(int dev, HBA hba, Target target);

    /** Fills what the logical unit at an address says of itself. */
    public native int getScsiInquiryData(int dev, TargetInfo address, SCSIInqInfo inquiry);

    /** Fills the capacity of a logical unit. */
    public native int getScsiReadCapacityData(int dev, Lun lun);

    /** Fills the counters of the port. */
    public native int getiSCSIStatistics(int dev, PortStatistics statistics);

    /** Fills the log of connection errors. */
    public native int getConnectErrorLog(int dev, HBA hba);

    /** Fills the ARP table. */
    public native int getARPLog(int dev, HBA hba);

    /**
     * Adds the entries of the CHAP table, the first one included (see {@link #setCHAPTableData}). Needs 46 KB of the
     * thread's stack: a program that recurses to within that of its end ends the VM.
     */
    public native int getCHAPTableData(int dev, HBA hba);

    /**
     * Replaces the CHAP table. An empty entry is written at index 0, the first of the array at index 1. An array that
     * is empty or longer than 127 writes nothing and is a success too.
     */
    public native int setCHAPTableData(int dev, CHAPTableEntry[] entries);

    /** Fills the settings of iSNS discovery. */
    public native int getiSNSDiscoveryConfig(int dev, iSNSDiscoveryConfig config);

    /** Writes the settings of iSNS discovery. */
    public native int setiSNSDiscoveryConfig(int dev, iSNSDiscoveryConfig config);

    /** Replaces the list of targets that iSNS discovery found. Needs 12 KB of the thread's stack. */
    public native int getiSNSTargets(int dev, HBA hba);
}
