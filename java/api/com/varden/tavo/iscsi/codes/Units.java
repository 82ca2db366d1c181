package com.varden.tavo.iscsi.codes;

import java.math.BigInteger;

/** The units in which sizes and times cross. */
public final class Units {
    /**
     * Bytes in one unit of the segment and burst sizes: {@code DevEntry.getMaxRxDataSegmentLen}, {@code
     * getFirstBurstSize} and {@code getMaxBurstSizeUnsigned}, {@code DevDBEntry.getMaxTxDataSegmentLen}.
     */
    public static final int SEGMENT_UNIT = 512;

    /** The largest time of an ARP table entry, which stands for all longer ones too. */
    public static final int LONGEST_SILENCE = 255;

    private Units() {}

    /** Bytes of a segment or burst size, 0 to 65535 units. */
    public static int segmentBytes(int units) {
        return units * SEGMENT_UNIT;
    }

    /**
     * A number of bytes, unsigned, in the largest binary unit that it fills, with one decimal, cut and not rounded:
     * "2.0 TiB (2199023255552 bytes)", or "512 bytes".
     */
    public static String describeBytes(long bytes) {
        String size = shortBytes(bytes);
        return size.endsWith("iB") ? size + " (" + Long.toUnsignedString(bytes) + " bytes)" : size;
    }

    /** The same without the number of bytes: "2.0 TiB", or "512 bytes". */
    public static String shortBytes(long bytes) {
        BigInteger number = new BigInteger(Long.toUnsignedString(bytes));
        int order = Math.max(0, number.bitLength() - 1) / 10;
        if (order == 0) {
            return number + (bytes == 1 ? " byte" : " bytes");
        }
        long tenths = number.multiply(BigInteger.TEN).shiftRight(10 * order).longValue();
        return tenths / 10 + "." + tenths % 10 + " " + "KMGTPE".charAt(order - 1) + "iB";
    }

    /** How long an ARP table entry has not been heard of, {@code ArpEntry.getTimeIn}: "3 min", "255 min or more". */
    public static String describeSilence(int minutes) {
        return minutes + (minutes < LONGEST_SILENCE ? " min" : " min or more");
    }
}
