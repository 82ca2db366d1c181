package com.varden.tavo.iscsi.bench;

/** REPORT LUNS by libiscsi alone, without bridge and adapter. */
final class Libiscsi {
    private Libiscsi() {}

    /** Logs in to a target, once; false when that fails. */
    static native boolean login(String portal, String target);

    /** Sends what the bridge sends for one call; 0 when every answer came. */
    static native int reportLUNs();
}
