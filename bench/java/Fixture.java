package com.varden.tavo.iscsi.bench;

/** Hold on the management library of the benchmark, whose answers are constant. */
final class Fixture {
    private Fixture() {}

    /** Number of device database entries, 0 to 512. */
    static native void setEntryCount(int count);

    /** The 512 records as they were written since the last call. */
    static native byte[] takeWritten();
}
