package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.codes.TargetState;

/** The state of a target entry. */
final class StateField extends CodeField {
    StateField() {
        super("state", 32, "State", TargetState.MEANINGS);
        trouble(TargetState.CONFIGURED);
    }

    static boolean isKnown(int state) {
        return TargetState.MEANINGS.knows(state);
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
