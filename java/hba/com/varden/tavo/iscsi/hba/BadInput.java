package com.varden.tavo.iscsi.hba;

/** What the user gave is not permitted; nothing was done. Ends the tool with status 2. */
final class BadInput extends RuntimeException {
    private static final long serialVersionUID = 1;

    BadInput(String message) {
        super(message);
    }
}
