package com.varden.tavo.iscsi.codes;

/** States of a device database entry: {@code DevDBEntry.getState}. */
public final class TargetState {
    /** The slot is not in use; an entry that is written with this state frees its slot. */
    public static final int FREE = 0;
    /** There is no session: a login failed, or none was tried. */
    public static final int CONFIGURED = 1;
    public static final int LOGGED_IN = 2;
    /** Logged out on request, until the adapter is reset or the entry is written again. */
    public static final int LOGGED_OUT = 3;
    /** A login is under way in this process; never stored. */
    public static final int LOGGING_IN = 4;

    /** What the numbers mean. */
    public static final Meanings MEANINGS = Meanings.of(FREE, "free")
        .and(CONFIGURED, "configured")
        .and(LOGGED_IN, "logged in")
        .and(LOGGED_OUT, "logged out")
        .and(LOGGING_IN, "logging in");

    private TargetState() {}
}
