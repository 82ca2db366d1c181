package com.varden.tavo.iscsi.hba;

/** The state of a target entry. */
final class StateField extends NumberField {
    static final int FREE = 0;
    /** In use, without a session: the login failed, or was not tried. */
    static final int CONFIGURED = 1;
    static final int SESSION = 2;
    static final int LOGGED_OUT = 3;
    /** A login is under way; shown, never stored. */
    static final int LOGGING_IN = 4;

    StateField() {
        super("state", 32, "State");
    }

    static boolean isKnown(int state) {
        return state >= FREE && state <= LOGGING_IN;
    }

    // Whether there is a session decides itself behind the write.
    @Override
    boolean isSame(Long wanted, Long found) {
        return super.isSame(wanted, found) || awaitsLogin(wanted) && awaitsLogin(found);
    }

    private static boolean awaitsLogin(long state) {
        return state == CONFIGURED || state == SESSION || state == LOGGING_IN;
    }
}
