package com.varden.tavo.iscsi.model;

import java.util.ArrayList;
import java.util.List;

/** One entry of the adapter's log of connection errors. The codes are the adapter's. */
public final class ConnectionError {
    /** Values of one entry in the flat array that the adapter's log arrives in. */
    public static final int STRIDE = 11;

    private final long[] values = new long[STRIDE];

    ConnectionError(long[] log, int from) {
        System.arraycopy(log, from, values, 0, STRIDE);
    }

    /** Cuts the flat array into entries; values that do not make a whole entry are left out. */
    static List<ConnectionError> list(long[] log) {
        List<ConnectionError> entries = new ArrayList<>(log.length / STRIDE);
        for (int i = 0; i + STRIDE <= log.length; i += STRIDE) {
            entries.add(new ConnectionError(log, i));
        }
        return entries;
    }

    /** When the error was logged: seconds, 0 to 4294967295. */
    public long getSeconds() {
        return values[0];
    }

    /** When the error was logged: milliseconds, 0 to 4294967295. */
    public long getMilliseconds() {
        return values[1];
    }

    /** Device index of the connection, 16 bits. */
    public int getDeviceIndex() {
        return (int) values[2];
    }

    /** Connection state, 16 bits. */
    public int getConnState() {
        return (int) values[3];
    }

    /** Type of the entry, 8 bits. */
    public int getEntryType() {
        return (int) values[4];
    }

    /** Type of the error, 8 bits. */
    public int getErrorType() {
        return (int) values[5];
    }

    /** Detail of the error, 16 bits. */
    public int getErrorDetail() {
        return (int) values[6];
    }

    /** How often the same error came again, 8 bits. */
    public int getDupErrorCnt() {
        return (int) values[7];
    }

    /** The three reserved bytes. */
    public short[] getReserved() {
        return new short[] {(short) values[8], (short) values[9], (short) values[10]};
    }
}
