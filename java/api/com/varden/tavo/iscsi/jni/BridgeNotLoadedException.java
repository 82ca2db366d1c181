package com.varden.tavo.iscsi.jni;

/** The native library, or the management library that it needs, could not be loaded; the message says what to do. */
public final class BridgeNotLoadedException extends RuntimeException {
    private static final long serialVersionUID = 1;

    /** What stands in the way. */
    public enum Reason {
        /** No file of the bridge's name was found. */
        BRIDGE_MISSING,
        /** The bridge was built for the other VM width. */
        BRIDGE_WIDTH,
        /** {@code ./libvdsdm.so} does not exist. */
        MANAGEMENT_LIBRARY_MISSING,
        /** {@code ./libvdsdm.so} was built for the other VM width. */
        MANAGEMENT_LIBRARY_WIDTH,
        /** {@code ./libvdsdm.so} lacks an operation that the bridge needs. */
        SYMBOL_MISSING,
        /** Anything else that the dynamic loader refused. */
        OTHER
    }

    private final transient Reason reason;

    BridgeNotLoadedException(Reason reason, String message, Throwable cause) {
        super(message, cause);
        this.reason = reason;
    }

    public Reason getReason() {
        return reason;
    }
}
