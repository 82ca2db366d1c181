/** The native methods under test, bound by the test program, which take any object; and its scripted library. */
final class Calls {
    private Calls() {}

    static native boolean openDevice(int dev);
    static native boolean closeDevice(int dev);
    static native int getiSCSIAdapterInfo(int dev, Object hba);
    static native int getiSCSIDriverInfo(int dev, Object hba);
    static native int getiSCSIHBAState(int dev, Object hba);
    static native int getiSCSIHBAData(int dev, Object hba);
    static native int setDDBData(int dev, Object entry, int index);
    static native int setFWData(int dev, Object hba);
    static native int getARPLog(int dev, Object hba);
    static native int getCHAPTableData(int dev, Object hba);
    static native int setCHAPTableData(int dev, Object[] entries);

    /** The record that the library was handed last, as hexadecimal digits; empty after it was asked for. */
    static native String lastRecord();
}
