package com.varden.tavo.iscsi.codes;

/** Why a login failed: {@code ConnectionError.getErrorType}. */
public final class ErrorType {
    /** Nothing failed: the entry tells of a logout. */
    public static final int NONE = 0;
    /** There is no route, the connection was refused, or nothing answered. */
    public static final int NO_ANSWER = 1;
    /** The error detail is the {@link LoginStatus}, 0 when the target gave none. */
    public static final int REFUSED = 2;
    /** The target was connected and then fell silent. */
    public static final int TIMEOUT = 3;

    /** What the numbers mean. */
    public static final Meanings MEANINGS = Meanings.of(NONE, "none")
        .and(NO_ANSWER, "no answer")
        .and(REFUSED, "refused")
        .and(TIMEOUT, "timeout");

    private ErrorType() {}
}
