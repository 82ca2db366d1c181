package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.codes.TargetState;

/** The state of a target entry. */
final class StateField extends NumberField {
    StateField() {
        super("state", 32, "State");
    }

    static boolean isKnown(int state) {
        return state >= TargetState.FREE && state <= TargetState.LOGGING_IN;
    }

    // Whether there is a session decides itself behind the write.
    @Override
    boolean isSame(Long wanted, Long found) {
        return super.isSame(wanted, found) || awaitsLogin(wanted) && awaitsLogin(found);
    }

    private static boolean awaitsLogin(long state) {
        return state == TargetState.CONFIGURED || state == TargetState.LOGGED_IN || state == TargetState.LOGGING_IN;
    }
}
