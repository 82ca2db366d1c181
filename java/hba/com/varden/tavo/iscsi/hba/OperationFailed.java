package com.varden.tavo.iscsi.hba;

/** An operation failed. Ends the tool with status 1. */
public final class OperationFailed extends RuntimeException {
    private static final long serialVersionUID = 1;

    /** The management library's status, 0 when the failure is not one of its own. */
    public final int status;

    public OperationFailed(String message) {
        this(message, 0);
    }

    OperationFailed(String message, int status) {
        super(message);
        this.status = status;
    }

    OperationFailed(String message, Throwable cause) {
        super(message, cause);
        this.status = 0;
    }
}
