package com.varden.tavo.iscsi.codes;

/** States of an adapter: {@code HBA.getState}. */
public final class AdapterState {
    public static final int READY = 1;
    public static final int NO_LINK = 2;
    /** A firmware image was loaded and comes into force with the next reset. */
    public static final int RESET_NEEDED = 3;

    /** What the numbers mean. */
    public static final Meanings MEANINGS = Meanings.of(READY, "ready")
        .and(NO_LINK, "no link")
        .and(RESET_NEEDED, "reset needed");

    private AdapterState() {}
}
