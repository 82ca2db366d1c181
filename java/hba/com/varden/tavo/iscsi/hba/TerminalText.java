package com.varden.tavo.iscsi.hba;

import com.varden.tavo.iscsi.model.IPAddr;

/** Values as they may go to a terminal. */
final class TerminalText {
    private static final String NOTHING = "-";

    private TerminalText() {}

    /** The value's text, a dash for nothing. What comes from a target or a library does not steer the terminal. */
    static String of(Object value) {
        if (value == null || value instanceof IPAddr address && address.isUnspecified()) {
            return NOTHING;
        }
        String text = value.toString().stripTrailing();
        for (int i = 0; i < text.length(); i++) {
            if (Character.isISOControl(text.charAt(i))) {
                text = text.replace(text.charAt(i), '?');
            }
        }
        return text.isEmpty() ? NOTHING : text;
    }
}
