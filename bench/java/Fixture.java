package com.varden.tavo.iscsi.bench;

import java.nio.file.Path;

/** Hold on the management library that costs nothing; the VM stands in its folder. */
final class Fixture {
    /** Number of device database entries that the library answers with unless told otherwise. */
    static final int ENTRIES = 512;

    static {
        System.load(Path.of("libvdsdm.so").toAbsolutePath().toString());
    }

    private Fixture() {}

    /** Number of device database entries, 0 to 512. */
    static native void setEntryCount(int count);

    /** Nanoseconds of processor time that all threads of this process have taken. */
    static native long processorTime();
}
