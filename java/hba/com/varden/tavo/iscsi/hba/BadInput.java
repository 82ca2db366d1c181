package com.varden.tavo.iscsi.hba;

/** What the user gave is not permitted; nothing was done. Ends the tool with status 2. */
public final class BadInput extends RuntimeException {
    private static final long serialVersionUID = 1;

    public BadInput(String message) {
        super(message);
    }
}
