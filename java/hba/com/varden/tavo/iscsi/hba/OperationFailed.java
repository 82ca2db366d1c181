package com.varden.tavo.iscsi.hba;

/** An operation failed. Ends the tool with status 1. */
final class OperationFailed extends RuntimeException {
    private static final long serialVersionUID = 1;

    OperationFailed(String message) {
        super(message);
    }

    OperationFailed(String message, Throwable cause) {
        super(message, cause);
    }
}
