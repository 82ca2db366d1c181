package com.varden.tavo.iscsi.codes;

/** Validity of an ARP table entry: {@code ArpEntry.getValid}. */
public final class ArpState {
    public static final int INVALID = 0;
    public static final int VALID = 1;

    /** What the numbers mean. */
    public static final Meanings MEANINGS = Meanings.of(INVALID, "invalid").and(VALID, "valid");

    private ArpState() {}
}
