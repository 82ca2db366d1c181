package com.varden.tavo.iscsi.codes;

/** What an entry of the connection-error log tells of: {@code ConnectionError.getEntryType}. */
public final class ErrorEntryType {
    /** A login failed, or a session was lost in the middle of a command. */
    public static final int LOGIN_FAILED = 1;
    /** A session was ended on request. */
    public static final int LOGGED_OUT = 2;

    /** What the numbers mean. */
    public static final Meanings MEANINGS = Meanings.of(LOGIN_FAILED, "login failed").and(LOGGED_OUT, "logged out");

    private ErrorEntryType() {}
}
