/** The native methods under test, bound by the test program, which take any object; and its scripted library. */
final class Calls {
    private Calls() {}

    static native boolean openDevice(int dev);
    static native boolean closeDevice(int dev);
    static native int getiSCSIAdapterInfo(int dev, Object hba);
    static native int getiSCSIFWInfo(int dev, Object hba);
    static native int getiSCSIDriverInfo(int dev, Object hba);
    static native int getChipInfo(int dev, Object hba);
    static native int getiSCSIHBAState(int dev, Object hba);
    static native int getiSCSIHBAData(int dev, Object hba);
    static native int getiSCSIEntryNum(int dev);
    static native int setDDBData(int dev, Object entry, int index);
    static native int setDDBsData(int dev, Object[] entries);
    static native int getiSCSITargetData(int dev, Object hba, Object target);
    static native int getiSCSILunData(int dev, Object lun);
    static native int getFWData(int dev, Object hba);
    static native int getISCSIFWDefaults(int dev, Object initFW);
    static native int setFWData(int dev, Object hba);
    static native int getScsiReportLUNsData(int dev, Object hba, Object target);
    static native int getScsiInquiryData(int dev, Object targetInfo, Object inquiry);
    static native int getScsiReadCapacityData(int dev, Object lun);
    static native int getiSCSIStatistics(int dev, Object statistics);
    static native int getConnectErrorLog(int dev, Object hba);
    static native int getARPLog(int dev, Object hba);
    static native int getCHAPTableData(int dev, Object hba);
    static native int setCHAPTableData(int dev, Object[] entries);
    static native int getiSNSDiscoveryConfig(int dev, Object config);
    static native int setiSNSDiscoveryConfig(int dev, Object config);
    static native int getiSNSTargets(int dev, Object hba);

    /** The record that the library was handed last, as hexadecimal digits; empty after it was asked for. */
    static native String lastRecord();
}
