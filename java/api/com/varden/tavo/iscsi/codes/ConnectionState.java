package com.varden.tavo.iscsi.codes;

/** How far a connection had come: {@code ConnectionError.getConnState}. */
public final class ConnectionState {
    public static final int CLOSED = 0;
    /** There is no TCP connection yet. */
    public static final int CONNECTING = 1;
    /** There is a TCP connection. */
    public static final int LOGGING_IN = 2;

    /** What the numbers mean. */
    public static final Meanings MEANINGS = Meanings.of(CLOSED, "closed")
        .and(CONNECTING, "connecting")
        .and(LOGGING_IN, "logging in");

    private ConnectionState() {}
}
